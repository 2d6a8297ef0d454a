/* A host that knows the library by its names alone: it loads it by path and calls what it finds. */
#define _POSIX_C_SOURCE 200809L
#include <dlfcn.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

/* ISO C has no conversion from an object's address to a function's. */
static void look_up(void *library, const char *name, void *function) {
    void *address = dlsym(library, name);
    if (address == NULL) fprintf(stderr, "no %s\n", name);
    memcpy(function, &address, sizeof address);
}

int main(int argc, char **argv) {
    void (*set_code_page)(uint32_t, uint8_t, void *) = NULL;
    uint16_t (*to_kx)(const void *, uint32_t) = NULL, (*to_native)(const void *, uint32_t) = NULL;
    void *page[32] = {0}; /* more than a descriptor needs */
    uint16_t units[4];
    int i;
    void *library = argc == 2 ? dlopen(argv[1], RTLD_NOW | RTLD_LOCAL) : NULL;
    if (library == NULL) {
        fprintf(stderr, "%s\n", argc == 2 ? dlerror() : "plugin_host LIBRARY");
        return 1;
    }
    look_up(library, "WcvtSetCodepage", &set_code_page);
    look_up(library, "WcvtNtvToKx", &to_kx);
    look_up(library, "WcvtKxToNtv", &to_native);
    if (set_code_page == NULL || to_kx == NULL || to_native == NULL) return 1;
    set_code_page(1252, 3 /* both directions */, page);
    printf("caf\xC3\xA9 ->");
    for (i = 0; i < 4; ++i)
        printf(" %04X", units[i] = to_kx(page, (unsigned char)"caf\xE9"[i]));
    printf(" ->");
    for (i = 0; i < 4; ++i)
        printf(" %02X", to_native(page, units[i]));
    printf("\n");
    return dlclose(library);
}
