/**
 * The portable build's stand-in for the system: what Windows would answer about code pages, languages and the place of
 * the settings. The Windows build has none of this; there the system itself answers.
 */
#ifndef KXSTR_PLATFORM_H
#define KXSTR_PLATFORM_H

#include <kxstr/types.h>

#ifdef __cplusplus
extern "C" {
#endif

#define KX_REGISTRY_PATH_SIZE 4096

/**
 * The settings, filled once when the library is loaded: each from its environment variable when that is set and
 * parses, else from the locale, else from the default given here. The locale is the first of LC_ALL, LC_CTYPE and LANG
 * that is not empty, such as ja_JP.UTF-8; it stands for the code pages and the language that Windows has for it,
 * whatever its own encoding. C, POSIX and unknown locales stand for the defaults. In a process with more rights than
 * the user who started it (set-user-ID and the like) no variable counts, and there is no settings file.
 */
typedef struct KxPlatformSettings {
    uint32_t ansi_code_page;    /**< KX_ANSI_CODEPAGE, decimal, 1 to 65535; default 1252 */
    uint32_t oem_code_page;     /**< KX_OEM_CODEPAGE, likewise; default 437 */
    uint32_t double_byte;       /**< KX_DBCS, 0 or 1; default 1 when ansi_code_page is 932, 936, 949 or 950, else 0 */
    uint16_t system_language;   /**< KX_SYSTEM_LANGID, hexadecimal with or without 0x, such as 0x0411; default 0x0409 */
    uint16_t keyboard_language; /**< KX_KEYBOARD_LANGID, likewise; default: the system language */
    /** KX_REGISTRY: path of the settings file, zero-terminated, in the host's file name encoding; set but empty for no
     *  settings file. A path with no room here counts as unset. Default: kxstr/registry.reg under $XDG_CONFIG_HOME if
     *  that is an absolute path, else under $HOME/.config; empty (no settings file) if HOME is unset too. */
    char registry_path[KX_REGISTRY_PATH_SIZE];
} KxPlatformSettings;

/**
 * Reads the settings in force.
 *
 * @param settings  Filled whole. Null is ignored.
 *
 * Threads: the settings are process-wide and unguarded; serialise KxPlatformSet with every use of the library.
 */
KXSTR_API void KxPlatformGet(KxPlatformSettings *settings);

/**
 * Replaces the settings; the next query sees the new ones. What the library has worked out from the old ones and keeps
 * (the country, the Windows code page, its own descriptors) stays as it is. No member follows from another here: for
 * Japanese text as on a Japanese system, for one, set ansi_code_page, double_byte and system_language before the first
 * use of the library.
 *
 * Example: read, set ansi_code_page = 932, double_byte = 1 and system_language = 0x0411, replace.
 *
 * @param settings  Copied whole; the registry path is cut at its last byte, so that it always ends. Null is ignored.
 *
 * Threads: as KxPlatformGet.
 */
KXSTR_API void KxPlatformSet(const KxPlatformSettings *settings);

#ifdef __cplusplus
}
#endif
#endif
