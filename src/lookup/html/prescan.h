#pragma once
// Prescan of the page's text before it is parsed, for four things:
// - nesting: a rough model of the parser's stack of open elements (with the end tags the parser
//   implies for li, p, td, tr, option, ...), enough to find start tags that would nest deeper
//   than kMaxNesting on a hostile page;
// - <noscript>: a browser runs scripts, so it reads what a <noscript> holds as text, never shown.
//   Our parser reads it as markup (and in <head>, moves what it does not allow there into the
//   body), so what a <noscript> holds is cut before parsing; its tags stay;
// - speed: the parser handles text one character at a time, which is most of its work on a long
//   page. Runs of plain text are replaced by a one-character mark before parsing and put back
//   when the text is rendered (textmarks.h), and attributes that nothing reads are dropped;
// - control characters and noncharacters: a browser keeps them in the text, our parser turns
//   them into U+FFFD; in text they are marked too, and so come through as they are.
// Whether the parser did read the changed page as the prescan expected is checked after the
// parse (prescancheck.h).
#include "lookup/html/scratch.h"

#include <QByteArray>

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace lookup::html {

class Prescan {
public:
    // `html` must stay as it is while the result of run() and runs() are in use. The results
    // live in `scratch`.
    Prescan(std::string_view html, Scratch& scratch);

    enum Changes : unsigned {
        kConform = 1,      // cut what <noscript> holds, rename <isindex>, mark the characters the
                           // parser would replace (where the page allows marks)
        kFaster = 2,       // drop attributes nothing reads, mark runs of text (where the page allows)
        kUnformatted = 4,  // drop the tags of formatting elements (a, b, font, ...), for a page
                           // whose parse went over its budget (render.cpp)
    };
    // The page without the start tags that would nest too deep (and their end tags), with the
    // `changes` asked for.
    std::string_view run(unsigned changes);
    // The runs the marks stand for, by number; they point into the page.
    const std::vector<std::string_view>& runs() const { return runs_; }
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
    void mark(size_t from, size_t to);
    // Cuts the tag from `from` to `to` out of the page.
    void cutTag(size_t from, size_t to);
    // The page with edits_ made, in out_.
    std::string_view applyEdits();
    // Pops down to and including the nearest element that `isTarget`, unless one that `isStop`
    // comes first. Formatting elements popped on the way are reopened later, as the parser does.
    template <typename Target, typename Stop>
    bool popThrough(Target isTarget, Stop isStop);
    template <typename Stop>
    bool popThroughNamed(std::string_view target, Stop isStop);
    void reopenFormatting();

    const std::string_view html_;
    bool markLongRuns_ = false;
    std::string name_;                   // of the tag at hand, lower-cased
    std::vector<Open> open_;             // elements open, innermost last
    std::vector<Open> reopen_;           // formatting elements the parser will reopen
    std::map<std::string, int, std::less<>> dropped_;  // cut start tags whose end tags go too
    std::vector<Edit>& edits_;                         // in the order of the page
    std::vector<Edit>& tagEdits_;                      // inside the tag at hand
    std::vector<std::string_view>& runs_;
    std::vector<size_t>& changedTags_;
    QByteArray& out_;
};

}  // namespace lookup::html
