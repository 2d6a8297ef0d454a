// Registry links: what an expression leads to, the errors, and writing through a link.

#include <ctime>
#include <memory>

#include "platform/ansi_text.h"
#include "registry/key.h"
#include "registry/link_engine.h"
#include "registry/values.h"
#include "settings_folder.h"
#include "support/test.h"

namespace kxstr::registry {
namespace {

using namespace kxstr::test;
using namespace std::string_literals;

constexpr std::uint32_t kBinary = 3;

// The bytes of a text in the registry.
std::string wide(std::string_view text) {
    std::string bytes;
    for (const char ch : text)
        (bytes += ch) += '\0';
    return bytes;
}

std::string byte_list(std::string_view bytes, const char *separator = ",") {
    std::string list;
    for (const char byte : bytes) {
        char item[8];
        std::snprintf(item, sizeof item, "%s%02x", list.empty() ? "" : separator, static_cast<unsigned char>(byte));
        list += item;
    }
    return list;
}

// The rows of links.txt that start with a word.
std::vector<std::vector<std::string>> rows_of(std::string_view word, std::size_t count) {
    std::vector<std::vector<std::string>> rows;
    for (auto &row : reference::read_rows("../tests/registry/links.txt")) {
        std::ranges::replace(row, "-", "");
        if (row[0] == word) rows.push_back(row);
    }
    EXPECT_EQ(rows.size(), count);
    return rows;
}

class Links : public ::testing::Test {
  protected:
    Links() {
        run_on(kWestern, folder_.file().c_str());
        body_ = "[HKEY_CURRENT_USER]\n\"user\"=hex:75\n"
                "[HKEY_LOCAL_MACHINE\\K]\n\"v\"=hex:6d\n"
                "[HKEY_CURRENT_USER\\K]\n\"v\"=hex:75,76\n"
                "[HKEY_CURRENT_USER\\Software]\n\"base\"=hex:62\n"
                "[HKEY_CURRENT_USER\\Software\\K]\n"
                "\"bytes\"=hex:01,02,22,00,22,00\n\"none\"=hex:\n\"pair\\\"\\\"s\"=hex:\n\"text\"=\"\xC3\xA9|"
                "x\"\n\"protected\"=hex(40000003):07\n"
                "\"path\"=hex(40000002):e9,41\n";
        for (const auto &row : rows_of("link", 15))
            add_link(row[1], wide(row[2]));
    }

    void add_link(const std::string &name, std::string_view data) {
        body_ += "\"" + name + "\"=hex(80000008):" + byte_list(data) + "\n";
    }

    CYWKey &key() {
        if (!key_) {
            folder_.write(body_);
            key_ = std::make_unique<CYWKey>("hkey_current_user\\Software\\K", 0);
            EXPECT_EQ(key_->GetLinkEngine(), 1u);
        }
        return *key_;
    }

    // The bytes that an expression yields, or the engine's error as "error E".
    std::string expanded(std::string_view link, bool target = false) {
        LinkEngine &engine = *key().link_engine;
        const auto data = std::make_unique<std::uint8_t[]>(link.size()); // exact: there is nothing behind the link
        std::memcpy(data.get(), link.data(), link.size());
        std::uint32_t size = 0;
        type_ = kLinkType;
        std::uint8_t *const result = expand(engine, {data.get(), link.size()}, type_, false, target, size);
        EXPECT_EQ(engine.used, 0u);
        EXPECT_EQ(engine.active_links.count, 0);
        if (result == nullptr) {
            std::snprintf(message_, sizeof message_, "error %X", engine.last_error);
            return message_;
        }
        std::string bytes(reinterpret_cast<const char *>(result), size);
        platform::task_free(result);
        return bytes;
    }

    SettingsFolder folder_;
    std::string body_;
    std::unique_ptr<CYWKey> key_;
    std::uint32_t type_ = 0;
    char message_[32];
};

TEST_F(Links, TextsErrorsAndPlainValues) {
    for (const auto &row : rows_of("text", 16)) {
        EXPECT_EQ(expanded(wide(row[1])), wide(row[2]) + "\0\0"s) << row[1];
        EXPECT_EQ(type_, kLinkType) << row[1];
    }
    for (const auto &row : rows_of("error", 10))
        EXPECT_EQ(expanded(wide(row[1])), "error " + row[2]) << row[1];
    for (const auto &row : rows_of("value", 15)) {
        EXPECT_EQ(byte_list(expanded(wide(row[1])), ""), row[3]) << row[1];
        EXPECT_EQ(type_, std::stoul(row[2], nullptr, 16)) << row[1];
    }
}

TEST_F(Links, HostileData) {
    EXPECT_EQ(expanded(wide("ab") + "c"), wide("ab") + "\0\0"s) << "an odd byte does not count";
    EXPECT_EQ(expanded(wide("a\0<"s)), wide("a") + "\0\0"s) << "a zero ends it";
    EXPECT_EQ(expanded("<"), "\0\0"s);
    EXPECT_EQ(expanded(wide("<>")), "\0\0"s) << "the base key's default value, which is missing";
    EXPECT_EQ(expanded(wide("<" + std::string(100000, 'k') + "\\" + std::string(100000, 'v') + ">")), "\0\0"s);
    EXPECT_EQ(expanded(wide("<" + std::string(100000, '\\') + ">")), "\0\0"s);
}

TEST_F(Links, LongChainsWorkAndTooLongOnesEnd) {
    const auto name = [](int i) { return std::string("c").append(std::to_string(i)); };
    for (int i = 0; i < 3000; ++i)
        add_link(name(i), wide(std::string("<K\\").append(name(i + 1)).append(">")));
    add_link("c3000", wide("end"));
    EXPECT_EQ(expanded(wide("<K\\c2900>")), wide("end") + "\0\0"s) << "100 deep";
    EXPECT_EQ(expanded(wide("<K\\c0>")), "error E") << "3000 deep";
    EXPECT_EQ(expanded(wide("<K\\c2999>")), wide("end") + "\0\0"s) << "and all is released";
}

TEST_F(Links, NoLinkTakesTimeWithoutEnd) {
    for (int i = 0; i < 40; ++i) {
        const std::string next = "<K\\v" + std::to_string(i + 1) + ">";
        add_link("v" + std::to_string(i), wide(next + next));
    }
    add_link("v40", "");
    std::string long_names;
    for (int i = 0; i < 100; ++i)
        long_names += "<" + std::string(4000, 'n') + ">";
    add_link("names", wide(long_names));
    const std::clock_t start = std::clock(); // of the processor: others may be busy, too
    EXPECT_EQ(expanded(wide("<K\\v0>")), "error E") << "two to the 40 references";
    EXPECT_EQ(expanded(wide("<K\\v30>")), "\0\0"s) << "2,047 of them are honest";
    std::string many_times;
    for (int i = 0; i < 40; ++i)
        many_times += "<K\\names>";
    EXPECT_EQ(expanded(wide(many_times)), "error E") << "few links, but long ones";
    EXPECT_EQ(expanded(wide("<K\\names>")), "\0\0"s);
    EXPECT_LT(std::clock() - start, 5 * CLOCKS_PER_SEC);
}

TEST_F(Links, TheWorkAreaIsTheLimit) {
    // Text of n bytes takes room for n + 4096, in whole steps, behind the first step, and must stay below the reserve.
    const std::string most((kWorkAreaSize - 2 * kWorkAreaStep - 1) / 2, 'a');
    EXPECT_TRUE(expanded(wide(most)) == wide(most) + "\0\0"s);
    EXPECT_EQ(key().link_engine->committed, kWorkAreaSize - kWorkAreaStep);
    key_.reset();
    EXPECT_TRUE(expanded(wide(most + "a")) == "error E");
    std::string alternatives = "a";
    for (int i = 0; i < 999; ++i)
        alternatives += "|a";
    body_ += "\"many\"=hex(80000008):" + byte_list(wide(alternatives)) + "\n";
    key_.reset();
    EXPECT_EQ(expanded(wide("<K\\many>*<K\\many>")), "error E") << "a million combinations";
    EXPECT_EQ(expanded(wide("<K\\many>*<K\\ab>")).size(), 2 * (1000 * 2 * 3u)) << "2000 of two, with bars and the end";
}

TEST_F(Links, SyntaxCharacters) {
    const char *const settings = "[HKEY_CURRENT_USER\\Software\\Norvane\\Yarrowind\\21\\LogicalCharacters]\n"
                                 "\"Yarrowind Logical Syntax Characters\"=";
    const std::string standard = R"("Yarrowind Logical Syntax Characters"="\"*<>|")";
    const struct {
        const char *why;
        const char *stored;
        const char *join; // of <K\ab> and <K\xy>, where { and } open and close
        bool replaced;
    } cases[] = {
        {"all five", "\"'+{}/\"", "{K\\mine}+{K\\mine}", false},
        {"seven, two to spare", "\"'+{}/..\"", "{K\\mine}+{K\\mine}", false},
        {"two: the others as usual", "\"'+\"", "<K\\one>+<K\\one>", false},
        {"eight are too many", "\"'+{}/...\"", "<K\\one>*<K\\one>", true},
        {"no text", "hex:27,00", "<K\\one>*<K\\one>", true},
        {"not there", "-", "<K\\one>*<K\\one>", true},
    };
    add_link("mine", wide("1"));
    const std::string body = body_;
    for (const auto &c : cases) {
        body_ = body + settings + c.stored + "\n";
        key_.reset();
        EXPECT_EQ(expanded(wide(c.join)), wide("11") + "\0\0"s) << c.why;
        EXPECT_EQ(folder_.read().find(standard) != std::string::npos, c.replaced) << c.why;
    }
}

TEST_F(Links, WritingGoesToTheTarget) {
    const std::string body = body_;
    auto rows = rows_of("write", 14);
    std::ranges::move(rows_of("both", 6), std::back_inserter(rows));
    for (const auto &row : rows) {
        body_ = body;
        add_link("link", wide(row[1]));
        key_.reset();
        const std::string before = expanded(wide(row[1]));
        EXPECT_EQ(key().SetValue("link", kBinary, "new", 3, 1, 0), platform::kSuccess) << row[1];
        std::uint32_t type = 0;
        std::vector<std::uint8_t> data;
        EXPECT_EQ(read_value(CYWKey(row[2].c_str(), 0).key, row[3].c_str(), type, data), platform::kSuccess) << row[1];
        EXPECT_EQ(std::string(data.begin(), data.end()), "new") << row[1];
        const std::string after = expanded(wide(row[1]));
        EXPECT_TRUE(row[0] == "both" ? after.starts_with("new") : after == before) << row[1];
        EXPECT_NE(folder_.read().find("\"link\"=hex(80000008):"), std::string::npos) << row[1];
    }
}

TEST_F(Links, WritesThatDoNotHappen) {
    add_link("bad", wide("<K"));
    add_link("to protected", wide("<\\HKEY_CURRENT_USER\\Software\\K\\protected>"));
    add_link("locked link", wide("<K\\bytes>"));
    body_.replace(body_.rfind("80000008"), 8, "c0000008");
    key();
    const std::string before = folder_.read();
    const struct {
        const char *name;
        std::uint32_t status;
    } cases[] = {{"bad", kUnterminatedReference},
                 {"self", kStrayCloseOrLoop},
                 {"protected", platform::kAccessDenied},
                 {"to protected", platform::kAccessDenied},
                 {"locked link", platform::kAccessDenied}};
    for (const auto &c : cases)
        EXPECT_EQ(key().SetValue(c.name, kBinary, "new", 3, 1, 0), c.status) << c.name;
    EXPECT_EQ(folder_.read(), before);
    EXPECT_EQ(key().SetValue("self", kBinary, "new", 3, 0, 0), platform::kSuccess) << "the link itself";
    EXPECT_NE(folder_.read().find("\"self\"=hex:6e,65,77\n"), std::string::npos);
}

TEST_F(Links, KeysByPath) {
    const struct {
        const char *path;
        std::uint32_t status;
        bool created;
    } cases[] = {{"HKEY_CURRENT_USER", 0, false},     {"hkey_Current_User\\SOFTWARE\\k", 0, false},
                 {"HKEY_USERS\\New", 0, true},        {"HKEY_USERS\\new", 0, false},
                 {"HKCU\\Software", 1010, false},     {"", 1010, false},
                 {nullptr, platform::kBadKey, false}, {"HKEY_CURRENT_USER\\\\Software", platform::kBadPath, false}};
    folder_.write(body_);
    for (const auto &c : cases) {
        const CYWKey key(c.path, 0);
        EXPECT_EQ(key.status, c.status) << c.path;
        EXPECT_EQ(key.is_open(), c.status == 0) << c.path;
        EXPECT_EQ(key.created_new, c.created ? 1u : 0u) << c.path;
        EXPECT_EQ(key.access, 0x2001Fu);
    }
    EXPECT_TRUE(CYWKey(0, static_cast<const char *>(nullptr)).is_open());
}

TEST(LinksOfJapan, PathsGoThroughTheAnsiCodePage) {
    SettingsFolder folder;
    run_on(kJapanese, folder.file().c_str());
    // U+8868 is 95 5C in 932: its trail byte is a backslash. Found on the way to <\(8868)\(3044)>, and written there.
    folder.write("[HKEY_CURRENT_USER\\Software\\K]\n"
                 "\"link\"=hex(80000008):3c,00,68,88,5c,00,42,30,3e,00\n" // <(8868)\(3042)>
                 "[HKEY_CURRENT_USER\\Software\\\xE8\xA1\xA8]\n"
                 "\"\xE3\x81\x82\"=hex(80000008):3c,00,5c,00,68,88,5c,00,44,30,3e,00\n");
    CYWKey key("HKEY_CURRENT_USER\\Software\\K", 0);
    ASSERT_EQ(key.GetLinkEngine(), 1u);
    EXPECT_EQ(key.SetValue("link", kBinary, "new", 3, 1, 0), platform::kSuccess);
    std::uint32_t type = 0;
    std::vector<std::uint8_t> data;
    const CYWKey target("HKEY_CURRENT_USER\\\x95\x5C", 0);
    EXPECT_EQ(read_value(target.key, "\x82\xA2", type, data), platform::kSuccess);
    EXPECT_EQ(std::string(data.begin(), data.end()), "new");
}

TEST(SearchList, KeepsKeysInOrderAndFindsTheirRuns) {
    YWSEARCHLIST list;
    ASSERT_TRUE(list.set_up(4, kEqualKeys, 2));
    for (const std::uint32_t key : {500u, 3u, 0x80000000u, 3u, 7u, 3u, 256u}) {
        const auto place = list.find(&key);
        ASSERT_TRUE(list.insert(place.index, &key));
    }
    ASSERT_EQ(list.count, 7);
    std::vector<std::uint32_t> keys(7);
    for (std::size_t i = 0; i < keys.size(); ++i)
        std::memcpy(&keys[i], list.key_at(i), 4);
    EXPECT_EQ(keys, (std::vector<std::uint32_t>{3, 3, 3, 7, 256, 500, 0x80000000}));
    const std::uint32_t three = 3;
    EXPECT_EQ(list.find(&three).index, 0u);
    EXPECT_EQ(list.find(&three, 1).index, 1u);
    EXPECT_EQ(list.find(&three, 9).index, 2u);
    list.remove(0);
    list.remove(6); // behind the end
    EXPECT_EQ(list.count, 6);
    EXPECT_FALSE(list.insert(7, &three));
    const std::uint32_t missing = 300;
    EXPECT_EQ(list.find(&missing).record, nullptr);
    EXPECT_EQ(list.find(&missing).index, 4u);
}

} // namespace
} // namespace kxstr::registry
