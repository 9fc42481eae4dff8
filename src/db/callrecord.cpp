#include "db/callrecord.h"

#include "common/cp1252.h"

QString CallRecord::field(CallField f) const {
    const auto [offset, width] = kLayout[static_cast<int>(f)];
    return cp1252::decode(bytes_.data() + offset, width);
}

void CallRecord::setField(CallField f, const QString& text) {
    const auto [offset, width] = kLayout[static_cast<int>(f)];
    const QByteArray encoded = cp1252::encode(QStringView(text).left(width));
    char* dst = bytes_.data() + offset;
    std::fill(dst, dst + width, ' ');
    std::copy(encoded.begin(), encoded.end(), dst);
}

uint64_t callSortKey(const char* callField) {
    constexpr int width = CallRecord::kLayout[0].width;
    int b = 0, e = width;
    while (b < e && callField[b] == ' ') ++b;
    while (e > b && callField[e - 1] == ' ') --e;
    // Six slots of nine bits: rank + 1 for a character, 0 past the end, so that a shorter call
    // sorts before every longer call it begins.
    uint64_t key = 0;
    for (int i = 0; i < width; ++i) {
        const int p = b + i;
        const uint64_t slot = p < e ? cp1252::unicodeRank(static_cast<unsigned char>(callField[p])) + 1u : 0u;
        key = (key << 9) | slot;
    }
    return key;
}
