#pragma once
// What the prescan needs to know of tags before the parser sees them: which tag names behave
// how in the parser's tree building, and where tags, comments and raw text end, found as the
// HTML tokenizer finds them.
#include "lookup/html/ascii.h"

#include <cstddef>
#include <string_view>

namespace lookup::html {

// The parser's groups of tag names, as bits.
enum TagFlag : unsigned {
    kNeverOpenFlag = 1,    // holds no other element: void elements, and html, head and body,
                           // whose tags in a page's text only add attributes
    kRawTextFlag = 2,      // its content is text up to its end tag
    kClosesPFlag = 4,      // its start tag closes an open <p>
    kScopeEndFlag = 8,     // ends the scope in which the parser looks for an open element
    kHeadingFlag = 16,     // h1 to h6
    kFormattingFlag = 32,  // a, b, font, ...: reopened by the parser when closed out of turn
};

// The flags of a lower-case tag name.
unsigned tagFlags(std::string_view name);

// Whether the parser's tree building or the rendering reads an attribute of this name; the
// others are dropped before parsing.
bool keptAttribute(std::string_view name);

// Position behind the '>' that ends the tag whose name starts at j, found through the states
// the HTML tokenizer goes through for a tag and its attributes (a quoted value may hold '>');
// the end of the text when the tag is not closed. Each attribute is passed to
// onAttribute(from, nameTo, to): where it starts, where its name ends and where it ends. An
// attribute the text ends in, in a tag never closed, is not passed.
template <typename OnAttribute>
size_t behindTag(std::string_view html, size_t j, OnAttribute onAttribute) {
    enum class S { Name, BeforeName, AttrName, AfterName, BeforeValue, Double, Single, Unquoted, AfterQuoted, SelfClosing };
    S s = S::Name;
    constexpr size_t kNone = std::string_view::npos;
    size_t from = kNone, nameTo = 0, to = 0;  // the attribute at hand
    const auto begin = [&](size_t at) {
        if (from != kNone) onAttribute(from, nameTo, to);
        from = at;
        nameTo = to = at + 1;
        s = S::AttrName;
    };
    const auto close = [&](size_t at) {
        if (from != kNone) onAttribute(from, nameTo, to);
        return at + 1;
    };
    for (; j < html.size(); ++j) {
        const char c = html[j];
        switch (s) {
        case S::Name:
            if (isSpace(c)) s = S::BeforeName;
            else if (c == '/') s = S::SelfClosing;
            else if (c == '>') return close(j);
            break;
        case S::BeforeName:
            if (c == '/' || c == '>') {
                s = S::AfterName;
                --j;  // again in the next state
            } else if (!isSpace(c)) {
                begin(j);  // '=' here starts a name too
            }
            break;
        case S::AttrName:
            if (isSpace(c) || c == '/' || c == '>') {
                s = S::AfterName;
                --j;
            } else if (c == '=') {
                to = j + 1;
                s = S::BeforeValue;
            } else {
                nameTo = to = j + 1;
            }
            break;
        case S::AfterName:
            if (c == '/') {
                s = S::SelfClosing;
            } else if (c == '=') {
                to = j + 1;
                s = S::BeforeValue;
            } else if (c == '>') {
                return close(j);
            } else if (!isSpace(c)) {
                begin(j);
            }
            break;
        case S::BeforeValue:
            if (c == '>') return close(j);
            if (isSpace(c)) break;
            to = j + 1;
            s = c == '"' ? S::Double : c == '\'' ? S::Single : S::Unquoted;
            break;
        case S::Double:
            to = j + 1;
            if (c == '"') s = S::AfterQuoted;
            break;
        case S::Single:
            to = j + 1;
            if (c == '\'') s = S::AfterQuoted;
            break;
        case S::Unquoted:
            if (isSpace(c)) s = S::BeforeName;
            else if (c == '>') return close(j);
            else to = j + 1;
            break;
        case S::AfterQuoted:
            if (isSpace(c)) {
                s = S::BeforeName;
            } else if (c == '/') {
                s = S::SelfClosing;
            } else if (c == '>') {
                return close(j);
            } else {
                s = S::BeforeName;
                --j;
            }
            break;
        case S::SelfClosing:
            if (c == '>') return close(j);
            s = S::BeforeName;
            --j;
            break;
        }
    }
    return html.size();
}

// Position behind the comment whose text starts at k (behind "<!--"): "<!-->" and "<!--->" are
// whole comments, others end at "-->" or "--!>"; the end of the text when it is not closed.
inline size_t behindComment(std::string_view html, size_t k) {
    if (k < html.size() && html[k] == '>') return k + 1;
    if (k + 1 < html.size() && html[k] == '-' && html[k + 1] == '>') return k + 2;
    for (size_t p = html.find("--", k); p != std::string_view::npos; p = html.find("--", p + 1)) {
        if (p + 2 < html.size() && html[p + 2] == '>') return p + 3;
        if (p + 3 < html.size() && html[p + 2] == '!' && html[p + 3] == '>') return p + 4;
    }
    return html.size();
}

// Position behind the first `what` at or after `from`; the end of the text when there is none.
inline size_t behind(std::string_view html, size_t from, std::string_view what) {
    const size_t at = html.find(what, from);
    return at == std::string_view::npos ? html.size() : at + what.size();
}

// Position of the end tag "</name" at or after `from` (case-insensitive, the name followed by a
// blank, '/' or '>'), or the end of the text. `name` is lower-case.
size_t findEndTag(std::string_view html, size_t from, std::string_view name);

}  // namespace lookup::html
