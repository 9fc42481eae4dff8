#pragma once
// ASCII character rules for reading HTML source: the tokenizer's white space, letters and
// case-insensitive comparison of tag, attribute and charset names. Bytes of 0x80 and above are
// never white space or letters, so UTF-8 and single-byte pages are read alike.
#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

namespace lookup::html {

// White space to the HTML tokenizer (a form feed included).
inline bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f'; }
inline bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
inline bool isDigit(char c) { return c >= '0' && c <= '9'; }
inline char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

// Whether `text` holds `prefix` at `at`, ignoring the case of `text`; `prefix` is lower-case.
inline bool startsWithNoCase(std::string_view text, size_t at, std::string_view prefix) {
    if (text.size() - std::min(at, text.size()) < prefix.size()) return false;
    for (size_t i = 0; i < prefix.size(); ++i)
        if (lower(text[at + i]) != prefix[i]) return false;
    return true;
}

// Whether `text` is `name` ignoring the case of `text`; `name` is lower-case.
inline bool equalsNoCase(std::string_view text, std::string_view name) {
    return text.size() == name.size() && startsWithNoCase(text, 0, name);
}

// `s` without white space at either end.
inline std::string_view trimmed(std::string_view s) {
    while (!s.empty() && isSpace(s.front())) s.remove_prefix(1);
    while (!s.empty() && isSpace(s.back())) s.remove_suffix(1);
    return s;
}

inline std::string lowered(std::string_view s) {
    std::string out(s);
    std::transform(out.begin(), out.end(), out.begin(), lower);
    return out;
}

}  // namespace lookup::html
