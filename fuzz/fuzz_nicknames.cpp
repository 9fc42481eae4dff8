// libFuzzer target: a nickname list of arbitrary contents through ReadNicknames (from a file) and
// ParseNicknames, then NicknameSuffix with calls taken from the list. Checked:
//   - reading the file gives what parsing its Windows-1252 text gives;
//   - no item is empty; an unquoted item holds no comma or line end and has no blanks or tabs
//     at either end; a quoted item holds no quote;
//   - the items appear in the text in their order (each found after the one before);
//   - there are no more items than separators plus one;
//   - a call that begins an entry of the form "CALL*nickname" gets "  (nickname)" when that
//     entry is the first one the call begins.
// Any broken property is reported on stderr and ends the run with abort().
#include "app/callflow.h"
#include "app/startup.h"

#include "common/cp1252.h"

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

[[noreturn]] void fail(const char* what, const QString& detail = {}) {
    std::fprintf(stderr, "fuzz_nicknames: %s %s\n", what, detail.toUtf8().constData());
    std::abort();
}

void check(bool ok, const char* what, const QString& detail = {}) {
    if (!ok) fail(what, detail);
}

bool blankOrTab(QChar c) { return c == u' ' || c == u'\t'; }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static QTemporaryDir* dir = new QTemporaryDir;
    const QString path = dir->path() + QStringLiteral("/nicknames.txt");
    const QByteArray contents(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(contents) != contents.size())
        fail("cannot write the nickname file");
    file.close();

    const QString text = cp1252::decode(contents);
    const QStringList items = ParseNicknames(text);
    const std::optional<QStringList> read = ReadNicknames(path);
    check(read.has_value(), "ReadNicknames: no list from a readable file");
    check(*read == items, "ReadNicknames differs from ParseNicknames");

    qsizetype separators = 0;
    for (const QChar c : text) separators += (c == u',' || c == u'\r' || c == u'\n') ? 1 : 0;
    check(items.size() <= separators + 1, "more items than separators + 1");

    // An item is either quoted (taken as it stands up to the closing quote: no quote in it) or
    // unquoted (no separator in it, no blank or tab at either end). So an item with a quote is an
    // unquoted one, and an item with a separator or a blank end is a quoted one.
    qsizetype from = 0;
    for (const QString& item : items) {
        check(!item.isEmpty(), "empty item");
        const qsizetype at = text.indexOf(item, from);
        check(at >= 0, "item not in the text (in order)", item);
        const bool separator = item.contains(u',') || item.contains(u'\r') || item.contains(u'\n');
        const bool blankEnd = blankOrTab(item.front()) || blankOrTab(item.back());
        if (item.contains(u'"')) check(!separator && !blankEnd, "item with a quote and a separator or blank end", item);
        if (separator || blankEnd)
            check(text.indexOf(u'"' + item, std::max<qsizetype>(0, at - 1)) >= 0, "unquoted item kept a separator or blank", item);
        from = at + item.size();
    }

    for (const QString& item : items) {
        const qsizetype star = item.indexOf(u'*');
        if (star <= 0) continue;
        const QString call = item.left(star);
        const QString suffix = NicknameSuffix(items, call);
        for (const QString& entry : items) {
            if (!entry.startsWith(call, Qt::CaseInsensitive)) continue;
            const QStringList parts = entry.split(u'*');
            check(suffix == (parts.size() == 2 ? QStringLiteral("  (") + parts[1] + u')' : QString()), "NicknameSuffix",
                  call);
            break;
        }
    }
    return 0;
}
