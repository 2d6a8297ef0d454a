/**
 * Text forms: the KX document stream and the conversions between the forms.
 *
 * A KX document stream is a byte string of codes, ended by a 0 byte that stands where a code begins:
 *   0x01..0x7F  a character of set 0, 1 byte           0xF1, 0xF9, 0xFA  fixed-length codes of 5 bytes
 *   0x80..0xCF  a function code, 1 byte                0xF2..0xF5        of 3 bytes
 *   0xD0..0xEF  a group: code, any byte, whole size    0xF6..0xF8        of 4 bytes
 *               (16-bit little-endian), content,       0xFB, 0xFC        of 6 bytes
 *               size again, a byte 0xD0..0xEF          0xFD, 0xFE        of 8 bytes
 *   0xF0        extended character: 0xF0, index,       0xFF              1 byte
 *               set, 0xF0
 * A 0 inside a code does not end the stream.
 */
#ifndef KXSTR_FORMS_H
#define KXSTR_FORMS_H

#include <kxstr/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Document streams ----
 *
 * These functions trust their input: pointers are not null, and sizes are taken from the stream as they stand, so a
 * code whose size runs past the terminator is stepped over (and copied) whole, and a group is read up to its size field
 * whatever stands there. Check streams that come from outside first. A group whose size field is 0 is stepped over as
 * one byte, here and wherever the library walks a stream; one whose size is too small for its header and trailer is
 * stepped over by that size. So every walk ends that meets a terminator where a code begins.
 * Threads: all are re-entrant over the caller's memory.
 */

/**
 * @param code  First byte of a code; a group is read up to its size field (4 bytes).
 * @return      The code's size in bytes: 1..8, or a group's size field as it stands, 0 included.
 *
 * 0x00 and 0xFF give 1.
 * Example: D4 01 07 00 07 00 D4 -> 7.
 */
KXSTR_API uint16_t ufsize(const uint8_t *code);

/**
 * @param end  The byte just after the last byte of a code, which is not read; a group is read back to the second copy
 *             of its size (3 bytes).
 * @return     The code's size in bytes by its last byte: 1..8, or a group's size field as it stands, 0 included.
 */
KXSTR_API uint16_t ubsize(const uint8_t *end);

/** @return Bytes of a document stream before its terminator. */
KXSTR_API int32_t wdstrlen(const uint8_t *stream);

/**
 * Copies a document stream with its terminator, wdstrlen(source) + 1 bytes.
 *
 * @return  The destination. The two may overlap.
 */
KXSTR_API uint8_t *wdstrcpy(uint8_t *destination, const uint8_t *source);

/**
 * Appends a document stream to another: the source's first code takes the place of the destination's terminator.
 *
 * @param destination  A document stream with room for wdstrlen(source) more bytes.
 * @return             The destination. A stream may be appended to itself.
 */
KXSTR_API uint8_t *wdstrcat(uint8_t *destination, const uint8_t *source);

/** Copies `count` bytes; the areas may overlap. A count of 0 or less copies nothing. Pointers are not tested. */
KXSTR_API void KXwmemmove(void *destination, const void *source, int32_t count);

/** Stores the low 8 bits of `value` into `count` bytes; 0 or less stores nothing. The pointer is not tested. */
KXSTR_API void KXwmemset(void *area, uint32_t value, int32_t count);

/* ---- KX 5 ----
 *
 * The older generation of the document format numbers the characters of sets 1, 2, 5, 8, 9, 10, 11 and 13 differently;
 * all others are the same. Set 11 (half-width katakana) is the same in Japan (country 1, see WtpiGetCountryID) and
 * different elsewhere. Neither function tests whether its input is a character.
 * Threads: re-entrant, once the country has been worked out.
 */

/**
 * @param ch  KX 6 character; low 16 bits used.
 * @return    The KX 5 character, or KX_NONE when that generation lacks it. Indexes above 62 of set 11 are no characters
 *            and give KX_NONE (outside Japan).
 *
 * Example: 0x0200 -> 0x021A.  0x0118 -> 0x0208.  0x01EA -> KX_NONE.
 */
KXSTR_API uint32_t WtpiKX6toKX5(uint32_t ch);

/**
 * @param ch      KX 5 character; low 16 bits used.
 * @param first   Receives the KX 6 character; not null. There always is one; indexes above 184 of set 11 are no
 *                characters and come back unchanged.
 * @param second  Receives 0x0B3D or 0x0B3E, the voicing or half-voicing mark behind a katakana letter, but only when
 *                the result is 2; not null.
 * @return        Number of characters stored: 1 or 2.
 *
 * Example, outside Japan: 0x0B09 -> 0x0B08 0x0B3D.  0x0208 -> 0x0118.
 */
KXSTR_API uint32_t WtpiKX5toKX6(uint32_t ch, KxChar *first, KxChar *second);

#ifdef __cplusplus
}
#endif
#endif
