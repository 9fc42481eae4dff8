#include "lookup/html/walker.h"

#include "lookup/html/ascii.h"
#include "lookup/html/boxes.h"
#include "lookup/html/textmarks.h"
#include "lookup/html/textsink.h"

namespace lookup::html {
namespace {

using std::string_view;

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

}  // namespace

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
    std::vector<Frame> stack;  // the elements entered and not yet left; an explicit stack, as
                               // pages can nest deep
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

}  // namespace lookup::html
