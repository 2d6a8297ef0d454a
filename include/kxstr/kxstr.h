/**
 * Umbrella header of kxstr: all subsystems.
 *
 * Example: VaskSetLanguage("DE"); // core.h; then W6wstrcmp(a, b), strops.h, compares two KX strings in German
 */
#ifndef KXSTR_KXSTR_H
#define KXSTR_KXSTR_H

#include <kxstr/codepage.h>
#include <kxstr/collate.h>
#include <kxstr/core.h>
#include <kxstr/forms.h>
#include <kxstr/letters.h>
#include <kxstr/platform.h>
#include <kxstr/prim.h>
#include <kxstr/strops.h>
#include <kxstr/text.h>
#include <kxstr/types.h>
#include <kxstr/unicode.h>

#endif
