/*
 * export_filter TEXT STREAM [PAGE]: text in UTF-8 with the markup that import_filter writes to a document stream.
 *
 * A line feed, also with a carriage return before it, is a hard line end; a carriage return alone is a soft one, as
 * <soft/> is. PAGE is the code page of the document: which East Asian characters it can hold. A character that KX text
 * lacks becomes a question mark, a < or & that begins no markup stands for itself; both are told. Memory does not grow
 * with files.
 * Status: 0 all of the text is in the stream, 1 not all, 2 a file or the command line is at fault.
 */
#include <ctype.h>
#include <kxstr/text.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum { kPiece = 1 << 16, kUnits = 4096, kLongestMarkup = 12, kMessages = 20 };

typedef struct Output {
    FILE *file;
    KxTextConverter converter;
    int carriage_return; /* one that waits for what follows */
    unsigned long line;
    unsigned long replaced, no_markup;
} Output;

static void put_character(Output *out, KxChar character) {
    if (character == KX_CARRIAGE_RETURN && !out->carriage_return) {
        out->carriage_return = 1;
        return;
    }
    if (out->carriage_return && character != KX_LINE_FEED) fputc(0xCF, out->file); /* it was a soft line end */
    out->carriage_return = character == KX_CARRIAGE_RETURN;
    if (out->carriage_return) return;
    if (character == KX_LINE_FEED) {
        fputc(0xCC, out->file);
        ++out->line;
    } else if (character < 0x80) {
        fputc(character, out->file);
    } else {
        const unsigned char code[4] = {0xF0, (unsigned char)character, (unsigned char)(character >> 8), 0xF0};
        fwrite(code, 1, sizeof code, out->file);
    }
}

/* A carriage return that waited is a soft line end: what follows is no line feed. */
static void end_line(Output *out) {
    if (out->carriage_return) fputc(0xCF, out->file);
    out->carriage_return = 0;
}

static void put_byte_code(Output *out, unsigned code) {
    end_line(out);
    fputc((int)code, out->file);
}

static void put_attribute(Output *out, unsigned number, int on) {
    const unsigned char mark = on ? 0xF2 : 0xF3;
    const unsigned char code[3] = {mark, (unsigned char)number, mark};
    end_line(out);
    fwrite(code, 1, sizeof code, out->file);
}

static void lacks(Output *out, const unsigned char *character, size_t size, int malformed) {
    if (out->replaced++ < kMessages) {
        size_t i;
        fprintf(stderr, "line %lu: %s", out->line, malformed ? "this is no UTF-8:" : "KX text has no");
        for (i = 0; i < size; ++i)
            fprintf(stderr, " %02X", character[i]);
        if (!malformed) fprintf(stderr, " (%.*s)", (int)size, (const char *)character);
        fputc('\n', stderr);
    }
    put_character(out, '?');
}

/* Text without markup. Returns how much of it was done: a character that is not all there waits, unless it is last. */
static size_t put_text(Output *out, const unsigned char *text, size_t length, int last) {
    size_t at = 0;
    for (;;) {
        KxChar units[kUnits];
        KxTextResult done;
        const uint32_t reason =
            KxTextConvert(&out->converter, text + at, length - at, (uint32_t)last, units, sizeof units, &done);
        size_t i;
        for (i = 0; i < done.written / sizeof(KxChar); ++i) {
            /* A stream has no place for it: it would end there. */
            if (units[i] == 0) {
                lacks(out, (const unsigned char *)"", 1, 0);
            } else {
                put_character(out, units[i]);
            }
        }
        at += done.read;
        if (reason == KX_TEXT_DONE || reason == KX_TEXT_INCOMPLETE) return at;
        if (reason == KX_TEXT_FULL) continue;
        lacks(out, text + at, done.fault, reason == KX_TEXT_MALFORMED);
        at += done.fault;
    }
}

/* The number at the start of `text`: how many digits it has, at most `most`. */
static size_t read_number(const char *text, int base, size_t most, unsigned *number) {
    static const char digits[] = "0123456789ABCDEF";
    size_t size = 0;
    *number = 0;
    for (; size < most && text[size] != 0; ++size) {
        const char *digit = strchr(digits, toupper((unsigned char)text[size]));
        if (digit == NULL || digit - digits >= base) break;
        *number = *number * (unsigned)base + (unsigned)(digit - digits);
    }
    return size;
}

/* What stands at the start of `text` if it is markup: its size, and 0 if it is none. `text` ends with a 0. */
static size_t put_if_markup(Output *out, const char *text) {
    unsigned number = 0;
    size_t size = 0;
    const int on = text[1] != '/';
    if (strncmp(text, "&lt;", 4) == 0 || strncmp(text, "&amp;", 5) == 0) {
        put_character(out, text[1] == 'l' ? '<' : '&');
        return text[1] == 'l' ? 4 : 5;
    }
    if (strncmp(text, "<soft/>", 7) == 0) {
        put_byte_code(out, 0xCF);
        return 7;
    }
    if (strncmp(text, "<kx ", 4) == 0 && read_number(text + 4, 16, 4, &number) == 4 &&
        strncmp(text + 8, "/>", 2) == 0 && number != 0) {
        end_line(out);
        put_character(out, (KxChar)number);
        return 10;
    }
    text += on ? 1 : 2;
    if (strncmp(text, "b>", 2) == 0 || strncmp(text, "u>", 2) == 0) {
        number = *text == 'b' ? 12 : 14;
        size = 2;
    } else if (text[0] != 'a' || (size = read_number(text + 1, 10, 3, &number)) == 0 || text[size + 1] != '>' ||
               number > 0xFF) {
        return 0;
    } else {
        size += 2;
    }
    put_attribute(out, number, on);
    return size + (on ? 1 : 2);
}

static size_t plain_length(const unsigned char *text, size_t length) {
    size_t i = 0;
    while (i < length && text[i] != '<' && text[i] != '&')
        ++i;
    return i;
}

int main(int argc, char **argv) {
    static unsigned char text[kPiece];
    static Output out;
    const KxTextForm utf8 = {KX_TEXT_UTF8, 0, NULL};
    KxTextForm kx = {KX_TEXT_KX, 1252, NULL};
    size_t at = 0, end = 0;
    int begins = 1, at_end = 0, status;
    FILE *in = argc == 3 || argc == 4 ? fopen(argv[1], "rb") : NULL;
    if (argc == 4) kx.code_page = (uint32_t)strtoul(argv[3], NULL, 10);
    if (in == NULL || !KxTextPrepare(&out.converter, &utf8, &kx, 0) || (out.file = fopen(argv[2], "wb")) == NULL) {
        fputs("export_filter TEXT STREAM [PAGE]: a file cannot be opened, or a page is unknown\n", stderr);
        return 2;
    }
    out.line = 1;

    while (!at_end || at != end) {
        size_t length;
        if (!at_end) {
            size_t count;
            memmove(text, text + at, end - at);
            end -= at;
            at = 0;
            count = fread(text + end, 1, sizeof text - end, in);
            at_end = count < sizeof text - end;
            end += count;
            if (begins) at = KxTextMark(KX_TEXT_UTF8, text, end);
            begins = 0;
        }
        while (at != end) {
            length = plain_length(text + at, end - at);
            if (length != 0) {
                const int last = at_end || at + length != end;
                const size_t done = put_text(&out, text + at, length, last);
                at += done;
                if (done != length) break; /* the rest of the character comes with the next piece */
            } else if (!at_end && end - at < kLongestMarkup) {
                break;
            } else {
                char markup[kLongestMarkup + 1] = {0};
                memcpy(markup, text + at, end - at < kLongestMarkup ? end - at : kLongestMarkup);
                length = put_if_markup(&out, markup);
                if (length == 0) {
                    if (out.no_markup++ < kMessages)
                        fprintf(stderr, "line %lu: '%c' begins no markup\n", out.line, text[at]);
                    put_character(&out, text[at]);
                    length = 1;
                }
                at += length;
            }
        }
    }
    end_line(&out);

    status = out.replaced != 0;
    if (out.no_markup != 0) fprintf(stderr, "signs that begin no markup: %lu\n", out.no_markup);
    if (out.replaced != 0) fprintf(stderr, "question marks in place of characters: %lu\n", out.replaced);
    if (ferror(in) || ferror(out.file) | fclose(out.file)) {
        fputs("a file could not be read or written\n", stderr);
        status = 2;
    }
    fclose(in);
    return status;
}
