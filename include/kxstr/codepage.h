/**
 * Native code pages: single characters between native codes and KX characters, code page descriptors and tables, and
 * the country of the system.
 *
 * A native code is a byte as 0x00..0xFF, or a double-byte character with its lead byte in bits 15..8 (0x82A0).
 * A KX code page number equals the Windows number except for the ISO 8859 pages (18851 is 28591, ISO 8859-1).
 */
#ifndef KXSTR_CODEPAGE_H
#define KXSTR_CODEPAGE_H

#include <kxstr/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Converts one native code to a KX character.
 *
 * @param page  Descriptor with an input code page; not null; only read.
 * @param code  Native code; low 16 bits used.
 * @return      The KX character, or KX_NONE when the code has none. There is no other failure.
 *
 * Bytes below 32 go through the low table where the code page has one (the glyphs that DOS shows for them), else tab,
 * line feed, form feed and carriage return give their KX codes. Bytes that the code page leaves undefined give
 * 0x0C00 + byte. Double-byte codes convert only on a double-byte system, which is asked about at every call: a
 * descriptor of page 932 on another system converts bytes only, whatever its page.
 * Threads: re-entrant; threads may share a descriptor as long as none rewrites it.
 * Example: 1252, 0xE9 -> 0x0129.  1252, 0x7F -> KX_NONE.  932, 0x82A0 -> 0x255F on a double-byte system (on any other,
 * which is the default outside Windows, KX_NONE).
 */
KXSTR_API uint16_t WcvtNtvToKx(const KxCodePage *page, uint32_t code);

/**
 * Converts one KX character to a native code.
 *
 * @param page  Descriptor with an output code page; not null; only read.
 * @param ch    KX character; low 16 bits used.
 * @return      The native code, or KX_NONE when the character has none. There is no other failure.
 *
 * Whatever the code page, 0x0080 gives a space, the rest of set 0 comes back unchanged (0x81..0xFF too), and set 12
 * gives its index. KX_TAB and the line end codes give 9, 10, 12 and 13. On a double-byte system, which is asked about
 * at every call, double-byte characters give double-byte codes, and in 932 the yen sign, in 934 and 949 the won sign
 * give the backslash. Characters of the double-byte sets that no native code leads to convert by the same rule, and
 * may give a code that the code page does not have.
 * Threads: as WcvtNtvToKx.
 * Example: 1252, 0x0129 -> 0xE9.  1252, 0x2400 -> KX_NONE.  932, 0x255F -> 0x82A0 on a double-byte system (on any other
 * KX_NONE).
 */
KXSTR_API uint16_t WcvtKxToNtv(const KxCodePage *page, uint32_t ch);

#define KX_FROM_KX 1    /**< direction flag: the descriptor's output code page */
#define KX_TOWARDS_KX 2 /**< direction flag: the descriptor's input code page */
#define KX_BOTH_DIRECTIONS 3
#define KX_WINDOWS_CODE_PAGE 0xFFFFFFFFu /**< stands for the Windows code page in force */

/**
 * Sets the code page of one or both directions of a descriptor.
 *
 * @param code_page   KX code page number, or KX_WINDOWS_CODE_PAGE. One without tables (a double-byte page other than
 *                    932, or an unknown number) gives null tables.
 * @param directions  KX_FROM_KX, KX_TOWARDS_KX or both; other bits are ignored.
 * @param page        Not null; cleared (all zero) before its first use. A direction that already has the code page is
 *                    left untouched, tables included.
 *
 * Threads: re-entrant for distinct descriptors.
 */
KXSTR_API void WcvtSetCodepage(uint32_t code_page, uint8_t directions, KxCodePage *page);

/** Sets all fields of a descriptor (not null) to 0. Threads: re-entrant for distinct descriptors. */
KXSTR_API void WcvtClrCodepage(KxCodePage *page);

/**
 * @param code_page  KX code page number.
 * @param which      0 the low range table, 1 the high range table, 2 the reverse table.
 * @return           The table (layouts: see KxCodePage), or null when the code page has none or `which` is another.
 *
 * Threads: re-entrant; the tables are constant.
 */
KXSTR_API const uint8_t *WcvtFindCPTable(uint32_t code_page, uint32_t which);

/** @return The Windows number of a KX code page number; a number that the table lacks comes back. Re-entrant. */
KXSTR_API uint32_t WcvtKXCodepageToWinCodepage(uint32_t kx_number);

/** @return The KX number of a Windows code page number; a number that the table lacks comes back. Re-entrant. */
KXSTR_API uint32_t WcvtWinCodepageToKXCodepage(uint32_t windows_number);

/**
 * @return  The country of the system: 0 none of these, 1 Japanese, 2 Korean, 3 Traditional Chinese, 4 Simplified
 *          Chinese, 5 Arabic, 6 Hebrew. The system's language decides it, not the ANSI code page; on a double-byte
 *          system in another language the keyboard tells the two Chinese scripts.
 *
 * Worked out at the first call of any function that needs it, and kept for the life of the process.
 * Threads: several may make the first call at once.
 */
KXSTR_API uint8_t WtpiGetCountryID(void);

/**
 * @return  The full path of the registry key that holds the code pages of the current language:
 *          "HKEY_CURRENT_USER\Software\Norvane\Conversions\21\CodePageData\EN" for the language EN.
 *          Zero-terminated, in the library's own buffer; do not write.
 *
 * The path is worked out at every call, in the same buffer: it follows the language.
 * Threads: several may ask at once; the buffer changes at the first call after a change of the language.
 */
KXSTR_API const char *WcvtGetRegistryLoc(void);

/**
 * The DOS (OEM) code page in force: the number stored for the current language, else the one usual in the country of
 * the system, else the OEM code page of the system.
 *
 * @return  KX code page number, looked up afresh at every call.
 *
 * A stored number is the registry value "DOS Code Page" under WcvtGetRegistryLoc(): at most two bytes of data,
 * little-endian, of any type (the text "8" is the number 0x0038). A link (type 0x80000008) is followed, and the first
 * two bytes of what it leads to count. Anything else, and the number 0, counts as not stored; so do settings that
 * cannot be read. Asking creates the registry key when it is missing and can be created. It never waits: while another
 * process is writing the settings, what was there before counts, and the key stays missing.
 * Threads: several may ask at once, the first time, too.
 */
KXSTR_API uint16_t WcvtGetDOSCodepage(void);

/**
 * The Windows (ANSI) code page in force, found as the DOS one is, under the name "Windows Code Page".
 *
 * @return  KX code page number. It is decided at the first call of any function that needs it and then kept: a later
 *          change of the language or of the registry changes nothing, only WcvtSetWinCodepage does.
 *
 * Threads: several may make the first call at once; they all get the one that was decided first.
 */
KXSTR_API uint16_t WcvtGetWinCodepage(void);

/**
 * Stores the Windows code page for the current language, as a value of type 0x80000002, and puts it in force.
 *
 * @param code_page  KX code page number; low 16 bits stored. 0 is stored too; it counts as nothing stored, so the next
 *                   WcvtGetWinCodepage decides anew.
 * @return           1 stored. 0 not stored: settings that cannot be opened or written, or a value whose type has bit
 *                   0x40000000, which protects it; then the code page in force stays.
 *
 * Where the value is a link, the value that it names is written instead, and the result is that of this write. A link
 * with a root, `<\HKEY_CURRENT_USER\Software\Key\Page>`, is written where it is read. One without, `<Key\Page>`, is
 * written below HKEY_CURRENT_USER but read below `HKEY_CURRENT_USER\Software`, so that the next process does not find
 * the number. The library's own descriptors, once filled, keep their code page. A link that resolves more than 4,096
 * references, directly or through other links, or nests more than 256 deep, is not followed: the result is 0.
 *
 * Outside Windows this call may wait, while another process is writing the settings: half a minute at most for a key
 * that is missing and as long for the value; then it gives 0. No other function of the library waits. Threads:
 * serialise with every use of the library.
 */
KXSTR_API uint32_t WcvtSetWinCodepage(uint32_t code_page);

/**
 * @return  The library's own descriptor for the Windows code page (both directions), filled at the first call of any
 *          function that needs it. The address is the same for the life of the process; do not write.
 *
 * Threads: several may make the first call at once; nobody sees a descriptor before it is filled.
 */
KXSTR_API const KxCodePage *WtpiGetAnsiCodepageTbl(void);

/**
 * As WtpiGetAnsiCodepageTbl, for the DOS code page. On a double-byte system it is the Windows code page: such a system
 * has one code page for both.
 */
KXSTR_API const KxCodePage *WtpiGetOemCodepageTbl(void);

/**
 * The code page and font character set of the keyboard layout's language.
 *
 * @param code_page      Receives the ANSI code page (the system's when the language is unknown); may be null.
 * @param character_set  Receives the character set, 1 (default) when the code page has none; may be null.
 *
 * Threads: re-entrant.
 */
KXSTR_API void WshGetInfoFromKeyboard(uint16_t *code_page, uint8_t *character_set);

#ifdef __cplusplus
}
#endif
#endif
