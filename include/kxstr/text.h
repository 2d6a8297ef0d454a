/**
 * Whole texts from one form to another: bytes of any code page, UTF-8, UTF-16 and KX text; and a walk through a
 * document stream that nobody vouches for.
 *
 * A text may come in pieces of any size; the result is that of the whole. Lengths are in bytes, explicit and never
 * exceeded; a 0 is a character like others. Nothing is allocated, and what the process is set to (its code pages,
 * its language) plays no part: a form says all that counts.
 *
 * Between code pages and Unicode a conversion is exact, by the published mapping of the page, on every system: each
 * character comes out as what it is and comes back, control characters too (in a DOS page as well, where KX text has
 * glyphs for them). A page without a published mapping goes by the library's tables. To page 1258 a Vietnamese letter
 * that the page lacks is written as a letter and a mark. With KX text on one side the rules of KX hold: a few
 * characters have no place of their own there (the soft hyphen is the hyphen). From Unicode and from page 1258, whose
 * tones are marks, a letter and its combining marks become one KX character where there is one; to 1258 such a
 * character that the page lacks is written as a letter and a mark, too.
 *
 * Threads: re-entrant; a converter is for one thread at a time.
 *
 * Example, a text of page 852 in UTF-8 (docs/guide.md converts a file, piece by piece):
 *
 *     const KxTextForm from = {KX_TEXT_CODE_PAGE, 852, 0}, to = {KX_TEXT_UTF8, 0, 0};
 *     KxTextConverter converter;
 *     KxTextResult result;
 *     char utf8[100];
 *     KxTextPrepare(&converter, &from, &to, 0);
 *     KxTextConvert(&converter, "\x9Fe\xE7tina", 7, 1, utf8, sizeof utf8, &result);
 *     // KX_TEXT_DONE, result.read 7, result.written 9
 */
#ifndef KXSTR_TEXT_H
#define KXSTR_TEXT_H

#include <kxstr/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* What a text is written in. */
#define KX_TEXT_CODE_PAGE 1u /**< bytes of a code page, single-byte or double-byte */
#define KX_TEXT_UTF8 2u
#define KX_TEXT_UTF16 3u   /**< UTF-16, the units as this machine has them */
#define KX_TEXT_UTF16LE 4u /**< UTF-16, low byte first */
#define KX_TEXT_UTF16BE 5u /**< UTF-16, high byte first */
#define KX_TEXT_KX 6u      /**< KX text, the units (KxChar) as this machine has them */
#define KX_TEXT_KXLE 7u    /**< KX text, low byte first, as it stands in files */

typedef struct KxTextForm {
    uint32_t form; /**< KX_TEXT_... */
    /**
     * Of a code page: its number, as KX or as Windows has it. A double-byte page (932, 936, 949, 950; 934 and 938 are
     * the same as 949 and 950) is one on every system.
     * Of KX text: the page that it was written with, which its East Asian characters and the bytes without a KX
     * character belong to; 0: that of the other side, where that is a code page or KX text with a page, else 1252.
     * Of Unicode: 0.
     */
    uint32_t code_page;
    /**
     * Null, or a descriptor in the place of the number, such as one with tables of the caller's own: its input code
     * page for a form that is read, its output code page for one that is written. It must live as long as the
     * converter.
     */
    const KxCodePage *page;
} KxTextForm;

/* How a text is converted; flags of KxTextPrepare. */
#define KX_TEXT_DROP 1u /**< characters that do not convert are left out */
/**
 * Tab, line feed, form feed and carriage return (bytes 9, 10, 12 and 13) are in KX text the glyphs that a DOS page has
 * for them. Else they are the KX codes (KX_TAB and so on), as in every text that has lines.
 */
#define KX_TEXT_GLYPHS 2u

/** A conversion, prepared. The caller owns it; nothing has to be freed, and it may be copied. */
typedef struct KxTextConverter {
    uint64_t opaque[1536];
} KxTextConverter;

/**
 * Prepares a conversion.
 *
 * @param converter  Not null; what it held is overwritten.
 * @param from, to   Not null; only read, and not needed afterwards.
 * @param flags      KX_TEXT_DROP, KX_TEXT_GLYPHS or 0.
 * @return           1; 0 for a form or a code page that the library does not know (then the converter stays unset).
 */
KXSTR_API uint32_t KxTextPrepare(KxTextConverter *converter, const KxTextForm *from, const KxTextForm *to,
                                 uint32_t flags);

/**
 * Sets what is written for each character that does not convert, and for each piece of bytes that is none.
 *
 * @param converter  Prepared without KX_TEXT_DROP.
 * @param character  A Unicode character, to U+10FFFF.
 * @return           1; 0 when the form that is written lacks it (then nothing changes).
 */
KXSTR_API uint32_t KxTextSubstitute(KxTextConverter *converter, uint32_t character);

/* Why a conversion ended. */
#define KX_TEXT_DONE 0u          /**< all was read */
#define KX_TEXT_FULL 1u          /**< what follows does not fit; more room, and it goes on */
#define KX_TEXT_INCOMPLETE 2u    /**< the source ends inside a character; not for the last piece */
#define KX_TEXT_NO_EQUIVALENT 3u /**< the form that is written lacks this character */
#define KX_TEXT_MALFORMED 4u     /**< these bytes are no character of the form that is read */

typedef struct KxTextResult {
    size_t read;     /**< bytes of the source that are done; whole characters only */
    size_t written;  /**< bytes of the destination */
    size_t replaced; /**< characters, and pieces that are none, that were replaced or left out */
    /** Bytes of the character behind those read, which ended the work: for the last three reasons; else 0. */
    size_t fault;
} KxTextResult;

/**
 * Converts as much as it can, from left to right.
 *
 * @param converter    Prepared.
 * @param source       `length` bytes, at any address. Not null unless `length` is 0.
 * @param last         0: more of the text follows, and a character that is not all here is left for then. Else nothing
 *                     follows, and the beginning of a character is a piece that is none.
 * @param destination  Room for `room` bytes, at any address, apart from the source. Bytes of the room behind those that
 *                     the result counts may change, too. May be null when `room` is 0.
 * @param result       Not null.
 * @return             KX_TEXT_DONE and so on. To go on behind a fault is the caller's choice: at
 *                     source + read + fault.
 *
 * No mark is looked for, and none is written: U+FEFF is a character here. KxTextMark finds one.
 * A byte of a code page takes at most 3 bytes of any other form; a unit of UTF-16 or KX text at most 3 bytes, too. No
 * character takes more than 4.
 */
KXSTR_API uint32_t KxTextConvert(KxTextConverter *converter, const void *source, size_t length, uint32_t last,
                                 void *destination, size_t room, KxTextResult *result);

/** As KxTextConvert with all the room there could be, writing nothing: `written` counts what it would be. */
KXSTR_API uint32_t KxTextMeasure(KxTextConverter *converter, const void *source, size_t length, uint32_t last,
                                 KxTextResult *result);

/**
 * @param form    KX_TEXT_UTF8 or one of UTF-16; others have no mark.
 * @param source  The start of a text, `length` bytes.
 * @return        Bytes of the mark U+FEFF that it begins with, or 0.
 */
KXSTR_API size_t KxTextMark(uint32_t form, const void *source, size_t length);

/* The kinds of codes of a document stream. */
#define KX_STREAM_TEXT 1u      /**< a character, a space, a hyphen or a line end; `character` holds it */
#define KX_STREAM_ATTRIBUTE 2u /**< an attribute goes on or off; `character` holds its KX code */
#define KX_STREAM_FUNCTION 3u  /**< a function of one byte */
#define KX_STREAM_FIXED 4u     /**< a code of fixed length that is none of these */
#define KX_STREAM_GROUP 5u     /**< a group: what it holds is no text of the stream */
#define KX_STREAM_END 6u       /**< a 0: the terminator */

/* What is wrong with a code. The library's other functions trust their streams: one with such a code is none for them.
 */
#define KX_STREAM_SOUND 0u
#define KX_STREAM_CUT_OFF 1u    /**< it runs behind the end; it may be sound when more follows */
#define KX_STREAM_NO_ROOM 2u    /**< a group whose size leaves no room for its ends */
#define KX_STREAM_NOT_CLOSED 3u /**< its last byte is not that of such a code */
#define KX_STREAM_OTHER_SIZE 4u /**< read from its end it has another size */

typedef struct KxStreamCode {
    size_t size;        /**< bytes; 1 for a code with a fault, 0 behind the last code */
    uint32_t kind;      /**< KX_STREAM_TEXT and so on */
    uint32_t fault;     /**< KX_STREAM_SOUND and so on */
    uint16_t character; /**< KX character or KX code; KX_NONE where there is none */
} KxStreamCode;

/**
 * The next code of a document stream (KX 6) from an untrusted source. Every byte may be anything.
 *
 * @param stream  `length` bytes, which begin where a code begins. No byte behind them is read.
 * @param code    Not null.
 * @return        1; 0 when `length` is 0.
 *
 * Example: {0xF0, 0x29, 0x01, 0xF0} -> size 4, KX_STREAM_TEXT, character 0x0129. {0xF0, 0x29} -> size 1,
 * KX_STREAM_CUT_OFF.
 */
KXSTR_API uint32_t KxStreamNext(const uint8_t *stream, size_t length, KxStreamCode *code);

#ifdef __cplusplus
}
#endif
#endif
