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
 *
 * The buffer and string functions at a glance. A count always includes the terminator, but where `+` says that the
 * terminator comes on top of it. n: the count; chars, bytes, units: of the source, without its terminator.
 *
 *   function                               count in        room needed          result
 *   str_AnsiToKx, str_OemToKx,             bytes           n bytes              bytes written, terminator included
 *     str_DBCS_OEMorANSItoKX,
 *     TpiAnsiToKxBuff, TpiOemToKxBuff
 *   TpiKxDocStripBuff                      bytes           n bytes              bytes written, terminator included
 *   TpiKxLongStripBuff                     bytes, signed + n + 2 bytes          bytes written, terminator included
 *   TpiKxToAnsiBuff, TpiKxToOemBuff        bytes           n bytes              no length: a character that is dropped
 *                                                                               counts, too, and 1 for the terminator
 *   TpiKxToKxsioBuff, W6dzTotz,            bytes           n bytes              count without terminator; attributes
 *     TpiKxwzToKxsioBuff, W6wzTotz                                              count as 3 bytes
 *   W6azTowz, W6ozTowz                     none            bytes + 1 units      1; 0 without memory
 *   W6azTowzN, W6ozTowzN                   16-bit units    n units              1; 0 without memory
 *   W6wzToaz, W6wzToazEx                   none            2 * chars + 1 bytes  bytes written, without terminator
 *   W6wzTooz                               none            2 * chars + 1 bytes  1
 *   W6wzToazN, W6wzToozN                   characters      2 * n - 1 bytes      1
 *   W6wzToazNB                             bytes           n bytes              1; 0 for null
 *   W6VaskTowz, W6wzToVask, W6wzToVaskEx   none            units + 1 units      1
 *   W6VaskTowzN, W6wzToVaskN               16-bit units    n units              1
 *   W6VaskToazN                            characters      2 * n - 1 bytes      1
 *   W5dzTowz, lW5CdzTowz                   bytes           n bytes              the destination
 *   WwzTo5dz                               bytes           n bytes              the destination
 *
 * Trap: W6wzToazN and its like count characters, of which each may take two bytes. A count of 10 is a buffer of 19
 * bytes, not of 10; W6wzToazNB counts bytes.
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

/* ---- Buffers and stripping ----
 *
 * The library holds a descriptor for the ANSI and one for the OEM code page (see WtpiGetAnsiCodepageTbl; on a
 * double-byte system both are the Windows code page). They are filled when a conversion first needs them.
 *
 * Counts are the destination's size in bytes, the terminator included; of a 32-bit count the low 16 bits are used,
 * except by TpiKxLongStripBuff. A count of 0 writes nothing, not even a terminator, and gives 0; otherwise the
 * destination always ends with a terminator. A code of several bytes is written whole or not at all: one that does not
 * fit ends the conversion. Pointers are not tested. Document streams are trusted, as above.
 *
 * Threads: re-entrant over the caller's memory, and several may come to the first use at once. TpiSetCodepage and
 * str_ClrCodePage change the descriptors; serialise them with all other use.
 */

/**
 * Fills both descriptors from the code pages of the moment, whether they were filled before or not. It does not count
 * as the first filling: where none of the other functions has filled them, the next use fills them again, and
 * str_ClrCodePage leaves them.
 */
KXSTR_API void TpiSetCodepage(void);

/** Fills both descriptors if no use has filled them yet. @return 1, always. */
KXSTR_API uint32_t str_SetCodePage(void);

/** Empties both descriptors, so that the next use fills them again; does nothing when no use has filled them. */
KXSTR_API void str_ClrCodePage(void);

/**
 * One native code to a KX character by the library's own descriptor; otherwise as WcvtNtvToKx.
 * @param code  Low 16 bits used: a byte, or a double-byte code with its lead byte in bits 15..8.
 * @return      The KX character, or 0xFFFF.
 */
KXSTR_API uint32_t TpiAnsiToKx(uint32_t code);
KXSTR_API uint32_t TpiOemToKx(uint32_t code);

/**
 * One KX character to a native code by the library's own descriptor; otherwise as WcvtKxToNtv.
 * @param ch  Low 16 bits used.
 * @return    The native code (a byte, or lead byte and trail byte), or 0xFFFF.
 */
KXSTR_API uint32_t TpiGetAnsi(uint32_t ch);
KXSTR_API uint32_t TpiGetOem(uint32_t ch);

/**
 * Native text to a document stream, a byte at a time, also when called on a double-byte system.
 *
 * @param destination  Receives at most `count` bytes; must not overlap the source. A character of sets other than 0
 *                     takes 4 bytes, so no text needs more than 4 * its length + 1.
 * @param source       ANSI (OEM) string.
 * @return             Bytes written, the terminator included; 0 when the count is 0.
 *
 * 0x20..0x7E are copied; other bytes convert by the code page, and those without a KX character are dropped.
 * Example, 1252: E9 41 -> F0 29 01 F0 41.
 */
KXSTR_API uint32_t str_AnsiToKx(uint8_t *destination, const char *source, uint32_t count);
KXSTR_API uint32_t str_OemToKx(uint8_t *destination, const char *source, uint32_t count);

/**
 * The same for text with double-byte characters: a lead byte of the system's ANSI code page and the byte behind it make
 * one code. A lead byte just before the terminator is dropped. All codes convert by the ANSI descriptor.
 *
 * @param selector  0 for ANSI text, 1 for OEM text; has no effect.
 */
KXSTR_API uint32_t str_DBCS_OEMorANSItoKX(uint8_t *destination, const char *source, uint32_t count, uint32_t selector);

/** str_AnsiToKx (str_OemToKx), on a double-byte system str_DBCS_OEMorANSItoKX. */
KXSTR_API uint32_t TpiAnsiToKxBuff(uint8_t *destination, const char *source, uint32_t count);
KXSTR_API uint32_t TpiOemToKxBuff(uint8_t *destination, const char *source, uint32_t count);

/* What stripping keeps, and what it writes in place of a code. Codes that no flag names are dropped; other bits of the
 * flags have no effect. */
#define KX_KEEP_ATTRIBUTES 0x01u     /**< F2 a F2 and F3 a F3; in KX strings 0xFE00..0xFE1F */
#define KX_KEEP_HARD_ENDS 0x02u      /**< CC; in KX strings KX_LINE_FEED and KX_FORM_FEED */
#define KX_KEEP_SOFT_ENDS 0x04u      /**< CF; in KX strings KX_CARRIAGE_RETURN */
#define KX_SOFT_ENDS_AS_SPACES 0x08u /**< unless kept: CF as 80; in KX strings KX_CARRIAGE_RETURN as 0x0020 */
#define KX_HYPHENS_AS_TEXT 0x10u     /**< 84 and 85 as 2D; in KX strings 0x0084, 0x0085 and 0xFB05 as 0x002D */
#define KX_KEEP_TABS 0x20u           /**< KX_TAB; KX strings only */
#define KX_TABS_AS_FE 0x40u          /**< TpiKxwzToKxsioBuff only: writes a tab that is kept as FE instead of 09 */

/**
 * Cuts a document stream down to its text (0x20..0x7E, the space code 0x80, extended characters) and to what the flags
 * keep. The other codes are stepped over by their sizes.
 *
 * @param destination  Receives at most `count` bytes; may be the source, but not overlap it otherwise.
 * @return             Bytes written, the terminator included; 0 when the count is 0.
 *
 * Example: 41 CC 42, flags 0 -> 41 42, result 3.
 */
KXSTR_API uint32_t TpiKxDocStripBuff(uint8_t *destination, const uint8_t *source, uint32_t count, uint32_t flags);

/**
 * Cuts a KX string down to its valid characters (see ValidKxCharacter) and to what the flags keep.
 *
 * @param destination  May be the source, but not overlap it otherwise.
 * @param count        Bytes, signed, all 32 bits. It bounds the text at count / 2 characters, rounded down, and leaves
 *                     no room for the terminator, which is written behind it: pass the size of the destination less 2.
 *                     (A count of n needs a destination of n + 2 bytes, an odd one of n + 1.) From 1 down (0 apart)
 *                     only the terminator of two bytes is written.
 * @return             Bytes written, the terminator included; 0 when the count is 0.
 */
KXSTR_API uint32_t TpiKxLongStripBuff(KxChar *destination, const KxChar *source, int32_t count, uint32_t flags);

/**
 * Document stream to native text: the stream is stripped, keeping the line ends, and its extended characters convert.
 *
 * @param destination  Receives at most `count` bytes, and holds the stripped stream meanwhile. May be the source, but
 *                     not overlap it otherwise.
 * @return             Bytes counted plus 1; 0 when the count is 0. Not the length of the output: a character without a
 *                     native code is dropped, but counts as one byte against the count and in the result. Where the
 *                     output ends tells its terminator alone.
 *
 * Line ends and the space code come through as the bytes CC, CF and 80.
 */
KXSTR_API uint32_t TpiKxToAnsiBuff(char *destination, const uint8_t *source, uint32_t count);
KXSTR_API uint32_t TpiKxToOemBuff(char *destination, const uint8_t *source, uint32_t count);

/**
 * Document stream to sio form, a zero-terminated byte string:
 *   20..7E a character of set 0      0E a+1, 0F a+1  attribute a on, off, except:
 *   09     tab (FE by a flag)        1D, 1C          attribute 0x0C on, off
 *   0D     line end                  14, 15          attribute 0x0E on, off
 *   FD index set  another character
 * The stream is stripped by the flags first.
 *
 * @param destination  Receives at most `count` bytes, and holds the stripped stream meanwhile: `count` is the room for
 *                     that, too. May be the source, but not overlap it otherwise.
 * @return             The output's count without its terminator. An attribute code of two bytes counts as three.
 *
 * Example: 41 F0 41 04 F0 CC, flags KX_KEEP_HARD_ENDS -> 41 FD 41 04 0D, result 5.
 */
KXSTR_API uint16_t TpiKxToKxsioBuff(uint8_t *destination, const uint8_t *source, uint32_t count, uint32_t flags);

/**
 * KX string to sio form. The string is stripped by the flags first, to at most count / 2 characters, rounded down.
 * KX_FORM_FEED, and the units 0xFF20..0xFF7E although they count as valid, have no sio form and give nothing.
 *
 * @param destination  Receives at most `count` bytes; may overlap the source.
 * @return             As TpiKxToKxsioBuff. A code that does not fit ends the conversion; an attribute code needs room
 *                     for its two bytes, so that with its charge of three the result can reach `count`. 0, with nothing
 *                     written, when there is no memory for a temporary copy of the string.
 */
KXSTR_API uint16_t TpiKxwzToKxsioBuff(uint8_t *destination, const KxChar *source, uint32_t count, uint32_t flags);

/** TpiKxToKxsioBuff with source and destination in the other order. */
KXSTR_API uint16_t W6dzTotz(const uint8_t *source, uint8_t *destination, uint32_t count, uint32_t flags);

/** TpiKxwzToKxsioBuff with source and destination in the other order. */
KXSTR_API uint16_t W6wzTotz(const KxChar *source, uint8_t *destination, uint32_t count, uint32_t flags);

/* ---- Strings ----
 *
 * Whole zero-terminated strings: ANSI and OEM (char), KX (KxChar), UTF-16 (uint16_t; "Vask" in names) and KX 5 document
 * streams (uint8_t). Native text converts by the library's own descriptors, as TpiAnsiToKx and TpiGetAnsi (TpiOemToKx,
 * TpiGetOem) do, UTF-16 as YWcharUnicodeToKX6x and YWcharKX6xToUnicode do.
 *
 * A character that does not convert becomes KX_NONE in KX and UTF-16 strings and the byte 0x80 in native text. A native
 * character of two bytes is written lead byte first, and never half.
 *
 * Counts are 16-bit: of a 32-bit argument the low 16 bits are used. A count of 0 writes nothing and gives what an empty
 * source gives. Without a count the destination has room for the whole result. Pointers are not null unless said so.
 * Strings must not overlap unless said so.
 * Threads: as for buffers.
 */

/**
 * ANSI (OEM) string to KX string.
 *
 * @param destination  Room for as many characters as the source has bytes, and the terminator. It may begin at the
 *                     source's own address: the string converts in place. (On a double-byte system the source may begin
 *                     anywhere in the destination: it is copied first.)
 * @return             1. 0 when there is no memory for the copy of the source; nothing is written then.
 *
 * `count`, where a function takes it, is the destination's size in 16-bit units, the terminator included.
 *
 * On a double-byte system a lead byte of the system's ANSI code page, in OEM text too, makes one code with the byte
 * behind it; a lead byte just before the terminator is dropped.
 */
KXSTR_API uint32_t W6azTowz(const char *source, KxChar *destination);
KXSTR_API uint32_t W6azTowzN(const char *source, KxChar *destination, uint32_t count);
KXSTR_API uint32_t W6ozTowz(const char *source, KxChar *destination);
KXSTR_API uint32_t W6ozTowzN(const char *source, KxChar *destination, uint32_t count);

#define KX_ANSI_MARK_UNKNOWN 1u        /**< writes 0x80 for a character without an ANSI code, else it is left out */
#define KX_ANSI_SOFT_ENDS_AS_SPACES 2u /**< writes KX_CARRIAGE_RETURN as a space */
#define KX_ANSI_CRLF 4u                /**< writes KX_LINE_FEED, and KX_CARRIAGE_RETURN unless a space, as 0D 0A */
#define KX_ANSI_MEASURE 8u             /**< writes nothing, not even a terminator; the destination may be null */

/**
 * KX string to ANSI string.
 *
 * @param destination  Room for 2 bytes a character and the terminator at most; KX_ANSI_MEASURE tells how many. May be
 *                     the source's own address.
 * @param flags        KX_ANSI_ flags; other bits have no effect. KX_LINE_FEED gives 0A and KX_CARRIAGE_RETURN 0D unless
 *                     they say otherwise. W6wzToaz takes KX_ANSI_MARK_UNKNOWN alone.
 * @return             Bytes written, or to be written, before the terminator.
 *
 * Example: 0x0041 KX_LINE_FEED, flags KX_ANSI_MEASURE | KX_ANSI_CRLF -> 3.
 */
KXSTR_API uint32_t W6wzToazEx(const KxChar *source, char *destination, uint32_t flags);
KXSTR_API uint32_t W6wzToaz(const KxChar *source, char *destination);

/**
 * KX string to ANSI (OEM) string. All codes convert by the code page, so KX_LINE_FEED gives 0A, KX_TAB 09.
 *
 * @param destination  As W6wzToazEx. With a count, room for up to 2 * (count - 1) + 1 bytes: see there.
 * @param count        Characters: at most count - 1 are converted, whatever their size in bytes.
 * @return             1, always.
 */
KXSTR_API uint32_t W6wzToazN(const KxChar *source, char *destination, uint32_t count);
KXSTR_API uint32_t W6wzTooz(const KxChar *source, char *destination);
KXSTR_API uint32_t W6wzToozN(const KxChar *source, char *destination, uint32_t count);

/**
 * The same with a count in bytes.
 *
 * @param bytes  Destination's size, the terminator included. A two-byte character that does not fit ends it.
 * @return       1; 0, with nothing written, when a pointer is null.
 */
KXSTR_API uint32_t W6wzToazNB(const KxChar *source, char *destination, uint32_t bytes);

/**
 * UTF-16 string to KX string and back, unit by unit.
 *
 * @param destination  Room for as many units as the source has, and the terminator. May be the source's own address.
 * @return             1, always.
 *
 * The KX character 0x0C00 converts to 0 and so ends a UTF-16 string. W6wzToVaskEx has a third argument without effect.
 */
KXSTR_API uint32_t W6VaskTowz(const uint16_t *source, KxChar *destination);
KXSTR_API uint32_t W6wzToVask(const KxChar *source, uint16_t *destination);
KXSTR_API uint32_t W6wzToVaskEx(const KxChar *source, uint16_t *destination, uint32_t unused);

/**
 * The same with a count.
 *
 * @param source       Null gives an empty string.
 * @param destination  Null: nothing is done. Not the source's own address.
 * @param count        Destination's size in 16-bit units, the terminator included.
 * @return             1, always.
 */
KXSTR_API uint32_t W6VaskTowzN(const uint16_t *source, KxChar *destination, uint32_t count);
KXSTR_API uint32_t W6wzToVaskN(const KxChar *source, uint16_t *destination, uint32_t count);

/**
 * UTF-16 string to ANSI string, by way of KX characters.
 *
 * @param source       Null gives an empty string, and so does lack of memory for a temporary buffer.
 * @param destination  Room for up to 2 * (count - 1) + 1 bytes. Null: nothing is done. Not the source's own address.
 * @param count        Characters: at most count - 1 are converted.
 * @return             1, always.
 */
KXSTR_API uint32_t W6VaskToazN(const uint16_t *source, char *destination, uint32_t count);

/**
 * KX 5 document stream to KX string. The stream, by the byte at which a code begins:
 *   0A, 0C, 0D        line ends: KX_LINE_FEED, KX_FORM_FEED, KX_CARRIAGE_RETURN
 *   20..7F            a character of set 0; on a double-byte system a space or the first byte of a pair
 *   C0 index set C0   any other character
 *   C3 a C3, C4 a C4  attribute a on, off: 0xFE00 + 2a, 0xFE00 + 2a + 1 (modulo 256 in the low byte)
 *   D0..FF            group of 4 + n bytes: code, any byte, n (16-bit little-endian), n bytes; skipped
 * All other bytes are skipped one by one, also the first bytes of fixed-length codes (C1, C2, C5..CF), since their
 * lengths are not known: what they hold is read as text. The stream is trusted to hold its codes whole.
 *
 * @param bytes  Destination's size in bytes, the terminator included: bytes / 2 - 1 characters at most. Below 2 nothing
 *               is written.
 * @return       The destination.
 *
 * A pair is a row of 94 characters and a place in it: row 0x21 holds set 0 and row 0x22 set 11, from row 0x23 on two
 * rows make one set from set 0x24 on; row 0x7F stands for nothing but takes the room of a character. The first byte of
 * a pair just before the terminator ends the conversion.
 */
KXSTR_API KxChar *W5dzTowz(const uint8_t *source, KxChar *destination, uint32_t bytes);

/**
 * The same for a Chinese stream: always in pairs, whatever the system, and rows from 0x22 on hold the characters of
 * code page 950 or 936, numbered through. They lie in KX as code page conversion lays them, 255 to a set, except that
 * the first of each further set takes index 0xFF of the set before.
 *
 * @param selector  Low 8 bits used: 0x83 for sets from 0xA5 on (950), others for sets from 0x82 on (936).
 */
KXSTR_API KxChar *lW5CdzTowz(const uint8_t *source, KxChar *destination, uint32_t bytes, uint32_t selector);

/**
 * KX string to KX 5 document stream. Characters of set 0 give one byte, others an extended character of 4 bytes; codes
 * (from KX_FIRST_CODE up, line ends among them) are left out. Characters are not renumbered (see WtpiKX6toKX5).
 *
 * @param bytes  Destination's size, the terminator included. An extended character is written only where 5 bytes are
 *               left before the terminator's; where there are fewer, it is left out and the text goes on behind it.
 * @return       The destination.
 */
KXSTR_API uint8_t *WwzTo5dz(const KxChar *source, uint8_t *destination, uint32_t bytes);

/* ---- KX 5 ----
 *
 * The older generation of the document format numbers the characters of sets 1, 2, 5, 8, 9, 10, 11 and 13 differently;
 * all others are the same. Set 11 (half-width katakana) is the same in Japan (country 1, see WtpiGetCountryID) and
 * different elsewhere. Neither function tests whether its input is a character.
 * Threads: re-entrant, the first use of the country included.
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
