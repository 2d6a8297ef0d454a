/**
 * Letters: the case and the classes of KX characters and of whole texts, East Asian widths and the two kana, and
 * Traditional and Simplified Chinese.
 *
 * A KX string is an array of 16-bit KX characters that ends with a 0 unit. Its units from KX_FIRST_CODE (0xF900) up are
 * codes, not characters. A document stream is a byte string that ends with a 0 byte standing where a code begins (see
 * kxstr/forms.h). A character argument travels in 32 bits, of which the low 16 count.
 */
#ifndef KXSTR_LETTERS_H
#define KXSTR_LETTERS_H

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
 *            from set 16 on the form table of the country decides (WtpiGetCountryID: 1 to 4; another country has none,
 *            and nothing changes). Codes of KX strings and 0xFFFF come back unchanged.
 *
 * A letter whose other case has no form of the same width comes back unchanged.
 * Threads: re-entrant, the first use of the country included.
 * Example: 0x0041 -> 0x0061.  0x0140 -> 0x0141.  0x2520 -> 0x2540 on a Japanese system.
 */
KXSTR_API uint16_t wtolower(uint32_t ch);

/** The capital letter; otherwise as wtolower. */
KXSTR_API uint16_t wtoupper(uint32_t ch);

/** The same as wtolower. */
KXSTR_API uint16_t W6wstrLowerCh(uint32_t ch);

/** The same as wtoupper. */
KXSTR_API uint16_t W6wstrUpperCh(uint32_t ch);

/**
 * @param string  KX string, changed in place; not null. Every character gives way to its wtolower form; codes stay.
 * @return        `string`.
 *
 * Threads: re-entrant over the caller's memory, the first use of the country included; so are the other functions of
 * this section.
 */
KXSTR_API KxChar *W6wstrlwr(KxChar *string);

/** The same with wtoupper. */
KXSTR_API KxChar *W6wstrupr(KxChar *string);

/**
 * @param stream  Document stream, changed in place; not null. ASCII letters and extended characters (the 16-bit
 *                value behind 0xF0) give way to their wtolower forms; the bytes of all other codes stay. Streams are
 *                trusted as in kxstr/forms.h.
 * @return        `stream`.
 */
KXSTR_API uint8_t *W6dstrlwr(uint8_t *stream);

/** The same with wtoupper. */
KXSTR_API uint8_t *W6dstrupr(uint8_t *stream);

/**
 * @param position  One character in a document stream, changed in place: the 3 bytes 0xF0, index, set, or one byte.
 *                  Any other code byte stays. Not null.
 * @return          `position`.
 */
KXSTR_API uint8_t *W6dstrLowerCh(uint8_t *position);

/** The same with wtoupper. */
KXSTR_API uint8_t *W6dstrUpperCh(uint8_t *position);

/**
 * @param position  As W6dstrLowerCh; only read.
 * @return          The wtolower form of the character there.
 */
KXSTR_API uint16_t W6dstrLowerCh2(const uint8_t *position);

/**
 * Copies a byte string with extended characters and makes all letters capital. Unlike W6dstrupr it knows no other
 * codes: a byte 0x61 inside of one changes too.
 *
 * @param destination  Room for as many bytes as the source takes, terminator included. May be the source itself; must
 *                     not overlap it otherwise. Not null.
 * @param source       Ends with the first 0 byte outside of an extended character's index and set; its closing byte is
 *                     not checked, and a 0 there ends the string. Not null.
 */
KXSTR_API void s2upper(uint8_t *destination, const uint8_t *source);

/**
 * Copies a KX string and makes all letters capital; codes are copied.
 *
 * @param destination  Room for as many units as the source takes, terminator included. May be the source itself; must
 *                     not overlap it otherwise.
 * @param source       Where either is null, nothing happens.
 */
KXSTR_API void ws2upper(KxChar *destination, const KxChar *source);

/**
 * As ws2upper, with bounds.
 *
 * @param size  Room at `destination` in bytes, 2 to a unit; an odd last byte stays as it is. 0 or less: nothing is
 *              written. When the room ends first, no terminator is written. The pointers are not null.
 */
KXSTR_API void ws2uppern(KxChar *destination, const KxChar *source, int32_t size);

/** @return 1 for letters of the alphabetic scripts and half-width katakana, else 0. */
KXSTR_API int32_t W6wstrIsAlpha(uint32_t ch);

/** @return 1 for 0x0030 to 0x0039, else 0: digits of other sets do not count. */
KXSTR_API int32_t W6wstrIsDigit(uint32_t ch);

/** @return 1 where W6wstrIsDigit or W6wstrIsAlpha gives 1, else 0. */
KXSTR_API int32_t W6wstrIsAlphaNum(uint32_t ch);

/** @return 1 for 0x0020 and for the tab, line end and space codes of KX strings, else 0. ASCII's tab does not count. */
KXSTR_API int32_t W6wstrIsSpace(uint32_t ch);

/** A closed range of indices in one set. */
typedef struct KxIndexRange {
    uint16_t set;
    uint8_t first;
    uint8_t last;
} KxIndexRange;

#define KX_RANGES_END 0xFFFF /**< set number of the entry that ends a table of ranges */

/**
 * @param ch     KX character or code.
 * @param table  Entries in ascending order of the set number (several for one set in any order), ended by one with the
 *               set number KX_RANGES_END; not null. The search ends at the first set number above that of the
 *               character.
 * @return       1 where an entry holds the character, else 0.
 */
KXSTR_API int32_t lW6wstrFoundInTable(uint32_t ch, const KxIndexRange *table);

/* ---- East Asian forms ----------------------------------------------------------------------------------------- */
/*
 * Letters, digits, punctuation and kana exist in a single-width form (sets 0 to 11) and a double-width form (sets from
 * 36 up). Which belong together is told by the form table of the country (WtpiGetCountryID: 1 Japanese, 2 Korean,
 * 3 Traditional Chinese, 4 Simplified Chinese). In every other country there is no table and characters stay as they
 * are. The functions take and give any 16-bit value and have no failure; a character without the form asked for comes
 * back unchanged. Character 0 is looked up like any other: some modes find a kana without a half-width form (wtoall
 * with KX_FORM_DOUBLE gives 0x255E on a Japanese system), so do not hand them a string's terminator.
 * Threads: re-entrant, the first use of the country included.
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
 *          tables hold the two in the other order. Characters of set 11, punctuation included, are widened first; so in
 *          country 2, which has no kana couples, they come back in double width.
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
 *          form (KX_FORM_SINGLE) is one.
 *
 * Example: 0x0140 -> 1.  0x2520 -> 1 and 0x2540 -> 0 (country 1).
 */
KXSTR_API uint32_t wisupper(uint32_t ch);

/* ---- Chinese -------------------------------------------------------------------------------------------------- */

/**
 * @param ch  KX character of the Big5 sets (0xA500 to 0xDBA8); low 16 bits used.
 * @return    The corresponding character of the GB sets (0x8200 to 0xA210). Any other character, and one without a
 *            counterpart, comes back unchanged.
 *
 * Hanzi lead to their simplified form, so several Big5 characters may lead to one GB character. The country plays no
 * part. An index of 0xFF, which no character has, counts as index 0 of the next set.
 * Threads: re-entrant.
 * Example: 0xA501 -> 0x82C7.
 */
KXSTR_API uint16_t big5togb(uint32_t ch);

/**
 * @param ch  KX character of the GB sets (0x8200 to 0xA210); low 16 bits used.
 * @return    The corresponding character of the Big5 sets (0xA500 to 0xDBA4); otherwise as big5togb. Of several
 *            traditional forms it gives one, whatever the word.
 *
 * Not the exact inverse of big5togb: 6749 of 6906 characters come back.
 */
KXSTR_API uint16_t gbtobig5(uint32_t ch);

#ifdef __cplusplus
}
#endif
#endif
