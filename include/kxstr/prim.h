/**
 * Primitives: byte strings (w...), KX strings (ww...) and memory (KXw..., KXwh...).
 *
 * A byte string is any zero-terminated 8-bit text, its bytes taken as unsigned; a KX string ends with a 0 unit of 16
 * bits. Pointers must not be null unless a function says what null gives. Counts are in bytes or in 16-bit characters,
 * as each function says: they differ within a family. Strings must not overlap unless said otherwise.
 * Threads: all are re-entrant over the caller's memory; the two copies that know double-byte characters ask the system
 * for its lead bytes at every call.
 */
#ifndef KXSTR_PRIM_H
#define KXSTR_PRIM_H

#include <kxstr/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- byte strings ---------------------------------------------------------------------------------------------- */

/** @return The bytes before the terminator; null gives 0. */
KXSTR_API uint32_t wstrlen(const char *string);

/** Copies a string with its terminator. @return The destination; when either is null, null, and nothing is copied. */
KXSTR_API char *wstrcpy(char *destination, const char *source);

/** Appends a string with its terminator. @return The destination. */
KXSTR_API char *wstrcat(char *destination, const char *source);

/**
 * Appends at most `count` bytes of a string, then a terminator in any case: the destination has room for `count` bytes
 * and one more behind its text, or for the whole source with its terminator. A count of 0 changes nothing.
 *
 * @return  The destination.
 */
KXSTR_API char *wstrncat(char *destination, const char *source, uint32_t count);

/**
 * Copies at most `count` bytes and never half of a double-byte character of the system's ANSI code page. What the text
 * leaves is filled with 0; a text that does not fit is cut, and then no terminator is written. When only its trail byte
 * would not fit, a lead byte is left out, and the last byte of the destination stays as it was. A lead byte before the
 * source's terminator is copied.
 *
 * @param count  Size of the destination in bytes; 0 writes nothing.
 * @return       The destination.
 */
KXSTR_API char *wstrncpy(char *destination, const char *source, uint32_t count);

/**
 * Copies a string so that it ends within `size` bytes and no double-byte character of the system's ANSI code page is
 * split: one that would leave no room for the terminator, and a lead byte before the source's terminator, are left out.
 *
 * @param size  Size of the destination in bytes, terminator included; 0 or less writes nothing. At most one byte behind
 *              the terminator is written too: a second 0, or the trail byte of the character left out.
 */
KXSTR_API void CopyUpToAndNullTerminate(char *destination, const char *source, int32_t size);

/** @return The difference of the first differing bytes, 0 when there are none; either null gives 0. */
KXSTR_API int32_t wstrcmp(const char *a, const char *b);

/** As wstrcmp over at most `count` bytes; 0 when the count is 0 or less. Null is not tested. */
KXSTR_API int32_t wstrncmp(const char *a, const char *b, int32_t count);

/** @return The first byte equal to `byte` (low 8 bits used), or null. The terminator is never found. */
KXSTR_API char *wstrchr(const char *string, uint32_t byte);

/** @return The last byte equal to `byte` (low 8 bits used), or null, also for null. The terminator is never found. */
KXSTR_API char *wstrrchr(const char *string, uint32_t byte);

/* ---- KX strings ------------------------------------------------------------------------------------------------- */

/** @return Twice the characters before the terminator, a length in bytes; null gives 0. */
KXSTR_API uint32_t wwstrlen(const KxChar *string);

/** Copies a string with its terminator. @return The destination; when either is null, null, and nothing is copied. */
KXSTR_API KxChar *wwstrcpy(KxChar *destination, const KxChar *source);

/** Appends a string with its terminator. @return The destination; when either is null, null, and nothing is done. */
KXSTR_API KxChar *wwstrcat(KxChar *destination, const KxChar *source);

/**
 * Appends at most `count` characters of a string, then a terminator in any case: the destination has room for `count`
 * characters and one more behind its text, or for the whole source with its terminator. A count of 0 changes nothing.
 *
 * @return  The destination.
 */
KXSTR_API KxChar *wwstrncat(KxChar *destination, const KxChar *source, uint32_t count);

/**
 * Copies at most `count` characters and fills what the text leaves of them with 0. A source of `count` characters or
 * more leaves no terminator. A count of 0 writes nothing.
 *
 * @return  The destination.
 */
KXSTR_API KxChar *wwstrncpy(KxChar *destination, const KxChar *source, uint32_t count);

/**
 * @return  The difference of the first differing characters as unsigned 16-bit values, 0 when there are none.
 *
 * Example: 0x0063 0x006F and 0x0063 0x013D -> -206.
 */
KXSTR_API int32_t wwstrcmp(const KxChar *a, const KxChar *b);

/**
 * As wwstrcmp over at most `count` bytes, two for each character (not characters, unlike wwstrncpy and wwstrncat); 0
 * when the count is 0 or less. An odd count is no bound: the comparison then goes to the first difference or the end.
 */
KXSTR_API int32_t wwstrncmp(const KxChar *a, const KxChar *b, int32_t count);

/** @return The first character equal to `ch` (low 16 bits used), or null. The terminator is never found. */
KXSTR_API KxChar *wwstrchr(const KxChar *string, uint32_t ch);

/** @return The last character equal to `ch` (low 16 bits used), or null, also for null. As wwstrchr. */
KXSTR_API KxChar *wwstrrchr(const KxChar *string, uint32_t ch);

/** @return The first place where `to_find` occurs, codes taken like characters; null when nowhere, when it is empty, or
 *          when either is null. */
KXSTR_API KxChar *wwstrstr(const KxChar *string, const KxChar *to_find);

/* ---- memory ----------------------------------------------------------------------------------------------------- */

/**
 * @param count  In 16-bit units, low 16 bits used.
 * @return       The first unit equal to `ch` (low 16 bits used), or null, also for null. 0 is found like any other.
 */
KXSTR_API KxChar *KXwmemwchr(const KxChar *area, uint32_t ch, uint32_t count);

/** @return -1, 0 or 1 as the first `count` bytes compare as unsigned bytes; 0 for a count of 0 or either null. */
KXSTR_API int32_t KXwmemcmp(const void *a, const void *b, uint32_t count);

/** Stores the low 8 bits of `value` into `count` bytes; null does nothing. */
KXSTR_API void KXwhmemset(void *area, uint32_t value, uint32_t count);

/** Copies `count` bytes; the areas may overlap. Either null does nothing. */
KXSTR_API void KXwmemcpy(void *destination, const void *source, uint32_t count);

/** As KXwmemcpy; the areas may overlap here too. */
KXSTR_API void KXwhmemmove(void *destination, const void *source, uint32_t count);

/** Copies `count` bytes; the areas may overlap. A count of 0 or less copies nothing. Pointers are not tested. */
KXSTR_API void KXwmemmove(void *destination, const void *source, int32_t count);

/** Stores the low 8 bits of `value` into `count` bytes; 0 or less stores nothing. The pointer is not tested. */
KXSTR_API void KXwmemset(void *area, uint32_t value, int32_t count);

#ifdef __cplusplus
}
#endif
#endif
