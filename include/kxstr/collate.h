/**
 * Collation: comparing and ordering KX characters and strings by language.
 *
 * Two families stand side by side. `coltbl` is one writable table of one-byte values; xchcmp reads it, and the language
 * (setsseq here, VaskSetLanguage elsewhere) rewrites 60 of its values. The functions that take a language number read
 * constant tables: they compare on three levels and know contractions, ignorable characters and East Asian text.
 *
 * Unless a comment says otherwise: a KX character, a language number or a flag in a 32-bit argument counts by its low
 * 16 bits; pointers must be valid; nothing fails; functions are re-entrant, but those that read `coltbl` (fndcolv,
 * xch2col, xchcmp) must not run while another thread changes the language or writes to it.
 */
#ifndef KXSTR_COLLATE_H
#define KXSTR_COLLATE_H

#include <kxstr/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Tables ---- */

/**
 * An entry of a collation sequence: a character set and the address of its block, or set 0xFF and a null address at the
 * end. Packed: the address follows the set number without padding, so an entry has 5 bytes in a 32-bit process and 9 in
 * a 64-bit one.
 *
 * A block is bytes: first index, count, then one value for each character of the set from the first index on. The value
 * 0xFF means none, as does a character outside every block of its set.
 */
#pragma pack(push, 1)
typedef struct KxCollationEntry {
    uint8_t set;
    uint8_t *block;
} KxCollationEntry;
#pragma pack(pop)

/**
 * The collation values of xchcmp and of the W6wstr comparisons, for sets 0, 1, 4, 5, 8 and 10. Writable. It is loaded
 * as set up for "EN"; see setsseq.
 */
extern KXSTR_API KxCollationEntry coltbl[7];

/** Ranks of the Latin diacritics by number (the mark is the character 0x0100 + number); 15: none. For callers. */
extern KXSTR_API const uint16_t diatbl[26];

/**
 * Finds the value of a character in `coltbl`.
 *
 * @param ch   KX character.
 * @param out  Receives the address of the value, inside `coltbl` (writing there changes the table); when there is none,
 *             the block of the character's set, or null when the set has no entry.
 * @return     0 found, 1 not. A found value can be 0xFF (none).
 */
KXSTR_API uint32_t fndcolv(uint32_t ch, uint8_t **out);

/** @return  The value of a character in `coltbl`, or 0xFF when it has none. */
KXSTR_API uint8_t xch2col(uint32_t ch);

/* ---- Searching small tables of the caller's ---- */

/*
 * 16-bit and 32-bit cells are in the host's byte order. Addresses in tables have the width of a pointer and follow the
 * field before them without padding; they may lie at any address. The lists must end with their end mark.
 */

/** List of bytes ended by 0xFF. @return the key if the list has it, else 0xFF (also for the key 0xFF). */
KXSTR_API uint8_t b_table(const uint8_t *table, uint8_t key);

/** List of 16-bit words ended by 0xFFFF. @return the key if the list has it, else 0xFFFF. */
KXSTR_API uint16_t w_table(const uint16_t *table, uint16_t key);

/** Pairs of bytes (key, value) ended by the key 0xFF. @return the value of the first pair with the key, else 0xFF. */
KXSTR_API uint8_t b_b_table(const uint8_t *table, uint8_t key);

/** Pairs of words (key, value) ended by the key 0xFFFF. @return the first matching value, else that of the end pair. */
KXSTR_API uint16_t uw_uw_table(const uint16_t *table, uint16_t key);

/**
 * Entries of a key byte and an address, ended by the key 0xFF.
 * @return  The address of the first entry with the key, else the address in the end entry.
 */
KXSTR_API void *ub_fp_table(const void *table, uint8_t key);

/** The same function under another name. */
KXSTR_API void *ub_vfp_table(const void *table, uint8_t key);

/** First key, last key, then one byte per key. @return the byte of the key, 0xFF outside first..last. */
KXSTR_API uint8_t ub_lukup(const uint8_t *table, uint8_t key);

/**
 * First and last key as 16-bit words of which the low bytes count, then one 16-bit word per key.
 * @return  The word of the key, 0xFFFF outside first..last.
 */
KXSTR_API uint16_t uw_lukup(const uint16_t *table, uint8_t key);

/**
 * First and last key as bytes, then (at byte 2) the address of an array with one 32-bit value per key.
 * @return  The value of the key, 0 outside first..last.
 */
KXSTR_API uint32_t ubp_lukup(const void *table, uint8_t key);

/**
 * First and last key as 16-bit words, then (at byte 4) the address of an array with one 32-bit value per key.
 * @return  The value of the key, 0xFFFFFFFF outside first..last.
 */
KXSTR_API uint32_t uw_fp_lukup(const void *table, uint16_t key);

/**
 * First key, last key, then a pair of bytes per key.
 * @return  0, with the pair in *out1 and *out2; 1 outside first..last, with the outputs untouched.
 */
KXSTR_API uint32_t ub_ub_lukup(const uint8_t *table, uint8_t key, uint8_t *out1, uint8_t *out2);

/* ---- Language numbers ---- */

/**
 * The number of a two-letter language code.
 *
 * @param code  At least two bytes, or one when that is 0; compared exactly ("us" is not "US"), the rest is not read.
 * @return      0 to 39; 0 (the number of "US", without language rules) for a code that is not known, such as "EN".
 */
KXSTR_API int32_t KxLanguage(const char *code);

/** Writes the code of a language number, zero-terminated, to 3 bytes; "US" for a number of 40 or more. */
KXSTR_API void KxNum2Lang(uint32_t number, char *out);

/* ---- Values of single characters ---- */

/**
 * The primary value of a character in a language.
 *
 * @param lang  Language number; 40 and above count as East Asian.
 * @return      0 to 0xFF. 0xFF: none, sorts last. 0xFD: ignorable at the first level (Hebrew and Arabic
 *              languages only). The tab code 0xF909 has the value 0.
 */
KXSTR_API uint32_t f_KX60ColVal(uint32_t ch, uint32_t lang);

/** @return  0 for a lowercase letter of sets 0, 1, 8 and 10, 1 for any other character. */
KXSTR_API uint8_t f_wislower(uint32_t ch);

/** @return  1 when a character is valid; unlike ValidKxCharacter, whatever the system. Index 0xFF is in set 12 only. */
KXSTR_API uint32_t KxCh6Iskxc(uint32_t ch);

/** @return  The value of a character in the default sequence, 0xFF for none. The tab code has none here. */
KXSTR_API uint8_t KxCh6Getcoll(uint32_t ch);

/**
 * Compares two characters by their values in the default sequence; two without value by their codes.
 * @return  8 when a sorts before b, 4 with it, 2 after it.
 */
KXSTR_API uint8_t KxCh6Cmpcoll(uint32_t a, uint32_t b);

/**
 * Takes a composite character of set 1, 8 or 10 apart.
 * @return  0, with both outputs written; 1 when the character is no composite, with the outputs untouched.
 */
KXSTR_API uint32_t KxCh6Brkcar(uint32_t ch, KxChar *base, KxChar *diacritic);

/**
 * Puts a composite character together.
 *
 * @param out        Receives the composite; untouched when there is none.
 * @param base       Base letter; ASCII letters have their composites in set 1.
 * @param diacritic  Index of the diacritic with its top bit cleared: 0x48..0x4E for the marks 0x0AC8..0x0ACE.
 * @return           0 written, 1 no such composite.
 *
 * Only the index of the base counts within the set of the composites. (0xFF, 0x7F) finds the first character of the set
 * that is no composite: an old habit of this lookup.
 */
KXSTR_API uint16_t KxCh6Cmbcar(KxChar *out, uint32_t base, uint8_t diacritic);

/** @return  The rank of a Latin composite's diacritic among letters with the same base; 0 for any other character. */
KXSTR_API uint32_t KxCh6Getdia(uint32_t ch);

/**
 * Compares two characters by `coltbl`, without their case first.
 *
 * @param case_flag  Not 0: characters that are otherwise equal compare by case, lowercase first.
 * @return           Negative, 0 or positive: the difference of the values; of the lowercase codes when neither
 *                   character has a value; or -1, 0, 1 by case.
 *
 * The case of double-byte letters is that of the country (wtolower).
 */
KXSTR_API int32_t xchcmp(uint32_t a, uint32_t b, uint8_t case_flag);

/**
 * Sets `coltbl` up for a language, as comparisons do for the language of VaskSetLanguage.
 *
 * @param code  Zero-terminated language code; null does nothing. Its first two letters count, in either case.
 *
 * Does nothing when the last set-up was for the same string; only the first two bytes of it are remembered. A language
 * without letters of its own gets the values of "EN", which differ from those at load for five characters: 0x014B,
 * 0x01CC, 0x01CD, 0x01D0 and 0x01D1.
 * Threads: several may set up one language at once, and then compare; another language is for one alone.
 */
KXSTR_API void setsseq(const char *code);

/**
 * Brings the collation table `coltbl` to the current language (VaskSetLanguage): writes the values of 60 letters, by
 * the first two letters of the language in either case.
 *
 * Does nothing when coltbl was last set up for the same language. Only two bytes of a language are remembered, so a
 * longer one is set up every time. Byte pairs of a double-byte code page are remembered whole or not at all.
 * Threads: as setsseq.
 */
KXSTR_API void lVaskSetupLang(void);

/* ---- Comparing strings by language number ---- */

/**
 * Compares two KX strings in the order of a language: by their primary values and lengths, then (secondary) by
 * diacritics and variants, then by case.
 *
 * @param s1, s2     Zero-terminated KX strings; null sorts before any string.
 * @param lang       Language number (KxLanguage); 40 and above count as East Asian.
 * @param case_flag  Not 0: the third level counts. Lowercase sorts first, but last in Greek (18).
 * @param kana_flag  Not 0: hiragana sort before katakana at the third level (East Asian languages only).
 * @return           -1, 0 or 1 as s1 sorts before, with or after s2.
 *
 * Example, "US", with case: "cot" and "COT" -> -1, case decides last; "cote" and "COT" -> 1, letters and lengths come
 * first.
 * One leading code (0xF900 and above) of each string is skipped; other codes count as characters. In the languages with
 * contractions the order is not transitive in every corner (runs of three and more "l" in mixed case in Spanish, for
 * example), nor is it in the East Asian ones, so a sort must not rely on that.
 * Threads: re-entrant; East Asian languages ask for the country of the system.
 */
KXSTR_API int32_t KxWS6Cmpcoll(const KxChar *s1, const KxChar *s2, uint32_t lang, uint32_t case_flag,
                               uint32_t kana_flag);

/** The same, with the language as a two-letter code; null and unknown codes count as language number 0. */
KXSTR_API int32_t KxWS6CmpcollLang(const KxChar *s1, const KxChar *s2, const char *code, uint32_t case_flag,
                                   uint32_t kana_flag);

/**
 * The values of the next character of a KX string, for sort keys.
 *
 * @param position   In and out: the place in the string; moves past the characters that were used.
 * @param primary    Two bytes. A contraction or an expansion writes both values, another character of an alphabetic
 *                   language only the first; an East Asian language writes the 16-bit value, high byte first. An
 *                   ignorable character writes none.
 * @param secondary  The secondary value; 0 for a contraction or an expansion.
 * @param tertiary   0 for a lowercase letter, 1 for others; a contraction or an expansion has two such bits, the first
 *                   letter's higher. In East Asian languages the flags of AsiaGetColValues.
 * @param case_on    East Asian languages only; 0: case is not distinguished.
 * @param previous   East Asian primary value of the character before, 0 at the start.
 * @param lang       Language number.
 * @return           2 when values were written; 0 at the end of the string (nothing is written, the position stays) and
 *                   for an ignorable character (the position moves, secondary and tertiary are written).
 *
 * So 0 is not the end: a loop goes on until **position is 0.
 * Example, language 0: "cote" -> 2, primary 131, secondary 0, tertiary 0, and the position is at "ote".
 */
KXSTR_API uint32_t getColValues(const KxChar **position, uint8_t *primary, uint16_t *secondary, uint8_t *tertiary,
                                uint32_t case_on, uint32_t previous, uint32_t lang);

/**
 * The East Asian values of a character.
 *
 * @param ch        The character.
 * @param next      The character after it; 0 at the end of the string.
 * @param previous  The primary value of the character before, which ditto, iteration and prolonged-sound marks take up
 *                  (a ditto mark any value, even 0xFFFF: the result is then still 1).
 * @param primary   Always written; 0xFFFF when the character has no value. 0x100 and up kana, from 0x200 ideographs.
 * @param secondary Always written: diacritic, variant or voicing.
 * @param flags     Always written. Bit 0: katakana, or not a lowercase letter. Bit 1: came in the other width.
 * @param case_off  Not 0: case is not distinguished, bit 0 is set for every letter.
 * @return          2 when `next` is a sound mark that went into the value (the caller skips it), 0 when the character
 *                  has no value, else 1.
 *
 * Characters 0x25B6 to 0x25FF, which lie between the hiragana and the katakana, have no value. A combined code of
 * wtoall (set 11, index 0x40 and up) is read without its mark unless a sound mark stands at `next`: the result is 2
 * only before a sound mark.
 */
KXSTR_API uint32_t AsiaGetColValues(uint32_t ch, uint32_t next, uint32_t previous, uint16_t *primary,
                                    uint16_t *secondary, uint8_t *flags, uint32_t case_off);

#ifdef __cplusplus
}
#endif
#endif
