/* Prints what the real MultiByteToWideChar, WideCharToMultiByte, IsDBCSLeadByteEx, GetLocaleInfo and
 * TranslateCharsetInfo answer. dump_portable.cpp prints the same of the portable platform layer, so that a plain diff
 * shows where the two part; compare_conversions.py does it. The arguments are the numbers of code pages.
 *
 * Lines, with all numbers but code pages in hexadecimal:
 *     lead PAGE BYTE                 BYTE is a lead byte
 *     wide PAGE BYTES UNIT           BYTES (1 or 2) convert to UNIT, with room for one unit
 *     native PAGE UNIT BYTES         UNIT converts to BYTES, without best fit and default character
 *     charset PAGE CHARSET           the font character set of a code page
 *     language IDENTIFIER ANSI       the default ANSI code page of a language, 0 for Unicode only
 * What converts to nothing has no line. */
#define WINVER 0x0600
#define _WIN32_WINNT 0x0600
#include <stdio.h>
#include <stdlib.h>
#include <windows.h>

static void dump_wide(UINT page, const unsigned char *bytes, int count) {
    WCHAR unit;
    if (MultiByteToWideChar(page, 0, (const char *)bytes, count, &unit, 1) != 1) return;
    printf("wide %u %02X", page, bytes[0]);
    if (count == 2) printf("%02X", bytes[1]);
    printf(" %04X\n", unit);
}

static void dump_native(UINT page, WCHAR unit) {
    char bytes[2];
    BOOL defaulted = FALSE;
    const int count = WideCharToMultiByte(page, WC_NO_BEST_FIT_CHARS, &unit, 1, bytes, sizeof bytes, NULL, &defaulted);
    if (count == 0 || defaulted) return;
    printf("native %u %04X %02X", page, unit, (unsigned char)bytes[0]);
    if (count == 2) printf("%02X", (unsigned char)bytes[1]);
    printf("\n");
}

static void dump_page(UINT page) {
    if (!IsValidCodePage(page)) {
        fprintf(stderr, "code page %u is unknown\n", page);
        return;
    }
    for (unsigned first = 0; first < 0x100; ++first) {
        unsigned char bytes[2] = {(unsigned char)first, 0};
        if (IsDBCSLeadByteEx(page, bytes[0])) printf("lead %u %02X\n", page, first);
        dump_wide(page, bytes, 1);
        for (unsigned second = 0; second < 0x100; ++second) {
            bytes[1] = (unsigned char)second;
            dump_wide(page, bytes, 2);
        }
    }
    for (unsigned unit = 0; unit < 0x10000; ++unit)
        dump_native(page, (WCHAR)unit);
}

static void dump_character_set(UINT page) {
    CHARSETINFO info;
    if (TranslateCharsetInfo((DWORD *)(ULONG_PTR)page, &info, TCI_SRCCODEPAGE))
        printf("charset %u %02X\n", page, info.ciCharset);
}

static void dump_language(LCID language) {
    char digits[6];
    if (GetLocaleInfoA(language, LOCALE_IDEFAULTANSICODEPAGE, digits, sizeof digits))
        printf("language %04X %s\n", (unsigned)language, digits);
}

int main(int argc, char **argv) {
    for (int i = 1; i < argc; ++i)
        dump_page((UINT)strtoul(argv[i], NULL, 10));
    for (UINT page = 0; page < 0x10000; ++page)
        dump_character_set(page);
    for (LCID language = 0; language < 0x10000; ++language)
        dump_language(language);
    return 0;
}
