/* walk_stream FILE: the text of a document stream from anywhere, in UTF-8; what is wrong with it goes to standard
 * error. */
#include <kxstr/kxstr.h>
#include <stdio.h>

int main(int argc, char **argv) {
    static const char *const faults[] = {"", "is cut off", "has no room for its ends", "is not closed",
                                         "has another size at its end"};
    static unsigned char stream[1 << 20];
    const KxTextForm kx = {KX_TEXT_KX, 1252, NULL}; /* the page that the document was written with */
    const KxTextForm utf8 = {KX_TEXT_UTF8, 0, NULL};
    KxTextConverter converter;
    KxStreamCode code;
    size_t at, length;
    int status = 0;
    FILE *in = argc == 2 ? fopen(argv[1], "rb") : NULL;
    if (in == NULL) return 2;
    length = fread(stream, 1, sizeof stream, in);
    fclose(in);

    KxTextPrepare(&converter, &kx, &utf8, KX_TEXT_DROP);
    for (at = 0; KxStreamNext(stream + at, length - at, &code); at += code.size) {
        if (code.fault != KX_STREAM_SOUND) {
            fprintf(stderr, "byte %lu: the code %02X %s\n", (unsigned long)at, stream[at], faults[code.fault]);
            status = 1;
        } else if (code.kind == KX_STREAM_TEXT) {
            KxTextResult done;
            char out[4];
            KxTextConvert(&converter, &code.character, sizeof code.character, 1, out, sizeof out, &done);
            fwrite(out, 1, done.written, stdout);
        } else if (code.kind == KX_STREAM_END) {
            break;
        }
    }
    return status;
}
