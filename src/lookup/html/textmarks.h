#pragma once
// Marks for runs of text. A mark is one private-use character, which stands for the run of that
// number: U+E000 to U+F8FF for the first 6400 runs, then U+F0000 to U+FFFFD and U+100000 to
// U+10FFFD (the noncharacters at the end of each plane the parser would replace). The prescan
// (prescan.h) decides where a mark may stand and writes the marks; the parser then puts each
// mark wherever it would have put the run's text, and rendering puts the runs back. A page that
// holds private-use characters of its own (or numeric character references to them) gets no
// marks.
//
// Everything here is small and runs per character or per mark, so it is inline.
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

namespace lookup::html {

struct MarkRange {
    uint32_t first, end;  // code points
};
inline constexpr MarkRange kMarkRanges[] = {{0xE000, 0xF900}, {0xF0000, 0xFFFFE}, {0x100000, 0x10FFFE}};
inline constexpr size_t kMaxMarks = (0xF900 - 0xE000) + 2 * (0xFFFFE - 0xF0000);
inline constexpr size_t kMinRun = 2;  // a single character is left as it is (its mark is no shorter)

inline bool isPrivateUse(uint32_t c) { return (c >= 0xE000 && c < 0xF900) || (c >= 0xF0000 && c <= 0x10FFFF); }

// Writes the mark of run `index` (below kMaxMarks) in UTF-8 at w; returns the position behind it.
inline char* writeMark(char* w, size_t index) {
    uint32_t c = 0;
    for (const MarkRange& r : kMarkRanges) {
        if (index < r.end - r.first) {
            c = r.first + static_cast<uint32_t>(index);
            break;
        }
        index -= r.end - r.first;
    }
    if (c < 0x10000) {
        *w++ = static_cast<char>(0xE0 | (c >> 12));
    } else {
        *w++ = static_cast<char>(0xF0 | (c >> 18));
        *w++ = static_cast<char>(0x80 | ((c >> 12) & 0x3F));
    }
    *w++ = static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    *w++ = static_cast<char>(0x80 | (c & 0x3F));
    return w;
}

// The code point of the UTF-8 character at `at` and its length, for lead bytes 0xE0 and up.
inline std::pair<uint32_t, size_t> decodeAt(std::string_view text, size_t at) {
    const auto b = [&](size_t k) { return at + k < text.size() ? static_cast<unsigned char>(text[at + k]) & 0x3Fu : 0u; };
    const unsigned lead = static_cast<unsigned char>(text[at]);
    if (lead < 0xF0) return {((lead & 0x0Fu) << 12) | (b(1) << 6) | b(2), 3};
    return {((lead & 0x07u) << 18) | (b(1) << 12) | (b(2) << 6) | b(3), 4};
}

// The run number of a mark, or -1 for another character.
inline long markIndex(uint32_t c) {
    long before = 0;
    for (const MarkRange& r : kMarkRanges) {
        if (c >= r.first && c < r.end) return before + static_cast<long>(c - r.first);
        before += static_cast<long>(r.end - r.first);
    }
    return -1;
}

// Calls f(at, length, index) for each mark in `text`.
template <typename F>
void forEachMark(std::string_view text, F f) {
    for (size_t at = 0; at < text.size(); ++at) {
        if (static_cast<unsigned char>(text[at]) < 0xEE) continue;  // marks start with 0xEE, 0xEF, 0xF3 or 0xF4
        const auto [c, length] = decodeAt(text, at);
        if (const long index = markIndex(c); index >= 0) f(at, length, static_cast<size_t>(index));
        at += length - 1;
    }
}

// The text of a text node in pieces, with each mark replaced by the run it stands for.
template <typename F>
void forEachPiece(std::string_view text, const std::vector<std::string_view>& runs, F f) {
    size_t from = 0;
    if (!runs.empty()) {
        forEachMark(text, [&](size_t at, size_t length, size_t index) {
            if (at > from) f(text.substr(from, at - from));
            f(runs[index]);
            from = at + length;
        });
    }
    if (from < text.size()) f(text.substr(from));
}

// The length of the UTF-8 character at i when it is one the parser replaces by U+FFFD (a control
// character other than white space and NUL, or a noncharacter); 0 for any other.
inline size_t replacedLength(std::string_view html, size_t i) {
    const auto b = [&](size_t k) { return i + k < html.size() ? static_cast<unsigned char>(html[i + k]) : 0u; };
    const unsigned c = b(0);
    if (c >= 0x20 && c < 0x7F) return 0;
    if ((c >= 0x01 && c <= 0x08) || c == 0x0B || (c >= 0x0E && c <= 0x1F) || c == 0x7F) return 1;
    if (c == 0xC2) return b(1) >= 0x80 && b(1) <= 0x9F ? 2 : 0;  // U+0080 to U+009F
    if (c == 0xEF) {
        if (b(1) == 0xB7 && b(2) >= 0x90 && b(2) <= 0xAF) return 3;  // U+FDD0 to U+FDEF
        if (b(1) == 0xBF && (b(2) == 0xBE || b(2) == 0xBF)) return 3;  // U+FFFE, U+FFFF
        return 0;
    }
    if (c >= 0xF0 && c <= 0xF4)  // U+1FFFE, U+1FFFF, ... U+10FFFF
        return (b(1) & 0x0F) == 0x0F && b(2) == 0xBF && (b(3) == 0xBE || b(3) == 0xBF) ? 4 : 0;
    return 0;
}

// Whether the page can produce a private-use character itself, as a character or a numeric
// character reference; then no marks are used.
bool pageHoldsPrivateUse(std::string_view html);

}  // namespace lookup::html
