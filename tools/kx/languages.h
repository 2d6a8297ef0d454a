// The languages by all the names that people have for them: the library's codes, ISO 639, locales, English.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace kx {

struct Language {
    const char *code;    // the library's: two capital letters, see KxLanguage
    const char *locales; // ISO 639 codes and names of locales, in small letters, the usual one first
    const char *names;   // English, the usual one first, with bars between
    const char *rules;   // the order in a few words

    std::string_view locale() const; // the first one
    std::string_view name() const;   // the first one
};

std::span<const Language> languages();

// What a name means. Exactly one of the two is there: nothing falls back to another language.
struct FoundLanguage {
    const Language *language = nullptr;
    std::string fault{}; // what is wrong with the name, and what is near
};

// Capital letters are the library's code; other names are of ISO 639 or a locale where they can be, and English or a
// code in other letters where they cannot.
FoundLanguage find_language(const std::string &name);

// The argument of an option that takes a language; what is wrong with it, or nothing.
std::string take_language(const Language *&language, const std::string &name);

// By the environment, as the C library finds the locale of collation; the fault says when it names no language.
FoundLanguage language_of_locale();

// One line a language, for people.
std::string list_of_languages();

} // namespace kx
