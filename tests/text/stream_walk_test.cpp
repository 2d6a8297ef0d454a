
#include <kxstr/text.h>

#include "forms/code_size.h"
#include "support/fenced.h"
#include "support/test.h"

namespace {

TEST(StreamWalk, TellsEachCode) {
    constexpr struct {
        const char *bytes;
        std::size_t length;
        KxStreamCode code;
    } cases[] = {
        {"A", 1, {1, KX_STREAM_TEXT, KX_STREAM_SOUND, 'A'}},
        {"\x80", 1, {1, KX_STREAM_TEXT, KX_STREAM_SOUND, ' '}},
        {"\x84", 1, {1, KX_STREAM_TEXT, KX_STREAM_SOUND, '-'}},
        {"\xCC", 1, {1, KX_STREAM_TEXT, KX_STREAM_SOUND, KX_LINE_FEED}},
        {"\xCF", 1, {1, KX_STREAM_TEXT, KX_STREAM_SOUND, KX_CARRIAGE_RETURN}},
        {"\x90", 1, {1, KX_STREAM_FUNCTION, KX_STREAM_SOUND, KX_NONE}},
        {"", 1, {1, KX_STREAM_END, KX_STREAM_SOUND, KX_NONE}},
        {"\xF0\x29\x01\xF0z", 5, {4, KX_STREAM_TEXT, KX_STREAM_SOUND, 0x129}},
        {"\xF2\x0C\xF2", 3, {3, KX_STREAM_ATTRIBUTE, KX_STREAM_SOUND, 0xFE18}},
        {"\xF3\x0C\xF3", 3, {3, KX_STREAM_ATTRIBUTE, KX_STREAM_SOUND, 0xFE19}},
        {"\xF2\x10\xF2", 3, {3, KX_STREAM_ATTRIBUTE, KX_STREAM_SOUND, KX_NONE}},
        {"\xFD\0\0\0\0\0\0\xFE", 8, {8, KX_STREAM_FIXED, KX_STREAM_SOUND, KX_NONE}},
        {"\xD4\x01\x08\0x\x08\0\xEF", 8, {8, KX_STREAM_GROUP, KX_STREAM_SOUND, KX_NONE}},
        {"\xD4\x01\x08\0x\x07\0\xEF", 8, {1, KX_STREAM_GROUP, KX_STREAM_OTHER_SIZE, KX_NONE}},
        {"\xD4\x01\x08\0x\x08\0\xF0", 8, {1, KX_STREAM_GROUP, KX_STREAM_NOT_CLOSED, KX_NONE}},
        {"\xD4\x01\x06\0\x06\0\xEF", 7, {1, KX_STREAM_GROUP, KX_STREAM_NO_ROOM, KX_NONE}},
        {"\xD4\x01\x09\0x\x08\0\xEF", 8, {1, KX_STREAM_GROUP, KX_STREAM_CUT_OFF, KX_NONE}},
        {"\xD4\x01\x08", 3, {1, KX_STREAM_GROUP, KX_STREAM_CUT_OFF, KX_NONE}},
        {"\xF0\x29\x01", 3, {1, KX_STREAM_TEXT, KX_STREAM_CUT_OFF, KX_NONE}},
        {"\xF0\x29\x01\xF5", 4, {1, KX_STREAM_TEXT, KX_STREAM_OTHER_SIZE, KX_NONE}},
        {"\xF0\x29\x01\x31", 4, {1, KX_STREAM_TEXT, KX_STREAM_NOT_CLOSED, KX_NONE}},
    };
    kxstr::test::Fenced fenced;
    for (const auto &c : cases) {
        std::uint8_t *const stream = fenced.end() - c.length;
        std::memcpy(stream, c.bytes, c.length);
        KxStreamCode code;
        ASSERT_EQ(KxStreamNext(stream, c.length, &code), 1u);
        const auto n = &c - cases;
        EXPECT_EQ(code.size, c.code.size) << n;
        EXPECT_EQ(code.kind, c.code.kind) << n;
        EXPECT_EQ(code.fault, c.code.fault) << n;
        EXPECT_EQ(code.character, c.code.character) << n;
    }
    KxStreamCode code;
    EXPECT_EQ(KxStreamNext(nullptr, 0, &code), 0u);
}

// Random bytes right before an unreadable page: a walk comes to their end, and what it calls sound is a code for the
// library from either end.
TEST(StreamWalk, EndsWithTheBytes) {
    std::mt19937 random{1};
    kxstr::test::Fenced fenced;
    std::size_t long_codes = 0;
    for (int turn = 0; turn < 20000; ++turn) {
        const std::size_t length = random() % 64;
        std::uint8_t *at = fenced.end() - length;
        for (std::size_t i = 0; i < length; ++i)
            at[i] = static_cast<std::uint8_t>(random() % 3 == 0 ? 0xD0 + random() % 0x30 : random() % 12);
        KxStreamCode code;
        for (; KxStreamNext(at, static_cast<std::size_t>(fenced.end() - at), &code) != 0; at += code.size) {
            ASSERT_GE(code.size, 1u);
            if (code.fault != KX_STREAM_SOUND) continue;
            ASSERT_EQ(kxstr::forms::forward_size(at), code.size);
            ASSERT_EQ(kxstr::forms::backward_size(at + code.size), code.size);
            if (code.size > 1) ++long_codes;
        }
        ASSERT_EQ(at, fenced.end());
    }
    EXPECT_GT(long_codes, 1000u);
}

} // namespace
