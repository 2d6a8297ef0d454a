// Native text to KX text through the exported single-character function, beside two yardsticks of the same run:
// iconv(3) turning the same bytes into UTF-16, and memcpy of the result's size, which nothing can beat.
#include <benchmark/benchmark.h>
#include <cstring>
#include <iconv.h>
#include <kxstr/codepage.h>
#include <kxstr/platform.h>
#include <string>
#include <vector>

namespace {

struct Text {
    const char *iconv_name;
    std::uint32_t code_page;
    bool double_byte;
    const char *sample;
};

constexpr Text kGerman{"CP1252", 1252, false,
                       "F\xFCr \xE4ltere Texte in Gr\xF6\xDF"
                       "e und Ma\xDF z\xE4hlt jedes Byte.\r\n"};
constexpr Text kJapanese{"CP932", 932, true,
                         "\x93\xFA\x96{\x8C\xEA\x82\xCC\x83"
                         "e\x83L\x83X\x83g ABC \xB1\xB2\xB3\r\n"};

std::string repeated(const Text &text, std::size_t size) {
    std::string result;
    while (result.size() < size)
        result += text.sample;
    return result;
}

// A job is one way to do the work, with its own check of the result.

// One call a character: what a filter's own loop does.
struct Kxstr {
    bool double_byte;
    KxCodePage page{};

    explicit Kxstr(const Text &text) : double_byte(text.double_byte) {
        KxPlatformSettings settings;
        KxPlatformGet(&settings);
        settings.ansi_code_page = text.code_page;
        settings.double_byte = text.double_byte ? 1 : 0;
        KxPlatformSet(&settings);
        WcvtSetCodepage(text.code_page, KX_BOTH_DIRECTIONS, &page);
    }
    [[nodiscard]] bool is_lead(unsigned char byte) const {
        return double_byte && ((byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC));
    }
    std::size_t run(const std::string &in, std::vector<std::uint16_t> &out) const {
        std::size_t done = 0;
        for (std::size_t i = 0; i < in.size(); ++i) {
            const auto byte = static_cast<unsigned char>(in[i]);
            std::uint32_t code = byte;
            if (is_lead(byte) && i + 1 < in.size()) code = code << 8 | static_cast<unsigned char>(in[++i]);
            out[done++] = WcvtNtvToKx(&page, code);
        }
        return done;
    }
    // Converted to native again, the text is what it was.
    [[nodiscard]] bool is_right(const std::string &in, const std::vector<std::uint16_t> &out, std::size_t count) const {
        std::string back;
        for (std::size_t i = 0; i < count; ++i) {
            const std::uint16_t code = WcvtKxToNtv(&page, out[i]);
            if (code > 0xFF) back += static_cast<char>(code >> 8);
            back += static_cast<char>(code);
        }
        return back == in;
    }
};

struct Iconv {
    iconv_t handle;

    explicit Iconv(const Text &text) : handle(iconv_open("UTF-16LE", text.iconv_name)) {}
    Iconv(const Iconv &) = delete;
    Iconv &operator=(const Iconv &) = delete;
    ~Iconv() { iconv_close(handle); }
    std::size_t run(const std::string &in, std::vector<std::uint16_t> &out) const {
        char *from = const_cast<char *>(in.data());
        char *to = reinterpret_cast<char *>(out.data());
        std::size_t from_left = in.size();
        std::size_t to_left = out.size() * 2;
        iconv(handle, &from, &from_left, &to, &to_left);
        return from_left == 0 ? out.size() - to_left / 2 : 0;
    }
    [[nodiscard]] bool is_right(const std::string &, const std::vector<std::uint16_t> &, std::size_t count) const {
        return count != 0; // all of the input was taken
    }
};

struct CopyOnly {
    explicit CopyOnly(const Text &) {}
    std::size_t run(const std::string &in, std::vector<std::uint16_t> &out) const {
        char *to = reinterpret_cast<char *>(out.data());
        std::memcpy(to, in.data(), in.size());
        std::memcpy(to + in.size(), in.data(), in.size());
        return in.size();
    }
    [[nodiscard]] bool is_right(const std::string &, const std::vector<std::uint16_t> &, std::size_t) const {
        return true;
    }
};

template <class Job> void native_to_kx(benchmark::State &state, const Text &text) {
    const std::string in = repeated(text, static_cast<std::size_t>(state.range(0)));
    std::vector<std::uint16_t> out(in.size() + 1);
    const Job job(text);
    if (!job.is_right(in, out, job.run(in, out))) {
        state.SkipWithError("wrong result, not timed");
        return;
    }
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(job.run(in, out));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(in.size())); // bytes of input
}

template <class Job> void add(const char *name, const Text &text) {
    benchmark::RegisterBenchmark(name, [&text](benchmark::State &state) { native_to_kx<Job>(state, text); })
        ->Arg(64)
        ->Arg(1 << 16);
}

} // namespace

int main(int argc, char **argv) {
    benchmark::Initialize(&argc, argv);
    add<Kxstr>("native_to_kx/german_1252/kxstr", kGerman);
    add<Iconv>("native_to_kx/german_1252/iconv", kGerman);
    add<CopyOnly>("native_to_kx/german_1252/memcpy", kGerman);
    add<Kxstr>("native_to_kx/japanese_932/kxstr", kJapanese);
    add<Iconv>("native_to_kx/japanese_932/iconv", kJapanese);
    add<CopyOnly>("native_to_kx/japanese_932/memcpy", kJapanese);
    benchmark::RunSpecifiedBenchmarks();
}
