// The link engine: any expression over settings that hold links, within its bounds, and with nothing left behind.
#include <cstdio>
#include <cstring>
#include <kxstr/codepage.h>
#include <string>

#include "platform/roots.h"
#include "registry/key.h"
#include "registry/link_engine.h"
#include "registry/values.h"
#include "targets.h"

namespace kxstr::fuzz {
namespace {

// The values of a few keys, each a link or plain data, so that expressions find something.
std::string settings_text(Input &input) {
    std::string text = "Windows Registry Editor Version 5.00\n";
    const char *const keys[] = {"HKEY_CURRENT_USER\\Software\\K", "HKEY_CURRENT_USER\\K", "HKEY_LOCAL_MACHINE\\K",
                                "HKEY_CURRENT_USER\\Software\\Norvane\\Conversions\\21\\CodePageData\\EN"};
    const char *const names[] = {"a", "b", "c", "d", "DOS Code Page", "Windows Code Page"};
    for (const char *key : keys) {
        text.append("[").append(key).append("]\n");
        const auto mask = input.byte();
        for (std::size_t i = 0; i < std::size(names); ++i) {
            if ((mask >> i & 1) == 0) continue;
            const std::uint8_t kind = input.byte();
            text.append("\"").append(names[i]).append(kind % 8 == 0   ? "\"=hex(40000003):"
                                                      : kind % 8 == 1 ? "\"=hex(c0000008):"
                                                      : kind % 8 < 6  ? "\"=hex(80000008):"
                                                                      : "\"=hex:");
            const char *comma = "";
            for (const std::uint8_t byte : input.part(kind >> 3)) {
                char digits[12];
                std::snprintf(digits, sizeof digits, "%s%02x,00", comma, byte);
                text += digits;
                comma = ",";
            }
            text += '\n';
        }
    }
    if (input.below(8) == 0) {
        text += "[HKEY_CURRENT_USER\\Software\\Norvane\\Yarrowind\\21\\LogicalCharacters]\n"
                "\"Yarrowind Logical Syntax Characters\"=\"'+{}/\"\n";
    }
    return text;
}

} // namespace

void links(Input &input) {
    const std::string file = std::string(own_folder()) + "/links.reg";
    choose_system(input, file.c_str());
    const std::string text = settings_text(input);
    std::FILE *out = std::fopen(file.c_str(), "wb");
    require(out != nullptr && std::fwrite(text.data(), 1, text.size(), out) == text.size(), "a settings file");
    require(std::fclose(out) == 0, "all of it is written");

    const auto reads = input.below(64);
    if (reads < 4) { // the library's own way to them
        WcvtGetDOSCodepage();
        WcvtGetWinCodepage();
        if (reads == 0) WcvtSetWinCodepage(code_page_of(input));
    }
    registry::LinkEngine engine;
    require(registry::set_up(engine, registry::Missing::left), "an engine");
    const Buffer<std::uint8_t> wide(input, [&] {
        std::vector<std::uint8_t> bytes;
        const bool any = input.below(4) == 0;
        for (const std::uint8_t byte : input.rest()) {
            bytes.push_back(byte);
            if (!any) bytes.push_back(0);
        }
        return bytes;
    }());
    for (const bool target : {false, true}) {
        for (const bool in_place : {false, true}) {
            std::uint32_t type = registry::kLinkType, size = 0;
            std::uint8_t *const result =
                registry::expand(engine, {wide.data(), wide.size()}, type, in_place, target, size);
            require(result != nullptr || engine.last_error != 0, "a result or an error");
            require(size <= registry::kWorkAreaSize && engine.committed <= registry::kWorkAreaSize,
                    "within the work area");
            require(engine.active_links.count == 0, "no link stays active");
            if (!in_place) require(engine.used == 0, "nothing stays in the work area");
            if (!in_place && result != nullptr) platform::task_free(result);
            engine.used = 0;
        }
    }
    if (const auto target = registry::target_text(engine, {wide.data(), wide.size()})) {
        const auto place = registry::target_of(*target);
        require(place.key_path.size() + place.value_name.size() <= target->size(), "a place within the text");
    }
    registry::release(engine);
}

} // namespace kxstr::fuzz
