#include "platform/system.h"

namespace kxstr::platform {
namespace {

struct CharacterSet {
    std::uint16_t code_page;
    std::uint8_t character_set;
};

constexpr CharacterSet kCharacterSets[] = {
    {1252, 0},   {1250, 238}, {1251, 204}, {1253, 161}, {1254, 162}, {1255, 177}, {1256, 178}, {1257, 186},
    {1258, 163}, {874, 222},  {932, 128},  {936, 134},  {949, 129},  {950, 136},  {1361, 130},
};

} // namespace

std::optional<std::uint32_t> ansi_code_page_of(std::uint16_t language) noexcept {
    switch (language) {
    case 0x0409: return 1252;
    case 0x0411: return 932;
    case 0x0412: return 949;
    case 0x0404:
    case 0x0C04:
    case 0x1404: return 950;
    case 0x0804:
    case 0x1004: return 936;
    default: return std::nullopt;
    }
}

std::optional<std::uint8_t> character_set_of(std::uint32_t code_page) noexcept {
    for (const auto &entry : kCharacterSets)
        if (entry.code_page == code_page) return entry.character_set;
    return std::nullopt;
}

} // namespace kxstr::platform
