/**
 * The core: start and stop, the language, and which 16-bit values are KX characters.
 */
#ifndef KXSTR_CORE_H
#define KXSTR_CORE_H

#include <kxstr/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Starts the library with a language such as "EN".
 *
 * @param language  Zero-terminated byte string. Null is taken as the empty string. At most 7 bytes are kept; a longer
 *                  string is cut, never written past the store.
 * @return          1, always.
 *
 * Only the first call since load (or since VaskUnInit) stores the language; later calls change nothing. The library
 * works before this call, with the language "EN".
 * Threads: the language is process-wide and unguarded; serialise a change with every use of the library.
 */
KXSTR_API uint32_t VaskInit(const char *language);

/** Lets the next VaskInit store its language again. The current language stays. Threads: as VaskInit. */
KXSTR_API void VaskUnInit(void);

/** Stores the language whatever VaskInit did before. Argument, result and threads as VaskInit. */
KXSTR_API uint32_t VaskSetLanguage(const char *language);

/**
 * @return  The live, zero-terminated language store (8 bytes, the library's own; do not write). The address is the same
 *          for the life of the process and shows later changes.
 */
KXSTR_API const char *VaskGetLanguage(void);

/**
 * Tells whether a 16-bit value is a character that the library knows.
 *
 * @param ch  Low 16 bits used: a KX character. A set number or an index of 0xFF counts as 0.
 * @return    1 valid, 0 not. Sets 0 to 14 have fixed index ranges; sets 36 to 223 are valid as a whole on a
 *            double-byte system, which is asked about at every call, and not valid elsewhere.
 *
 * Threads: re-entrant.
 * Example: 0x0129 -> 1.  0x01F2 -> 0.  0x2400 -> 1 on a double-byte system, else 0.
 */
KXSTR_API uint32_t ValidKxCharacter(uint32_t ch);

#ifdef __cplusplus
}
#endif
#endif
