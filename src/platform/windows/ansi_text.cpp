#include "platform/ansi_text.h"

#include "platform/windows/windows.h"

namespace kxstr::platform {

std::u16string ansi_to_wide(std::string_view bytes) {
    const int size = static_cast<int>(bytes.size());
    std::u16string units(bytes.size(), u'\0'); // no code page has more units than bytes
    const int count =
        MultiByteToWideChar(CP_ACP, 0, bytes.data(), size, reinterpret_cast<wchar_t *>(units.data()), size);
    units.resize(static_cast<std::size_t>(count));
    return units;
}

std::string wide_to_ansi(std::u16string_view units) {
    const auto *const text = reinterpret_cast<const wchar_t *>(units.data());
    const int size = static_cast<int>(units.size());
    // A best fit could name another key. UTF-8, which lacks nothing, refuses the flag.
    const DWORD flags = GetACP() == CP_UTF8 ? 0 : WC_NO_BEST_FIT_CHARS;
    std::string bytes;
    bytes.resize(
        static_cast<std::size_t>(WideCharToMultiByte(CP_ACP, flags, text, size, nullptr, 0, nullptr, nullptr)));
    WideCharToMultiByte(CP_ACP, flags, text, size, bytes.data(), static_cast<int>(bytes.size()), nullptr, nullptr);
    return bytes;
}

} // namespace kxstr::platform
