#include "lookup/html/textsink.h"

namespace lookup::html {

using std::string_view;

void TextSink::literal(char c) {
    flushBreaks();
    space_ = Space::None;
    out_ += c == '\n' ? string_view("\r\n") : string_view(&c, 1);
    any_ = true;
    lineHasContent_ = false;
}

void TextSink::atom() {
    if (pendingBreaks_ > 0) {
        atomAfterBreaks_ = true;
        return;
    }
    if (space_ == Space::Shown) out_ += ' ';
    space_ = Space::None;
    lineHasContent_ = true;
}

void TextSink::text(string_view s, bool preformatted) {
    if (preformatted) {
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

void TextSink::hiddenText(string_view s, bool preformatted) {
    for (const char c : s) {
        if (!preformatted && isCollapsible(c)) {
            if (space_ == Space::None && lineHasContent()) space_ = Space::Hidden;
        } else {
            atom();
        }
    }
}

}  // namespace lookup::html
