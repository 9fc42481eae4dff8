#include "lookup/html/prescancheck.h"

#include "lookup/html/textmarks.h"

#include <algorithm>

namespace lookup::html {

bool prescanHeld(const GumboNode* document, std::string_view parsed, size_t marks, const std::vector<size_t>& changedTags) {
    std::vector<bool> seen(marks, false);
    size_t found = 0;
    bool wrong = false;
    // Whether a changed tag starts within the source text `piece`, other than one that ends
    // where it ends (when `ownTag`). The source text of a tag may begin with markup the parser
    // skipped, such as "</>"; the tag it ends with is its own.
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

}  // namespace lookup::html
