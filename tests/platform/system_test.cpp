// What every system has to answer alike, the portable one as Windows does.

#include "platform/system.h"
#include "registry_values.h"
#include "settings_folder.h"
#include "support/test.h"

namespace kxstr::platform {
namespace {

using namespace kxstr::test;
using namespace std::string_literals;

class SystemRegistry : public ::testing::Test {
  protected:
    void use(const System &system) { run_on(system, folder_.file().c_str()); }

    SettingsFolder folder_;
};

TEST_F(SystemRegistry, KeysAndHandles) {
    use(kWestern);
    KeyHandle key = kUsers;
    bool created = true;
    EXPECT_EQ(open_key(kCurrentUser, "Software\\K", kReadAndWrite, key), kNotFound);
    EXPECT_EQ(key, KeyHandle::null);
    ASSERT_EQ(create_key(kCurrentUser, "Software\\K\\", kReadAndWrite, key, created), kSuccess);
    EXPECT_TRUE(created);
    KeyHandle same{};
    ASSERT_EQ(create_key(root_key(0x80000001), "SOFTWARE\\\\k", kReadAndWrite, same, created), kSuccess);
    EXPECT_FALSE(created);
    EXPECT_EQ(set_bytes("Value", "1", same), kSuccess);
    EXPECT_EQ(get("vALUE", key), "1");
    EXPECT_EQ(get("Value"), "status 2") << "another key";

    KeyHandle reader{};
    ASSERT_EQ(open_key(key, "", 1, reader), kSuccess) << "an empty path is the key itself";
    EXPECT_EQ(get("value", reader), "1");
    EXPECT_EQ(set_bytes("value", "2", reader), kAccessDenied);

    EXPECT_EQ(close_key(same), kSuccess);
    EXPECT_EQ(close_key(same), kBadHandle);
    EXPECT_EQ(get("value", same), "status 6");
    EXPECT_EQ(get("value", KeyHandle::null), "status 6");
    EXPECT_EQ(get("value", root_key(0x80000007)), "status 6");
    EXPECT_EQ(close_key(kCurrentUser), kSuccess);

    KeyHandle bad{};
    EXPECT_EQ(open_key(kCurrentUser, "\\Software", kReadAndWrite, bad), kBadPath);

    folder_.write("");
    EXPECT_EQ(get("value", key), "status 1018") << "the key went away";
    EXPECT_EQ(set_bytes("value", "3", key), kKeyDeleted);
    EXPECT_EQ(close_key(key), kSuccess);
    EXPECT_EQ(close_key(reader), kSuccess);
}

TEST_F(SystemRegistry, RootsAreApart) {
    use(kWestern);
    for (const KeyHandle root : {kClassesRoot, kCurrentUser, kLocalMachine, kUsers}) {
        EXPECT_EQ(get("v", root), "status 2");
        EXPECT_EQ(set_bytes("v", "x", root), kSuccess);
    }
}

TEST_F(SystemRegistry, QueriesTellTypeAndSizeBeforeAnythingElse) {
    use(kWestern);
    folder_.write("[HKEY_CURRENT_USER]\n\"v\"=hex(80000002):01,02,03\n");
    std::uint32_t type = 0;
    std::uint32_t size = 99;
    EXPECT_EQ(query_value(kCurrentUser, "v", &type, nullptr, size), kSuccess);
    EXPECT_EQ(type, 0x80000002u);
    EXPECT_EQ(size, 3u);
    char data[4] = "abc";
    type = 0;
    size = 2;
    EXPECT_EQ(query_value(kCurrentUser, "v", &type, data, size), kMoreData);
    EXPECT_EQ(type, 0x80000002u);
    EXPECT_EQ(size, 3u);
    EXPECT_STREQ(data, "abc") << "nothing is written";
    EXPECT_EQ(query_value(kCurrentUser, "v", nullptr, data, size), kSuccess);
    EXPECT_STREQ(data, "\1\2\3");
    EXPECT_EQ(query_value_at(kCurrentUser, "new", "v", nullptr, nullptr, size), kNotFound) << "of a key that it makes";
}

TEST_F(SystemRegistry, StringsCrossInTheAnsiCodePage) {
    use(kWestern);
    const std::string text = "\xE9\x80\x81\0"s; // e acute, euro, a byte that is no character
    const char name[] = "\xC4";
    ASSERT_EQ(set_text(name, text), kSuccess);
    EXPECT_NE(folder_.read().find("\"\xC3\x84\"=\"\xC3\xA9\xE2\x82\xAC\xC2\x81\"\n"), std::string::npos);
    EXPECT_EQ(get(name), text);
    EXPECT_EQ(get("\xE4"), text) << "the other case";
    EXPECT_EQ(set_text("u", "\x80"), kSuccess);
    EXPECT_EQ(get("u").substr(0, 1), "\x80") << "a lone character without a terminator";
    EXPECT_EQ(set_bytes("b", text), kSuccess);
    EXPECT_EQ(get("b"), text) << "no text, no conversion";

    folder_.write("[HKEY_CURRENT_USER]\n\"v\"=\"\xD0\x96x\"\n\"odd\"=hex(1):41,00,42,00,43\n");
    EXPECT_EQ(get("v"), "?x\0"s) << "not in this code page";
    EXPECT_EQ(get("odd"), "AB"s);
}

TEST_F(SystemRegistry, DoubleByteStringsCross) {
    use(kJapanese);
    folder_.write("[HKEY_CURRENT_USER]\n\"v\"=\"\xD0\x96x\"\n");
    EXPECT_EQ(get("v"), "\x84\x47x\0"s);
    EXPECT_EQ(set_text("w", "\x82\xA0\x5C\0"s), kSuccess);
    EXPECT_EQ(get("w"), "\x82\xA0\x5C\0"s);
}

TEST(Atoms, EqualForTextsThatDifferInCaseOnly) {
    run_on(kWestern);
    const std::uint16_t atom = add_atom("Key\\\xC4");
    EXPECT_GE(atom, 0xC000);
    EXPECT_EQ(add_atom("kEY\\\xE4"), atom);
    const std::uint16_t other = add_atom("Key\\A");
    EXPECT_NE(other, atom);
    delete_atom(atom);
    EXPECT_EQ(add_atom("Key\\\xC4"), atom) << "still in use once";
    delete_atom(atom);
    delete_atom(atom);
    delete_atom(other);
    delete_atom(other);
    EXPECT_EQ(add_atom(nullptr), 0);
    EXPECT_EQ(add_atom(""), 0);
    EXPECT_EQ(add_atom(std::string(256, 'x').c_str()), 0);
    const std::uint16_t longest = add_atom(std::string(255, 'x').c_str());
    EXPECT_NE(longest, 0);
    delete_atom(longest);
    EXPECT_EQ(add_atom("#5"), 5) << "by its number";
    EXPECT_EQ(add_atom("#0"), 0);
    EXPECT_EQ(add_atom("#49151"), 0xBFFF);
    EXPECT_EQ(add_atom("#49152"), 0);
    delete_atom(5);
    const std::uint16_t no_number = add_atom("#5a");
    EXPECT_GE(no_number, 0xC000);
    delete_atom(no_number);

    std::vector<std::uint16_t> all;
    for (int i = 0; i <= 0x4000; ++i)
        all.push_back(add_atom(("atom " + std::to_string(i)).c_str()));
    EXPECT_NE(all[0x3FFF], 0);
    EXPECT_EQ(all[0x4000], 0) << "all are taken";
    for (const std::uint16_t one : all)
        delete_atom(one);
}

TEST(Memory, IsReservedWholeAndCommittedInParts) {
    constexpr std::size_t page = 4096;
    constexpr std::size_t size = 256 * page;
    auto *start = static_cast<unsigned char *>(reserve_address_space(size));
    ASSERT_NE(start, nullptr);
    for (const std::size_t part : {std::size_t{0}, size - page}) {
        ASSERT_TRUE(commit_memory(start + part, page));
        EXPECT_EQ(start[part] + start[part + page - 1], 0);
        start[part] = start[part + page - 1] = 1;
    }
    release_address_space(start, size);
    release_address_space(nullptr, size);
}

} // namespace
} // namespace kxstr::platform
