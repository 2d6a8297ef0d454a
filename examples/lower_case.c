/* Makes the letters of a text in code page 852 small, and prints it in UTF-8. */
#include <kxstr/kxstr.h>
#include <stdio.h>

int main(void) {
    static const char text[] = "P\xFC\xD6LI\xE6 \xA6LU\x9BOU\xACK\xED K\xDE\xD5";
    const KxTextForm page = {KX_TEXT_CODE_PAGE, 852, NULL};
    const KxTextForm kx = {KX_TEXT_KX, 852, NULL};
    const KxTextForm utf8 = {KX_TEXT_UTF8, 0, NULL};
    KxTextConverter converter;
    KxTextResult read, written;
    KxChar string[100];
    char out[300];

    KxTextPrepare(&converter, &page, &kx, 0);
    KxTextConvert(&converter, text, sizeof text, 1, string, sizeof string, &read); /* its end, too */
    W6wstrlwr(string);
    KxTextPrepare(&converter, &kx, &utf8, 0);
    KxTextConvert(&converter, string, read.written, 1, out, sizeof out, &written);
    puts(out);
    return 0;
}
