#include "lookup/htmldecode.h"

#include "lookup/pagecharset.h"

#include <gumbo.h>

#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace lookup {
namespace {

using std::string_view;

bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f'; }
// White space that collapses in shown text. A form feed is white space to the parser but not to
// the layout, which shows it as a character of its own.
bool isCollapsible(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }
bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }
template <size_t N>
bool oneOf(string_view name, const string_view (&names)[N]) {
    return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

// ---------------------------------------------------------------------------------------------
// Prescan of the page's text before it is parsed, for four things:
// - nesting: a rough model of the parser's stack of open elements (with the end tags the parser
//   implies for li, p, td, tr, option, ...), enough to find start tags that would nest deeper
//   than kMaxNesting on a hostile page;
// - <noscript>: a browser runs scripts, so it reads what a <noscript> holds as text, never shown.
//   Our parser reads it as markup (and in <head>, moves what it does not allow there into the
//   body), so what a <noscript> holds is cut before parsing; its tags stay;
// - speed: the parser handles text one character at a time, which is most of its work on a long
//   page. Runs of plain text are replaced by a one-character mark before parsing and put back
//   when the text is rendered (see "Marks for runs of text" below), and attributes that nothing
//   reads are dropped;
// - control characters and noncharacters: a browser keeps them in the text, our parser turns
//   them into U+FFFD; in text they are marked too, and so come through as they are.

// Elements that never hold others: the void elements, and html, head and body, whose tags in a
// page's text only add attributes to the elements that are already there.
constexpr string_view kNeverOpen[] = {"area",  "base", "basefont", "bgsound", "br",    "col",    "embed",
                                      "frame", "hr",   "image",    "img",     "input", "keygen", "link",
                                      "meta",  "param", "source",  "track",   "wbr",   "html",   "head", "body"};
// Elements whose content is text up to their end tag.
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

// Which of the lists above a tag name is in, as bits.
enum TagFlag : unsigned {
    kNeverOpenFlag = 1, kRawTextFlag = 2, kClosesPFlag = 4, kScopeEndFlag = 8, kHeadingFlag = 16, kFormattingFlag = 32
};

unsigned flagsByName(string_view name) {
    return (oneOf(name, kNeverOpen) ? kNeverOpenFlag : 0u) | (oneOf(name, kRawText) ? kRawTextFlag : 0u) |
           (oneOf(name, kClosesP) ? kClosesPFlag : 0u) | (oneOf(name, kScopeEnds) ? kScopeEndFlag : 0u) |
           (oneOf(name, kHeadings) ? kHeadingFlag : 0u) | (oneOf(name, kFormatting) ? kFormattingFlag : 0u);
}

// The same for a lower-case tag name, through the parser's table of the tags it knows.
unsigned tagFlags(string_view name) {
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

// Position behind the '>' that ends the tag whose name starts at j, found through the states
// the HTML tokenizer goes through for a tag and its attributes (a quoted value may hold '>');
// the end of the text when the tag is not closed. Each attribute is passed to
// onAttribute(from, nameTo, to): where it starts, where its name ends and where it ends.
template <typename OnAttribute>
size_t behindTag(string_view html, size_t j, OnAttribute onAttribute) {
    enum class S { Name, BeforeName, AttrName, AfterName, BeforeValue, Double, Single, Unquoted, AfterQuoted, SelfClosing };
    S s = S::Name;
    constexpr size_t kNone = string_view::npos;
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

// The attributes that rendering, or the parser's tree building, reads; the others are dropped
// before parsing.
constexpr string_view kKeptAttributes[] = {"style", "hidden",  "type",       "open",  "controls", "display",
                                           "visibility", "color", "face", "size", "encoding"};

bool keptAttribute(string_view name) {
    for (const string_view kept : kKeptAttributes) {
        if (kept.size() != name.size()) continue;
        size_t k = 0;
        while (k < name.size() && lower(name[k]) == kept[k]) ++k;
        if (k == name.size()) return true;
    }
    return false;
}

// Position behind the comment whose text starts at k (behind "<!--"): "<!-->" and "<!--->" are
// whole comments, others end at "-->" or "--!>"; the end of the text when it is not closed.
size_t behindComment(string_view html, size_t k) {
    if (k < html.size() && html[k] == '>') return k + 1;
    if (k + 1 < html.size() && html[k] == '-' && html[k + 1] == '>') return k + 2;
    for (size_t p = html.find("--", k); p != string_view::npos; p = html.find("--", p + 1)) {
        if (p + 2 < html.size() && html[p + 2] == '>') return p + 3;
        if (p + 3 < html.size() && html[p + 2] == '!' && html[p + 3] == '>') return p + 4;
    }
    return html.size();
}

// Position behind the first `what` at or after `from`; the end of the text when there is none.
size_t behind(string_view html, size_t from, string_view what) {
    const size_t at = html.find(what, from);
    return at == string_view::npos ? html.size() : at + what.size();
}

// Position of the end tag "</name" at or after `from` (case-insensitive, the name followed by a
// blank, '/' or '>'), or the end of the text.
size_t findEndTag(string_view html, size_t from, string_view name) {
    for (size_t i = html.find("</", from); i != string_view::npos; i = html.find("</", i + 2)) {
        size_t k = 0;
        while (k < name.size() && i + 2 + k < html.size() && lower(html[i + 2 + k]) == name[k]) ++k;
        const size_t behind = i + 2 + k;
        if (k == name.size() && behind < html.size() &&
            (isSpace(html[behind]) || html[behind] == '/' || html[behind] == '>'))
            return i;
    }
    return html.size();
}

// ---------------------------------------------------------------------------------------------
// Marks for runs of text. A mark is one private-use character, which stands for the run of that
// number: U+E000 to U+F8FF for the first 6400 runs, then U+F0000 to U+FFFFD and U+100000 to
// U+10FFFD (the noncharacters at the end of each plane the parser would replace). A run is taken only
// where the tokenizer reads it as it reads the mark: it holds none of '<', '>', '&', NUL and CR,
// does not follow '<' or '&' directly (where it could continue a tag name, an end tag or a
// character reference), and starts and ends with a character that is not white space, '-', '!'
// or ']' (which the tokenizer's comment, script and CDATA states watch). A character the parser
// would replace is as ordinary to the tokenizer as the mark, so each run of those is marked
// wherever it stands in text. The parser then puts each mark wherever it would have put the
// run's text. Whether every mark did land in text, once, is checked after parsing; if one did
// not, the page is parsed without marks. A page that holds private-use characters of its own (or
// numeric character references to them) gets no marks.

struct MarkRange {
    uint32_t first, end;  // code points
};
constexpr MarkRange kMarkRanges[] = {{0xE000, 0xF900}, {0xF0000, 0xFFFFE}, {0x100000, 0x10FFFE}};
constexpr size_t kMaxMarks = (0xF900 - 0xE000) + 2 * (0xFFFFE - 0xF0000);
constexpr size_t kMinRun = 2;  // a single character is left as it is (its mark is no shorter)

bool isPrivateUse(uint32_t c) { return (c >= 0xE000 && c < 0xF900) || (c >= 0xF0000 && c <= 0x10FFFF); }

// Writes the mark of run `index` (below kMaxMarks) in UTF-8 at w; returns the position behind it.
char* writeMark(char* w, size_t index) {
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
std::pair<uint32_t, size_t> decodeAt(string_view text, size_t at) {
    const auto b = [&](size_t k) { return at + k < text.size() ? static_cast<unsigned char>(text[at + k]) & 0x3Fu : 0u; };
    const unsigned lead = static_cast<unsigned char>(text[at]);
    if (lead < 0xF0) return {((lead & 0x0Fu) << 12) | (b(1) << 6) | b(2), 3};
    return {((lead & 0x07u) << 18) | (b(1) << 12) | (b(2) << 6) | b(3), 4};
}

// The run number of a mark, or -1 for another character.
long markIndex(uint32_t c) {
    long before = 0;
    for (const MarkRange& r : kMarkRanges) {
        if (c >= r.first && c < r.end) return before + static_cast<long>(c - r.first);
        before += static_cast<long>(r.end - r.first);
    }
    return -1;
}

// Calls f(at, length, index) for each mark in `text`.
template <typename F>
void forEachMark(string_view text, F f) {
    for (size_t at = 0; at < text.size(); ++at) {
        if (static_cast<unsigned char>(text[at]) < 0xEE) continue;  // marks start with 0xEE, 0xEF, 0xF3 or 0xF4
        const auto [c, length] = decodeAt(text, at);
        if (const long index = markIndex(c); index >= 0) f(at, length, static_cast<size_t>(index));
        at += length - 1;
    }
}

// The length of the UTF-8 character at i when it is one the parser replaces by U+FFFD (a control
// character other than white space and NUL, or a noncharacter); 0 for any other.
size_t replacedLength(string_view html, size_t i) {
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
bool pageHoldsPrivateUse(string_view html) {
    // Private-use characters start with one of these bytes in UTF-8.
    for (const char lead : {'\xEE', '\xEF', '\xF3', '\xF4'})
        for (size_t at = html.find(lead); at != string_view::npos; at = html.find(lead, at + 1))
            if (isPrivateUse(decodeAt(html, at).first)) return true;
    for (size_t at = html.find("&#"); at != string_view::npos; at = html.find("&#", at + 2)) {
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

// A change the prescan makes to the page: the text from `from` to `to` is replaced.
struct Edit {
    size_t from, to;
    long run;                 // the number of the run whose mark goes in its place, or -1
    string_view insert = {};  // else the text put in its place
};

// Buffers kept from one page to the next on the same thread, so that a page is not worked on in
// fresh memory (which the system hands out a page at a time, each first touch a fault).
struct Scratch {
    Scratch() = default;
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
    ~Scratch() {
        for (void* b : blocks) std::free(b);
    }
    // Gives up what a very large page left behind.
    void trim() {
        constexpr size_t kKeep = 16 << 20;
        if (edits.capacity() * sizeof(Edit) > kKeep) std::vector<Edit>().swap(edits);
        if (runs.capacity() * sizeof(string_view) > kKeep) std::vector<string_view>().swap(runs);
        if (static_cast<size_t>(parsed.capacity()) > kKeep) parsed = QByteArray();
        if (text.capacity() > kKeep) std::string().swap(text);
    }

    std::vector<Edit> edits, tagEdits;
    std::vector<string_view> runs;
    std::vector<size_t> changedTags;
    QByteArray parsed;          // the page as the parser gets it
    std::string text;           // the rendered text
    std::vector<void*> blocks;  // the arena's blocks not in use
};

Scratch& scratch() {
    thread_local Scratch s;
    return s;
}

class Prescan {
public:
    // `html` must stay as it is while the result of run() and runs() are in use.
    Prescan(string_view html, Scratch& scratch)
        : html_(html),
          edits_(scratch.edits),
          tagEdits_(scratch.tagEdits),
          runs_(scratch.runs),
          changedTags_(scratch.changedTags),
          out_(scratch.parsed) {}

    enum Changes : unsigned {
        kConform = 1,  // cut what <noscript> holds, rename <isindex>, mark the characters the parser
                       // would replace (where the page allows marks)
        kFaster = 2,   // drop attributes nothing reads, mark runs of text (where the page allows)
        kPlain = 4,    // drop the tags of formatting elements (a, b, font, ...), see renderUtf8
    };
    // The page without the start tags that would nest too deep (and their end tags), with the
    // `changes` asked for.
    string_view run(unsigned changes);
    // The runs the marks stand for, by number; they point into the page.
    const std::vector<string_view>& runs() const { return runs_; }
    // Where in the result of run() the tags start and end that were changed, in order: start,
    // end, start, end, ...
    const std::vector<size_t>& changedTags() const { return changedTags_; }

private:
    struct Open {
        std::string name;
        unsigned flags;
    };
    void startTag(size_t from, size_t to, unsigned flags);
    void endTag(size_t from, size_t to);
    // Marks for the runs in the text from `from` to `to` (when markLongRuns_), and for the
    // characters there that the parser would replace.
    void markRuns(size_t from, size_t to);
    void markReplaced(size_t from, size_t to);
    void mark(size_t from, size_t to) {
        if (runs_.size() == kMaxMarks) return;
        edits_.push_back({from, to, static_cast<long>(runs_.size())});
        runs_.push_back(html_.substr(from, to - from));
    }
    // Pops down to and including the nearest element that `isTarget`, unless one that `isStop`
    // comes first. Formatting elements popped on the way are reopened later, as the parser does.
    template <typename Target, typename Stop>
    bool popThrough(Target isTarget, Stop isStop);
    template <typename Stop>
    bool popThroughNamed(string_view target, Stop isStop) {
        return popThrough([target](const Open& e) { return e.name == target; }, isStop);
    }
    void reopenFormatting();

    const string_view html_;
    bool markLongRuns_ = false;
    std::string name_;                   // of the tag at hand, lower-cased
    std::vector<Open> open_;             // elements open, innermost last
    std::vector<Open> reopen_;           // formatting elements the parser will reopen
    std::map<std::string, int, std::less<>> dropped_;  // cut start tags whose end tags go too
    std::vector<Edit>& edits_;                         // in the order of the page
    std::vector<Edit>& tagEdits_;                      // inside the tag at hand
    std::vector<string_view>& runs_;
    std::vector<size_t>& changedTags_;
    QByteArray& out_;
};

template <typename Target, typename Stop>
bool Prescan::popThrough(Target isTarget, Stop isStop) {
    for (size_t k = open_.size(); k-- > 0;) {
        if (isTarget(open_[k])) {
            for (size_t m = k + 1; m < open_.size(); ++m)
                if ((open_[m].flags & kFormattingFlag) &&
                    std::count_if(reopen_.begin(), reopen_.end(),
                                  [&](const Open& r) { return r.name == open_[m].name; }) < 3)  // as many as the parser keeps
                    reopen_.push_back(open_[m]);
            open_.resize(k);
            return true;
        }
        if (isStop(open_[k])) return false;
    }
    return false;
}

void Prescan::reopenFormatting() {
    open_.insert(open_.end(), reopen_.begin(), reopen_.end());
    reopen_.clear();
}

void Prescan::endTag(size_t from, size_t to) {
    if (const auto d = dropped_.find(name_); d != dropped_.end() && d->second > 0) {
        --d->second;
        edits_.push_back({from, to, -1});
    } else if (!popThroughNamed(name_, [](const Open&) { return false; })) {
        const auto r = std::find_if(reopen_.begin(), reopen_.end(), [&](const Open& e) { return e.name == name_; });
        if (r != reopen_.end()) reopen_.erase(r);
    }
}

void Prescan::startTag(size_t from, size_t to, unsigned flags) {
    // The end tags the parser implies before this start tag.
    const string_view n = name_;
    auto named = [](std::initializer_list<string_view> names) {
        return [names](const Open& e) { return std::find(names.begin(), names.end(), e.name) != names.end(); };
    };
    const auto scopeEnd = [](const Open& e) { return (e.flags & kScopeEndFlag) != 0; };
    if (n == "li") popThroughNamed("li", named({"ul", "ol", "menu"}));
    if (n == "dt" || n == "dd") popThrough(named({"dt", "dd"}), named({"dl"}));
    if (n == "td" || n == "th") popThrough(named({"td", "th"}), named({"tr", "table"}));
    if (n == "tr") popThroughNamed("tr", named({"table"}));
    if (n == "thead" || n == "tbody" || n == "tfoot") popThrough(named({"thead", "tbody", "tfoot"}), named({"table"}));
    if (n == "option") popThroughNamed("option", named({"select", "datalist", "optgroup"}));
    if (n == "optgroup") popThrough(named({"option", "optgroup"}), named({"select"}));
    if (n == "a" || n == "nobr" || n == "button") popThroughNamed(n, scopeEnd);
    if (flags & kClosesPFlag) popThroughNamed("p", scopeEnd);
    if ((flags & kHeadingFlag) && !open_.empty() && (open_.back().flags & kHeadingFlag)) open_.pop_back();
    if (!(flags & kClosesPFlag)) reopenFormatting();

    if (open_.size() >= static_cast<size_t>(kMaxNesting)) {
        ++dropped_[name_];
        edits_.push_back({from, to, -1});
    } else {
        open_.push_back({name_, flags});
    }
}

void Prescan::markRuns(size_t from, size_t to) {
    const string_view html = html_;
    static const auto kDelimiters = [] {
        std::array<bool, 256> table{};
        for (const unsigned char c : {'<', '>', '&', '\0', '\r'}) table[c] = true;
        return table;
    }();
    auto delimiter = [](char c) { return kDelimiters[static_cast<unsigned char>(c)]; };
    auto edge = [](char c) { return isSpace(c) || c == '-' || c == '!' || c == ']'; };
    size_t a = from;
    while (a < to) {
        size_t b = a;
        while (b < to && !delimiter(html[b])) ++b;
        size_t first = a, last = b;
        // After '<' or '&' the first word may belong to a tag name or a character reference.
        if (first > 0 && (html[first - 1] == '<' || html[first - 1] == '&'))
            while (first < last && !isSpace(html[first])) ++first;
        while (first < last && edge(html[first])) ++first;
        while (last > first && edge(html[last - 1])) --last;
        if (markLongRuns_ && last - first >= kMinRun) {
            markReplaced(a, first);
            mark(first, last);
            markReplaced(last, b);
        } else {
            markReplaced(a, b);
        }
        a = b + 1;
    }
}

void Prescan::markReplaced(size_t from, size_t to) {
    const string_view html = html_;
    size_t i = from;
    while (i < to) {
        size_t n = replacedLength(html, i);
        if (n == 0) {
            ++i;
            continue;
        }
        size_t j = i + n;
        while (j < to && (n = replacedLength(html, j)) > 0) j += n;
        mark(i, std::min(j, to));
        i = j;
    }
}

string_view Prescan::run(unsigned changes) {
    name_.clear();
    open_.clear();
    reopen_.clear();
    dropped_.clear();
    edits_.clear();
    runs_.clear();
    changedTags_.clear();
    const string_view html = html_;
    const bool conform = changes & kConform, faster = changes & kFaster, plain = changes & kPlain;
    const bool marks = (conform || faster) && !pageHoldsPrivateUse(html);
    markLongRuns_ = faster;
    size_t text = 0;  // where the text since the last markup starts
    size_t i = 0;
    while ((i = html.find('<', i)) != string_view::npos) {
        const size_t start = i;
        const char next = i + 1 < html.size() ? html[i + 1] : '\0';
        const char afterSlash = i + 2 < html.size() ? html[i + 2] : '\0';
        size_t end;
        bool isTag = false, isEnd = false;
        if (html.compare(i, 4, "<!--") == 0) {
            end = behindComment(html, i + 4);
        } else if (html.compare(i, 9, "<![CDATA[") == 0) {
            end = behind(html, i + 9, "]]>");
        } else if (next == '!' || next == '?') {
            end = behind(html, i + 2, ">");
        } else if (next == '/' && i + 2 < html.size()) {
            isTag = isEnd = isLetter(afterSlash);
            end = afterSlash == '>' ? i + 3 : behind(html, i + 2, ">");
        } else if (isLetter(next)) {
            isTag = true;
            end = 0;
        } else {
            ++i;  // a '<' of the text
            continue;
        }
        if (marks) markRuns(text, start);
        if (!isTag) {
            text = i = end;
            continue;
        }
        size_t j = i + (isEnd ? 2 : 1);
        const size_t nameFrom = j;
        name_.clear();
        while (j < html.size() && !isSpace(html[j]) && html[j] != '/' && html[j] != '>') name_ += lower(html[j++]);
        // Edits inside the tag: attributes nothing reads go (an end tag's all), except where the
        // cut would join '/' and '>' into the end of a self-closing tag; <isindex>, which the
        // parser still builds into a form, becomes the unknown element it is to a browser.
        tagEdits_.clear();
        if (conform && name_ == "isindex") tagEdits_.push_back({nameFrom, j, -1, "x-isindex"});
        i = text = behindTag(html, j, [&](size_t from, size_t nameTo, size_t to) {
            if (faster && (isEnd || !keptAttribute(html.substr(from, nameTo - from))) &&
                !(html[from - 1] == '/' && to < html.size() && html[to] == '>'))
                tagEdits_.push_back({from, to, -1});
        });
        const auto editTag = [&] {
            // Unless the whole tag was cut.
            if (tagEdits_.empty() || (!edits_.empty() && edits_.back().from == start)) return;
            changedTags_.push_back(start);
            changedTags_.push_back(i);
            edits_.insert(edits_.end(), tagEdits_.begin(), tagEdits_.end());
        };
        if (plain && (tagFlags(name_) & kFormattingFlag)) {
            edits_.push_back({start, i, -1});
            continue;
        }
        const unsigned flags = isEnd ? 0u : tagFlags(name_);
        if (isEnd) {
            endTag(start, i);
            editTag();
        } else if (flags & kRawTextFlag) {
            editTag();
            // Text up to the end tag (<plaintext> has none).
            const size_t content = i;
            i = text = name_ == "plaintext" ? html.size() : findEndTag(html, i, name_);
            if (name_ == "noscript") {
                if (conform && i > content) {
                    if (changedTags_.empty() || changedTags_.back() != content) {
                        changedTags_.push_back(start);
                        changedTags_.push_back(content);
                    }
                    edits_.push_back({content, i, -1});
                }
            } else if (marks) {
                markRuns(content, i);
            }
        } else if (!(flags & kNeverOpenFlag)) {
            startTag(start, i, flags);
            editTag();
        } else {
            editTag();
        }
    }
    if (marks) markRuns(text, html.size());
    if (edits_.empty()) return html;
    // A mark takes at most 4 bytes, and stands for at least 2.
    size_t size = html.size() + 2 * runs_.size();
    for (const Edit& edit : edits_) size += edit.insert.size();
    out_.resize(static_cast<qsizetype>(size));
    char* w = out_.data();
    size_t from = 0;
    auto changed = changedTags_.begin();  // moved to where they land in the result
    for (const Edit& edit : edits_) {
        for (; changed != changedTags_.end() && *changed <= edit.from; ++changed)
            *changed = static_cast<size_t>(w - out_.data()) + (*changed - from);
        std::memcpy(w, html.data() + from, edit.from - from);
        w += edit.from - from;
        if (edit.run >= 0) w = writeMark(w, static_cast<size_t>(edit.run));
        if (!edit.insert.empty()) {
            std::memcpy(w, edit.insert.data(), edit.insert.size());
            w += edit.insert.size();
        }
        from = edit.to;
    }
    for (; changed != changedTags_.end(); ++changed) *changed = static_cast<size_t>(w - out_.data()) + (*changed - from);
    std::memcpy(w, html.data() + from, html.size() - from);
    w += html.size() - from;
    return string_view(out_.constData(), static_cast<size_t>(w - out_.constData()));
}

// The text of a text node in pieces, with each mark replaced by the run it stands for.
template <typename F>
void forEachPiece(string_view text, const std::vector<string_view>& runs, F f) {
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

// Whether the parser read the page as the prescan did: each mark stands once in the text of the
// parsed page, and each tag the prescan changed was read as a tag, not inside a text, a comment
// or another tag. `parsed` is what the parser got; `changedTags` holds where the changed tags
// start and end in it. (The source text of a tag may begin with markup the parser skipped, such
// as "</>"; the tag it ends with is its own.) A tag that the parser ignored inside a text also
// counts as wrong, which only costs another parse.
bool prescanHeld(const GumboNode* document, string_view parsed, size_t marks, const std::vector<size_t>& changedTags) {
    std::vector<bool> seen(marks, false);
    size_t found = 0;
    bool wrong = false;
    // Whether a changed tag starts within the source text `piece`, other than one that ends
    // where it ends (when `ownTag`).
    const auto holdsChangedTag = [&](const GumboStringPiece& piece, bool ownTag) {
        if (!piece.data || piece.length == 0 || changedTags.empty()) return false;
        const size_t from = static_cast<size_t>(piece.data - parsed.data()), to = from + piece.length;
        const auto first = std::lower_bound(changedTags.begin(), changedTags.end(), from) - changedTags.begin();
        for (size_t k = static_cast<size_t>(first) / 2 * 2; k < changedTags.size() && changedTags[k] < to; k += 2)
            if (changedTags[k] >= from && !(ownTag && changedTags[k + 1] == to)) return true;
        return false;
    };
    std::vector<const GumboNode*> todo{document};
    while (!todo.empty() && !wrong) {
        const GumboNode* n = todo.back();
        todo.pop_back();
        switch (n->type) {
        case GUMBO_NODE_DOCUMENT: {
            const GumboVector& c = n->v.document.children;
            for (unsigned k = 0; k < c.length; ++k) todo.push_back(static_cast<const GumboNode*>(c.data[k]));
            break;
        }
        case GUMBO_NODE_ELEMENT: case GUMBO_NODE_TEMPLATE: {
            const GumboElement& e = n->v.element;
            wrong = holdsChangedTag(e.original_tag, true) || holdsChangedTag(e.original_end_tag, true);
            for (unsigned k = 0; k < e.children.length; ++k) todo.push_back(static_cast<const GumboNode*>(e.children.data[k]));
            break;
        }
        case GUMBO_NODE_TEXT: case GUMBO_NODE_CDATA: case GUMBO_NODE_WHITESPACE: case GUMBO_NODE_COMMENT:
            wrong = holdsChangedTag(n->v.text.original_text, false);
            if (n->type == GUMBO_NODE_COMMENT) break;
            forEachMark(n->v.text.text, [&](size_t, size_t, size_t index) {
                if (index >= marks || seen[index]) {
                    wrong = true;
                    return;
                }
                seen[index] = true;
                ++found;
            });
            break;
        }
    }
    return !wrong && found == marks;
}

// ---------------------------------------------------------------------------------------------
// Text collection, in the order and with the line structure of innerText.

class TextSink {
public:
    explicit TextSink(std::string& out) : out_(out) { out_.clear(); }
    // A block boundary: at least n line breaks before the next content; none at the very
    // start or end of the text.
    void breaks(int n) {
        pendingBreaks_ = std::max(pendingBreaks_, n);
        space_ = Space::None;
        atomAfterBreaks_ = false;
    }
    // A tab between cells or the line feed of a <br> or a table row; these always count.
    void literal(char c) {
        flushBreaks();
        space_ = Space::None;
        out_ += c == '\n' ? string_view("\r\n") : string_view(&c, 1);
        any_ = true;
        lineHasContent_ = false;
    }
    // Something on the line that shows no text (an image, a form control, a hidden character):
    // blanks around it are kept.
    void atom() {
        if (pendingBreaks_ > 0) {
            atomAfterBreaks_ = true;
            return;
        }
        if (space_ == Space::Shown) out_ += ' ';
        space_ = Space::None;
        lineHasContent_ = true;
    }
    void text(string_view s, bool preformatted) {
        if (preformatted) {
            // Everything shows; line feeds become CR LF.
            size_t i = 0;
            while (i < s.size()) {
                const size_t lf = std::min(s.find('\n', i), s.size());
                if (lf > i) {
                    content();
                    out_.append(s.data() + i, lf - i);
                    lineHasContent_ = true;
                }
                if (lf < s.size()) {
                    content();
                    out_ += "\r\n";
                    lineHasContent_ = false;
                }
                i = lf + 1;
            }
            return;
        }
        size_t i = 0;
        for (; i < s.size() && isCollapsible(s[i]); ++i)
            if (space_ == Space::None && lineHasContent()) space_ = Space::Shown;
        if (i == s.size()) return;
        content();
        // From here on the line has content: each run of blanks becomes one blank, written before
        // the next character or left pending at the end. The text never grows.
        const size_t start = out_.size();
        out_.resize(start + (s.size() - i));
        char* w = out_.data() + start;
        bool blank = false;
        for (; i < s.size(); ++i) {
            const char c = s[i];
            if (isCollapsible(c)) {
                blank = true;
            } else {
                if (blank) *w++ = ' ';
                blank = false;
                *w++ = c;
            }
        }
        out_.resize(static_cast<size_t>(w - out_.data()));
        lineHasContent_ = true;
        space_ = blank ? Space::Shown : Space::None;
    }
    // Text that is laid out but not shown (visibility: hidden): it shows nothing, yet a blank in
    // it is the one that the blanks after it collapse into, and its other characters keep the
    // blanks before them.
    void hiddenText(string_view s, bool preformatted) {
        for (const char c : s) {
            if (!preformatted && isCollapsible(c)) {
                if (space_ == Space::None && lineHasContent()) space_ = Space::Hidden;
            } else {
                atom();
            }
        }
    }
    // Whether the line at hand shows something already.
    bool lineHasContent() const { return pendingBreaks_ > 0 ? atomAfterBreaks_ : lineHasContent_; }

private:
    // A collapsed blank waiting for the next content on its line, shown or hidden.
    enum class Space { None, Shown, Hidden };

    // What goes before shown content: the pending line breaks, or else the pending blank.
    void content() {
        flushBreaks();
        if (space_ == Space::Shown) out_ += ' ';
        space_ = Space::None;
        any_ = true;
    }
    void flushBreaks() {
        if (pendingBreaks_ == 0) return;
        if (any_)
            for (int k = 0; k < pendingBreaks_; ++k) out_ += "\r\n";
        pendingBreaks_ = 0;
        lineHasContent_ = atomAfterBreaks_;
        atomAfterBreaks_ = false;
    }

    std::string& out_;
    int pendingBreaks_ = 0;
    Space space_ = Space::None;
    bool lineHasContent_ = false;
    bool atomAfterBreaks_ = false;
    bool any_ = false;
};

// How an element takes part in the text:
// Hidden        nothing, not even its descendants;
// Inline        its content flows in the line (also elements unknown to the parser);
// Block         its content starts and ends a line; Paragraph: with a blank line around;
// Table         a block whose rows follow; RowGroup: holds rows, gives nothing of its own;
// Row           a line feed after it unless it is the last row of its table;
// Cell          a tab after it unless it is the last cell of its row;
// Atom          shown without text (an image, a form control), keeps the blanks around it;
// LineBreak     <br>; Preformatted: keeps its white space;
// Select        an atom whose options follow, each on a line of its own;
// SvgRoot       an atom whose <text> and <foreignObject> descendants show, each a block.
enum class Box {
    Hidden, Inline, Block, Paragraph, Table, RowGroup, Row, Cell, Atom, LineBreak, Preformatted, Select, SvgRoot
};

const char* attribute(const GumboElement& e, const char* name) {
    const GumboAttribute* a = gumbo_get_attribute(&e.attributes, name);
    return a ? a->value : nullptr;
}

std::string lowered(const char* s) {
    std::string out(s ? s : "");
    std::transform(out.begin(), out.end(), out.begin(), lower);
    return out;
}

// The values of the display and visibility properties in a style attribute, lower-cased, ""
// when absent; the last declaration of each wins.
struct InlineStyle {
    std::string display, visibility;
};

InlineStyle inlineStyle(const char* style) {
    InlineStyle result;
    if (!style) return result;
    string_view rest(style);
    while (!rest.empty()) {
        const size_t semi = std::min(rest.find(';'), rest.size());
        string_view decl = rest.substr(0, semi);
        rest.remove_prefix(std::min(semi + 1, rest.size()));
        const size_t colon = decl.find(':');
        if (colon == string_view::npos) continue;
        std::string key;
        for (const char c : decl.substr(0, colon))
            if (!isSpace(c)) key += lower(c);
        std::string* target = key == "display" ? &result.display : key == "visibility" ? &result.visibility : nullptr;
        if (!target) continue;
        std::string value;
        for (const char c : decl.substr(colon + 1)) value += lower(c);
        if (const size_t bang = value.find('!'); bang != std::string::npos) value.resize(bang);
        const auto b = value.find_first_not_of(" \t\r\n\f");
        const auto e = value.find_last_not_of(" \t\r\n\f");
        *target = b == std::string::npos ? std::string() : value.substr(b, e - b + 1);
    }
    return result;
}

// An element's name as written, for the elements the parser knows no enum for (most of SVG's).
bool unknownTagIs(const GumboElement& e, string_view name) {
    GumboStringPiece tag = e.original_tag;
    if (!tag.data || tag.length == 0) return false;
    gumbo_tag_from_original_text(&tag);
    if (tag.length != name.size()) return false;
    for (size_t k = 0; k < name.size(); ++k)
        if (lower(tag.data[k]) != name[k]) return false;
    return true;
}

bool isElement(const GumboNode* node, GumboTag tag) {
    return node && node->type == GUMBO_NODE_ELEMENT && node->v.element.tag == tag &&
           node->v.element.tag_namespace == GUMBO_NAMESPACE_HTML;
}

Box boxOfTag(const GumboNode* node) {
    const GumboElement& e = node->v.element;
    switch (e.tag) {
    case GUMBO_TAG_HEAD: case GUMBO_TAG_SCRIPT: case GUMBO_TAG_STYLE: case GUMBO_TAG_TEMPLATE:
    case GUMBO_TAG_NOSCRIPT: case GUMBO_TAG_TITLE: case GUMBO_TAG_META: case GUMBO_TAG_LINK:
    case GUMBO_TAG_BASE: case GUMBO_TAG_AREA: case GUMBO_TAG_DATALIST: case GUMBO_TAG_NOEMBED:
    case GUMBO_TAG_NOFRAMES: case GUMBO_TAG_PARAM: case GUMBO_TAG_RP: case GUMBO_TAG_SOURCE:
    case GUMBO_TAG_TRACK: case GUMBO_TAG_FRAMESET: case GUMBO_TAG_FRAME:
        return Box::Hidden;
    case GUMBO_TAG_UNKNOWN:
        if (unknownTagIs(e, "dialog")) return attribute(e, "open") ? Box::Block : Box::Hidden;
        return Box::Inline;
    case GUMBO_TAG_AUDIO:
        return attribute(e, "controls") ? Box::Atom : Box::Hidden;
    case GUMBO_TAG_INPUT:
        return lowered(attribute(e, "type")) == "hidden" ? Box::Hidden : Box::Atom;
    case GUMBO_TAG_FORM: {
        // A form the parser left inside a table's structure is not displayed.
        const GumboNode* p = node->parent;
        return isElement(p, GUMBO_TAG_TABLE) || isElement(p, GUMBO_TAG_TBODY) || isElement(p, GUMBO_TAG_THEAD) ||
                       isElement(p, GUMBO_TAG_TFOOT) || isElement(p, GUMBO_TAG_TR)
                   ? Box::Hidden
                   : Box::Block;
    }
    case GUMBO_TAG_SELECT:
        return Box::Select;
    case GUMBO_TAG_IMG: case GUMBO_TAG_IMAGE: case GUMBO_TAG_TEXTAREA: case GUMBO_TAG_IFRAME:
    case GUMBO_TAG_VIDEO: case GUMBO_TAG_CANVAS: case GUMBO_TAG_EMBED: case GUMBO_TAG_METER:
    case GUMBO_TAG_PROGRESS: case GUMBO_TAG_KEYGEN:
        return Box::Atom;
    case GUMBO_TAG_BR:
        return Box::LineBreak;
    case GUMBO_TAG_P:
        return Box::Paragraph;
    case GUMBO_TAG_TABLE:
        return Box::Table;
    case GUMBO_TAG_TBODY: case GUMBO_TAG_THEAD: case GUMBO_TAG_TFOOT:
        return Box::RowGroup;
    case GUMBO_TAG_TR:
        return Box::Row;
    case GUMBO_TAG_TD: case GUMBO_TAG_TH:
        return Box::Cell;
    case GUMBO_TAG_PRE: case GUMBO_TAG_LISTING: case GUMBO_TAG_XMP: case GUMBO_TAG_PLAINTEXT:
        return Box::Preformatted;
    case GUMBO_TAG_HTML: case GUMBO_TAG_BODY: case GUMBO_TAG_ADDRESS: case GUMBO_TAG_ARTICLE:
    case GUMBO_TAG_ASIDE: case GUMBO_TAG_BLOCKQUOTE: case GUMBO_TAG_CENTER: case GUMBO_TAG_DD:
    case GUMBO_TAG_DETAILS: case GUMBO_TAG_DIR: case GUMBO_TAG_DIV: case GUMBO_TAG_DL:
    case GUMBO_TAG_DT: case GUMBO_TAG_FIELDSET: case GUMBO_TAG_FIGCAPTION: case GUMBO_TAG_FIGURE:
    case GUMBO_TAG_FOOTER: case GUMBO_TAG_H1: case GUMBO_TAG_H2:
    case GUMBO_TAG_H3: case GUMBO_TAG_H4: case GUMBO_TAG_H5: case GUMBO_TAG_H6:
    case GUMBO_TAG_HEADER: case GUMBO_TAG_HGROUP: case GUMBO_TAG_HR: case GUMBO_TAG_LEGEND:
    case GUMBO_TAG_LI: case GUMBO_TAG_MAIN: case GUMBO_TAG_MENU: case GUMBO_TAG_NAV:
    case GUMBO_TAG_OL: case GUMBO_TAG_SECTION: case GUMBO_TAG_SUMMARY: case GUMBO_TAG_UL:
    case GUMBO_TAG_CAPTION: case GUMBO_TAG_OPTGROUP: case GUMBO_TAG_OPTION:
        return Box::Block;
    default:
        // Inline elements, and <marquee> (an inline block), <object> and <applet> (which show
        // what they hold in place of what they would embed).
        return Box::Inline;
    }
}

// Elements inside an <svg>: only the text of its <text> elements (and what a <foreignObject>
// holds) shows, each a block; its title, description, metadata, scripts and styles do not.
Box boxOfSvgElement(const GumboElement& e) {
    switch (e.tag) {
    case GUMBO_TAG_TITLE: case GUMBO_TAG_DESC: case GUMBO_TAG_SCRIPT: case GUMBO_TAG_STYLE:
        return Box::Hidden;
    case GUMBO_TAG_FOREIGNOBJECT:
        return Box::Block;
    default:
        if (unknownTagIs(e, "text")) return Box::Block;
        if (unknownTagIs(e, "metadata")) return Box::Hidden;
        return Box::Inline;
    }
}

// A closed <details> shows its first <summary> only.
bool hiddenInClosedDetails(const GumboNode* node) {
    const GumboNode* parent = node->parent;
    if (!parent || parent->type != GUMBO_NODE_ELEMENT || parent->v.element.tag != GUMBO_TAG_DETAILS ||
        attribute(parent->v.element, "open"))
        return false;
    if (node->type != GUMBO_NODE_ELEMENT || node->v.element.tag != GUMBO_TAG_SUMMARY) return true;
    const GumboVector& siblings = parent->v.element.children;
    for (unsigned k = 0; k < siblings.length; ++k) {
        const auto* s = static_cast<const GumboNode*>(siblings.data[k]);
        if (s->type == GUMBO_NODE_ELEMENT && s->v.element.tag == GUMBO_TAG_SUMMARY) return s != node;
    }
    return false;
}

// The display property's value as a box, for the elements whose box it can change.
Box boxOfDisplay(Box box, const std::string& display) {
    if (display.empty()) return box;
    if (box != Box::Inline && box != Box::Block && box != Box::RowGroup && box != Box::Row && box != Box::Cell)
        return box;
    if (display == "block" || display == "flex" || display == "grid" || display == "list-item" ||
        display == "flow-root" || display == "table" || display == "table-caption")
        return Box::Block;
    if (display == "inline" || display == "inline-block" || display == "inline-flex" || display == "inline-grid" ||
        display == "inline-table" || display == "contents")
        return Box::Inline;
    if (display == "table-cell") return Box::Cell;
    if (display == "table-row") return Box::Row;
    if (display == "table-row-group" || display == "table-header-group" || display == "table-footer-group")
        return Box::RowGroup;
    return box;
}

Box boxOf(const GumboNode* node, const InlineStyle& style) {
    const GumboElement& e = node->v.element;
    if (hiddenInClosedDetails(node)) return Box::Hidden;
    Box box = Box::Inline;
    std::string display = style.display;
    switch (e.tag_namespace) {
    case GUMBO_NAMESPACE_SVG:
        if (display.empty()) display = lowered(attribute(e, "display"));
        // A <g> is laid out even when not displayed (it may hold resources); so is its text.
        if (display == "none" && !unknownTagIs(e, "g")) return Box::Hidden;
        if (e.tag == GUMBO_TAG_SVG && (!node->parent || node->parent->type != GUMBO_NODE_ELEMENT ||
                                       node->parent->v.element.tag_namespace != GUMBO_NAMESPACE_SVG))
            return Box::SvgRoot;
        return boxOfSvgElement(e);
    case GUMBO_NAMESPACE_MATHML:
        if (display == "none") return Box::Hidden;
        if (e.tag == GUMBO_TAG_MATH && lowered(attribute(e, "display")) == "block") return Box::Block;
        return Box::Inline;
    case GUMBO_NAMESPACE_HTML:
        box = boxOfTag(node);
        break;
    }
    if (box == Box::Hidden || display == "none" || (display.empty() && attribute(e, "hidden"))) return Box::Hidden;
    return boxOfDisplay(box, display);
}

Box boxOf(const GumboNode* node) { return boxOf(node, inlineStyle(attribute(node->v.element, "style"))); }

// An element's own visibility: 1 visible, 0 hidden, -1 as its parent's.
int visibilityOf(const GumboElement& e, const InlineStyle& style) {
    std::string visibility = style.visibility;
    if (visibility.empty() && e.tag_namespace == GUMBO_NAMESPACE_SVG) visibility = lowered(attribute(e, "visibility"));
    if (visibility == "hidden" || visibility == "collapse") return 0;
    if (visibility == "visible") return 1;
    return -1;
}

const GumboVector& childrenOf(const GumboNode* node) { return node->v.element.children; }

// The siblings after `node`, in order, until `f` returns true; whether it did.
template <typename F>
bool anyLaterSibling(const GumboNode* node, F f) {
    const GumboNode* parent = node->parent;
    if (!parent || parent->type != GUMBO_NODE_ELEMENT) return false;
    const GumboVector& siblings = childrenOf(parent);
    for (unsigned k = node->index_within_parent + 1; k < siblings.length; ++k)
        if (f(static_cast<const GumboNode*>(siblings.data[k]))) return true;
    return false;
}

Box boxOfParent(const GumboNode* node) {
    const GumboNode* p = node->parent;
    return p && p->type == GUMBO_NODE_ELEMENT ? boxOf(p) : Box::Block;
}

bool holdsRow(const GumboNode* group) {
    const GumboVector& children = childrenOf(group);
    for (unsigned k = 0; k < children.length; ++k) {
        const auto* c = static_cast<const GumboNode*>(children.data[k]);
        if (c->type == GUMBO_NODE_ELEMENT && boxOf(c) == Box::Row) return true;
    }
    return false;
}

// Whether another row of the same table follows `node` (a row, or a group of rows) whose parent's
// box is `parent`. Within a table its rows count, also those of the row groups after; elsewhere
// rows next to each other make up a table of their own.
bool rowFollows(const GumboNode* node, Box parent) {
    const bool inTable = parent == Box::Table || parent == Box::RowGroup;
    bool follows = false;
    anyLaterSibling(node, [&](const GumboNode* s) {
        if (s->type == GUMBO_NODE_TEXT) return !inTable;  // text ends a run of rows
        if (s->type != GUMBO_NODE_ELEMENT) return false;
        const Box box = boxOf(s);
        if (box == Box::Hidden) return false;
        follows = box == Box::Row || (box == Box::RowGroup && holdsRow(s));
        return follows || !inTable;
    });
    if (follows) return true;
    return parent == Box::RowGroup && rowFollows(node->parent, boxOfParent(node->parent));
}

// Whether another cell of the same row follows `cell`, whose parent's box is `parent`. In a row,
// anything shown after a cell makes a cell; elsewhere cells next to each other make up a row of
// their own.
bool cellFollows(const GumboNode* cell, Box parent) {
    const bool inRow = parent == Box::Row;
    bool follows = false;
    anyLaterSibling(cell, [&](const GumboNode* s) {
        if (s->type == GUMBO_NODE_TEXT) {
            follows = inRow;
            return true;
        }
        if (s->type != GUMBO_NODE_ELEMENT) return false;
        const Box box = boxOf(s);
        if (box == Box::Hidden) return false;
        follows = inRow || box == Box::Cell;
        return true;
    });
    return follows;
}

// White space between the parts of a table is not laid out.
bool inTableStructure(const GumboNode* node) {
    const GumboNode* p = node->parent;
    if (!p || p->type != GUMBO_NODE_ELEMENT) return false;
    const GumboTag t = p->v.element.tag;
    return t == GUMBO_TAG_TABLE || t == GUMBO_TAG_TBODY || t == GUMBO_TAG_THEAD || t == GUMBO_TAG_TFOOT ||
           t == GUMBO_TAG_TR || t == GUMBO_TAG_COLGROUP;
}

// An option's label as a list shows it: its text without scripts, blanks collapsed and trimmed.
std::string optionText(const GumboNode* option, const std::vector<string_view>& runs) {
    std::string raw;
    std::vector<const GumboNode*> todo{option};
    while (!todo.empty()) {
        const GumboNode* n = todo.back();
        todo.pop_back();
        if (n->type == GUMBO_NODE_TEXT || n->type == GUMBO_NODE_WHITESPACE || n->type == GUMBO_NODE_CDATA) {
            forEachPiece(n->v.text.text, runs, [&](string_view piece) { raw += piece; });
        } else if (n->type == GUMBO_NODE_ELEMENT && n->v.element.tag != GUMBO_TAG_SCRIPT) {
            const GumboVector& children = childrenOf(n);
            for (unsigned k = children.length; k-- > 0;) todo.push_back(static_cast<const GumboNode*>(children.data[k]));
        }
    }
    std::string text;
    bool blank = false;
    for (const char c : raw) {
        if (isSpace(c)) {
            blank = !text.empty();
        } else {
            if (blank) text += ' ';
            blank = false;
            text += c;
        }
    }
    return text;
}

// The options of a list (<select>), also those in its option groups, each on a line.
void selectOptions(const GumboNode* select, const std::vector<string_view>& runs, TextSink& sink) {
    const GumboVector& children = childrenOf(select);
    for (unsigned k = 0; k < children.length; ++k) {
        const auto* c = static_cast<const GumboNode*>(children.data[k]);
        if (c->type != GUMBO_NODE_ELEMENT) continue;
        if (isElement(c, GUMBO_TAG_OPTION)) {
            sink.breaks(1);
            sink.text(optionText(c, runs), false);
            sink.breaks(1);
        } else if (isElement(c, GUMBO_TAG_OPTGROUP)) {
            selectOptions(c, runs, sink);
        }
    }
}

// Renders the tree into `out` (emptied first).
void renderText(const GumboNode* root, const std::vector<string_view>& runs, std::string& out) {
    struct Frame {
        const GumboNode* node;
        Box box;
        bool visible;     // visibility: hidden turns the element's text and breaks off
        bool textShown;   // false in an <svg> outside its <text> elements
        const GumboNode* onlyChild = nullptr;  // an SVG <switch> shows its first element only
        unsigned next = 0;
    };
    TextSink sink(out);
    std::vector<Frame> stack;
    int preformatted = 0;

    auto enter = [&](const GumboNode* node) {
        const Frame* parent = stack.empty() ? nullptr : &stack.back();
        switch (node->type) {
        case GUMBO_NODE_TEXT:
        case GUMBO_NODE_WHITESPACE:
            if (parent && !parent->textShown) return;
            if (node->type == GUMBO_NODE_WHITESPACE && preformatted == 0 && inTableStructure(node)) return;
            if (hiddenInClosedDetails(node)) return;
            // Text that is only white space to the parser is laid out in an inline element, or
            // behind something shown on its line; elsewhere (at the start of a block, behind a
            // block or a <br>) it is dropped. That shows only when it holds a form feed.
            if (node->type == GUMBO_NODE_WHITESPACE && preformatted == 0 && !sink.lineHasContent() &&
                parent && parent->box != Box::Inline)
                return;
            forEachPiece(node->v.text.text, runs, [&](string_view piece) {
                if (!parent || parent->visible) sink.text(piece, preformatted > 0);
                else sink.hiddenText(piece, preformatted > 0);
            });
            return;
        case GUMBO_NODE_ELEMENT:
            break;
        default:
            return;  // comments, CDATA, templates
        }
        if (parent && parent->onlyChild && parent->onlyChild != node) return;
        const InlineStyle style = inlineStyle(attribute(node->v.element, "style"));
        const Box box = boxOf(node, style);
        if (box == Box::Hidden) return;
        const int ownVisibility = visibilityOf(node->v.element, style);
        const bool visible = ownVisibility < 0 ? (!parent || parent->visible) : ownVisibility == 1;
        bool textShown = !parent || parent->textShown;
        const GumboNode* onlyChild = nullptr;
        switch (box) {
        case Box::Atom:
            sink.atom();
            return;
        case Box::Select:
            sink.atom();
            if (visible) selectOptions(node, runs, sink);
            sink.atom();
            return;
        case Box::LineBreak:
            if (visible) sink.literal('\n');
            return;
        case Box::SvgRoot:
            sink.atom();
            textShown = false;
            break;
        case Box::Block: case Box::Table:
            if (visible) sink.breaks(1);
            break;
        case Box::Paragraph:
            if (visible) sink.breaks(2);
            break;
        case Box::Preformatted:
            if (visible) sink.breaks(1);
            ++preformatted;
            break;
        default:
            break;
        }
        if (node->v.element.tag_namespace == GUMBO_NAMESPACE_SVG) {
            if (box == Box::Block) textShown = true;  // <text>, <foreignObject>
            if (unknownTagIs(node->v.element, "switch")) {
                const GumboVector& children = childrenOf(node);
                for (unsigned k = 0; k < children.length && !onlyChild; ++k)
                    if (static_cast<const GumboNode*>(children.data[k])->type == GUMBO_NODE_ELEMENT)
                        onlyChild = static_cast<const GumboNode*>(children.data[k]);
                if (!onlyChild) onlyChild = node;  // no element child: nothing shows
            }
        }
        stack.push_back({node, box, visible, textShown, onlyChild});
    };
    // `f` has left the stack: its parent's frame is on top.
    auto leave = [&](const Frame& f) {
        const Box parent = stack.empty() ? Box::Block : stack.back().box;
        switch (f.box) {
        case Box::Block: case Box::Table:
            if (f.visible) sink.breaks(1);
            break;
        case Box::Paragraph:
            if (f.visible) sink.breaks(2);
            break;
        case Box::Preformatted:
            --preformatted;
            if (f.visible) sink.breaks(1);
            break;
        case Box::SvgRoot:
            sink.atom();
            break;
        case Box::Row:
            if (f.visible && rowFollows(f.node, parent)) sink.literal('\n');
            break;
        case Box::Cell:
            if (f.visible && cellFollows(f.node, parent)) sink.literal('\t');
            break;
        default:
            break;
        }
    };

    enter(root);
    while (!stack.empty()) {
        Frame& top = stack.back();
        const GumboVector& children = top.node->v.element.children;
        if (top.next < children.length) {
            enter(static_cast<const GumboNode*>(children.data[top.next++]));  // may grow the stack
        } else {
            const Frame done = top;
            stack.pop_back();
            leave(done);
        }
    }
}

// Memory for one parse. The parser allocates and frees many small pieces; here they are cut from
// large blocks and all given back at once when the arena goes (its blocks to `spare`, for the
// next page).
class Arena {
public:
    explicit Arena(std::vector<void*>& spare) : spare_(spare) {}
    Arena(const Arena&) = delete;
    Arena& operator=(const Arena&) = delete;
    ~Arena() { reset(); }

    // The most the arena hands out until the next reset; a parse that asks for more leaves
    // through overBudget (see parseWithin).
    void limit(size_t bytes) { budget_ = bytes; }
    std::jmp_buf overBudget;

    void reset() {
        taken_ = 0;
        constexpr size_t kSpareBlocks = 16;
        for (void* b : blocks_) {
            if (spare_.size() < kSpareBlocks) spare_.push_back(b);
            else std::free(b);
        }
        for (void* b : large_) std::free(b);
        blocks_.clear();
        large_.clear();
        next_ = nullptr;
        left_ = 0;
    }
    static void* allocate(void* self, size_t size) { return static_cast<Arena*>(self)->take(size); }
    static void deallocate(void*, void*) {}

private:
    static constexpr size_t kBlock = 256 * 1024;
    // Nothing here has a destructor: longjmp may leave from any point.
    void* take(size_t size) {
        size = (size + 15) & ~static_cast<size_t>(15);
        if (size > budget_ - std::min(taken_, budget_)) std::longjmp(overBudget, 1);
        taken_ += size;
        if (size > kBlock / 4) {  // a large piece gets memory of its own
            void* piece = std::malloc(size);
            if (!piece) std::longjmp(overBudget, 1);
            large_.push_back(piece);
            return piece;
        }
        if (size > left_) {
            if (spare_.empty()) {
                next_ = static_cast<char*>(std::malloc(kBlock));
                if (!next_) std::longjmp(overBudget, 1);
            } else {
                next_ = static_cast<char*>(spare_.back());
                spare_.pop_back();
            }
            blocks_.push_back(next_);
            left_ = kBlock;
        }
        void* piece = next_;
        next_ += size;
        left_ -= size;
        return piece;
    }

    std::vector<void*>& spare_;
    std::vector<void*> blocks_, large_;
    char* next_ = nullptr;
    size_t left_ = 0;
    size_t taken_ = 0;
    size_t budget_ = SIZE_MAX;
};

// What a parse may take: enough for any page that is merely large or dense (up to about 85
// bytes per byte of the page, on long lists and on old pages that leave <font> open in every
// paragraph), far below what a hostile page can make the parser build. A formatting element
// left open when a block closes is cloned again at the next text, and so is every other one
// still open then (a parser keeps up to three alike, and any number that differ in their
// attributes): "<p>" with a few hundred such elements, then "<p>x" over and over, makes each
// 4 bytes of the page cost a few hundred elements.
constexpr size_t kParseBudgetBase = 32 << 20;
constexpr size_t kParseBudgetPerByte = 128;

// Parses `html` within the arena's budget; null when the parse needed more. Between here and
// the arena there are only the parser's frames (C, nothing to clean up) and everything they
// allocated belongs to the arena, so the caller resets it and nothing is lost.
GumboOutput* parseWithin(const GumboOptions& options, Arena& arena, string_view html) {
    if (setjmp(arena.overBudget) != 0) return nullptr;
    return gumbo_parse_with_options(&options, html.data(), html.size());
}

// The text of a page given as UTF-8.
QString renderUtf8(string_view page) {
    Scratch& s = scratch();
    Prescan prescan(page, s);
    GumboOptions options = kGumboDefaultOptions;
    // The page is parsed as a whole document, as a browser loads it: its doctype (or the lack of
    // one) sets the quirks mode, in which a <table> does not close an open <p>, and blanks before
    // the <html> start tag are dropped.
    // Recorded parse errors each copy the stack of open elements; we need none of them.
    options.max_errors = 0;
    // The parse's memory goes with the arena, so the output is not destroyed node by node.
    Arena arena(s.blocks);
    options.allocator = &Arena::allocate;
    options.deallocator = &Arena::deallocate;
    options.userdata = &arena;
    // The prescan's changes hold where the parser reads the page as the prescan does; where it
    // does not (markup the prescan cannot place, such as a <style> inside an <svg>), the page is
    // parsed again with fewer of them.
    //
    // A parse that goes over the budget is given up, and the page read once more without its
    // formatting elements, which only style the text they hold (the rare one that hides it or
    // makes it a block now shows it inline), and so with nothing left to clone. Should even that
    // not fit, the page gives no text.
    arena.limit(kParseBudgetBase + kParseBudgetPerByte * page.size());
    GumboOutput* output = nullptr;
    for (const unsigned plain : {0u, unsigned{Prescan::kPlain}}) {
        for (const unsigned changes : {Prescan::kConform | Prescan::kFaster, unsigned{Prescan::kConform}, 0u}) {
            arena.reset();
            const string_view parsed = prescan.run(changes | plain);
            output = parseWithin(options, arena, parsed);
            if (!output || changes == 0 ||
                prescanHeld(output->document, parsed, prescan.runs().size(), prescan.changedTags()))
                break;
        }
        if (output) break;
    }
    if (output) renderText(output->root, prescan.runs(), s.text);
    else s.text.clear();
    const QString text = QString::fromUtf8(s.text.data(), static_cast<qsizetype>(s.text.size()));
    s.trim();
    return text;
}

}  // namespace

QString HTMLDecode(QStringView html) {
    const QByteArray utf8 = html.toUtf8();
    return renderUtf8(string_view(utf8.constData(), static_cast<size_t>(utf8.size())));
}

QString pageToText(QByteArrayView bytes, QByteArrayView contentType) {
    QByteArray decoded;
    const QByteArrayView utf8 = pageUtf8(bytes, contentType, decoded);
    return renderUtf8(string_view(utf8.data(), static_cast<size_t>(utf8.size())));
}

}  // namespace lookup
