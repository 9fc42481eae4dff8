#pragma once
// A page given as UTF-8 to plain text: the prescan, the parse, the check that the prescan held,
// and the walk. HTMLDecode and pageToText (lookup/htmldecode.h) are built on it; the tests reach
// the plain path through it.
#include <QString>

#include <string_view>

namespace lookup::html {

// The text of a page and how it was reached.
struct Rendering {
    QString text;
    // Whether the text came from the marks path: the parse of the page with its runs of text
    // marked and the attributes nothing reads dropped (Prescan::kFaster), which held.
    bool fromMarks = false;
};

// The text of `page`, valid UTF-8. With `marks`, as HTMLDecode gives it: from the marks path
// when the parser read the marked page as the prescan did, else from the plain path. Without,
// from the plain path alone, where runs of text are never marked and no attribute is dropped;
// the text must be the same either way.
Rendering renderUtf8(std::string_view page, bool marks = true);

}  // namespace lookup::html
