/* read_852 FILE OUT: a text in code page 852, of any size, in small letters and in UTF-16. */
#include <kxstr/kxstr.h>
#include <stdio.h>
#include <string.h>

/* Writes so many characters; what UTF-16 lacks (a code of KX text) becomes a question mark. */
static int write_utf16(KxTextConverter *to_utf16, const KxChar *text, size_t bytes, FILE *out) {
    unsigned char utf16[2 * 4096];
    KxTextResult done;
    KxTextConvert(to_utf16, text, bytes, 1, utf16, sizeof utf16, &done); /* a unit each: it fits */
    return fwrite(utf16, 1, done.written, out) == done.written;
}

int main(int argc, char **argv) {
    const KxTextForm page = {KX_TEXT_CODE_PAGE, 852, NULL};
    const KxTextForm kx = {KX_TEXT_KX, 852, NULL};
    const KxTextForm utf16 = {KX_TEXT_UTF16LE, 0, NULL};
    KxTextConverter to_kx, to_utf16;
    KxTextResult done;
    unsigned char bytes[4096];
    KxChar text[4096];
    size_t count;
    FILE *in = argc == 3 ? fopen(argv[1], "rb") : NULL;
    FILE *out = in != NULL ? fopen(argv[2], "wb") : NULL;
    if (out == NULL) return 2;

    KxTextPrepare(&to_kx, &page, &kx, 0);
    KxTextPrepare(&to_utf16, &kx, &utf16, 0);
    KxTextSubstitute(&to_utf16, '?');
    fwrite("\xFF\xFE", 1, 2, out); /* the mark of UTF-16, low byte first */
    /* Every byte of 852 is a character, so no piece ends inside one. */
    while ((count = fread(bytes, 1, sizeof bytes, in)) != 0) {
        size_t i;
        KxTextConvert(&to_kx, bytes, count, 1, text, sizeof text, &done);
        for (i = 0; i < done.written / sizeof(KxChar); ++i)
            text[i] = W6wstrLowerCh(text[i]);
        if (!write_utf16(&to_utf16, text, done.written, out)) return 1;
    }
    fclose(in);
    return fclose(out) != 0;
}
