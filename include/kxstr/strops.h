/**
 * String operations on KX strings and document streams: traversal, search and repair, and comparison.
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
 * @param limit  In bytes, without the terminator; the buffer has room for a 0 at that place. One below 0 counts as 0,
 *               and 0 makes the string empty: the result is then 0 on every system.
 * @return       The new length. On a double-byte system a character that does not fit whole and a lead byte without its
 *               trail byte are dropped, and a string shorter than the limit keeps its text and gives its length (less a
 *               dropped lead byte). On any other system the 0 is stored at the limit, and the limit is the result,
 *               however short the string was.
 */
KXSTR_API int32_t WMBStrTrunc(char *string, int32_t limit);

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
 * Not read-only: the first comparison after a change of the language writes `coltbl`, 60 values of it. A host that has
 * put values of its own there compares by them until the language changes. Threads may make that comparison at once.
 *
 * The equality tests ignore the language and are re-entrant. Result: 1 equal, 0 not. Letters are equal without case
 * when wtolower makes them the same. What the bounded tests give when nothing has differed:
 *
 *   function                   bound in               bound 0 or less   bound reached later
 *   W6wstrnequ                 16-bit units           0                 1 when no unit of them was a code, else 0
 *   W6wstrniequ                16-bit units           0                 1
 *   W6dstrnequ, W6dstrniequ    bytes                  1                 1
 *   W6dstrcequ, W6dstrciequ    characters             1                 1
 *
 * The bounded orders give 0 in both cases, but for a negative count of W6wstrccmp and W6wstrcicmp.
 *
 * Example (language "EN"): W6wstrcmp of "cote" and "Cote" -> -1; W6w_stricmp -> 0; W6wstriequ -> 1.
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
 * One that holds character 0 equals the end of the other stream and ends the comparison, whatever stands behind it: the
 * result is then 1.
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

/* ---- comparison of units without case ------------------------------------------------------------------------- */

/** As wstrcmp (kxstr/prim.h) with a to z taken as A to Z; other bytes count as they are. Null is not tested. */
KXSTR_API int32_t w_stricmp(const char *a, const char *b);

/**
 * Compares two KX strings by the wtoupper forms of their units; codes count like characters.
 *
 * @param a, b  KX strings; not null.
 * @return      0, or the difference of the first two units whose wtoupper forms differ: that of `a` minus that of `b`,
 *              as unsigned 16-bit numbers (the terminator counts as 0).
 *
 * Threads: re-entrant, the first use of the country included (it settles the case of the double-byte characters).
 * Example: "ab" and "abc" -> -0x43.
 */
KXSTR_API int32_t ww_stricmp(const KxChar *a, const KxChar *b);

/**
 * As ww_stricmp, over at most so many bytes.
 *
 * @param size  In bytes, 2 to a unit. 0 or less: the result is 0. An odd size does not bound the comparison.
 */
KXSTR_API int32_t wwstrincmp(const KxChar *a, const KxChar *b, int32_t size);

#ifdef __cplusplus
}
#endif
#endif
