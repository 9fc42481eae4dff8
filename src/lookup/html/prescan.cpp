#include "lookup/html/prescan.h"

#include "lookup/html/ascii.h"
#include "lookup/html/tags.h"
#include "lookup/html/textmarks.h"
#include "lookup/htmldecode.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <initializer_list>

namespace lookup::html {

using std::string_view;

Prescan::Prescan(string_view html, Scratch& scratch)
    : html_(html),
      edits_(scratch.edits),
      tagEdits_(scratch.tagEdits),
      runs_(scratch.runs),
      changedTags_(scratch.changedTags),
      out_(scratch.parsed) {}

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

template <typename Stop>
bool Prescan::popThroughNamed(string_view target, Stop isStop) {
    return popThrough([target](const Open& e) { return e.name == target; }, isStop);
}

void Prescan::reopenFormatting() {
    open_.insert(open_.end(), reopen_.begin(), reopen_.end());
    reopen_.clear();
}

void Prescan::endTag(size_t from, size_t to) {
    if (const auto d = dropped_.find(name_); d != dropped_.end() && d->second > 0) {
        --d->second;
        cutTag(from, to);
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
        cutTag(from, to);
    } else {
        open_.push_back({name_, flags});
    }
}

// The text on both sides of a cut tag comes together. The tokenizer reads it as it read it with
// the tag between only when the text before ends in neither a '<' ("<" and "p>" would make a
// tag) nor a character reference still open ("&not" and "in;" would make "&notin;"); there an
// empty comment takes the tag's place, which ends them as the tag did and adds no text.
void Prescan::cutTag(size_t from, size_t to) {
    size_t end = from;  // of the text before, behind the tags cut right before this one
    for (size_t k = edits_.size(); k-- > 0 && edits_[k].to == end && edits_[k].run < 0 && edits_[k].insert.empty();)
        end = edits_[k].from;
    size_t k = end;
    while (k > 0 && (isLetter(html_[k - 1]) || isDigit(html_[k - 1]) || html_[k - 1] == '#')) --k;
    const bool joins = end > 0 && (html_[end - 1] == '<' || (k > 0 && html_[k - 1] == '&'));
    edits_.push_back({from, to, -1, joins ? string_view("<!---->") : string_view()});
}

void Prescan::mark(size_t from, size_t to) {
    if (runs_.size() == kMaxMarks) return;
    edits_.push_back({from, to, static_cast<long>(runs_.size())});
    runs_.push_back(html_.substr(from, to - from));
}

// A run is taken only where the tokenizer reads it as it reads the mark: it holds none of '<',
// '>', '&', NUL and CR, does not follow '<' or '&' directly (where it could continue a tag name,
// an end tag or a character reference), and starts and ends with a character that is not white
// space, '-', '!' or ']' (which the tokenizer's comment, script and CDATA states watch). A
// character the parser would replace is as ordinary to the tokenizer as the mark, so each run
// of those is marked wherever it stands in text.
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
    const bool conform = changes & kConform, faster = changes & kFaster, unformatted = changes & kUnformatted;
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
        // Edits inside the tag: attributes nothing reads go (an end tag's all), except one right
        // behind a '/': cutting it (and what follows it) could join that '/' and the '>' into the
        // end of a self-closing tag ("<svg/a=\"\"c>"); <isindex>, which the parser still builds
        // into a form, becomes the unknown element it is to a browser.
        tagEdits_.clear();
        if (conform && name_ == "isindex") tagEdits_.push_back({nameFrom, j, -1, "x-isindex"});
        i = text = behindTag(html, j, [&](size_t from, size_t nameTo, size_t to) {
            if (faster && (isEnd || !keptAttribute(html.substr(from, nameTo - from))) &&
                html[from - 1] != '/')
                tagEdits_.push_back({from, to, -1});
            else if (conform && html[from] == '\0')
                // A NUL that starts an attribute's name is U+FFFD to a browser ("\0hidden" is no
                // "hidden"); our parser drops it.
                tagEdits_.push_back({from, from + 1, -1, "\xEF\xBF\xBD"});
        });
        const auto editTag = [&] {
            // Unless the whole tag was cut.
            if (tagEdits_.empty() || (!edits_.empty() && edits_.back().from == start)) return;
            changedTags_.push_back(start);
            changedTags_.push_back(i);
            edits_.insert(edits_.end(), tagEdits_.begin(), tagEdits_.end());
        };
        if (unformatted && (tagFlags(name_) & kFormattingFlag)) {
            cutTag(start, i);
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
    return applyEdits();
}

string_view Prescan::applyEdits() {
    const string_view html = html_;
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

}  // namespace lookup::html
