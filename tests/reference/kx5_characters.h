// KX 5 and KX 6 characters in terms of each other, worked out rule by rule for each character asked for.
#pragma once

#include <cstdint>
#include <vector>

namespace kxstr::reference {

using Bytes = std::vector<int>;

struct Step {
    int threshold;
    int amount; // added, modulo 256
};

inline int direct(const Bytes &table, int first, int index) {
    return table[static_cast<std::size_t>(index - first)];
}

// The partner of `index` in a list of pairs, or -1.
inline int paired(const Bytes &pairs, int index) {
    for (std::size_t i = 0; i < pairs.size(); i += 2)
        if (pairs[i] == index) return pairs[i + 1];
    return -1;
}

inline int stepped(const std::vector<Step> &steps, int index) {
    for (const Step &step : steps)
        if (step.threshold <= index) return (index + step.amount) & 0xFF;
    return index;
}

inline std::uint32_t kx6_to_kx5(std::uint32_t ch, bool japan) {
    const int set = static_cast<int>(ch >> 8);
    const int i = static_cast<int>(ch & 0xFF);
    const auto here = [&](int index) { return static_cast<std::uint32_t>(set << 8 | index); };
    switch (set) {
    case 1:
        if (i == 0x18) return 0x0208;
        return i >= 234 ? 0xFFFF : ch;
    case 2: {
        static const Bytes table{26, 27, 11, 12, 21, 4,  13, 23, 22, 25, 99, 99, 99, 9,  99, 99, 99, 99,
                                 99, 99, 99, 99, 20, 99, 99, 99, 3,  2,  5,  29, 0,  31, 1,  33, 34, 35,
                                 36, 37, 16, 17, 40, 41, 42, 43, 44, 24, 7,  6,  10, 14, 15, 19, 18};
        if (i > 52) return ch;
        return direct(table, 0, i) == 99 ? 0xFFFF : here(direct(table, 0, i));
    }
    case 5: {
        static const Bytes pairs{21, 33, 23, 34, 37, 30, 43, 21, 51, 23, 168, 2, 169, 1, 170, 0, 171, 3};
        if (i < 4 || i == 30 || i == 33 || i == 34) return 0xFFFF;
        return paired(pairs, i) >= 0 ? here(paired(pairs, i)) : ch;
    }
    case 8: {
        static const Bytes table{200, 52, 201, 53, 202, 54, 203, 55, 207, 56, 204, 57, 205, 58, 208, 59, 206};
        static const Bytes pairs{75,  39,  81,  194, 82,  195, 113, 97,  121, 104, 129, 111, 150,
                                 131, 158, 138, 179, 209, 180, 35,  205, 182, 213, 189, 214, 193};
        if (i >= 52 && i <= 68) return here(direct(table, 52, i));
        if (paired(pairs, i) >= 0) return here(paired(pairs, i));
        return here(stepped({{215, -19},
                             {206, -20},
                             {181, -19},
                             {159, -17},
                             {151, -16},
                             {130, -15},
                             {122, -14},
                             {114, -13},
                             {83, -12},
                             {76, -10},
                             {69, -9},
                             {0, 0}},
                            i));
    }
    case 9:
        if (paired({52, 117, 86, 115, 96, 118, 111, 116}, i) >= 0)
            return here(paired({52, 117, 86, 115, 96, 118, 111, 116}, i));
        if (i >= 119 && i <= 122) return ch;
        return here(stepped({{112, -4}, {97, -3}, {87, -2}, {53, -1}, {0, 0}}, i));
    case 10: {
        static const Bytes table{0,  0,   70,  71, 66, 67, 0,   0,   68, 69,  0,   0,   72,  73,  0,  0,  74,
                                 75, 102, 103, 0,  0,  76, 77,  78,  79, 106, 107, 80,  81,  88,  89, 0,  0,
                                 0,  0,   0,   0,  82, 83, 0,   0,   84, 85,  0,   0,   0,   0,   86, 87, 90,
                                 91, 0,   0,   0,  0,  0,  0,   0,   0,  0,   0,   0,   0,   0,   0,  0,  0,
                                 92, 93,  0,   0,  0,  0,  104, 105, 94, 95,  108, 109, 100, 101, 0,  0};
        if (i < 66) return ch;
        if (i <= 149) return direct(table, 66, i) == 0 ? 0xFFFF : here(direct(table, 66, i));
        return here(
            stepped({{202, 0}, {168, -52}, {164, 0}, {162, -48}, {160, 0}, {156, -46}, {152, -56}, {150, 0}}, i));
    }
    case 11: {
        static const Bytes table{92,  87,  88,  93,  0,   181, 100, 101, 102, 103, 104, 106, 107, 108, 105, 97,
                                 112, 113, 114, 115, 116, 117, 118, 119, 120, 121, 127, 128, 129, 130, 131, 137,
                                 138, 139, 140, 141, 147, 148, 149, 150, 151, 152, 153, 154, 155, 156, 167, 168,
                                 169, 170, 171, 172, 173, 174, 175, 176, 177, 178, 179, 180, 182, 98,  99};
        if (japan) return ch;
        if (i == 4) return 0x061F;
        return i > 62 ? 0xFFFF : here(direct(table, 0, i));
    }
    case 13:
        return here(
            stepped({{196, 0}, {179, 8}, {163, -8}, {161, -10}, {47, -6}, {42, 147}, {38, -1}, {37, 134}, {0, 0}}, i));
    default: return ch;
    }
}

// The first character, with the second in the upper half.
inline std::uint32_t kx5_to_kx6(std::uint32_t ch, bool japan) {
    const int set = static_cast<int>(ch >> 8);
    const int i = static_cast<int>(ch & 0xFF);
    const auto here = [&](int index) { return static_cast<std::uint32_t>(set << 8 | index); };
    switch (set) {
    case 1: return i == 0x18 ? 0x01EF : ch;
    case 2: {
        static const Bytes table{30, 32, 27, 26, 5,  28, 47, 46, 0, 13, 48, 2, 3, 6,
                                 49, 50, 38, 39, 52, 51, 22, 4,  8, 7,  45, 9, 0, 1};
        if (i == 8) return 0x0118;
        return i < 28 ? here(direct(table, 0, i)) : ch;
    }
    case 5: {
        static const Bytes pairs{0, 170, 1, 169, 2, 168, 3, 171, 21, 43, 23, 51, 30, 37, 33, 21, 34, 23};
        return paired(pairs, i) >= 0 ? here(paired(pairs, i)) : ch;
    }
    case 8:
        if (i > 209) return ch;
        if (i >= 193)
            return here(direct({214, 81, 82, 215, 216, 217, 218, 52, 54, 56, 58, 62, 64, 68, 60, 66, 179}, 193, i));
        if (i < 52) return ch;
        if (i <= 59) return here(direct({53, 55, 57, 59, 61, 63, 65, 67}, 52, i));
        return here(stepped(
            {{186, 20}, {162, 19}, {142, 17}, {135, 16}, {115, 15}, {108, 14}, {101, 13}, {71, 12}, {66, 10}, {60, 9}},
            i));
    case 9:
        if (paired({115, 86, 116, 111, 117, 52, 118, 96}, i) >= 0)
            return here(paired({115, 86, 116, 111, 117, 52, 118, 96}, i));
        return here(stepped({{108, 4}, {94, 3}, {85, 2}, {52, 1}, {0, 0}}, i));
    case 10: {
        static const Bytes table{70,  71,  74,  75,  68,  69,  78, 79,  82,  83,  88,  89,  90,  91,  94,  95,  104,
                                 105, 108, 109, 114, 115, 96,  97, 116, 117, 134, 135, 142, 143, 152, 153, 154, 155,
                                 146, 147, 84,  85,  140, 141, 92, 93,  144, 145, 156, 157, 158, 159, 162, 163};
        if (i > 149 || i < 66) return ch;
        return i >= 116 ? here(i + 52) : here(direct(table, 66, i));
    }
    case 11: {
        static const Bytes table{6,   7,   8,  9,  10, 14, 11,  12,  13,  72,  21,  24,  16,  17,  18,  19,  20,
                                 21,  22,  23, 24, 25, 85, 86,  87,  88,  89,  26,  27,  28,  29,  30,  90,  91,
                                 92,  93,  94, 31, 32, 33, 34,  35,  95,  96,  97,  98,  99,  36,  37,  38,  39,
                                 40,  41,  42, 43, 44, 45, 105, 106, 107, 108, 109, 169, 170, 171, 172, 173, 46,
                                 47,  48,  49, 50, 51, 52, 53,  54,  55,  56,  57,  58,  59,  5,   60,  255, 255,
                                 255, 255, 1,  2,  1,  2,  255, 0,   3,   255, 255, 255, 15,  61,  62};
        static const Bytes into_ascii{83, 40, 84, 41, 85, 91, 86, 93, 91, 46, 94, 32, 95, 32, 96, 32, 183, 32, 184, 32};
        if (japan || i > 184) return ch;
        const int entry = direct(table, 0, i < 100 ? i : i - 100);
        if (entry == 255) return paired(into_ascii, i) >= 0 ? static_cast<std::uint32_t>(paired(into_ascii, i)) : ch;
        const std::uint32_t mark = (entry & 64) != 0 ? 0x0B3Du : (entry & 128) != 0 ? 0x0B3Eu : 0u;
        return here(entry % 64) | mark << 16;
    }
    case 13:
        return here(stepped(
            {{196, 0}, {194, 0}, {189, -147}, {187, -8}, {172, 9}, {171, -134}, {155, 8}, {41, 6}, {37, 1}, {0, 0}},
            i));
    default: return ch;
    }
}

} // namespace kxstr::reference
