#include "pages.h"

#include "lookup/htmldecode.h"
#include "lookup/pagecharset.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

#include <algorithm>

namespace conformance {
namespace {

const QString kFixturesDir = QStringLiteral(PX_SOURCE_DIR "/tests/fixtures/pages");

constexpr KnownDifference kKnownDifferences[] = {
    {"style_sheet_rules", "HTMLDecode applies style attributes only, never the rules of a style sheet", "ab", "b"},
    {"dialog_in_paragraph", "our parser knows no <dialog>, so it does not close an open <p> as it should", "a\nb\nc",
     "a\n\nb\nc"},
};

// A line with its control characters and no-break spaces shown as escapes.
std::string visible(const QString& line) {
    QString out;
    for (const QChar c : line)
        out += c.unicode() < 0x20 || c == u'\u00A0' ? QStringLiteral("\\x%1").arg(c.unicode(), 2, 16, QChar(u'0')) : QString(c);
    return out.toStdString();
}

}  // namespace

const char* const kExpectedFile = PX_SOURCE_DIR "/tests/conformance/expected.json";

QStringList fixtureFiles() {
    QStringList files;
    QDirIterator it(kFixturesDir, {QStringLiteral("*.html")}, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) files.append(QDir(kFixturesDir).relativeFilePath(it.next()));
    files.sort();
    return files;
}

const std::vector<Page>& fixturePages() {
    static const std::vector<Page> pages = [] {
        std::vector<Page> out;
        for (QString file : fixtureFiles()) {
            QFile f(kFixturesDir + u'/' + file);
            if (!f.open(QIODevice::ReadOnly)) continue;
            file.chop(5);  // "qrz/accented-cp1252.html" -> "qrz_accented_cp1252"
            std::replace_if(file.begin(), file.end(), [](QChar c) { return !c.isLetterOrNumber(); }, u'_');
            out.push_back({file.toStdString(), lookup::decodePageBytes(f.readAll())});
        }
        return out;
    }();
    return pages;
}

const std::vector<Page>& casePages() {
    static const std::vector<Page> pages = [] {
        std::vector<Page> out;
        QFile file(QStringLiteral(PX_SOURCE_DIR "/tests/conformance/cases.json"));
        if (file.open(QIODevice::ReadOnly))
            for (const QJsonValue& c : QJsonDocument::fromJson(file.readAll()).array())
                out.push_back({c[0].toString().toStdString(), c[1].toString()});
        return out;
    }();
    return pages;
}

std::vector<Page> allPages() {
    std::vector<Page> pages = fixturePages();
    pages.insert(pages.end(), casePages().begin(), casePages().end());
    return pages;
}

Texts readExpected(QString* error) {
    QFile file(QString::fromUtf8(kExpectedFile));
    if (!file.open(QIODevice::ReadOnly)) {
        if (error) *error = file.fileName() + QStringLiteral(": ") + file.errorString();
        return {};
    }
    QJsonParseError parse;
    const QJsonDocument json = QJsonDocument::fromJson(file.readAll(), &parse);
    if (!json.isObject()) {
        if (error) *error = file.fileName() + QStringLiteral(": ") + parse.errorString();
        return {};
    }
    Texts texts;
    const QJsonObject object = json.object();
    for (auto it = object.begin(); it != object.end(); ++it) texts[it.key().toStdString()] = it.value().toString();
    return texts;
}

bool writeExpected(const Texts& texts) {
    QJsonObject object;
    for (const auto& [name, text] : texts) object.insert(QString::fromStdString(name), text);
    QSaveFile file(QString::fromUtf8(kExpectedFile));
    return file.open(QIODevice::WriteOnly) && file.write(QJsonDocument(object).toJson(QJsonDocument::Indented)) >= 0 &&
           file.commit();
}

const KnownDifference* knownDifference(const std::string& page) {
    for (const KnownDifference& known : kKnownDifferences)
        if (page == known.name) return &known;
    return nullptr;
}

testing::AssertionResult sameLines(const QStringList& ours, const QStringList& browser) {
    qsizetype first = 0;
    while (first < std::min(ours.size(), browser.size()) && ours[first] == browser[first]) ++first;
    if (first == ours.size() && ours.size() == browser.size()) return testing::AssertionSuccess();
    const auto line = [&](const QStringList& lines) {
        return first < lines.size() ? "[" + visible(lines[first]) + "]" : std::string("(no more lines)");
    };
    return testing::AssertionFailure() << "first difference at line " << first + 1 << " (HTMLDecode " << ours.size()
                                       << " lines, innerText " << browser.size() << ")\n  HTMLDecode: " << line(ours)
                                       << "\n  innerText:  " << line(browser);
}

void expectBrowsersLines(const Page& page, const QString& browser) {
    const QStringList ours = lookup::HTMLDecode(page.html).split(QStringLiteral("\r\n"));
    const QStringList browserLines = browser.split(u'\n');
    if (const KnownDifference* known = knownDifference(page.name)) {
        EXPECT_TRUE(sameLines(ours, QString::fromUtf8(known->ours).split(u'\n'))) << "HTMLDecode: " << known->why;
        EXPECT_TRUE(sameLines(QString::fromUtf8(known->browser).split(u'\n'), browserLines)) << "innerText: " << known->why;
        return;
    }
    EXPECT_TRUE(sameLines(ours, browserLines));
}

}  // namespace conformance
