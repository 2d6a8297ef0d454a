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

/* ---- traversal, search, repair -------------------------------------------------------------------------------- */
/*
 * Codes are stepped over in KX strings and in document streams alike, unless a function says that it works on units.
 * Unless said otherwise pointers are not null, strings and streams end with their terminator, and a stepping function
 * is not called at a terminator. Document streams are trusted as in kxstr/forms.h; a group that claims no size counts
 * as one byte. Threads: all are re-entrant over the caller's memory.
 */

/** @return The first character of a KX string at or after `position`, or the terminator. */
KXSTR_API KxChar *W6wstrFirstCh(const KxChar *position);

/**
 * @param position  A character or code of a KX string, not the terminator.
 * @return          The next character after it, or the terminator.
 */
KXSTR_API KxChar *W6wstrNextCh(const KxChar *position);

/**
 * @param start     Start of a KX string.
 * @param position  A position in it; one not after `start` gives `start`.
 * @return          The last character before `position`, or `start` when there is none (even if a code stands there).
 */
KXSTR_API KxChar *W6wstrPrevCh(const KxChar *start, const KxChar *position);

/** @return The number of characters of a KX string, codes not counted. */
KXSTR_API int32_t W6wstrchrcnt(const KxChar *string);

/**
 * @return  The first position at or after `position` in a document stream that holds a character byte (below 0x80), an
 *          extended character (0xF0) or the terminator.
 */
KXSTR_API uint8_t *W6dstrFirstCh(const uint8_t *position);

/** As W6dstrFirstCh, from behind the character or code at `position`, which is not the terminator. */
KXSTR_API uint8_t *W6dstrNextCh(const uint8_t *position);

/**
 * Finds a KX string in another by exact characters; codes are stepped over in both.
 *
 * @return  The first character of the first occurrence, or null when there is none or when either string holds no
 *          character.
 */
KXSTR_API KxChar *W6wstrstr(const KxChar *string, const KxChar *to_find);

/** @return The first unit of a KX string, codes included, that is among the units of `delimiters`; else its end. */
KXSTR_API KxChar *W6wstrdelim(const KxChar *string, const KxChar *delimiters);

/**
 * Rewrites a KX string in place so that no byte of it is 0 but the very last: each 0 byte of a character becomes 0xFF,
 * and the terminator becomes the bytes 0xFF 0x00.
 *
 * @return  The string, to be handled as a zero-terminated byte string of twice its length plus one byte.
 *
 * Units keep the host's byte order: the bytes are not for a host of the other one.
 */
KXSTR_API KxChar *W6wstrFixExtChars(KxChar *string);

/**
 * Undoes W6wstrFixExtChars: every byte 0xFF before the first 0 byte becomes 0.
 *
 * @return  The string. Bytes that were 0xFF before the escape become 0 too: characters of index 0xFF and units of
 *          0xFF00 and above do not come back.
 */
KXSTR_API uint8_t *W6wstrUnFixExtChars(uint8_t *bytes);

/**
 * Renumbers tab, line end and attribute codes of a KX string in place between two numberings.
 *
 * @param mode  1: from the codes of KX strings (0xF909, 0xF90A, 0xF90C, 0xF90D, 0xFE00..0xFE1F) to the other numbering
 *              (0xFC45, 0xFB16, 0xFB1B, 0xFB13, 0xFC66..0xFC85). 2: back. Any other changes nothing.
 * @return      The string.
 */
KXSTR_API KxChar *W6wzFix(KxChar *string, uint16_t mode);

/**
 * Copies a menu text without its mnemonic markers.
 *
 * @param destination  Room for the source's length plus a terminator; may be the source itself.
 * @param source       Zero-terminated bytes. "&" before anything but another "&" is dropped; "&&" stays. On a
 *                     double-byte system "(" drops everything up to and including the next ")", or to the end.
 * @return             The key of the last mnemonic: the byte after "&" (0 at the end of the text), or the byte two
 *                     places after "(" with the bits of 0x2800 set, each byte sign-extended. 0 without a mnemonic. A
 *                     "(" with fewer than two bytes behind it counts the missing byte as 0; nothing behind the
 *                     terminator is read.
 *
 * Example: "&File" -> "File", 0x0046.  "(&F)" on a double-byte system -> "", 0x2846.
 */
KXSTR_API int16_t VaskStripAmpersand(char *destination, const char *source);

/**
 * Cuts a byte string in the ANSI code page in place to at most `limit` bytes.
 *
 * @param limit  In bytes, without the terminator; the buffer has room for a 0 at that place. A limit of 0 or less makes
 *               the string empty.
 * @return       The new length. On a double-byte system a character that does not fit whole and a lead byte without its
 *               trail byte are dropped, and a string shorter than the limit keeps its text and gives its length (less a
 *               dropped lead byte). On any other system the 0 is stored at the limit, and the limit is the result,
 *               however short the string was.
 */
KXSTR_API int32_t WMBStrTrunc(char *string, int32_t limit);

/** TpiKxToKxsioBuff (kxstr/forms.h) with source and destination in the other order. */
KXSTR_API uint16_t W6dzTotz(const uint8_t *source, uint8_t *destination, uint32_t count, uint32_t flags);

/** TpiKxwzToKxsioBuff (kxstr/forms.h) with source and destination in the other order. */
KXSTR_API uint16_t W6wzTotz(const KxChar *source, uint8_t *destination, uint32_t count, uint32_t flags);

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
 * Threads: re-entrant, once the country is decided.
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
 * Threads: re-entrant over the caller's memory, once the country is decided; so are the other functions of this
 * section.
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

/* ---- comparison ----------------------------------------------------------------------------------------------- */
/*
 * Codes are stepped over on both sides and never compared: texts that differ only in codes are equal. Pointers must be
 * valid and the texts zero-terminated; nothing is written to them.
 *
 * The ordering comparisons go by the collation table `coltbl` (kxstr/collate.h). They and W6wstrCollateCh first set it
 * up for the current language, as lVaskSetupLang does; so they write process-wide data after a change of the language,
 * which a host must not make while another thread compares. The first characters that differ decide: by their values in
 * coltbl; where they share one (a letter and its accented forms), case decides, lowercase first; characters without any
 * value sort after all others, by their lowercase codes. Result: -1, 0 or 1 as a sorts before, with or after b.
 *
 * The equality tests ignore the language and are re-entrant. Result: 1 equal, 0 not. Letters are equal without case
 * when wtolower makes them the same.
 */

/**
 * @return  The value of a character in coltbl for the current language; 0xFF when it has none; 0 for character 0.
 */
KXSTR_API uint8_t W6wstrCollateCh(uint32_t ch);

/** Orders two KX strings. */
KXSTR_API int32_t W6wstrcmp(const KxChar *a, const KxChar *b);

/**
 * As W6wstrcmp, over at most `count` characters (codes between them do not count). 0 compares nothing. A negative count
 * compares no character either, but tells which string is empty: 1 when a is not, whatever b holds; -1 when only a is;
 * 0 when both are.
 */
KXSTR_API int32_t W6wstrccmp(const KxChar *a, const KxChar *b, int32_t count);

/**
 * As W6wstrcmp, within the first `limit` 16-bit units of each string, codes included. 0 as soon as one string has
 * reached its limit, so also for a limit of 0 or less.
 */
KXSTR_API int32_t W6wstrncmp(const KxChar *a, const KxChar *b, int32_t limit);

/** W6wstrcmp without case. */
KXSTR_API int32_t W6w_stricmp(const KxChar *a, const KxChar *b);

/** W6wstrccmp without case. */
KXSTR_API int32_t W6wstrcicmp(const KxChar *a, const KxChar *b, int32_t count);

/** W6wstrncmp without case. */
KXSTR_API int32_t W6wstrnicmp(const KxChar *a, const KxChar *b, int32_t limit);

/** Tests two KX strings for equality. */
KXSTR_API int32_t W6wstrequ(const KxChar *a, const KxChar *b);

/** W6wstrequ without case. */
KXSTR_API int32_t W6wstriequ(const KxChar *a, const KxChar *b);

/**
 * 1 when `limit` equal characters lie within the first `limit` 16-bit units of both strings, or both strings end
 * together within them; a code among these units therefore gives 0, as does a limit of 0 or less.
 */
KXSTR_API int32_t W6wstrnequ(const KxChar *a, const KxChar *b, int32_t limit);

/**
 * Without case, within the first `limit` 16-bit units of each string: 1 when one string reaches its limit before they
 * differ. But 0 when leading codes fill a limit, or the limit is 0 or less.
 */
KXSTR_API int32_t W6wstrniequ(const KxChar *a, const KxChar *b, int32_t limit);

/** Tests two document streams for equality. An extended character equals only the same four bytes. */
KXSTR_API int32_t W6dstrequ(const uint8_t *a, const uint8_t *b);

/**
 * W6dstrequ without case: an extended character that holds a set-0 letter equals the one-byte letter, in either case.
 * One that holds character 0 equals the end of the other stream, and ends the comparison (chosen here).
 */
KXSTR_API int32_t W6dstriequ(const uint8_t *a, const uint8_t *b);

/** W6dstrequ within the first `limit` bytes of each stream, codes included; 1 once a limit is reached (0 at once). */
KXSTR_API int32_t W6dstrnequ(const uint8_t *a, const uint8_t *b, int32_t limit);

/** W6dstriequ within the first `limit` bytes, as W6dstrnequ. */
KXSTR_API int32_t W6dstrniequ(const uint8_t *a, const uint8_t *b, int32_t limit);

/** W6dstrequ over the first `count` characters; 1 for a count of 0 or less. */
KXSTR_API int32_t W6dstrcequ(const uint8_t *a, const uint8_t *b, int32_t count);

/** W6dstriequ over the first `count` characters; 1 for a count of 0 or less. */
KXSTR_API int32_t W6dstrciequ(const uint8_t *a, const uint8_t *b, int32_t count);

/* ---- language set-up ------------------------------------------------------------------------------------------ */

/**
 * Brings the collation table `coltbl` to the current language (VaskSetLanguage): writes the values of 60 letters, by
 * the first two letters of the language in either case.
 *
 * Does nothing when coltbl was last set up for the same language. Only two bytes of a language are remembered, so a
 * longer one is set up every time. Byte pairs of a double-byte code page are remembered whole or not at all.
 * Threads: writes `coltbl`; see kxstr/collate.h.
 */
KXSTR_API void lVaskSetupLang(void);

#ifdef __cplusplus
}
#endif
#endif
