/**
 * Types and constants shared by all headers of kxstr. Usable from C99 and C++.
 *
 * Example, the KX character of set 1 with index 0x29 (e with acute):
 *
 *     const KxChar ch = 1 << 8 | 0x29;
 *     if (ch != KX_NONE) printf("set %u, index %02X\n", ch >> 8, ch & 0xFF); // set 1, index 29
 */
#ifndef KXSTR_TYPES_H
#define KXSTR_TYPES_H

#include <stddef.h>
#include <stdint.h>

/* KXSTR_API can be predefined. KXSTR_STATIC: the host links the static library. */
#ifndef KXSTR_API
#    if defined(_WIN32) && !defined(KXSTR_BUILDING) && !defined(KXSTR_STATIC)
#        define KXSTR_API __declspec(dllimport)
#    elif defined(__GNUC__) && !defined(_WIN32)
#        define KXSTR_API __attribute__((visibility("default")))
#    else
#        define KXSTR_API
#    endif
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** KX character: set number in bits 15..8, index within the set in bits 7..0. */
typedef uint16_t KxChar;

/** Results of conversions that have none, in KX, native and Unicode results alike. */
#define KX_NONE ((uint16_t)0xFFFF)

/** Codes that stand in KX strings beside characters; every unit from KX_FIRST_CODE upward is a code. */
#define KX_FIRST_CODE ((KxChar)0xF900)
#define KX_TAB ((KxChar)0xF909)
#define KX_LINE_FEED ((KxChar)0xF90A)
#define KX_FORM_FEED ((KxChar)0xF90C)
#define KX_CARRIAGE_RETURN ((KxChar)0xF90D)

/**
 * Code page descriptor: what WcvtNtvToKx and WcvtKxToNtv convert with. The caller owns it and sets it to zero (or
 * calls WcvtClrCodepage) before WcvtSetCodepage fills it; the tables that it points to are the library's, constant,
 * and never freed. A caller may also point it at tables of its own.
 *
 * Range table: first byte, last byte, then one 16-bit little-endian KX character for each native byte first..last.
 * Reverse table: 16-bit little-endian entry count, then entries of 3 bytes (KX character little-endian, native byte)
 * in ascending order of the KX character.
 *
 * In a 32-bit process the structure has 20 bytes; in a 64-bit process only the addresses are wider.
 */
typedef struct KxCodePage {
    uint32_t input_code_page;     /**< KX code page number read by WcvtNtvToKx; 0 unset */
    uint32_t output_code_page;    /**< KX code page number written by WcvtKxToNtv; 0 unset */
    const uint8_t *low_table;     /**< range table for native codes below 32, or null */
    const uint8_t *high_table;    /**< range table for native codes above 126, or null */
    const uint8_t *reverse_table; /**< reverse table of the output code page, or null */
} KxCodePage;

#ifdef __cplusplus
}
#endif
#endif
