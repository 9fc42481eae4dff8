#pragma once
// Text collection, in the order and with the line structure of innerText: line breaks that
// blocks ask for, blanks that collapse, and what is shown but holds no text.
#include <algorithm>
#include <string>
#include <string_view>

namespace lookup::html {

// White space that collapses in shown text. A form feed is white space to the parser but not to
// the layout, which shows it as a character of its own.
inline bool isCollapsible(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

class TextSink {
public:
    // Writes into `out`, which it empties first. Lines end in CR LF.
    explicit TextSink(std::string& out) : out_(out) { out_.clear(); }
    // A block boundary: at least n line breaks before the next content; none at the very
    // start or end of the text.
    void breaks(int n) {
        pendingBreaks_ = std::max(pendingBreaks_, n);
        space_ = Space::None;
        atomAfterBreaks_ = false;
    }
    // A tab between cells or the line feed of a <br> or a table row; these always count.
    void literal(char c);
    // Something on the line that shows no text (an image, a form control, a hidden character):
    // blanks around it are kept.
    void atom();
    // Shown text; in preformatted text every character shows and line feeds become CR LF,
    // elsewhere each run of blanks, tabs, CRs and LFs becomes one blank, dropped at the start and
    // end of a line.
    void text(std::string_view s, bool preformatted);
    // Text that is laid out but not shown (visibility: hidden): it shows nothing, yet a blank in
    // it is the one that the blanks after it collapse into, and its other characters keep the
    // blanks before them.
    void hiddenText(std::string_view s, bool preformatted);
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

}  // namespace lookup::html
