#include "lookup/html/tags.h"

#include <gumbo.h>

#include <algorithm>
#include <iterator>
#include <vector>

namespace lookup::html {
namespace {

using std::string_view;

// The members of each group of TagFlag.
constexpr string_view kNeverOpen[] = {"area",  "base", "basefont", "bgsound", "br",    "col",    "embed",
                                      "frame", "hr",   "image",    "img",     "input", "keygen", "link",
                                      "meta",  "param", "source",  "track",   "wbr",   "html",   "head", "body"};
constexpr string_view kRawText[] = {"script", "style",   "textarea", "title",    "xmp",
                                    "iframe", "noembed", "noframes", "noscript", "plaintext"};
constexpr string_view kClosesP[] = {
    "address", "article", "aside",  "blockquote", "center", "details", "dialog", "dir",     "div", "dl",
    "fieldset", "figcaption", "figure", "footer", "form", "h1", "h2", "h3", "h4", "h5", "h6", "header",
    "hgroup", "li", "dd", "dt", "listing", "main", "menu", "nav", "ol", "p", "pre", "section", "summary",
    "table", "ul"};
constexpr string_view kScopeEnds[] = {"button", "table",  "td",      "th",      "caption",
                                      "object", "applet", "marquee", "template"};
constexpr string_view kHeadings[] = {"h1", "h2", "h3", "h4", "h5", "h6"};
constexpr string_view kFormatting[] = {"a",    "b", "big",   "code",   "em",     "font", "i",
                                       "nobr", "s", "small", "strike", "strong", "tt",   "u"};

// The attributes that rendering, or the parser's tree building, reads.
constexpr string_view kKeptAttributes[] = {"style", "hidden",  "type",       "open",  "controls", "display",
                                           "visibility", "color", "face", "size", "encoding"};

template <size_t N>
bool oneOf(string_view name, const string_view (&names)[N]) {
    return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

unsigned flagsByName(string_view name) {
    return (oneOf(name, kNeverOpen) ? kNeverOpenFlag : 0u) | (oneOf(name, kRawText) ? kRawTextFlag : 0u) |
           (oneOf(name, kClosesP) ? kClosesPFlag : 0u) | (oneOf(name, kScopeEnds) ? kScopeEndFlag : 0u) |
           (oneOf(name, kHeadings) ? kHeadingFlag : 0u) | (oneOf(name, kFormatting) ? kFormattingFlag : 0u);
}

}  // namespace

unsigned tagFlags(string_view name) {
    // Looked up through the parser's table of the tags it knows, computed once per tag.
    static const std::vector<unsigned> byTag = [] {
        std::vector<unsigned> table(GUMBO_TAG_LAST + 1, 0);
        for (int t = 0; t < GUMBO_TAG_UNKNOWN; ++t)
            table[static_cast<size_t>(t)] = flagsByName(gumbo_normalized_tagname(static_cast<GumboTag>(t)));
        return table;
    }();
    const GumboTag tag = gumbo_tagn_enum(name.data(), static_cast<unsigned>(name.size()));
    if (tag == GUMBO_TAG_UNKNOWN || tag == GUMBO_TAG_LAST) return flagsByName(name);  // e.g. <dialog>
    return byTag[static_cast<size_t>(tag)];
}

bool keptAttribute(string_view name) {
    return std::any_of(std::begin(kKeptAttributes), std::end(kKeptAttributes),
                       [name](string_view kept) { return equalsNoCase(name, kept); });
}

size_t findEndTag(string_view html, size_t from, string_view name) {
    for (size_t i = html.find("</", from); i != string_view::npos; i = html.find("</", i + 2)) {
        const size_t behindName = i + 2 + name.size();
        if (startsWithNoCase(html, i + 2, name) && behindName < html.size() &&
            (isSpace(html[behindName]) || html[behindName] == '/' || html[behindName] == '>'))
            return i;
    }
    return html.size();
}

}  // namespace lookup::html
