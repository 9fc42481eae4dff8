// libFuzzer target: a language file of arbitrary contents, through LoadLanguageText and through
// LoadLanguage reading it from a data folder. The outcome and every text are checked against
// what the file's lines say:
//   - the lines are the text split at CR; a file of more than 32,768 lines overflows the line
//     counter (Overflow), unless it stops earlier;
//   - the first used line without "=" stops the load (Corrupt), a version line other than "1"
//     stops it (WrongVersion); used lines past the end of the file are simply not there (Ok);
//   - each used line reached sets its text to what follows the character after the first "="
//     (three lines with their own rule), every other text keeps what it had;
//   - both ways of loading give the same outcome and texts; the Ready text is shown after a
//     complete load only.
// Any broken property is reported on stderr and ends the run with abort().
#include "ui/language.h"

#include "common/cp1252.h"

#include <QByteArray>
#include <QDir>
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
    std::fprintf(stderr, "fuzz_language: %s %s\n", what, detail.toUtf8().constData());
    std::abort();
}

void check(bool ok, const char* what, const QString& detail = {}) {
    if (!ok) fail(what, detail);
}

const LanguageLine* usedLine(int index) {
    for (const LanguageLine& l : kLanguageLines)
        if (l.line == index) return &l;
    return nullptr;
}

QString blanksTrimmed(const QString& s) {
    qsizetype b = 0, e = s.size();
    while (b < e && s[b] == u' ') ++b;
    while (e > b && s[e - 1] == u' ') --e;
    return s.mid(b, e - b);
}

// Every text set to a mark that no file can produce (a file's texts hold no CR).
LanguageTexts marked() {
    LanguageTexts texts;
    for (const LanguageLine& l : kLanguageLines)
        if (l.slot) texts.*(l.slot) = QStringLiteral("\r(unset %1)").arg(l.line);
    return texts;
}

struct Expected {
    LanguageLoad status = LanguageLoad::Ok;
    LanguageTexts texts = marked();
};

Expected expectedFor(const QByteArray& contents) {
    Expected x;
    const QStringList lines = decodeUtf8OrCp1252(contents).split(QChar(13));
    for (qsizetype index = 0; index < lines.size(); ++index) {
        if (index > 32767) {
            x.status = LanguageLoad::Overflow;
            break;
        }
        const LanguageLine* used = usedLine(static_cast<int>(index));
        if (!used) continue;
        const QString& line = lines[index];
        const qsizetype eq = line.indexOf(u'=');
        if (eq < 0) {
            x.status = LanguageLoad::Corrupt;
            break;
        }
        const QString value = line.mid(eq + 2);
        if (used->line == kVersionLine) {
            if (value != QLatin1String(kLanguageFileVersion)) {
                x.status = LanguageLoad::WrongVersion;
                break;
            }
            continue;
        }
        if (!used->slot) continue;
        QString& slot = x.texts.*(used->slot);
        if (used->line == 84) {
            slot = u' ' + value;
        } else if (used->line == 98) {
            slot = value;
            x.texts.NotLoggedIn += QStringLiteral("\r\n") + value;
        } else if (used->line == 117) {
            slot = blanksTrimmed(value) + u' ';
        } else {
            slot = value;
        }
    }
    return x;
}

void compareTexts(const LanguageTexts& got, const LanguageTexts& want, const char* how) {
    for (const LanguageLine& l : kLanguageLines)
        if (l.slot)
            check(got.*(l.slot) == want.*(l.slot), how,
                  QStringLiteral("line %1: got \"%2\", want \"%3\"").arg(l.line).arg(got.*(l.slot), want.*(l.slot)));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static QTemporaryDir* dataDir = [] {
        auto* dir = new QTemporaryDir;
        QDir(dir->path()).mkpath(QStringLiteral("Languages"));
        return dir;
    }();
    const QByteArray contents(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const Expected want = expectedFor(contents);

    LanguageTexts fromText = marked();
    const LanguageResult r = LoadLanguageText(contents, fromText);
    check(r.status == want.status, "LoadLanguageText: outcome", QString::number(static_cast<int>(r.status)));
    compareTexts(fromText, want.texts, "LoadLanguageText: text");

    QFile file(dataDir->path() + QStringLiteral("/Languages/Norvane_English.Language"));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(contents) != contents.size())
        fail("cannot write the language file");
    file.close();
    LanguageTexts fromFile = marked();
    int shown = 0;
    QString ready;
    const LanguageResult f = LoadLanguage(QStringLiteral("English"), dataDir->path(), fromFile, [&](const QString& t) {
        ++shown;
        ready = t;
    });
    check(f.status == want.status, "LoadLanguage: outcome", QString::number(static_cast<int>(f.status)));
    check(f.fileName == QLatin1String("Norvane_English.Language"), "LoadLanguage: file name");
    compareTexts(fromFile, want.texts, "LoadLanguage: text");
    check(shown == (f.status == LanguageLoad::Ok ? 1 : 0), "LoadLanguage: Ready shown", QString::number(shown));
    if (shown) check(ready == fromFile.Ready, "LoadLanguage: Ready text");
    check(f.status == LanguageLoad::Ok ? f.message().isEmpty() : !f.message().isEmpty(), "LoadLanguage: message");
    return 0;
}
