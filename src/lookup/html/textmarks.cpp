#include "lookup/html/textmarks.h"

#include <algorithm>

namespace lookup::html {

bool pageHoldsPrivateUse(std::string_view html) {
    // Private-use characters start with one of these bytes in UTF-8.
    for (const char lead : {'\xEE', '\xEF', '\xF3', '\xF4'})
        for (size_t at = html.find(lead); at != std::string_view::npos; at = html.find(lead, at + 1))
            if (isPrivateUse(decodeAt(html, at).first)) return true;
    for (size_t at = html.find("&#"); at != std::string_view::npos; at = html.find("&#", at + 2)) {
        size_t k = at + 2;
        const bool hex = k < html.size() && (html[k] == 'x' || html[k] == 'X');
        if (hex) ++k;
        uint32_t value = 0;
        for (; k < html.size(); ++k) {
            const char c = html[k];
            int digit = -1;
            if (c >= '0' && c <= '9') digit = c - '0';
            else if (hex && c >= 'a' && c <= 'f') digit = c - 'a' + 10;
            else if (hex && c >= 'A' && c <= 'F') digit = c - 'A' + 10;
            if (digit < 0) break;
            value = std::min<uint32_t>(value * (hex ? 16 : 10) + static_cast<uint32_t>(digit), 0x110000);
        }
        if (isPrivateUse(value)) return true;
    }
    return false;
}

}  // namespace lookup::html
