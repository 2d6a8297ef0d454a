/**
 * Unicode and KX characters: single UTF-16 code units and counted strings.
 *
 * The table-driven sets convert through the library's own tables. The East Asian characters (sets 36 to 223) and the
 * upper halves of sets 0 and 12 convert through the process's ANSI code page as the system reports it, asked for at
 * every call; the code pages chosen elsewhere play no part. Surrogates are not combined. KX_NONE (0xFFFF) means no
 * mapping in both directions. The two directions are separate tables: there and back need not give the same value.
 *
 * Threads: all functions are re-entrant.
 */
#ifndef KXSTR_UNICODE_H
#define KXSTR_UNICODE_H

#include <kxstr/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * The bare table search: no ASCII rule, no code page.
 * @param unicode  Low 16 bits used.
 * @return         The KX character of the pair table, or 0xFFFF.
 */
KXSTR_API uint32_t GetKXCCHARValue(uint32_t unicode);

/**
 * @param unicode  One UTF-16 code unit; low 16 bits used.
 * @return         The KX character, or KX_NONE. U+0000 to U+007E give themselves (U+000A gives 0x000A, not the line end
 *                 code).
 *
 * Example: U+00E9 -> 0x0129.  U+20AC -> 0x0448.  U+0416 -> 0x0A0E.
 */
KXSTR_API uint16_t YWcharUnicodeToKX6x(uint32_t unicode);

/**
 * Converts UTF-16 code units until a 0 has been stored or a limit is reached.
 *
 * @param source             At least min(source_limit, destination_limit) readable units, or fewer with a 0 among them.
 * @param source_limit       In units. 0: nothing is stored.
 * @param destination        May be the source itself; must not overlap it otherwise.
 * @param destination_limit  In units. 0: nothing is stored.
 * @return                   Units stored, the 0 included. No terminator is added at a limit; unconvertible units are
 *                           stored as KX_NONE. The pointers are not read when a limit is 0.
 */
KXSTR_API uint32_t YWstrUnicodeToKX6x(const uint16_t *source, uint32_t source_limit, KxChar *destination,
                                      uint32_t destination_limit);

/**
 * @param set    Low 8 bits used. Sets above 14 have no value here, whatever the code page.
 * @param index  Low 8 bits used.
 * @return       The Unicode value, or 0 where there is none.
 */
KXSTR_API uint32_t GetUnicodeValue(uint32_t set, uint32_t index);

/**
 * @param ch  KX character; low 16 bits used.
 * @return    The UTF-16 code unit, or 0xFFFF. The codes of KX strings (from 0xF900 up) have none.
 */
KXSTR_API uint16_t YWcharKX6xToUnicode(uint32_t ch);

/** The other direction of YWstrUnicodeToKX6x, with the same arguments and results. KX 0x0C00 gives 0 and ends it. */
KXSTR_API uint32_t YWstrKX6xToUnicode(const KxChar *source, uint32_t source_limit, uint16_t *destination,
                                      uint32_t destination_limit);

#ifdef __cplusplus
}
#endif
#endif
