/* walk_stream FILE: the text of a document stream from anywhere, in UTF-8. What is wrong with it, and how many of its
 * characters have no Unicode value, goes to standard error. */
#include <kxstr/kxstr.h>
#include <stdio.h>
#include <stdlib.h>

/* All bytes of a file, and their number; null when there is no file or no memory. */
static unsigned char *read_all(FILE *in, size_t *length) {
    size_t room = 1 << 16, count;
    unsigned char *bytes = malloc(room), *more;
    *length = 0;
    while (bytes != NULL && (count = fread(bytes + *length, 1, room - *length, in)) != 0) {
        *length += count;
        if (*length < room) continue;
        more = realloc(bytes, room *= 2);
        if (more == NULL) free(bytes);
        bytes = more;
    }
    return bytes;
}

int main(int argc, char **argv) {
    static const char *const faults[] = {"", "is cut off", "has no room for its ends", "is not closed",
                                         "has another size at its end"};
    const KxTextForm kx = {KX_TEXT_KX, 1252, NULL}; /* the page that the document was written with */
    const KxTextForm utf8 = {KX_TEXT_UTF8, 0, NULL};
    KxTextConverter converter;
    KxStreamCode code;
    unsigned char *stream;
    size_t at, length, left_out = 0;
    int status = 0;
    FILE *in = argc == 2 ? fopen(argv[1], "rb") : NULL;
    if (in == NULL) return 2;
    stream = read_all(in, &length);
    fclose(in);
    if (stream == NULL) return 2;

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
            left_out += done.replaced;
        } else if (code.kind == KX_STREAM_END) {
            break;
        }
    }
    free(stream);
    if (left_out != 0) fprintf(stderr, "%lu without a Unicode value\n", (unsigned long)left_out);
    return status;
}
