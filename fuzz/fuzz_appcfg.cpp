// libFuzzer target: Pictaro's app.cfg of arbitrary contents through ReadAppCfg. Checked against
// the lines the file holds (split at CR LF, CR or LF, no line after a final line end, only the
// first megabyte read): fewer than 59 lines give no result and the "Input past end of file"
// message naming the file; otherwise the own call is line 1 and the language comes from line 59
// (one digit of the table becomes the language's name, anything else stays as it is).
// Any broken property is reported on stderr and ends the run with abort().
#include "app/appcfg.h"

#include "common/cp1252.h"

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

[[noreturn]] void fail(const char* what, const QString& detail = {}) {
    std::fprintf(stderr, "fuzz_appcfg: %s %s\n", what, detail.toUtf8().constData());
    std::abort();
}

void check(bool ok, const char* what, const QString& detail = {}) {
    if (!ok) fail(what, detail);
}

// The lines of the text, written out from the bytes: a line ends at CR LF, CR or LF.
QStringList linesOf(const QByteArray& bytes) {
    QStringList lines;
    QByteArray line;
    bool open = false;
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        const char c = bytes[i];
        if (c == '\r' || c == '\n') {
            lines.append(cp1252::decode(line));
            line.clear();
            open = false;
            if (c == '\r' && i + 1 < bytes.size() && bytes[i + 1] == '\n') ++i;
        } else {
            line += c;
            open = true;
        }
    }
    if (open) lines.append(cp1252::decode(line));
    return lines;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static QTemporaryDir* dir = new QTemporaryDir;
    const QString path = dir->path() + QStringLiteral("/app.cfg");
    const QByteArray contents(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(contents) != contents.size())
        fail("cannot write app.cfg");
    file.close();

    const QStringList lines = linesOf(contents.left(1 << 20));
    check(SplitLines(cp1252::decode(contents)) == linesOf(contents), "SplitLines");

    const Result<AppCfg> cfg = ReadAppCfg(path);
    if (lines.size() < 59) {
        check(!cfg, "a result from fewer than 59 lines", QString::number(lines.size()));
        check(cfg.message() == QStringLiteral("Input past end of file\r\n") + path, "message", cfg.message());
        return 0;
    }
    if (!cfg) fail("no result from 59 lines or more", cfg.message());
    check(cfg.message().isEmpty(), "message after a success", cfg.message());
    check(cfg->myCall == lines[0], "own call", cfg->myCall);
    const QString& line59 = lines[58];
    static const char* const kNames[10] = {"English", "French", "German", nullptr, "Japanese",
                                           "Dutch",   nullptr,  "Polish", "Spanish", "Russian"};
    const bool digit = line59.size() == 1 && line59[0] >= u'0' && line59[0] <= u'9' && kNames[line59[0].unicode() - u'0'];
    check(cfg->language == (digit ? QLatin1String(kNames[line59[0].unicode() - u'0']) : line59), "language",
          cfg->language);
    return 0;
}
