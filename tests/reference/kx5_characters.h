// KX 5 and KX 6 characters in terms of each other, worked out rule by rule for each character asked for.
#pragma once

#include <cstdint>
#include <vector>

namespace kxstr::reference {

using Numbers = std::vector<int>;

inline int at(const Numbers &table, int place) {
    return table[static_cast<std::size_t>(place)];
}

// The partner of `index` in a list of pairs, else `otherwise`.
inline int paired(const Numbers &pairs, int index, int otherwise) {
    for (std::size_t i = 0; i < pairs.size(); i += 2)
        if (pairs[i] == index) return pairs[i + 1];
    return otherwise;
}

// Pairs of a threshold and an amount, falling: the first threshold not above the index tells what to add.
inline int stepped(const Numbers &steps, int index) {
    for (std::size_t i = 0; i < steps.size(); i += 2)
        if (steps[i] <= index) return (index + steps[i + 1]) & 0xFF;
    return index;
}

// A result of 256 and more is a whole character of another set, or none.
inline std::uint32_t in_set(int set, int result) {
    return static_cast<std::uint32_t>(result > 0xFF ? result : set << 8 | result);
}

inline std::uint32_t kx6_to_kx5(std::uint32_t ch, bool japan) {
    constexpr int none = 0xFFFF;
    const int set = static_cast<int>(ch >> 8);
    const int i = static_cast<int>(ch & 0xFF);
    const auto result = [&]() -> int {
        switch (set) {
        case 1: return i == 0x18 ? 0x0208 : i >= 234 ? none : i;
        case 2: {
            static const Numbers table{26, 27, 11, 12, 21, 4,  13, 23, 22, 25, 99, 99, 99, 9,  99, 99, 99, 99,
                                       99, 99, 99, 99, 20, 99, 99, 99, 3,  2,  5,  29, 0,  31, 1,  33, 34, 35,
                                       36, 37, 16, 17, 40, 41, 42, 43, 44, 24, 7,  6,  10, 14, 15, 19, 18};
            return i > 52 ? i : at(table, i) == 99 ? none : at(table, i);
        }
        case 5:
            if (i < 4 || i == 30 || i == 33 || i == 34) return none;
            return paired({21, 33, 23, 34, 37, 30, 43, 21, 51, 23, 168, 2, 169, 1, 170, 0, 171, 3}, i, i);
        case 8: {
            static const Numbers table{200, 52, 201, 53, 202, 54, 203, 55, 207, 56, 204, 57, 205, 58, 208, 59, 206};
            static const Numbers pairs{75,  39,  81,  194, 82,  195, 113, 97,  121, 104, 129, 111, 150,
                                       131, 158, 138, 179, 209, 180, 35,  205, 182, 213, 189, 214, 193};
            static const Numbers steps{215, -19, 206, -20, 181, -19, 159, -17, 151, -16, 130,
                                       -15, 122, -14, 114, -13, 83,  -12, 76,  -10, 69,  -9};
            return i >= 52 && i <= 68 ? at(table, i - 52) : paired(pairs, i, stepped(steps, i));
        }
        case 9:
            if (i >= 119 && i <= 122) return i;
            return paired({52, 117, 86, 115, 96, 118, 111, 116}, i, stepped({112, -4, 97, -3, 87, -2, 53, -1}, i));
        case 10: {
            static const Numbers table{0,  0,   70,  71, 66, 67, 0,   0,   68, 69,  0,   0,   72,  73,  0,  0,  74,
                                       75, 102, 103, 0,  0,  76, 77,  78,  79, 106, 107, 80,  81,  88,  89, 0,  0,
                                       0,  0,   0,   0,  82, 83, 0,   0,   84, 85,  0,   0,   0,   0,   86, 87, 90,
                                       91, 0,   0,   0,  0,  0,  0,   0,   0,  0,   0,   0,   0,   0,   0,  0,  0,
                                       92, 93,  0,   0,  0,  0,  104, 105, 94, 95,  108, 109, 100, 101, 0,  0};
            if (i >= 66 && i <= 149) return at(table, i - 66) == 0 ? none : at(table, i - 66);
            return stepped({202, 0, 168, -52, 164, 0, 162, -48, 160, 0, 156, -46, 152, -56}, i);
        }
        case 11: {
            static const Numbers table{92,  87,  88,  93,  0,   181, 100, 101, 102, 103, 104, 106, 107, 108, 105, 97,
                                       112, 113, 114, 115, 116, 117, 118, 119, 120, 121, 127, 128, 129, 130, 131, 137,
                                       138, 139, 140, 141, 147, 148, 149, 150, 151, 152, 153, 154, 155, 156, 167, 168,
                                       169, 170, 171, 172, 173, 174, 175, 176, 177, 178, 179, 180, 182, 98,  99};
            return japan ? i : i == 4 ? 0x061F : i > 62 ? none : at(table, i);
        }
        case 13: return stepped({196, 0, 179, 8, 163, -8, 161, -10, 47, -6, 42, 147, 38, -1, 37, 134}, i);
        default: return i;
        }
    };
    return in_set(set, result());
}

// The first character, with the second in the upper half.
inline std::uint32_t kx5_to_kx6(std::uint32_t ch, bool japan) {
    const int set = static_cast<int>(ch >> 8);
    const int i = static_cast<int>(ch & 0xFF);
    std::uint32_t mark = 0;
    const auto result = [&]() -> int {
        switch (set) {
        case 1: return i == 0x18 ? 0x01EF : i;
        case 2: {
            static const Numbers table{30, 32, 27, 26, 5,  28, 47, 46, 0, 13, 48, 2, 3, 6,
                                       49, 50, 38, 39, 52, 51, 22, 4,  8, 7,  45, 9, 0, 1};
            return i == 8 ? 0x0118 : i < 28 ? at(table, i) : i;
        }
        case 5: return paired({0, 170, 1, 169, 2, 168, 3, 171, 21, 43, 23, 51, 30, 37, 33, 21, 34, 23}, i, i);
        case 8: {
            static const Numbers high{214, 81, 82, 215, 216, 217, 218, 52, 54, 56, 58, 62, 64, 68, 60, 66, 179};
            static const Numbers low{53, 55, 57, 59, 61, 63, 65, 67};
            if (i > 209 || i < 52) return i;
            if (i >= 193) return at(high, i - 193);
            return i <= 59
                       ? at(low, i - 52)
                       : stepped({186, 20, 162, 19, 142, 17, 135, 16, 115, 15, 108, 14, 101, 13, 71, 12, 66, 10, 60, 9},
                                 i);
        }
        case 9: return paired({115, 86, 116, 111, 117, 52, 118, 96}, i, stepped({108, 4, 94, 3, 85, 2, 52, 1}, i));
        case 10: {
            static const Numbers table{70,  71,  74,  75,  68,  69,  78,  79,  82,  83,  88, 89,  90,
                                       91,  94,  95,  104, 105, 108, 109, 114, 115, 96,  97, 116, 117,
                                       134, 135, 142, 143, 152, 153, 154, 155, 146, 147, 84, 85,  140,
                                       141, 92,  93,  144, 145, 156, 157, 158, 159, 162, 163};
            return i > 149 || i < 66 ? i : i >= 116 ? i + 52 : at(table, i - 66);
        }
        case 11: {
            static const Numbers table{6,   7,   8,  9,  10, 14, 11,  12,  13,  72,  21,  24,  16,  17,  18,  19,  20,
                                       21,  22,  23, 24, 25, 85, 86,  87,  88,  89,  26,  27,  28,  29,  30,  90,  91,
                                       92,  93,  94, 31, 32, 33, 34,  35,  95,  96,  97,  98,  99,  36,  37,  38,  39,
                                       40,  41,  42, 43, 44, 45, 105, 106, 107, 108, 109, 169, 170, 171, 172, 173, 46,
                                       47,  48,  49, 50, 51, 52, 53,  54,  55,  56,  57,  58,  59,  5,   60,  255, 255,
                                       255, 255, 1,  2,  1,  2,  255, 0,   3,   255, 255, 255, 15,  61,  62};
            static const Numbers ascii{83, 40, 84, 41, 85, 91, 86,  93, 91,  46,
                                       94, 32, 95, 32, 96, 32, 183, 32, 184, 32};
            if (japan || i > 184) return i;
            const int entry = at(table, i < 100 ? i : i - 100);
            if (entry == 255) return -paired(ascii, i, -i);
            mark = (entry & 64) != 0 ? 0x0B3D : (entry & 128) != 0 ? 0x0B3E : 0;
            return entry % 64;
        }
        case 13: return stepped({194, 0, 189, -147, 187, -8, 172, 9, 171, -134, 155, 8, 41, 6, 37, 1}, i);
        default: return i;
        }
    };
    const int first = result();
    return first < 0 ? static_cast<std::uint32_t>(-first) : in_set(set, first) | mark << 16; // below 0: of set 0
}

} // namespace kxstr::reference
