
#include <kxstr/codepage.h>
#include <kxstr/text.h>

#include "support/fenced.h"
#include "support/test.h"
#include "tables/compositions.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr KxTextForm kForms[] = {
    {KX_TEXT_CODE_PAGE, 852, nullptr}, {KX_TEXT_CODE_PAGE, 1258, nullptr}, {KX_TEXT_CODE_PAGE, 18857, nullptr},
    {KX_TEXT_CODE_PAGE, 932, nullptr}, {KX_TEXT_CODE_PAGE, 895, nullptr},  {KX_TEXT_UTF8, 0, nullptr},
    {KX_TEXT_UTF16LE, 0, nullptr},     {KX_TEXT_UTF16BE, 0, nullptr},      {KX_TEXT_KX, 932, nullptr},
    {KX_TEXT_KXLE, 852, nullptr},
};

struct Converted {
    Bytes bytes;
    std::size_t replaced = 0;
};

KxTextConverter prepared(const KxTextForm &from, const KxTextForm &to, std::uint32_t flags = 0) {
    KxTextConverter converter;
    EXPECT_EQ(KxTextPrepare(&converter, &from, &to, flags), 1u);
    return converter;
}

// Text of every length of character, with a few random bytes in it.
Bytes some_text(std::mt19937 &random, const KxTextForm &form) {
    std::u16string text;
    const unsigned kind = random() % 4;
    for (std::size_t left = random() % 3000; left != 0; --left) {
        static constexpr char16_t starts[] = {0x20, 0xC0, 0x390, 0x4E00, 0x1EA0, 0x2550};
        const char16_t start = starts[kind == 0 || random() % 8 == 0 ? random() % 6 : kind];
        text += static_cast<char16_t>(start + random() % 0x40);
        if (random() % (kind == 1 ? 20 : 300) == 0) text += static_cast<char16_t>(0x300 + random() % 0x30);
        if (random() % 200 == 0) text += u"\U0001F6A2\u00A0\uFFFF\n";
    }
    const KxTextForm unicode{KX_TEXT_UTF16, 0, nullptr};
    KxTextConverter converter = prepared(unicode, form, KX_TEXT_DROP);
    Bytes bytes(4 * text.size());
    KxTextResult result;
    KxTextConvert(&converter, text.data(), 2 * text.size(), 1, bytes.data(), bytes.size(), &result);
    bytes.resize(result.written);
    for (std::size_t faults = random() % 4; faults != 0 && !bytes.empty(); --faults)
        bytes[random() % bytes.size()] = static_cast<std::uint8_t>(random());
    return bytes;
}

// In pieces and with room as `next` says, the source right before an unreadable page and so is the room.
template <class Next>
Converted convert(KxTextConverter &converter, const Bytes &source, kxstr::test::Fenced &from, kxstr::test::Fenced &to,
                  Next next) {
    Converted all;
    std::size_t read = 0, most = 0;
    for (;;) {
        most = std::max(most, std::size_t{next()});
        const std::size_t length = std::min(most, source.size() - read), room = next();
        std::uint8_t *const piece = from.end() - length;
        std::copy_n(source.data() + read, length, piece);
        const bool last = read + length == source.size();
        KxTextResult result{};
        const std::uint32_t status =
            KxTextConvert(&converter, piece, length, last ? 1 : 0, to.end() - room, room, &result);
        EXPECT_LE(result.read, length);
        EXPECT_LE(result.written, room);
        all.bytes.insert(all.bytes.end(), to.end() - room, to.end() - room + result.written);
        all.replaced += result.replaced;
        read += result.read;
        most = status == KX_TEXT_DONE ? 0 : length - result.read + 1; // more than was not enough
        if (status == KX_TEXT_DONE && last) return all;
        EXPECT_LE(status, KX_TEXT_INCOMPLETE);
        EXPECT_EQ(result.fault != 0, status == KX_TEXT_INCOMPLETE);
        if (testing::Test::HasFailure()) return all;
    }
}

TEST(TextConverter, PiecesOfAnySizeGiveTheSameText) {
    std::mt19937 random{1};
    kxstr::test::Fenced source, target;
    constexpr std::size_t all = 0x10000;
    for (const KxTextForm &from : kForms)
        for (const KxTextForm &to : kForms) {
            KxTextConverter converter = prepared(from, to);
            ASSERT_EQ(KxTextSubstitute(&converter, '?'), 1u);
            for (int turn = 0; turn < 6; ++turn) {
                const Bytes text = some_text(random, from);
                const auto bytewise = convert(converter, text, source, target, [] { return std::size_t{4}; });
                const auto whole = convert(converter, text, source, target, [=] { return all; });
                const auto pieces = convert(converter, text, source, target,
                                            [&] { return std::size_t{random() % (random() % 3 == 0 ? 3000 : 9)}; });
                ASSERT_EQ(whole.bytes, bytewise.bytes) << from.form << ' ' << from.code_page << " to " << to.form;
                ASSERT_EQ(pieces.bytes, bytewise.bytes) << from.form << ' ' << from.code_page << " to " << to.form;
                ASSERT_EQ(pieces.replaced, whole.replaced);
                KxTextResult measured;
                ASSERT_EQ(KxTextMeasure(&converter, text.data(), text.size(), 1, &measured), KX_TEXT_DONE);
                ASSERT_EQ(measured.written, whole.bytes.size());
                ASSERT_EQ(measured.replaced, whole.replaced);
            }
        }
    // It has room for some thousand bytes at a time.
    KxTextConverter converter = prepared(kForms[0], kForms[5]);
    const Bytes text(10000, 'a');
    KxTextResult measured;
    ASSERT_EQ(KxTextMeasure(&converter, text.data(), text.size(), 1, &measured), KX_TEXT_DONE);
    ASSERT_EQ(measured.read, text.size());
    ASSERT_EQ(measured.written, text.size());
}

TEST(TextConverter, TellsWhyItEnds) {
    constexpr struct {
        KxTextForm from, to;
        const char *source;
        std::uint32_t last, room, status;
        std::size_t read, written, fault;
    } cases[] = {
        {kForms[0], kForms[5], "ab\xA5", 1, 9, KX_TEXT_DONE, 3, 4, 0},
        {kForms[0], kForms[5], "ab\xA5", 1, 3, KX_TEXT_FULL, 2, 2, 0},
        {kForms[5], kForms[0], "a\xC4", 0, 9, KX_TEXT_INCOMPLETE, 1, 1, 1},
        {kForms[5], kForms[0], "a\xC4", 1, 9, KX_TEXT_MALFORMED, 1, 1, 1},
        {kForms[5], kForms[0], "a\xE2\x82\xAC", 1, 9, KX_TEXT_NO_EQUIVALENT, 1, 1, 3},
        {kForms[5], kForms[7], "\xF0\x9F\x9A\xA2", 1, 3, KX_TEXT_FULL, 0, 0, 0},
        {kForms[5], kForms[8], "\xF0\x9F\x9A\xA2", 1, 9, KX_TEXT_NO_EQUIVALENT, 0, 0, 4},
        {kForms[3], kForms[5], "a\x81\xAD", 1, 9, KX_TEXT_MALFORMED, 1, 1, 2},
        {kForms[3], kForms[5], "a\x81\n", 1, 9, KX_TEXT_MALFORMED, 1, 1, 1},
    };
    for (const auto &c : cases) {
        KxTextConverter converter = prepared(c.from, c.to);
        const std::size_t length = std::char_traits<char>::length(c.source);
        std::uint8_t room[16];
        KxTextResult result;
        EXPECT_EQ(KxTextConvert(&converter, c.source, length, c.last, room, c.room, &result), c.status);
        EXPECT_EQ(result.read, c.read) << c.source;
        EXPECT_EQ(result.written, c.written) << c.source;
        EXPECT_EQ(result.fault, c.fault) << c.source;
        if (c.status == KX_TEXT_FULL) continue;
        EXPECT_EQ(KxTextMeasure(&converter, c.source, length, c.last, &result), c.status);
        EXPECT_EQ(result.fault, c.fault) << c.source;
    }
}

TEST(TextConverter, KnowsItsFormsPagesAndSubstitutes) {
    KxTextConverter converter;
    const KxTextForm utf8{KX_TEXT_UTF8, 0, nullptr};
    for (const KxTextForm unknown : {KxTextForm{0, 852, nullptr}, KxTextForm{KX_TEXT_KXLE + 1, 852, nullptr},
                                     KxTextForm{KX_TEXT_CODE_PAGE, 1, nullptr}, KxTextForm{KX_TEXT_KX, 1, nullptr}}) {
        EXPECT_EQ(KxTextPrepare(&converter, &unknown, &utf8, 0), 0u);
        EXPECT_EQ(KxTextPrepare(&converter, &utf8, &unknown, 0), 0u);
    }
    for (const std::uint32_t number : {932u, 934u, 938u, 28591u, 18851u, 10001u}) {
        const KxTextForm known{KX_TEXT_CODE_PAGE, number, nullptr};
        EXPECT_EQ(KxTextPrepare(&converter, &known, &utf8, 0), 1u) << number;
    }
    converter = prepared(utf8, kForms[0]);
    for (const std::uint32_t character : {0x20ACu, 0xD800u, 0x1F6A2u, 0x110000u})
        EXPECT_EQ(KxTextSubstitute(&converter, character), 0u) << character;
    converter = prepared(utf8, {KX_TEXT_CODE_PAGE, 932, nullptr});
    EXPECT_EQ(KxTextSubstitute(&converter, 0x3013), 1u);
    char room[4] = "";
    KxTextResult result;
    EXPECT_EQ(KxTextConvert(&converter, "\xC4\x80x", 3, 1, room, sizeof room, &result), KX_TEXT_DONE);
    EXPECT_STREQ(room, "\x81\xACx") << "a substitute of two bytes";
    EXPECT_EQ(KxTextMark(KX_TEXT_UTF8, "\xEF\xBB\xBF", 3), 3u);
    EXPECT_EQ(KxTextMark(KX_TEXT_UTF8, "\xEF\xBB\xBF", 2), 0u);
    EXPECT_EQ(KxTextMark(KX_TEXT_UTF16BE, "\xFE\xFFx", 3), 2u);
    EXPECT_EQ(KxTextMark(KX_TEXT_UTF16LE, "\xFE\xFF", 2), 0u);
}

// Every character of the KX set comes from its parts as it comes from itself; other marks stay by themselves.
TEST(TextConverter, ComposesForKxText) {
    const KxTextForm utf16{KX_TEXT_UTF16, 0, nullptr}, kx{KX_TEXT_KX, 0, nullptr};
    KxTextConverter converter = prepared(utf16, kx);
    const auto converted = [&](std::u16string_view text) {
        KxChar room[8]{};
        KxTextResult result;
        EXPECT_EQ(KxTextConvert(&converter, text.data(), 2 * text.size(), 1, room, sizeof room, &result), KX_TEXT_DONE);
        return std::vector(room, room + result.written / sizeof(KxChar));
    };
    for (const auto &[letter, mark, character] : kxstr::tables::kCompositions) {
        const char16_t parts[]{letter, mark}, whole[]{character};
        ASSERT_EQ(converted({parts, 2}), converted({whole, 1})) << character;
        ASSERT_EQ(converted({whole, 1}).size(), 1u) << character;
    }
    EXPECT_EQ(converted(u"e\u0302\u0323"), (std::vector<KxChar>{0x12B, 0x221}));
    EXPECT_EQ(converted(u"x\u0301"), (std::vector<KxChar>{'x', 0x106}));

    // So does a text in 1258, which has some marks, and it goes back as letter and mark.
    std::size_t of_page = 0;
    KxTextConverter to_page = prepared(utf16, kForms[1]), from_page = prepared(kForms[1], kx),
                    back = prepared(kx, kForms[1]);
    for (const auto &[letter, mark, character] : kxstr::tables::kCompositions) {
        const char16_t parts[]{letter, mark}, whole[]{character};
        char bytes[2], again[2];
        KxChar ch = 0;
        KxTextResult result;
        if (KxTextConvert(&to_page, parts, sizeof parts, 1, bytes, sizeof bytes, &result) != KX_TEXT_DONE) continue;
        ++of_page;
        ASSERT_EQ(KxTextConvert(&from_page, bytes, sizeof bytes, 1, &ch, sizeof ch, &result), KX_TEXT_DONE);
        ASSERT_EQ(converted({whole, 1}), std::vector{ch});
        ASSERT_EQ(KxTextConvert(&back, &ch, sizeof ch, 1, again, sizeof again, &result), KX_TEXT_DONE);
        const bool apart = result.written == 2; // the page has no byte for it
        ASSERT_EQ(std::string(again, apart ? 2 : 0), std::string(bytes, apart ? 2 : 0));
    }
    EXPECT_GT(of_page, 30u);
}

// A descriptor that the library filled is as good as its number; one with other tables goes by those.
TEST(TextConverter, TakesDescriptors) {
    KxCodePage ours{};
    WcvtSetCodepage(852, KX_BOTH_DIRECTIONS, &ours);
    static constexpr std::uint8_t high[] = {0x80, 0x81, 0x29, 0x01, 0x0C, 0x01}; // é and another letter
    KxCodePage own{};
    own.input_code_page = 60000;
    own.high_table = high;
    const KxTextForm utf8{KX_TEXT_UTF8, 0, nullptr}, kx{KX_TEXT_KX, 0, nullptr};
    const auto converted = [](const KxTextForm &from, const KxTextForm &to) {
        KxTextConverter converter = prepared(from, to);
        std::uint16_t room[8]{};
        KxTextResult result;
        EXPECT_EQ(KxTextConvert(&converter, "\x80\n", 2, 1, room, sizeof room, &result), KX_TEXT_DONE);
        return std::pair(std::vector(room, room + 8), result.written);
    };
    const KxTextForm by_descriptor{KX_TEXT_CODE_PAGE, 0, &ours}, by_own{KX_TEXT_CODE_PAGE, 0, &own};
    EXPECT_EQ(converted(by_descriptor, utf8), converted(kForms[0], utf8));
    EXPECT_EQ(converted(by_own, kx).first[0], 0x129);
    EXPECT_EQ(converted(by_own, kx).first[1], KX_LINE_FEED);
    EXPECT_EQ(converted(by_own, utf8).second, 3u);

    // Line ends as the glyphs of DOS.
    KxTextConverter glyphs = prepared(kForms[0], kx, KX_TEXT_GLYPHS);
    KxTextConverter back = prepared(kx, kForms[0], KX_TEXT_GLYPHS);
    KxChar room[4]{};
    std::uint8_t bytes[4]{};
    KxTextResult result;
    KxTextConvert(&glyphs, "\t\n\f\r", 4, 1, room, sizeof room, &result);
    for (const KxChar ch : room)
        EXPECT_LT(ch, KX_FIRST_CODE);
    KxTextConvert(&back, room, sizeof room, 1, bytes, sizeof bytes, &result);
    EXPECT_EQ(std::string(bytes, bytes + 4), "\t\n\f\r");
}

} // namespace
