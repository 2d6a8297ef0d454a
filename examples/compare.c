/* compare LANGUAGE ONE OTHER: which of two words, in UTF-8, comes first in a language (US, CZ, SV ...). */
#include <kxstr/kxstr.h>
#include <stdio.h>
#include <string.h>

/* A zero-terminated KX string; 0 when a character has no place there or there are too many. */
static int kx_string(const char *utf8, KxChar *string, size_t bytes) {
    const KxTextForm from = {KX_TEXT_UTF8, 0, NULL};
    const KxTextForm to = {KX_TEXT_KX, 0, NULL};
    KxTextConverter converter;
    KxTextResult done;
    KxTextPrepare(&converter, &from, &to, 0);
    return KxTextConvert(&converter, utf8, strlen(utf8) + 1, 1, string, bytes, &done) == KX_TEXT_DONE;
}

int main(int argc, char **argv) {
    KxChar one[100], other[100];
    int order;
    if (argc != 4 || !kx_string(argv[2], one, sizeof one) || !kx_string(argv[3], other, sizeof other)) return 2;
    order = KxWS6CmpcollLang(one, other, argv[1], 1, 0);
    printf("%s %s %s\n", argv[2], order < 0 ? "<" : order > 0 ? ">" : "=", argv[3]);
    return 0;
}
