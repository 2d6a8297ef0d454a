// Prints what the portable platform layer answers, in the lines that dump_conversions.c tells.
#include <cstdio>
#include <cstdlib>
#include <kxstr/platform.h>

#include "platform/system.h"

using namespace kxstr::platform;

namespace {

void dump_wide(std::uint32_t page, std::span<const std::uint8_t> bytes) {
    const auto unit = to_wide(page, bytes);
    if (!unit) return;
    std::printf("wide %u %02X", page, bytes[0]);
    if (bytes.size() == 2) std::printf("%02X", bytes[1]);
    std::printf(" %04X\n", *unit);
}

void dump_native(std::uint32_t page, std::uint16_t unit) {
    const auto native = from_wide(page, unit);
    if (native.count == 0) return;
    std::printf("native %u %04X %02X", page, unit, native.bytes[0]);
    if (native.count == 2) std::printf("%02X", native.bytes[1]);
    std::printf("\n");
}

void dump_page(std::uint32_t page) {
    KxPlatformSettings settings;
    KxPlatformGet(&settings);
    settings.ansi_code_page = page;
    KxPlatformSet(&settings);
    for (unsigned first = 0; first < 0x100; ++first) {
        std::uint8_t bytes[] = {static_cast<std::uint8_t>(first), 0};
        if (is_lead_byte(bytes[0])) std::printf("lead %u %02X\n", page, first);
        dump_wide(page, {bytes, 1});
        for (unsigned second = 0; second < 0x100; ++second) {
            bytes[1] = static_cast<std::uint8_t>(second);
            dump_wide(page, bytes);
        }
    }
    for (unsigned unit = 0; unit < 0x10000; ++unit)
        dump_native(page, static_cast<std::uint16_t>(unit));
}

} // namespace

int main(int argc, char **argv) {
    for (int i = 1; i < argc; ++i)
        dump_page(static_cast<std::uint32_t>(std::strtoul(argv[i], nullptr, 10)));
    for (std::uint32_t page = 0; page < 0x10000; ++page)
        if (const auto set = character_set_of(page)) std::printf("charset %u %02X\n", page, *set);
    for (unsigned language = 0; language < 0x10000; ++language)
        if (const auto page = ansi_code_page_of(static_cast<std::uint16_t>(language)))
            std::printf("language %04X %u\n", language, *page);
}
