#include "lookup/html/render.h"

#include "lookup/html/arena.h"
#include "lookup/html/prescan.h"
#include "lookup/html/prescancheck.h"
#include "lookup/html/scratch.h"
#include "lookup/html/walker.h"

namespace lookup::html {
namespace {

Scratch& scratch() {
    thread_local Scratch s;
    return s;
}

// What a parse may take: enough for any page that is merely large or dense (up to about 85
// bytes per byte of the page, on long lists and on old pages that leave <font> open in every
// paragraph), far below what a hostile page can make the parser build. A formatting element
// left open when a block closes is cloned again at the next text, and so is every other one
// still open then (a parser keeps up to three alike, and any number that differ in their
// attributes): "<p>" with a few hundred such elements, then "<p>x" over and over, makes each
// 4 bytes of the page cost a few hundred elements.
constexpr size_t kParseBudgetBase = 32 << 20;
constexpr size_t kParseBudgetPerByte = 128;

}  // namespace

Rendering renderUtf8(std::string_view page, bool marks) {
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
    // The prescan's changes hold where the parser reads the page as the prescan does; where it
    // does not (markup the prescan cannot place, such as a <style> inside an <svg>), the page is
    // parsed again with fewer of them: the marks path first, then the plain path.
    //
    // A parse that goes over the budget is given up, and the page read once more without its
    // formatting elements, which only style the text they hold (the rare one that hides it or
    // makes it a block now shows it inline), and so with nothing left to clone. Should even that
    // not fit, the page gives no text.
    arena.limit(kParseBudgetBase + kParseBudgetPerByte * page.size());
    GumboOutput* output = nullptr;
    bool fromMarks = false;
    for (const unsigned unformatted : {0u, unsigned{Prescan::kUnformatted}}) {
        for (const unsigned changes : {Prescan::kConform | Prescan::kFaster, unsigned{Prescan::kConform}, 0u}) {
            if (!marks && (changes & Prescan::kFaster)) continue;
            arena.reset();
            const std::string_view parsed = prescan.run(changes | unformatted);
            output = parseWithin(options, arena, parsed);
            if (!output || changes == 0 ||
                prescanHeld(output->document, parsed, prescan.runs().size(), prescan.changedTags())) {
                fromMarks = output && (changes & Prescan::kFaster);
                break;
            }
        }
        if (output) break;
    }
    if (output) renderText(output->root, prescan.runs(), s.text);
    else s.text.clear();
    Rendering result{QString::fromUtf8(s.text.data(), static_cast<qsizetype>(s.text.size())), fromMarks};
    s.trim();
    return result;
}

}  // namespace lookup::html
