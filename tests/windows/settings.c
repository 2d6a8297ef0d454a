/* settings [NUMBER]: stores the Windows code page, or prints the DOS and Windows code pages in force. */
#include <kxstr/kxstr.h>
#include <stdio.h>
#include <stdlib.h>

int main(int argc, char **argv) {
    if (argc > 1) return WcvtSetWinCodepage((uint32_t)strtoul(argv[1], NULL, 10)) != 0 ? 0 : 1;
    /* Data of a shared library is reached another way than its functions. */
    if (coltbl[0].block == NULL) return 1;
    printf("%u %u\n", (unsigned)WcvtGetDOSCodepage(), (unsigned)WcvtGetWinCodepage());
    return 0;
}
