#include "os.h"

#include <algorithm>
#include <cerrno>
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
