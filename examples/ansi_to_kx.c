/* Prints the KX characters of a text in code page 1252, and the bytes that they go back to. */
#include <kxstr/kxstr.h>
#include <stdio.h>

int main(void) {
    KxCodePage page = {0};
    WcvtSetCodepage(1252, KX_BOTH_DIRECTIONS, &page);
    for (const char *text = "caf\xE9 \x80"; *text != 0; ++text) {
        const KxChar ch = WcvtNtvToKx(&page, (unsigned char)*text);
        printf("%02X -> %04X -> %02X\n", (unsigned char)*text, ch, WcvtKxToNtv(&page, ch));
    }
    return 0;
}
