// libkxdetect: any bytes have answers that make sense, and as many as there is room for.
#include <cstring>
#include <kxdetect/detect.h>

#include "targets.h"

namespace kxstr::fuzz {

void detect(Input &input) {
    const std::size_t room = input.below(12);
    const Buffer<std::uint8_t> text(input, input.rest());
    const Buffer<KxDetectGuess> guesses(input, room);
    const std::size_t count = KxDetect(text.data(), text.size(), guesses.data(), room);
    require(count <= room && (count > 0 || room == 0), "there is an answer");
    std::uint32_t shares = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const KxDetectGuess &guess = guesses[i];
        shares += guess.share;
        require(i == 0 || guess.share <= guesses[i - 1].share, "the best first");
        require(guess.page != nullptr && guess.language != nullptr, "a page and a language");
        require(*guess.language == 0 || KxDetectLanguageName(guess.language) != nullptr, "a language that has a name");
        require(std::strcmp(guess.page, "binary") != 0 || count == 1, "binary data is the only answer");
        for (unsigned page = 0; page < 64; ++page)
            require((guess.same >> page & 1) == 0 || KxDetectPageName(page) != nullptr, "a page that has a name");
    }
    require(shares <= 1000 + count, "thousandths, each of them rounded");
    KxDetectGuess best;
    require(room == 0 || (KxDetect(text.data(), text.size(), &best, 1) == 1 && best.page == guesses[0].page),
            "the same best");
}

} // namespace kxstr::fuzz
