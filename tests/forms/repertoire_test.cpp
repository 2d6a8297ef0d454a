// Every character of every code page, through all forms and back.
#include <kxstr/core.h>
#include <kxstr/forms.h>

#include "support/test.h"
#include "tables/code_pages.h"

namespace {

using namespace kxstr;
using test::runs_on;
using Units = std::vector<KxChar>;
using Bytes = std::vector<std::uint8_t>;

// `ansi` holds convertible codes only, few enough for 16-bit counts.
void expect_all_ways(const std::string &ansi) {
    Units kx(ansi.size() + 1);
    W6azTowz(ansi.c_str(), kx.data());
    kx.erase(std::ranges::find(kx, 0) + 1, kx.end());
    std::string back(4 * ansi.size() + 1, 'u');
    ASSERT_EQ(W6wzToaz(kx.data(), back.data()), ansi.size());
    ASSERT_EQ(back.c_str(), ansi);

    Bytes stream(back.size());
    ASSERT_LT(stream.size(), 0x10000u);
    const auto size = static_cast<std::uint32_t>(stream.size());
    ASSERT_GT(TpiAnsiToKxBuff(stream.data(), ansi.c_str(), size), ansi.size());
    ASSERT_EQ(TpiKxToAnsiBuff(back.data(), stream.data(), size), ansi.size() + 1);
    ASSERT_EQ(back.c_str(), ansi);

    // The sio form is the same by way of the stream and of the string. Its bytes may hold zeros.
    Bytes sio(size), other(size);
    const std::uint16_t count = TpiKxToKxsioBuff(sio.data(), stream.data(), size, 0);
    ASSERT_EQ(TpiKxwzToKxsioBuff(other.data(), kx.data(), size, 0), count);
    ASSERT_GT(count, ansi.size() / 2);
    ASSERT_TRUE(std::equal(sio.begin(), sio.begin() + count, other.begin()));

    WwzTo5dz(kx.data(), stream.data(), size);
    Units read(kx.size() + 1);
    W5dzTowz(stream.data(), read.data(), static_cast<std::uint32_t>(2 * read.size()));
    read.resize(kx.size());
    ASSERT_EQ(read, kx);
}

TEST(Repertoire, SingleByteCodePages) {
    for (const tables::CodePage &page : tables::kCodePages) {
        SCOPED_TRACE(page.kx_number);
        const test::System imitated{page.kx_number, page.kx_number, false, 0x0409, 0x0409};
        const test::System real = test::system_of(page.kx_number);
        if (!runs_on(imitated) && (real.double_byte || !runs_on(real))) continue;
        std::string ansi;
        for (unsigned byte = 1; byte <= 0xFF; ++byte) {
            // Text only, and of two bytes with one KX character the one that comes back.
            const std::uint32_t kx = TpiAnsiToKx(byte);
            if (kx < 0xF900 && ValidKxCharacter(kx) != 0 && TpiGetAnsi(kx) == byte) ansi += static_cast<char>(byte);
        }
        EXPECT_GT(ansi.size(), 100u);
        expect_all_ways(ansi);
    }
}

TEST(Repertoire, DoubleByteCodePages) {
    const struct {
        const test::System &system;
        std::size_t characters;
    } pages[] = {{test::kJapanese, 11280},
                 {test::kKorean, 8836},
                 {test::kSimplifiedChinese, 11844},
                 {test::kTraditionalChinese, 19782}};
    for (const auto &page : pages) {
        SCOPED_TRACE(page.system.ansi);
        if (!runs_on(page.system)) continue;
        std::size_t characters = 0;
        std::string ansi;
        for (unsigned code = 0x8100; code <= 0xFFFF; ++code) {
            if (TpiAnsiToKx(code) != KX_NONE) {
                ++characters;
                ansi += static_cast<char>(code >> 8);
                ansi += static_cast<char>(code);
            }
            if (ansi.size() == 0x3000 || code == 0xFFFF) {
                expect_all_ways(ansi);
                ansi.clear();
            }
        }
        EXPECT_EQ(characters, page.characters);
    }
}

} // namespace
