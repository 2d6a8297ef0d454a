#include <kxstr/kxstr.h>
#include <stdio.h>

int main(void) {
    KxCodePage page = {0};
    KxChar units[4];
    int i;
    WcvtSetCodepage(1252, KX_BOTH_DIRECTIONS, &page);
    printf("caf\xC3\xA9 ->");
    for (i = 0; i < 4; ++i)
        printf(" %04X", units[i] = WcvtNtvToKx(&page, (unsigned char)"caf\xE9"[i]));
    printf(" ->");
    for (i = 0; i < 4; ++i)
        printf(" %02X", WcvtKxToNtv(&page, units[i]));
    printf("\n");
    return 0;
}
