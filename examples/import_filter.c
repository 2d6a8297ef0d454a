/*
 * import_filter STREAM TEXT [PAGE]: a document stream from anywhere to text in UTF-8.
 *
 *   hard line end   a line feed                     attribute 12, 14   <b> </b>, <u> </u>
 *   soft line end   <soft/>                         other attributes   <a5> </a5>
 *   < and &         &lt; and &amp;                  a character that Unicode lacks, a control byte   <kx 0007/>
 *
 * PAGE is the code page that the document was written with; it tells East Asian characters apart. Codes that are none
 * of these are left out, damaged ones are passed over byte by byte; what was done is told. Memory does not grow with
 * files. Status: 0 everything is in the text, 1 something was left out, 2 a file or the command line is at fault.
 */
#include <kxstr/text.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum { kLongestCode = 0xFFFF, kUnits = 4096, kMessages = 20 };

/* Text and markup alike are KX units until they are written. */
typedef struct Output {
    FILE *file;
    KxTextConverter converter;
    KxChar units[kUnits];
    size_t count;
    unsigned long unknown_characters;
} Output;

static void flush(Output *out) {
    char utf8[3 * kUnits];
    const unsigned char *source = (const unsigned char *)out->units;
    size_t left = out->count * sizeof(KxChar);
    while (left != 0) {
        KxTextResult done;
        const uint32_t reason = KxTextConvert(&out->converter, source, left, 1, utf8, sizeof utf8, &done);
        fwrite(utf8, 1, done.written, out->file);
        source += done.read;
        left -= done.read;
        if (reason == KX_TEXT_NO_EQUIVALENT || reason == KX_TEXT_MALFORMED) {
            KxChar unit;
            memcpy(&unit, source, sizeof unit);
            fprintf(out->file, "<kx %04X/>", (unsigned)unit);
            ++out->unknown_characters;
            source += sizeof unit;
            left -= sizeof unit;
        }
    }
    out->count = 0;
}

static void put(Output *out, KxChar unit) {
    if (out->count == kUnits) flush(out);
    out->units[out->count++] = unit;
}

static void put_markup(Output *out, const char *markup) {
    for (; *markup != 0; ++markup)
        put(out, (KxChar)*markup);
}

static void put_character(Output *out, KxChar character) {
    char markup[16];
    if (character == KX_CARRIAGE_RETURN) {
        put_markup(out, "<soft/>");
    } else if (character == '<') {
        put_markup(out, "&lt;");
    } else if (character == '&') {
        put_markup(out, "&amp;");
    } else if (character < 0x20 || character == 0x7F) {
        /* Not the line ends and tabs of the stream, which have codes. */
        sprintf(markup, "<kx %04X/>", (unsigned)character);
        put_markup(out, markup);
    } else {
        put(out, character);
    }
}

static void put_attribute(Output *out, unsigned number, int on) {
    char markup[16];
    if (number == 12 || number == 14) {
        sprintf(markup, "<%s%c>", on ? "" : "/", number == 12 ? 'b' : 'u');
    } else {
        sprintf(markup, "<%sa%u>", on ? "" : "/", number);
    }
    put_markup(out, markup);
}

/* The first messages of each run; a file that is no stream at all would have millions. */
static void tell(unsigned long place, unsigned code, const char *what, unsigned long *told) {
    if ((*told)++ < kMessages) fprintf(stderr, "byte %lu: the code %02X %s\n", place, code, what);
}

int main(int argc, char **argv) {
    static const char *const faults[] = {"", "is cut off", "has no room for its ends", "is not closed",
                                         "has another size at its end"};
    static unsigned char stream[4 * kLongestCode]; /* as much as is looked at together */
    static Output out;
    const KxTextForm utf8 = {KX_TEXT_UTF8, 0, NULL};
    KxTextForm kx = {KX_TEXT_KX, 1252, NULL};
    size_t at = 0, end = 0;
    unsigned long before = 0; /* bytes of the file before those in `stream` */
    unsigned long damaged = 0, unknown_codes = 0;
    int at_end = 0, terminated = 0, status;
    FILE *in = argc == 3 || argc == 4 ? fopen(argv[1], "rb") : NULL;
    if (argc == 4) kx.code_page = (uint32_t)strtoul(argv[3], NULL, 10);
    if (in == NULL || !KxTextPrepare(&out.converter, &kx, &utf8, 0) || (out.file = fopen(argv[2], "wb")) == NULL) {
        fputs("import_filter STREAM TEXT [PAGE]: a file cannot be opened, or a page is unknown\n", stderr);
        return 2;
    }

    while (!terminated) {
        KxStreamCode code;
        if (!at_end && end - at < kLongestCode) {
            size_t count;
            memmove(stream, stream + at, end - at);
            before += (unsigned long)at;
            end -= at;
            at = 0;
            count = fread(stream + end, 1, sizeof stream - end, in);
            at_end = count < sizeof stream - end;
            end += count;
        }
        if (!KxStreamNext(stream + at, end - at, &code)) break;
        if (code.fault != KX_STREAM_SOUND) {
            tell(before + (unsigned long)at, stream[at], faults[code.fault], &damaged);
        } else if (code.kind == KX_STREAM_TEXT) {
            put_character(&out, code.character);
        } else if (code.kind == KX_STREAM_ATTRIBUTE) {
            put_attribute(&out, stream[at + 1], stream[at] == 0xF2);
        } else if (code.kind == KX_STREAM_END) {
            terminated = 1;
        } else {
            tell(before + (unsigned long)at, stream[at], "is none that this filter knows", &unknown_codes);
        }
        at += code.size;
    }
    flush(&out);

    status = damaged != 0 || unknown_codes != 0;
    if (damaged != 0) fprintf(stderr, "damaged bytes that were left out: %lu\n", damaged);
    if (unknown_codes != 0) fprintf(stderr, "codes that were left out: %lu\n", unknown_codes);
    if (out.unknown_characters != 0)
        fprintf(stderr, "characters without a Unicode value, in markup: %lu\n", out.unknown_characters);
    if (terminated && (at != end || fgetc(in) != EOF)) {
        fprintf(stderr, "byte %lu: the stream ends, and what follows was left out\n", before + (unsigned long)at - 1);
        status = 1;
    }
    if (ferror(in) || ferror(out.file) | fclose(out.file)) {
        fputs("a file could not be read or written\n", stderr);
        status = 2;
    }
    fclose(in);
    return status;
}
