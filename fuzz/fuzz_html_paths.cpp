// libFuzzer target: a page through both ways to its text, the marks path (runs of text stand as
// one private-use character each while the page is parsed, attributes nothing reads dropped)
// and the plain path (the page parsed as it is, but for the changes that make the parser read it
// as a browser does). The input is the page's bytes, read as a download without a Content-Type
// header (charset from a byte-order mark or <meta>, else UTF-8 when valid, else Windows-1252).
//
// Besides crashes, sanitizer findings, leaks, time-outs and memory blow-ups, it aborts when the
// marks path gives other text than the plain path, or when the plain path claims the marks.
#include "lookup/html/render.h"
#include "lookup/pagecharset.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace {

[[noreturn]] void fail(const char* what, const QString& marks, const QString& plain) {
    // The first difference, with a little of what comes before it.
    qsizetype at = 0;
    while (at < marks.size() && at < plain.size() && marks[at] == plain[at]) ++at;
    const qsizetype from = at > 40 ? at - 40 : 0;
    std::fprintf(stderr, "fuzz_html_paths: %s at character %lld\n  marks: [%s]\n  plain: [%s]\n", what,
                 static_cast<long long>(at), marks.mid(from, 120).toUtf8().constData(),
                 plain.mid(from, 120).toUtf8().constData());
    std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    QByteArray storage;
    const QByteArrayView utf8 =
        lookup::pageUtf8(QByteArrayView(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)), {}, storage);
    const std::string_view page(utf8.data(), static_cast<std::size_t>(utf8.size()));

    const lookup::html::Rendering marks = lookup::html::renderUtf8(page, true);
    const lookup::html::Rendering plain = lookup::html::renderUtf8(page, false);
    if (plain.fromMarks) fail("the plain path says it took the marks path", marks.text, plain.text);
    if (marks.text != plain.text)
        fail(marks.fromMarks ? "the marks path gives other text than the plain path"
                             : "the plain path gives other text on a second run",
             marks.text, plain.text);
    return 0;
}
