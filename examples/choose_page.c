/* choose_page LANGUAGE [WINDOWS-PAGE]: the code pages for texts in a language; a page that is named is stored first. */
#include <kxstr/kxstr.h>
#include <stdio.h>
#include <stdlib.h>

int main(int argc, char **argv) {
    if (argc < 2 || !VaskInit(argv[1])) return 2;
    if (argc > 2) {
        /* The library stores any number; whether there is such a page the caller has to ask. */
        const KxTextForm kx = {KX_TEXT_KX, 0, NULL};
        KxTextForm form = {KX_TEXT_CODE_PAGE, 0, NULL};
        KxTextConverter converter;
        char *end;
        const unsigned long page = strtoul(argv[2], &end, 10);
        form.code_page = (uint32_t)page;
        if (end == argv[2] || *end != 0 || page > 0xFFFF || !KxTextPrepare(&converter, &form, &kx, 0)) {
            fputs("there is no such page\n", stderr);
            return 2;
        }
        if (!WcvtSetWinCodepage((uint32_t)page)) {
            fputs("the page could not be stored\n", stderr);
            return 1;
        }
    }
    printf("DOS %u, Windows %u, stored under %s\n", WcvtGetDOSCodepage(), WcvtGetWinCodepage(), WcvtGetRegistryLoc());
    VaskUnInit();
    return 0;
}
