/* libkxdetect: the code page and the language of a text of which nobody knows them. */
#ifndef KXDETECT_DETECT_H
#define KXDETECT_DETECT_H

#include <stddef.h>
#include <stdint.h>

#ifndef KXDETECT_API
#    if defined(_WIN32) && defined(KXDETECT_SHARED)
#        ifdef KXDETECT_BUILDING
#            define KXDETECT_API __declspec(dllexport)
#        else
#            define KXDETECT_API __declspec(dllimport)
#        endif
#    elif defined(__GNUC__)
#        define KXDETECT_API __attribute__((visibility("default")))
#    else
#        define KXDETECT_API
#    endif
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* No more than this many bytes from the start of a text are looked at. */
#define KXDETECT_LARGEST ((size_t)1 << 20)

/* One answer. All strings are constant and live as long as the library. */
typedef struct KxDetectGuess {
    const char *page;     /* as `kx convert --list` has it: "852", "iso-8859-2", "koi8-r", "utf-8", "euc-jp" or "ascii";
                             "binary" for what is no text, which is then the only answer */
    const char *language; /* "cs"; "" for binary data and where nothing tells */
    uint32_t share;       /* of all answers and a page that is not known, in thousandths; how sure the answer is */
    uint32_t broken;      /* UTF-8 only: bytes that are not UTF-8 */
    uint64_t same;        /* bit N: page number N decodes the bytes to the same text, see KxDetectPageName */
} KxDetectGuess;

/**
 * Ranks the pages in which a text can have been written, each with the language that fits best.
 *
 * @param text     The bytes; may be null when size is 0. A text may end inside a character.
 * @param size     Their number; those after KXDETECT_LARGEST are not looked at.
 * @param guesses  Where the answers go, the best first; may be null when room is 0.
 * @param room     How many answers there is room for.
 * @return         The number of answers that were written; 0 also when there is no memory (about 600 KiB for a moment).
 *
 * Pages that decode the text to the same characters are one answer, which has the name of the most usual of them.
 * Threads: re-entrant.
 * Example: the bytes of "Příliš žluťoučký kůň" in page 852 -> "852", "cs".
 */
KXDETECT_API size_t KxDetect(const uint8_t *text, size_t size, KxDetectGuess *guesses, size_t room);

/* The name of the page whose bit in `same` is `number`; null from the first number on that has none. */
KXDETECT_API const char *KxDetectPageName(unsigned number);

/* The English name of a language's code: "Czech" of "cs"; null for a code that no answer has. */
KXDETECT_API const char *KxDetectLanguageName(const char *language);

#ifdef __cplusplus
}
#endif

#endif
