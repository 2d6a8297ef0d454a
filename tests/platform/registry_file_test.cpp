// The text of a settings file: what is read from it, and that a change changes nothing else.
#include "platform/portable/registry_file.h"

#include <ctime>

#include "platform/ansi_text.h"
#include "platform/portable/utf8.h"
#include "support/test.h"

namespace kxstr::platform {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr const char *kHeader = "Windows Registry Editor Version 5.00\n";
constexpr std::u16string_view kPath = u"HKEY_CURRENT_USER\\Software\\K";

std::string in_key(const std::string &lines) {
    return std::string(kHeader) + "\n[HKEY_CURRENT_USER\\Software\\K]\n" + lines;
}

std::string repeated(std::string_view text, int times) {
    std::string all;
    while (times-- > 0)
        all += text;
    return all;
}

TEST(RegistryFile, ReadsValuesOfAllShapes) {
    const auto rows = reference::read_barred_rows("../tests/platform/registry_lines.txt");
    EXPECT_EQ(rows.size(), 16u);
    for (const auto &row : rows) {
        const auto name = test::units_of<char16_t>(row.at(1));
        for (const char *end : {"", "\n", "\r\n"}) {
            const auto file = parse_registry(in_key(row[0] + end));
            ASSERT_TRUE(file) << row[4];
            const RegistryValue *value =
                file->find_value(u"hkey_current_user\\SOFTWARE\\k", {name.begin(), name.end()});
            ASSERT_NE(value, nullptr) << row[4];
            EXPECT_EQ(value->type, std::stoul(row[2], nullptr, 16)) << row[4];
            EXPECT_EQ(value->data, test::units_of<std::uint8_t>(row[3])) << row[4];
        }
    }
}

TEST(RegistryFile, DamagedTexts) {
    const auto rows = reference::read_barred_rows("../tests/platform/damaged.txt");
    EXPECT_EQ(rows.size(), 24u);
    for (const auto &row : rows) {
        const std::string text = row[0] == "K" ? in_key(row[1]) : row[0] == "H" ? kHeader + row[1] : row[1];
        EXPECT_FALSE(parse_registry(text)) << row.at(2);
    }
    EXPECT_FALSE(parse_registry(kHeader + ("[HKEY_USERS" + repeated("\\k", 512)) + "]\n")) << "keys too deep";
}

TEST(RegistryFile, LinesThatMeanNothingAreNoDamage) {
    const auto file = parse_registry(in_key("stray words\n\xE9 latin\n\"v\"=\"x\"\n[HKEY_OTHER\\K]\n\"w\"=hex:09\n"
                                            "[-HKEY_CURRENT_USER\\Gone]\n\"x\"=\"y\"\n"));
    ASSERT_TRUE(file);
    EXPECT_EQ(file->find_key(kPath)->values.size(), 1u);
    EXPECT_EQ(file->find_key(u"HKEY_CURRENT_USER\\Gone"), nullptr);
}

TEST(RegistryFile, RemovalsTakeAwayWhatStandsAbove) {
    const auto file =
        parse_registry(in_key("\"v\"=\"x\"\n\"w\"=\"x\"\n\"v\"=-\n[HKEY_CURRENT_USER\\Software\\K\\Below]\n"
                              "[HKEY_CURRENT_USER\\Software\\Kept]\n[-HKEY_CURRENT_USER\\software\\k]\n"));
    ASSERT_TRUE(file);
    EXPECT_EQ(file->find_key(kPath), nullptr);
    EXPECT_EQ(file->find_key(u"HKEY_CURRENT_USER\\Software\\K\\Below"), nullptr);
    EXPECT_NE(file->find_key(u"HKEY_CURRENT_USER\\Software\\Kept"), nullptr);
    EXPECT_NE(file->find_key(u"HKEY_CURRENT_USER\\Software"), nullptr) << "a key above others needs no line";
    const auto value = parse_registry(in_key("\"v\"=\"x\"\n\"V\"=-\n"));
    EXPECT_EQ(value->find_value(kPath, u"v"), nullptr);
    const auto again = parse_registry(*with_value(*value, kPath, u"v", 3, Bytes{1}));
    EXPECT_EQ(again->find_value(kPath, u"v")->data, Bytes{1});
    const auto twice = parse_registry(in_key("\"v\"=hex:01\n\"V\"=hex:02\n"));
    EXPECT_EQ(without_value(*twice, kPath, u"v"), in_key("")) << "the earlier line must not come to light";
}

TEST(RegistryFile, KeysThatOnlyLeadToOthersAreThere) {
    // Each row a file, what is there, what is not, and how a new key below HKEY_USERS\\a is spelled.
    const struct {
        std::string lines;
        std::u16string there, missing;
        const char *spelled;
    } cases[] = {
        {"[HKEY_USERS\\a\\b]\n[HKEY_USERS\\A]\n", u"HKEY_USERS\\A", u"HKEY_USERS\\A\\BC", "a\\new"},
        {"[HKEY_USERS\\A]\n[HKEY_USERS\\a\\b]\n", u"HKEY_USERS", u"HKEY_USERS\\", "A\\new"},
        {"[HKEY_USERS\\a\\b\\c]\n[-HKEY_USERS\\A\\B]\n", u"HKEY_USERS\\A", u"HKEY_USERS\\A\\B", "a\\new"},
        {"[HKEY_USERS\\a\\b]\n[-HKEY_USERS\\A\\c]\n", u"HKEY_USERS\\a", u"HKEY_USERS\\a\\c", "a\\new"},
        {"[HKEY_USERS\\a]\n[HKEY_USERS\\a]b]\n[-HKEY_USERS\\A]\n", u"HKEY_USERS\\a]b", u"HKEY_USERS\\a", "A\\new"},
    };
    for (const auto &c : cases) {
        const auto file = parse_registry(kHeader + c.lines);
        ASSERT_TRUE(file) << c.lines;
        EXPECT_NE(file->find_key(c.there), nullptr) << c.lines;
        EXPECT_EQ(file->find_key(c.missing), nullptr) << c.lines;
        EXPECT_NE(with_key(*file, u"HKEY_USERS\\A\\new")->find(std::string("[HKEY_USERS\\") + c.spelled),
                  std::string::npos)
            << c.lines;
    }
}

// Files of these sizes took seconds while the work grew with the square of the lines.
TEST(RegistryFile, HostileFilesTakeTimeInProportion) {
    const std::clock_t start = std::clock();
    std::string keys, removals, deep, duplicates;
    for (int i = 0; i < 10'000; ++i) {
        keys += "[HKEY_USERS\\k" + std::to_string(i) + "]\n";
        removals += "[-HKEY_USERS\\k" + std::to_string(i) + "]\n";
    }
    EXPECT_EQ(parse_registry(kHeader + keys + removals)->keys.size(), 1u);
    for (int i = 0; i < 500; ++i)
        deep += "[HKEY_USERS" + repeated("\\k" + std::to_string(i), 511) + "]\n";
    EXPECT_EQ(parse_registry(kHeader + deep)->keys.size(), 500u);
    duplicates = in_key(repeated("\"v\"=\"x\"\n", 2000));
    EXPECT_EQ(without_value(*parse_registry(duplicates), kPath, u"v"), in_key(""));
    // A fifth of a second, and room for a slow machine with sanitizers.
    EXPECT_LT(std::clock() - start, 3 * CLOCKS_PER_SEC);
}

TEST(RegistryFile, ByteOrderMarks) {
    const std::string utf8 = in_key("\"\xC3\xA9\"=\"\xF0\x9F\x98\x80\"\r\n");
    std::string utf16 = "\xFF\xFE";
    const auto units = from_utf8(utf8);
    ASSERT_TRUE(units);
    for (const char16_t unit : *units) {
        utf16 += static_cast<char>(unit);
        utf16 += static_cast<char>(unit >> 8);
    }
    EXPECT_EQ(parse_registry(utf16)->text, utf8);
    EXPECT_FALSE(parse_registry(utf16 + ';')) << "half a unit";
    const auto marked = parse_registry("\xEF\xBB\xBF" + utf8);
    ASSERT_TRUE(marked);
    EXPECT_EQ(*with_key(*marked, kPath), "\xEF\xBB\xBF" + *with_key(*parse_registry(utf8), kPath));
}

// A file as people leave it, with CRLF, remarks and formatting of their own.
constexpr const char *kHandMade = "Windows Registry Editor Version 5.00\r\n"
                                  "; mine\r\n\r\n"
                                  "[HKEY_CURRENT_USER\\Software\\Mine]   ; key\r\n"
                                  "\"one\" =  HEX_PLACEHOLDER  ; remark\r\n"
                                  "; between\r\n"
                                  "\"two\"=hex:01,\\\r\n  02\r\n"
                                  "\r\n"
                                  "stray\r\n"
                                  "[HKEY_CURRENT_USER\\Software\\Other]";

std::string hand_made(std::string_view one, std::string_view added = {}, std::string_view at_end = {}) {
    std::string text = kHandMade;
    text.replace(text.find("HEX_PLACEHOLDER"), 15, one);
    text.insert(text.find("\r\nstray"), added);
    return text.append(at_end);
}

TEST(RegistryFile, ChangesTouchNothingElse) {
    const auto file = parse_registry(hand_made("hex:ff"));
    ASSERT_TRUE(file);
    EXPECT_EQ(with_value(*file, u"HKEY_CURRENT_USER\\software\\mine", u"ONE", 4, Bytes{1, 0, 0, 0}),
              hand_made("dword:00000001"));
    EXPECT_EQ(with_value(*file, u"HKEY_CURRENT_USER\\Software\\Mine", u"Three", 1, Bytes{'x', 0, 0, 0}),
              hand_made("hex:ff", "\"Three\"=\"x\"\r\n"));
    EXPECT_EQ(with_value(*file, u"HKEY_CURRENT_USER\\Software\\Other", u"", 3, Bytes{}),
              hand_made("hex:ff", "", "\r\n@=hex:\r\n"));
    EXPECT_EQ(with_key(*file, u"HKEY_CURRENT_USER\\SOFTWARE\\mine\\New"),
              hand_made("hex:ff", "", "\r\n\r\n[HKEY_CURRENT_USER\\Software\\Mine\\New]\r\n"));
    EXPECT_EQ(with_value(*file, u"HKEY_CURRENT_USER\\Software", u"v", 3, Bytes{9}),
              hand_made("hex:ff", "", "\r\n\r\n[HKEY_CURRENT_USER\\Software]\r\n\"v\"=hex:09\r\n"));
    std::string without_two = hand_made("hex:ff");
    without_two.erase(without_two.find("\"two\""), std::string_view("\"two\"=hex:01,\\\r\n  02\r\n").size());
    EXPECT_EQ(without_value(*file, u"HKEY_CURRENT_USER\\Software\\Mine", u"Two"), without_two);
    EXPECT_EQ(without_value(*file, u"HKEY_CURRENT_USER\\Software\\Mine", u"none"), file->text);
}

TEST(RegistryFile, NamesThatTheFormatCannotHoldAreRefused) {
    const RegistryFile file = empty_registry();
    EXPECT_FALSE(with_key(file, u"HKEY_CURRENT_USER\\a] ;b"));
    EXPECT_FALSE(with_key(file, u"HKEY_CURRENT_USER\\a\nb"));
    EXPECT_TRUE(with_key(file, u"HKEY_CURRENT_USER\\a]b[]"));
    const std::u16string long_path = u"HKEY_CURRENT_USER\\" + std::u16string(256, u'k');
    EXPECT_FALSE(with_key(file, long_path));
    EXPECT_FALSE(with_value(file, long_path, u"v", 1, Bytes{0, 0}));
    const auto odd = with_value(file, u"HKEY_CURRENT_USER\\]", u"]\n[HKEY_USERS]\r\"=\\", 1, Bytes{0, 0});
    ASSERT_TRUE(odd);
    EXPECT_EQ(parse_registry(*odd)->keys.size(), 1u);
}

// Any data of any type under any name comes back, whatever was written before: the text against a plain map.
TEST(RegistryFile, RandomChangesAgainstAMap) {
    std::mt19937 random(3);
    const auto below = [&random](unsigned end) { return random() % end; };
    const std::u16string names[] = {u"", u"a", u"b\\\"", u"\u00E9\u0416", u"\n;", {0xD800, u'a'}};
    const std::u16string keys[] = {u"HKEY_CURRENT_USER\\K", u"HKEY_CURRENT_USER\\K\\L", u"HKEY_USERS\\\u00FC"};
    std::map<std::pair<std::u16string, std::u16string>, std::pair<std::uint32_t, Bytes>> model;
    std::string text = std::string(kHeader) + "; first\n[HKEY_CURRENT_USER\\k]\n; second\n";
    for (int step = 0; step < 600; ++step) {
        const auto file = parse_registry(text);
        ASSERT_TRUE(file) << text;
        const auto &key = keys[below(std::size(keys))];
        const auto &name = names[below(std::size(names))];
        if (below(4) == 0) {
            text = without_value(*file, key, name);
            model.erase({key, name});
        } else {
            const std::uint32_t types[] = {0, 1, 1, 2, 3, 4, 7, 0x80000002, 0xC0000008};
            const std::uint32_t type = types[below(std::size(types))];
            Bytes data(below(8) == 0 ? below(200) : below(9));
            for (auto &byte : data) // also texts with terminators in all places
                byte = static_cast<std::uint8_t>(below(3) == 0 ? 0 : below(256));
            const auto changed = with_value(*file, key, name, type, data);
            ASSERT_TRUE(changed);
            text = *changed;
            model[{key, name}] = {type, data};
        }
        const auto now = parse_registry(text);
        ASSERT_TRUE(now) << text;
        std::size_t values = 0;
        for (const auto &[path, one] : now->keys)
            values += one.values.size();
        ASSERT_EQ(values, model.size());
        for (const auto &[place, value] : model) {
            const RegistryValue *found = now->find_value(place.first, place.second);
            ASSERT_NE(found, nullptr);
            ASSERT_EQ(std::pair(found->type, found->data), value);
        }
    }
    EXPECT_LT(text.find("; first\n[HKEY_CURRENT_USER\\k]\n"), text.find("; second\n"));
    for (std::size_t start = 0; start < text.size(); start = text.find('\n', start) + 1)
        ASSERT_LE(text.find('\n', start) - start, 120u) << "long data is broken into lines";
}

TEST(RegistryFile, CapitalsOfNamesAreCapitals) {
    for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
        const char16_t upper = upper_case(static_cast<char16_t>(unit));
        ASSERT_EQ(upper_case(upper), upper) << std::hex << unit;
    }
    EXPECT_EQ(upper_case(u'\u0101'), u'\u0100');
}

} // namespace
} // namespace kxstr::platform
