/**
 * String operations on KX characters, KX strings and document streams: case and classes, East Asian forms, traversal,
 * search and repair, comparison, and the language set-up of the collation table.
 *
 * A KX string is an array of 16-bit KX characters that ends with a 0 unit. Its units from KX_FIRST_CODE (0xF900) up are
 * codes, not characters. A document stream is a byte string that ends with a 0 byte standing where a code begins (see
 * kxstr/forms.h). A character argument travels in 32 bits, of which the low 16 count.
 */
#ifndef KXSTR_STROPS_H
#define KXSTR_STROPS_H

#include <kxstr/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- case and classes ----------------------------------------------------------------------------------------- */

/**
 * The case ranges of the sets 1 to 15: for set s the first and the last index with case, at bytes 2 * (s - 1) and
 * 2 * (s - 1) + 1. Inside a range every even index is a capital letter and the odd index above it its small letter.
 * A last index of 0: the set has no case. Constant.
 */
KXSTR_API extern const uint8_t rngchr[30];

/**
 * @param ch  KX character.
 * @return    Its small letter, or the character itself. In set 0 only A to Z change; the sets 1 to 15 go by rngchr;
 * from set 16 on the form table of the country decides (WtpiGetCountryID: 1 to 4; another country has none, and nothing
 * changes). Codes of KX strings and 0xFFFF come back unchanged.
 *
 * A letter whose other case has no form of the same width comes back unchanged.
 * Threads: re-entrant, once the country is decided.
 * Example: 0x0041 -> 0x0061.  0x0140 -> 0x0141.  0x2520 -> 0x2540 on a Japanese system.
 */
KXSTR_API uint16_t wtolower(uint32_t ch);

/** The capital letter; otherwise as wtolower. */
KXSTR_API uint16_t wtoupper(uint32_t ch);

/* ---- East Asian forms ----------------------------------------------------------------------------------------- */
/*
 * Letters, digits, punctuation and kana exist in a single-width form (sets 0 to 11) and a double-width form (sets from
 * 36 up). Which belong together is told by the form table of the country (WtpiGetCountryID: 1 Japanese, 2 Korean,
 * 3 Traditional Chinese, 4 Simplified Chinese). In every other country there is no table and characters stay as they
 * are. The functions take and give any 16-bit value and have no failure; a character without the form asked for comes
 * back unchanged. Character 0 is looked up like any other: some modes find a kana without a half-width form (wtoall
 * with KX_FORM_DOUBLE gives 0x255E on a Japanese system), so do not hand them a string's terminator.
 * Threads: re-entrant, once the country is decided.
 */

#define KX_FORM_LOWER 1       /**< small letter of the same width */
#define KX_FORM_UPPER 2       /**< capital letter of the same width */
#define KX_FORM_DOUBLE 3      /**< double width, same case and kana */
#define KX_FORM_SINGLE 4      /**< single width, same case and kana */
#define KX_FORM_FIRST_KANA 5  /**< hiragana in country 1, katakana in countries 3 and 4 */
#define KX_FORM_SECOND_KANA 6 /**< katakana in country 1, hiragana in countries 3 and 4 */

/**
 * @param mode  One of KX_FORM_; any other value gives the character back.
 * @param ch    KX character of any set, 0 included.
 * @return      The form that the mode asks for. KX_FORM_SINGLE gives a katakana with a sound mark as a combined code:
 *              the half-width katakana with 0x40 (voicing mark) or 0x80 (half-voicing mark) added to its index; such
 *              codes are no valid characters, and KX_FORM_DOUBLE takes them back.
 *
 * Example (country 1): 3, 0x0041 -> 0x2520.  5, 0x2600 -> 0x255E.  4, 0x260D -> 0x0B56.
 */
KXSTR_API uint16_t wtoall(uint16_t mode, uint32_t ch);

/**
 * The double-width form of a character and, for a half-width katakana (set 11), of the sound mark behind it.
 *
 * @param ch    KX character.
 * @param next  The character that follows it in the text, or null. Where it is a sound mark (0x0B3D, 0x0B3E) and both
 *              together are one double-width character, 0 is stored there: the mark is used up. Otherwise untouched.
 * @return      The double-width form.
 *
 * Example (country 1): 0x0B16 before 0x0B3D -> 0x260D, mark 0.  0x0B06 before 0x0B3D -> 0x2600, mark stays.
 */
KXSTR_API uint16_t wtodouble(uint32_t ch, KxChar *next);

/**
 * The single-width form of a character; the sound mark of a katakana comes apart from it.
 *
 * @param ch    KX character.
 * @param mark  Receives the sound mark that belongs behind the result, or 0. Null: the result may be a combined code
 *              (see wtoall).
 * @return      The single-width form.
 *
 * A set-11 result loses the bits 0x40 and 0x80 of its index in every country, so 0x0B40 gives 0x0B00 and mark 0x0B3D.
 * Example (country 1): 0x260D -> 0x0B16, mark 0x0B3D.  0x2520 -> 0x0041, mark 0.
 */
KXSTR_API uint16_t wtosingle(uint32_t ch, KxChar *mark);

/**
 * @return  A kana as KX_FORM_FIRST_KANA gives it: hiragana in country 1, but katakana in countries 3 and 4, whose
 * tables hold the two in the other order. Characters of set 11, punctuation included, are widened first; so in country
 * 2, which has no kana couples, they come back in double width.
 *
 * Example (country 1): 0x0B06 -> 0x255E.  0x2600 -> 0x255E.  0x0B00 -> 0x2402.
 */
KXSTR_API uint16_t wtohiragana(uint32_t ch);

/**
 * @return  A kana as KX_FORM_SECOND_KANA gives it: katakana in country 1, hiragana in countries 3 and 4. Half-width
 *          katakana stay as they are.
 *
 * Example (country 1): 0x255E -> 0x2600.  0x0B06 -> 0x0B06.
 */
KXSTR_API uint16_t wtokatakana(uint32_t ch);

/**
 * @return  1 where the character is a capital letter, else 0. A double-width character is one where its single-width
 * form (KX_FORM_SINGLE) is one.
 *
 * Example: 0x0140 -> 1.  0x2520 -> 1 and 0x2540 -> 0 (country 1).
 */
KXSTR_API uint32_t wisupper(uint32_t ch);

#ifdef __cplusplus
}
#endif
#endif
