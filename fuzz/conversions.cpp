// Single characters, code pages and descriptors, Unicode, and the conversions of whole buffers and strings.
#include <algorithm>
#include <cstring>
#include <iterator>
#include <kxstr/codepage.h>
#include <kxstr/core.h>
#include <kxstr/forms.h>
#include <kxstr/platform.h>
#include <kxstr/unicode.h>
#include <string>

#include "targets.h"

namespace kxstr::fuzz {
namespace {

using Bytes = std::vector<std::uint8_t>;

// A range table and a reverse table of the caller's own, of exactly the size that their layouts say.
struct OwnTables {
    explicit OwnTables(Input &input) : range(input, range_bytes(input)), reverse(input, reverse_bytes(input)) {}

    static Bytes range_bytes(Input &input) {
        const std::uint8_t first = input.byte();
        const auto last = static_cast<std::uint8_t>(first + input.below(256u - first));
        Bytes bytes{first, last};
        for (unsigned i = first; i <= last; ++i) {
            bytes.push_back(input.byte());
            bytes.push_back(input.byte());
        }
        return bytes;
    }

    static Bytes reverse_bytes(Input &input) {
        std::vector<std::uint16_t> keys(input.below(64));
        for (std::uint16_t &key : keys)
            key = input.word();
        std::ranges::sort(keys);
        keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
        Bytes bytes{static_cast<std::uint8_t>(keys.size()), 0};
        for (const unsigned key : keys)
            bytes.insert(bytes.end(),
                         {static_cast<std::uint8_t>(key), static_cast<std::uint8_t>(key >> 8), input.byte()});
        return bytes;
    }

    Buffer<std::uint8_t> range;
    Buffer<std::uint8_t> reverse;
};

void single_characters(Input &input) {
    choose_language(input);
    KxCodePage page;
    WcvtClrCodepage(&page);
    for (auto times = input.below(3); times < 3; ++times)
        WcvtSetCodepage(code_page_of(input), input.byte(), &page);
    const OwnTables own(input);
    if (input.below(4) == 0) page.low_table = own.range.data();
    if (input.below(4) == 0) page.high_table = own.range.data();
    if (input.below(4) == 0) page.reverse_table = own.reverse.data();
    WcvtFindCPTable(code_page_of(input), input.below(5));
    WcvtKXCodepageToWinCodepage(WcvtWinCodepageToKXCodepage(code_page_of(input)));
    std::uint16_t keyboard_page = 0;
    std::uint8_t character_set = 0;
    WshGetInfoFromKeyboard(input.flag() ? &keyboard_page : nullptr, input.flag() ? &character_set : nullptr);
    for (std::uint32_t value : units_of(input)) {
        value |= value << 16; // the high half does not count
        const std::uint16_t ch = WcvtNtvToKx(&page, value);
        require(ch == WcvtNtvToKx(&page, value & 0xFFFF), "the high half of an argument does not count");
        WcvtKxToNtv(&page, value);
        TpiAnsiToKx(value);
        TpiOemToKx(value);
        TpiGetAnsi(value);
        TpiGetOem(value);
        ValidKxCharacter(value);
        GetKXCCHARValue(value);
        GetUnicodeValue(value >> 8, value);
        YWcharKX6xToUnicode(YWcharUnicodeToKX6x(value));
        WtpiKX6toKX5(value);
        KxChar first = 0, second = 0;
        const std::uint32_t count = WtpiKX5toKX6(value, &first, &second);
        require(count == 2 ? second == 0x0B3D || second == 0x0B3E : count == 1 && second == 0, "one character or two");
    }
}

template <typename Table> void require_same_address(Table *(*ask)()) {
    const Table *const first = ask();
    require(ask() == first, "one address");
}

// What the process is set to, in any order.
void process(Input &input) {
    const std::string file = std::string(own_folder()) + "/conversions.reg";
    KxPlatformSettings settings;
    KxPlatformGet(&settings);
    for (auto calls = input.below(32); calls > 0; --calls) {
        switch (input.below(14)) {
        case 0: {
            const Buffer<char> language(input, bytes_of(input, 12));
            require(VaskInit(input.flag() ? language.data() : nullptr) == 1, "VaskInit gives 1");
            break;
        }
        case 1: VaskUnInit(); break;
        case 2: choose_language(input); break;
        case 3: require(std::strlen(VaskGetLanguage()) <= 7, "a language is cut"); break;
        case 4:
            // Rarely a settings file, since writing one takes time.
            settings.registry_path[input.below(16) == 0 ? file.copy(settings.registry_path, file.size()) : 0] = 0;
            KxPlatformSet(input.flag() ? &settings : nullptr);
            break;
        case 5: WcvtGetDOSCodepage(); break;
        case 6: WcvtGetWinCodepage(); break;
        case 7: {
            const std::uint32_t page = code_page_of(input);
            const bool stored = WcvtSetWinCodepage(page) == 1;
            require(!stored || (page & 0xFFFF) == 0 || WcvtGetWinCodepage() == (page & 0xFFFF),
                    "what is stored is in force");
            break;
        }
        case 8: require(WtpiGetCountryID() <= 6, "six countries"); break;
        case 9: require_same_address(WtpiGetAnsiCodepageTbl); break;
        case 10: require_same_address(WtpiGetOemCodepageTbl); break;
        case 11: TpiSetCodepage(); break;
        case 12: require(str_SetCodePage() == 1, "str_SetCodePage gives 1"); break;
        default: str_ClrCodePage(); break;
        }
        require(std::strstr(WcvtGetRegistryLoc(), "CodePageData") != nullptr, "a path");
    }
    str_ClrCodePage();
}

// ---- Buffers: a count in bytes, of which the low 16 bits count ----

void native_to_stream(Input &input) {
    const Buffer<char> source(input, bytes_of(input));
    for (const auto convert : {str_AnsiToKx, str_OemToKx, TpiAnsiToKxBuff, TpiOemToKxBuff}) {
        const std::uint32_t count = input.below(static_cast<std::uint32_t>(4 * source.size() + 2));
        const Buffer<std::uint8_t> to(input, count);
        const std::uint32_t written = convert(to.data(), source.data(), count | 0x30000);
        require(count == 0 ? written == 0 : written <= count && to[written - 1] == 0, "what is written ends with a 0");
    }
    const std::uint32_t count = input.below(static_cast<std::uint32_t>(4 * source.size() + 2));
    const Buffer<std::uint8_t> to(input, count);
    const std::uint32_t written = str_DBCS_OEMorANSItoKX(to.data(), source.data(), count, input.below(2));
    require(count == 0 ? written == 0 : written <= count && to[written - 1] == 0, "what is written ends with a 0");
}

void stream_to_native(Input &input) {
    const auto stream = sound_stream(input.part(3000));
    const Buffer<std::uint8_t> source(input, stream);
    const auto size = static_cast<std::uint32_t>(source.size());
    for (const auto convert : {TpiKxToAnsiBuff, TpiKxToOemBuff}) {
        const std::uint32_t count = input.below(size + 3);
        const Buffer<char> to(input, count);
        const std::uint32_t result = convert(to.data(), source.data(), count);
        require(result <= count, "within the room");
        const Buffer<std::uint8_t> in_place(input, stream, std::max(size, count));
        require(convert(reinterpret_cast<char *>(in_place.data()), in_place.data(), count) == result,
                "the same in place");
        if (count == 0) continue;
        require(std::memcmp(in_place.data(), to.data(), to.text().size() + 1) == 0, "the same in place");
    }
    const std::uint32_t flags = input.byte();
    const std::uint32_t count = input.below(size + 3);
    const Buffer<std::uint8_t> to(input, count);
    const std::uint32_t stripped = TpiKxDocStripBuff(to.data(), source.data(), count, flags);
    require(count == 0 ? stripped == 0 : stripped <= count && to[stripped - 1] == 0, "what is written ends with a 0");
    const Buffer<std::uint8_t> sio(input, count), sio_too(input, count);
    const std::uint16_t result = TpiKxToKxsioBuff(sio.data(), source.data(), count, flags);
    require(W6dzTotz(source.data(), sio_too.data(), count, flags) == result, "another order of arguments");
    if (count != 0) require(sio.text() == sio_too.text(), "the same");
}

void kx_to_buffers(Input &input) {
    const auto text = kx_of(input);
    const Buffer<KxChar> source(input, text);
    const auto size = static_cast<std::uint32_t>(2 * source.size());
    const std::uint32_t flags = input.byte();
    const std::uint32_t count = input.below(size + 5);
    // The terminator comes on top of the count, which is signed here.
    const std::int32_t signed_count =
        input.below(8) == 0 ? -static_cast<std::int32_t>(count) : static_cast<std::int32_t>(count);
    const Buffer<KxChar> stripped(input, signed_count == 0 ? 0u : signed_count < 0 ? 1u : count / 2 + 1);
    const std::uint32_t written = TpiKxLongStripBuff(stripped.data(), source.data(), signed_count, flags);
    require(signed_count == 0 ? written == 0 : written == 2 * stripped.size() || written < 2 * stripped.size(),
            "within the room");
    if (written != 0) require(stripped[written / 2 - 1] == 0, "what is written ends with a 0");
    const Buffer<KxChar> in_place(input, text, std::max(source.size(), stripped.size()));
    require(TpiKxLongStripBuff(in_place.data(), in_place.data(), signed_count, flags) == written &&
                std::equal(in_place.begin(), in_place.begin() + written / 2, stripped.begin()),
            "the same in place");
    const Buffer<std::uint8_t> sio(input, count), sio_too(input, count);
    const std::uint16_t result = TpiKxwzToKxsioBuff(sio.data(), source.data(), count, flags);
    require(W6wzTotz(source.data(), sio_too.data(), count, flags) == result, "another order of arguments");
    if (count != 0) require(sio.text() == sio_too.text(), "the same");
    const Buffer<std::uint8_t> old_stream(input, count);
    require(WwzTo5dz(source.data(), old_stream.data(), count) == old_stream.data(), "the destination");
    if (count != 0) old_stream.text();
}

// ---- Strings ----

void native_to_kx(Input &input) {
    const auto text = bytes_of(input);
    const Buffer<char> source(input, text);
    const struct {
        std::uint32_t (*whole)(const char *source, KxChar *destination);
        std::uint32_t (*counted)(const char *source, KxChar *destination, std::uint32_t count);
    } kinds[] = {{W6azTowz, W6azTowzN}, {W6ozTowz, W6ozTowzN}};
    for (const auto &[whole, counted] : kinds) {
        const Buffer<KxChar> to(input, source.size());
        require(whole(source.data(), to.data()) == 1, "there is memory");
        const Buffer<KxChar> in_place(input, source.size());
        std::memcpy(in_place.data(), text.data(), text.size());
        require(whole(reinterpret_cast<const char *>(in_place.data()), in_place.data()) == 1, "there is memory");
        require(to.text() == in_place.text(), "the same in place");
        const std::uint32_t count = input.below(static_cast<std::uint32_t>(source.size() + 3));
        const Buffer<KxChar> part(input, count);
        counted(source.data(), part.data(), count | 0x10000);
        if (count != 0) part.text();
    }
}

void kx_to_native(Input &input) {
    const auto text = kx_of(input);
    const Buffer<KxChar> source(input, text);
    const std::uint32_t flags = input.byte() & ~KX_ANSI_MEASURE;
    const std::uint32_t size = W6wzToazEx(source.data(), nullptr, flags | KX_ANSI_MEASURE);
    const Buffer<char> exact(input, size + 1);
    require(W6wzToazEx(source.data(), exact.data(), flags) == size && exact[size] == 0, "what was measured");
    const Buffer<KxChar> in_place(input, text, std::max<std::size_t>(source.size(), size / 2 + 1));
    require(W6wzToazEx(in_place.data(), reinterpret_cast<char *>(in_place.data()), flags) == size &&
                std::memcmp(in_place.data(), exact.data(), size) == 0,
            "the same in place");
    const Buffer<char> marked(input, 2 * source.size() - 1);
    require(W6wzToaz(source.data(), marked.data()) < marked.size(), "two bytes a character at most");
    const Buffer<char> oem(input, 2 * source.size() - 1);
    require(W6wzTooz(source.data(), oem.data()) == 1, "W6wzTooz gives 1");
    const std::uint32_t count = input.below(static_cast<std::uint32_t>(source.size() + 3));
    for (const auto convert : {W6wzToazN, W6wzToozN}) {
        const Buffer<char> to(input, count == 0 ? 0 : 2 * count - 1);
        require(convert(source.data(), to.data(), count) == 1, "always 1");
        if (count != 0) to.text();
    }
    const Buffer<char> bytes(input, count);
    require(W6wzToazNB(source.data(), bytes.data(), count) == 1, "no pointer is null");
    if (count != 0) bytes.text();
}

void unicode_strings(Input &input) {
    const auto text = input.flag() ? units_of(input) : kx_of(input);
    const Buffer<std::uint16_t> source(input, text);
    const auto size = static_cast<std::uint32_t>(source.size());
    const std::uint32_t count = input.below(size + 3);
    const auto three = [](const KxChar *from, std::uint16_t *to) { return W6wzToVaskEx(from, to, 7); };
    for (const auto convert : {W6VaskTowz, W6wzToVask, +three}) {
        const Buffer<std::uint16_t> to(input, size);
        require(convert(source.data(), to.data()) == 1, "always 1");
        const Buffer<std::uint16_t> in_place(input, text);
        convert(in_place.data(), in_place.data());
        require(to.text() == in_place.text(), "the same in place");
    }
    for (const auto convert : {W6VaskTowzN, W6wzToVaskN}) {
        const Buffer<std::uint16_t> to(input, count);
        require(convert(input.below(16) == 0 ? nullptr : source.data(), to.data(), count) == 1, "always 1");
        if (count != 0) to.text();
    }
    const Buffer<char> native(input, count == 0 ? 0 : 2 * count - 1);
    require(W6VaskToazN(input.below(16) == 0 ? nullptr : source.data(), native.data(), count) == 1, "always 1");
    // Without a terminator: the limit of the source keeps it within.
    const Buffer<std::uint16_t> open(input, std::span(text).first(text.size() - 1));
    const auto limit = static_cast<std::uint32_t>(open.size());
    for (const auto convert : {YWstrUnicodeToKX6x, YWstrKX6xToUnicode}) {
        const std::uint32_t room = input.below(limit + 3);
        const Buffer<std::uint16_t> to(input, room);
        const std::uint32_t stored = convert(open.data(), limit, to.data(), room);
        require(stored <= std::min(limit, room), "units stored");
        const Buffer<std::uint16_t> in_place(input, text, std::max<std::size_t>(text.size(), room));
        require(convert(in_place.data(), limit, in_place.data(), room) == stored &&
                    std::equal(to.begin(), to.begin() + stored, in_place.begin()),
                "the same in place");
    }
}

// ---- KX 5 ----

// A stream that holds its codes whole; where text is in pairs, these too.
Bytes sound_old_stream(std::span<const std::uint8_t> bytes, bool in_pairs) {
    Bytes stream;
    for (std::size_t size = 1; !bytes.empty(); bytes = bytes.subspan(std::min(size, bytes.size()))) {
        const std::uint8_t code = bytes[0];
        const bool is_pair = in_pairs && code > 0x20 && code < 0x80;
        size = code == 0xC0 ? 4 : code == 0xC3 || code == 0xC4 ? 3 : is_pair ? 2 : 1;
        if (code >= 0xD0) size = bytes.size() < 4 ? 4 : 4 + (bytes[2] | std::size_t{bytes[3]} << 8);
        if (code != 0 && size <= bytes.size() && !(is_pair && bytes[1] == 0))
            stream.insert(stream.end(), bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
    }
    stream.push_back(0);
    return stream;
}

void old_streams(Input &input) {
    const std::uint32_t bytes = input.below(4000);
    const std::uint32_t selector = input.flag() ? 0x83 : input.byte();
    KxPlatformSettings settings;
    KxPlatformGet(&settings);
    const auto text = input.part(3000);
    const Buffer<std::uint8_t> source(input, sound_old_stream(text, settings.double_byte != 0));
    const Buffer<std::uint8_t> in_pairs(input, sound_old_stream(text, true));
    const Buffer<KxChar> to(input, bytes / 2), chinese(input, bytes / 2);
    require(W5dzTowz(source.data(), to.data(), bytes) == to.data(), "the destination");
    require(lW5CdzTowz(in_pairs.data(), chinese.data(), bytes, selector) == chinese.data(), "the destination");
    if (bytes < 2) return;
    to.text();
    chinese.text();
}

} // namespace

void conversions(Input &input) {
    static constexpr void (*kFamilies[])(Input &) = {single_characters, process,         native_to_stream,
                                                     stream_to_native,  kx_to_buffers,   native_to_kx,
                                                     kx_to_native,      unicode_strings, old_streams};
    choose_system(input);
    input.one_of(kFamilies)(input);
}

} // namespace kxstr::fuzz
