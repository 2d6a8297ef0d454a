// detect_bench ENGINE SAMPLES: what libkxdetect, uchardet or ICU says about each sample, a line each, and the seconds.
// SAMPLES is a file of records: the size in four bytes, low byte first, and the bytes.
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fstream>
#include <iterator>
#include <span>
#include <string>
#include <vector>

#include <kxdetect/detect.h>
#include <uchardet/uchardet.h>
#include <unicode/ucsdet.h>

namespace {

using Sample = std::span<const std::uint8_t>;

std::string by_kxdetect(Sample sample) {
    KxDetectGuess guesses[3];
    const std::size_t count = KxDetect(sample.data(), sample.size(), guesses, 3);
    std::string answer;
    for (const KxDetectGuess &guess : std::span(guesses, count))
        answer += std::string(guess.page) + ' ' + guess.language + ' ' + std::to_string(guess.share) + '\t';
    return answer;
}

std::string by_uchardet(Sample sample) {
    uchardet_t detector = uchardet_new();
    uchardet_handle_data(detector, reinterpret_cast<const char *>(sample.data()), sample.size());
    uchardet_data_end(detector);
    const std::string name = uchardet_get_charset(detector);
    uchardet_delete(detector);
    return name.empty() ? "binary" : name;
}

std::string by_icu(Sample sample) {
    UErrorCode status = U_ZERO_ERROR;
    UCharsetDetector *const detector = ucsdet_open(&status);
    ucsdet_setText(detector, reinterpret_cast<const char *>(sample.data()), static_cast<std::int32_t>(sample.size()),
                   &status);
    std::int32_t count = 0;
    const UCharsetMatch **const matches = ucsdet_detectAll(detector, &count, &status);
    std::string answer;
    for (const UCharsetMatch *match : std::span(matches, static_cast<std::size_t>(count < 3 ? count : 3)))
        answer += std::string(ucsdet_getName(match, &status)) + ' ' + ucsdet_getLanguage(match, &status) + '\t';
    ucsdet_close(detector);
    return answer.empty() ? "binary" : answer;
}

struct Engine {
    const char *name;
    std::string (*answer)(Sample);
};
constexpr Engine kEngines[] = {{"kxdetect", by_kxdetect}, {"uchardet", by_uchardet}, {"icu", by_icu}};

} // namespace

int main(int argc, char **argv) {
    const Engine *engine = nullptr;
    for (const Engine &one : kEngines) {
        if (argc == 3 && std::strcmp(argv[1], one.name) == 0) engine = &one;
    }
    if (engine == nullptr) {
        std::fputs("usage: detect_bench kxdetect|uchardet|icu SAMPLES\n", stderr);
        return 2;
    }
    std::ifstream file(argv[2], std::ios::binary);
    const std::vector<std::uint8_t> bytes{std::istreambuf_iterator<char>(file), {}};
    std::vector<Sample> samples;
    for (std::size_t place = 0; place + 4 <= bytes.size();) {
        std::size_t size = 0;
        for (std::size_t index = 4; index-- > 0;)
            size = size << 8 | bytes[place + index];
        samples.push_back(std::span(bytes).subspan(place + 4, size));
        place += 4 + size;
    }
    std::vector<std::string> answers;
    answers.reserve(samples.size());
    const std::clock_t start = std::clock(); // of the processor, which others use, too
    for (const Sample sample : samples)
        answers.push_back(engine->answer(sample));
    const double passed = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    for (const std::string &answer : answers)
        std::printf("%s\n", answer.c_str());
    std::printf("seconds %.6f\n", passed);
}
