#include "core/dbcs_copy.h"
#include "support/test.h"

namespace {

using namespace kxstr::test;

TEST(DbcsCopy, NeverSplitsAndNeverReadsBehindTheTerminator) {
    run_on(kJapanese);
    const struct {
        const char *why;
        std::string source; // without its terminator
        std::size_t room;
        std::string wanted; // u: not written
    } cases[] = {
        {"no room", "ab", 0, ""},
        {"cut between single bytes", "abc", 2, "ab"},
        {"text fills the room", "ab", 2, "ab"},
        {"the rest is filled", "ab", 5, std::string("ab\0\0\0", 5)},
        {"pair fits exactly", "\x82\xA0z", 2, "\x82\xA0"},
        {"pair does not fit", "a\x82\xA0", 2, "au"},
        {"pair alone does not fit", "\x82\xA0", 1, "u"},
        {"lone lead byte: its trail is the terminator", "a\x82", 5, std::string("a\x82\0\0\0", 5)},
        {"a lone lead byte that does not fit with its terminator", "a\x82", 2, "au"},
    };
    for (const auto &c : cases) {
        // Exactly as long as the string, so that a sanitizer sees any byte read behind it.
        const std::vector<std::uint8_t> source(c.source.c_str(), c.source.c_str() + c.source.size() + 1);
        std::vector<std::uint8_t> out(c.room, 'u');
        kxstr::copy_whole_characters(out.data(), source.data(), c.room);
        EXPECT_EQ(std::string(out.begin(), out.end()), c.wanted) << c.why;
    }
}

} // namespace
