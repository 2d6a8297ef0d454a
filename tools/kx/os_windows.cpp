#include "os.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <fcntl.h>
#include <initializer_list>
#include <io.h>
#include <share.h>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <vector>

#include "platform/windows/windows.h"

// Of the runtime: the arguments in UTF-16, where patterns such as *.txt are replaced by the names of files if wanted,
// as shells do elsewhere.
extern "C" int __cdecl __wgetmainargs(int *argc, wchar_t ***argv, wchar_t ***environment, int patterns, int *new_mode);

namespace kx::os {
namespace {

// The runtime counts bytes in an int.
unsigned at_most_one_call(std::size_t size) {
    return static_cast<unsigned>(std::min(size, std::size_t{1} << 30));
}

HANDLE handle_of(int descriptor) {
    return reinterpret_cast<HANDLE>(_get_osfhandle(descriptor));
}

std::string utf8_of(const wchar_t *text) {
    const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, -1, bytes.data(), size, nullptr, nullptr);
    bytes.pop_back(); // the terminator
    return bytes;
}

std::wstring wide_of(const char *path) {
    const int size = MultiByteToWideChar(CP_UTF8, 0, path, -1, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(size), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, path, -1, wide.data(), size);
    return wide;
}

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// For calls of the system that set no errno.
int fail() {
    switch (GetLastError()) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND: errno = ENOENT; break;
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS: errno = EEXIST; break;
    case ERROR_ACCESS_DENIED:
    case ERROR_SHARING_VIOLATION: errno = EACCES; break;
    case ERROR_INVALID_FUNCTION: errno = ENOSYS; break;
    default: errno = EIO; break;
    }
    return -1;
}

std::uint64_t join(DWORD high, DWORD low) {
    return (std::uint64_t{high} << 32) | low;
}

std::optional<RegularFile> regular_file(HANDLE file) {
    BY_HANDLE_FILE_INFORMATION about;
    if (GetFileType(file) != FILE_TYPE_DISK || GetFileInformationByHandle(file, &about) == 0) return std::nullopt;
    if ((about.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return std::nullopt;
    return RegularFile{about.dwVolumeSerialNumber, join(about.nFileIndexHigh, about.nFileIndexLow),
                       join(about.nFileSizeHigh, about.nFileSizeLow)};
}

} // namespace

void prepare(int &argc, char **&argv) {
    // The arguments of main are cut down to the ANSI code page, and may come to name another file.
    wchar_t **wide = nullptr;
    wchar_t **environment = nullptr;
    int new_mode = 0;
    if (__wgetmainargs(&argc, &wide, &environment, 1, &new_mode) == 0) {
        static std::vector<std::string> texts;
        static std::vector<char *> arguments;
        for (int i = 0; i < argc; ++i)
            texts.push_back(utf8_of(wide[i]));
        for (std::string &text : texts)
            arguments.push_back(text.data());
        arguments.push_back(nullptr);
        argv = arguments.data();
    }
    for (const int descriptor : {kStandardInput, kStandardOutput, kStandardError})
        // A stream that is missing must not become a file that is opened later.
        if (_get_osfhandle(descriptor) < 0) _wopen(L"NUL", descriptor == kStandardInput ? _O_WRONLY : _O_RDONLY);
    for (const int descriptor : {kStandardInput, kStandardOutput, kStandardError})
        _setmode(descriptor, _O_BINARY);
}

int open_to_read(const char *path) {
    return _wopen(wide_of(path).c_str(), _O_RDONLY | _O_BINARY | _O_NOINHERIT);
}

int open_to_write(const char *path) {
    return _wopen(wide_of(path).c_str(), _O_WRONLY | _O_CREAT | _O_TRUNC | _O_BINARY | _O_NOINHERIT,
                  _S_IREAD | _S_IWRITE);
}

std::ptrdiff_t read(int descriptor, void *bytes, std::size_t size) {
    return _read(descriptor, bytes, at_most_one_call(size));
}

std::ptrdiff_t write(int descriptor, const void *bytes, std::size_t size) {
    return _write(descriptor, bytes, at_most_one_call(size));
}

int close(int descriptor) {
    return _close(descriptor);
}

// ---- Converters of text ----

const char *const kWhereEncodingsAre = "a code page of Windows by its number, koi8-r, iso-8859-15 and the like by name";

namespace {

constexpr struct {
    const char *name;
    UINT page;
} kNames[] = {{"koi8-r", 20866}, {"koi8-u", 21866},       {"euc-jp", 20932},    {"gb18030", 54936},
              {"tis-620", 874},  {"mac-cyrillic", 10007}, {"mac-greek", 10006}, {"mac-turkish", 10081},
              {"mac-ce", 10029}, {"johab", 1361},         {"big5-hkscs", 951}};

// 0 for none, and for one that cannot tell what is no character of it.
UINT page_of(const std::string &encoding) {
    UINT page = 0;
    for (const auto &known : kNames)
        if (encoding == known.name) page = known.page;
    std::string_view digits = encoding;
    constexpr std::string_view iso = "iso-8859-";
    constexpr UINT first_iso = 28590;
    for (const std::string_view prefix :
         {iso, std::string_view("windows-"), std::string_view("cp"), std::string_view("ibm")})
        if (page == 0 && digits.starts_with(prefix)) {
            digits.remove_prefix(prefix.size());
            break;
        }
    const bool is_iso = page == 0 && encoding.starts_with(iso);
    UINT number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (page == 0 && error == std::errc{} && end == digits.data() + digits.size())
        page = is_iso ? first_iso + number : number;
    constexpr UINT symbols = 42, first_own = 65000;
    wchar_t unit = 0;
    const bool tells =
        page > symbols && page < first_own && MultiByteToWideChar(page, MB_ERR_INVALID_CHARS, "a", 1, &unit, 1) == 1;
    return tells ? page : 0;
}

// One character at a time: the system says nothing of where a text is wrong.
class CodePage final : public Transcoder {
  public:
    CodePage(UINT page, bool reads) : page_(page), reads_(reads) {}

    Result convert(std::span<const std::uint8_t> source, std::span<std::uint8_t> destination) override {
        Result done{Result::done, 0, 0, 0};
        while (done.read < source.size()) {
            std::uint8_t bytes[8];
            const Result one =
                reads_ ? read(source.subspan(done.read), bytes) : write(source.subspan(done.read), bytes);
            done.stop =
                one.stop == Result::done && one.written > destination.size() - done.written ? Result::full : one.stop;
            done.bad = done.stop == Result::fault ? one.bad : 0;
            if (done.stop != Result::done) return done;
            std::memcpy(destination.data() + done.written, bytes, one.written);
            done.read += one.read;
            done.written += one.written;
        }
        return done;
    }

  private:
    Result read(std::span<const std::uint8_t> source, std::uint8_t *bytes) const {
        constexpr std::size_t longest = 4;
        constexpr std::uint8_t first_trail_byte = 0x40;
        for (std::size_t size = 1; size <= std::min(source.size(), longest); ++size) {
            wchar_t units[4];
            const int count =
                MultiByteToWideChar(page_, MB_ERR_INVALID_CHARS, reinterpret_cast<const char *>(source.data()),
                                    static_cast<int>(size), units, 4);
            if (count <= 0) continue;
            std::memcpy(bytes, units, static_cast<std::size_t>(count) * sizeof *units);
            return {Result::done, size, static_cast<std::size_t>(count) * sizeof *units, 0};
        }
        const bool leads = IsDBCSLeadByteEx(page_, source[0]) != 0;
        if (leads && source.size() < 2) return {Result::incomplete, 0, 0, 0};
        const bool takes_next = leads && source[1] >= first_trail_byte;
        return {Result::fault, 0, 0, std::size_t{takes_next ? 2U : 1U}};
    }

    Result write(std::span<const std::uint8_t> source, std::uint8_t *bytes) const {
        if (source.size() < 2) return {Result::incomplete, 0, 0, 0};
        wchar_t units[2];
        std::memcpy(units, source.data(), sizeof *units);
        const std::size_t size = units[0] >= 0xD800 && units[0] < 0xDC00 && source.size() >= 4 ? 4 : 2;
        std::memcpy(units, source.data(), size);
        char text[8];
        const int count =
            WideCharToMultiByte(page_, 0, units, static_cast<int>(size / 2), text, sizeof text, nullptr, nullptr);
        // It writes another character for one that the page lacks.
        wchar_t back[4] = {};
        const int units_back = count <= 0 ? 0 : MultiByteToWideChar(page_, MB_ERR_INVALID_CHARS, text, count, back, 4);
        if (units_back != static_cast<int>(size / 2) || std::memcmp(back, units, size) != 0)
            return {Result::fault, 0, 0, size};
        std::memcpy(bytes, text, static_cast<std::size_t>(count));
        return {Result::done, size, static_cast<std::size_t>(count), 0};
    }

    UINT page_;
    bool reads_;
};

std::unique_ptr<Transcoder> open_page(const std::string &encoding, bool reads) {
    const UINT page = page_of(encoding);
    return page != 0 ? std::make_unique<CodePage>(page, reads) : nullptr;
}

} // namespace

std::unique_ptr<Transcoder> open_reader(const std::string &encoding) {
    return open_page(encoding, true);
}

std::unique_ptr<Transcoder> open_writer(const std::string &encoding) {
    return open_page(encoding, false);
}

bool may_write(const char *path) {
    constexpr int writing = 2;
    return _waccess(wide_of(path).c_str(), writing) == 0;
}

int create(const char *path) {
    return _wopen(wide_of(path).c_str(), _O_WRONLY | _O_CREAT | _O_EXCL | _O_BINARY | _O_NOINHERIT,
                  _S_IREAD | _S_IWRITE);
}

void settle(const char *) {}

int remove(const char *path) {
    return _wremove(wide_of(path).c_str());
}

int take_attributes(int descriptor, const char *from, bool times) {
    if (!times) return 0;
    const HANDLE file =
        CreateFileW(wide_of(from).c_str(), FILE_READ_ATTRIBUTES, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE) return fail();
    FILETIME created, read, written;
    const bool known = GetFileTime(file, &created, &read, &written) != 0;
    CloseHandle(file);
    return known && SetFileTime(handle_of(descriptor), &created, &read, &written) != 0 ? 0 : fail();
}

int flush(int descriptor) {
    return _commit(descriptor);
}

int rename(const char *from, const char *to) {
    constexpr DWORD how = MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH;
    return MoveFileExW(wide_of(from).c_str(), wide_of(to).c_str(), how) != 0 ? 0 : fail();
}

int keep_as(const char *path, const char *second) {
    return MoveFileExW(wide_of(path).c_str(), wide_of(second).c_str(), MOVEFILE_WRITE_THROUGH) != 0 ? 0 : fail();
}

unsigned long process_number() {
    return GetCurrentProcessId();
}

bool is_terminal(int descriptor) {
    constexpr DWORD escape_sequences = 0x0004; // ENABLE_VIRTUAL_TERMINAL_PROCESSING
    DWORD mode = 0;
    const HANDLE console = handle_of(descriptor);
    return GetConsoleMode(console, &mode) != 0 && SetConsoleMode(console, mode | escape_sequences) != 0;
}

std::optional<RegularFile> regular_file(int descriptor) {
    return regular_file(handle_of(descriptor));
}

std::optional<RegularFile> regular_file(const char *path) {
    const HANDLE file = CreateFileW(wide_of(path).c_str(), 0, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE) return std::nullopt;
    const auto found = regular_file(file);
    CloseHandle(file);
    return found;
}

FileKind kind_of(const char *path) {
    // Devices such as NUL are there in every folder, and have full names of their own.
    wchar_t full[MAX_PATH];
    const DWORD size = GetFullPathNameW(wide_of(path).c_str(), MAX_PATH, full, nullptr);
    if (0 < size && size < MAX_PATH && std::wstring_view(full, size).starts_with(L"\\\\.\\")) return FileKind::special;
    const DWORD attributes = GetFileAttributesW(wide_of(path).c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return FileKind::special;
    return regular_file(path) ? FileKind::regular : FileKind::none;
}

} // namespace kx::os
