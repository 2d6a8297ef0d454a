/* choose_page LANGUAGE [WINDOWS-PAGE]: the code pages for texts in a language; a page that is named is stored first. */
#include <kxstr/kxstr.h>
#include <stdio.h>
#include <stdlib.h>

int main(int argc, char **argv) {
    if (argc < 2 || !VaskInit(argv[1])) return 2;
    if (argc > 2 && !WcvtSetWinCodepage((uint32_t)strtoul(argv[2], NULL, 10))) {
        fputs("the page could not be stored\n", stderr);
        return 1;
    }
    printf("DOS %u, Windows %u, stored under %s\n", WcvtGetDOSCodepage(), WcvtGetWinCodepage(), WcvtGetRegistryLoc());
    VaskUnInit();
    return 0;
}
