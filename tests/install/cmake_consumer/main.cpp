#include <cstdio>
#include <kxstr/kxstr.h>
#include <string>

int main() {
    KxCodePage page{};
    WcvtSetCodepage(1252, KX_BOTH_DIRECTIONS, &page);
    std::string units, bytes;
    char text[8];
    for (const unsigned char byte : std::string("caf\xE9")) {
        const KxChar ch = WcvtNtvToKx(&page, byte);
        units += (std::snprintf(text, sizeof text, " %04X", ch), text);
        bytes += (std::snprintf(text, sizeof text, " %02X", WcvtKxToNtv(&page, ch)), text);
    }
    std::printf("caf\xC3\xA9 ->%s ->%s\n", units.c_str(), bytes.c_str());
}
