// HTMLDecode beside Qt WebEngine's innerText (webengine_innertext, run once for all pages) on every
// fixture page, decoded by decodePageBytes first, and the small pages of cases.json.
#include "lookup/htmldecode.h"
#include "lookup/pagecharset.h"

#include <QDirIterator>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

namespace {

// name: letters, digits and '_', the test's name and the file's name.
struct Page { std::string name; QString html; };

// Where HTMLDecode knowingly renders otherwise than the browser engine, with what each gives
// (lines joined by LF). These are checked as they stand, so the list stays true.
struct KnownDifference { const char *name, *why, *ours, *browser; };
constexpr KnownDifference kKnownDifferences[] = {
    {"style_sheet_rules", "HTMLDecode applies style attributes only, never the rules of a style sheet", "ab", "b"},
    {"dialog_in_paragraph", "our parser knows no <dialog>, so it does not close an open <p> as it should", "a\nb\nc",
     "a\n\nb\nc"},
};

const QString kFixturesDir = QStringLiteral(PX_SOURCE_DIR "/tests/fixtures/pages");

QStringList fixtureFiles() {
    QStringList files;
    QDirIterator it(kFixturesDir, {QStringLiteral("*.html")}, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) files.append(QDir(kFixturesDir).relativeFilePath(it.next()));
    files.sort();
    return files;
}

// Pages missing here are reported by the test on the page count.
std::vector<Page> loadFixturePages() {
    std::vector<Page> out;
    for (QString file : fixtureFiles()) {
        QFile f(kFixturesDir + u'/' + file);
        if (!f.open(QIODevice::ReadOnly)) continue;
        file.chop(5);  // "qrz/accented-cp1252.html" -> "qrz_accented_cp1252"
        std::replace_if(file.begin(), file.end(), [](QChar c) { return !c.isLetterOrNumber(); }, u'_');
        out.push_back({file.toStdString(), lookup::decodePageBytes(f.readAll())});
    }
    return out;
}

// Small pages, each for one rule of the rendering: [name, html] pairs.
std::vector<Page> loadCasePages() {
    std::vector<Page> out;
    QFile file(QStringLiteral(PX_SOURCE_DIR "/tests/conformance/cases.json"));
    if (file.open(QIODevice::ReadOnly))
        for (const QJsonValue& c : QJsonDocument::fromJson(file.readAll()).array())
            out.push_back({c[0].toString().toStdString(), c[1].toString()});
    return out;
}

const std::vector<Page> kFixturePages = loadFixturePages(), kCasePages = loadCasePages();

// innerText of every page by name, from one run of the tool; an error text when the run failed.
struct Reference { std::map<std::string, QString> text; QString error; };

const Reference& reference() {
    static const Reference ref = [] {
        Reference r;
        QTemporaryDir dir;
        QStringList files;
        for (const auto* set : {&kFixturePages, &kCasePages})
            for (const Page& page : *set) {
                QFile f(dir.filePath(QString::fromStdString(page.name) + QStringLiteral(".html")));
                if (f.open(QIODevice::WriteOnly)) f.write(page.html.toUtf8());  // else no innerText for it
                files.append(f.fileName());
            }
        // Without an X server (CI has Xvfb) the engine runs on the offscreen platform.
        if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") &&
            qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen");
        QProcess tool;
        tool.start(QStringLiteral(PX_WEBENGINE_TOOL), files);
        if (!tool.waitForFinished(300000) || tool.exitStatus() != QProcess::NormalExit || tool.exitCode() != 0)
            return Reference{{}, "webengine_innertext failed (exit " + QString::number(tool.exitCode()) + "): " +
                                     tool.errorString() + ' ' + QString::fromLocal8Bit(tool.readAllStandardError())};
        const QJsonObject json = QJsonDocument::fromJson(tool.readAllStandardOutput()).object();
        for (auto it = json.begin(); it != json.end(); ++it)
            r.text[QFileInfo(it.key()).completeBaseName().toStdString()] = it.value().toString();
        return r;
    }();
    return ref;
}

// A line with its control characters and no-break spaces shown as escapes.
std::string visible(const QString& line) {
    QString out;
    for (const QChar c : line)
        out += c.unicode() < 0x20 || c == u'\u00A0' ? QStringLiteral("\\x%1").arg(c.unicode(), 2, 16, QChar(u'0')) : QString(c);
    return out.toStdString();
}

// The first line where they differ, if any.
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

void PrintTo(const Page& page, std::ostream* os) { *os << page.name; }

class Conformance : public testing::TestWithParam<Page> {};

TEST_P(Conformance, HTMLDecodeGivesTheLinesOfInnerText) {
    const Reference& ref = reference();
    ASSERT_TRUE(ref.error.isEmpty()) << ref.error.toStdString();
    const auto it = ref.text.find(GetParam().name);
    ASSERT_NE(it, ref.text.end()) << "no innerText for " << GetParam().name;
    const QStringList ours = lookup::HTMLDecode(GetParam().html).split(QStringLiteral("\r\n"));
    const QStringList browser = it->second.split(u'\n');
    for (const KnownDifference& known : kKnownDifferences)
        if (GetParam().name == known.name) {
            EXPECT_TRUE(sameLines(ours, QString::fromUtf8(known.ours).split(u'\n'))) << "HTMLDecode: " << known.why;
            EXPECT_TRUE(sameLines(QString::fromUtf8(known.browser).split(u'\n'), browser)) << "innerText: " << known.why;
            return;
        }
    EXPECT_TRUE(sameLines(ours, browser));
}

TEST(ConformancePages, AllFixturePagesAreThere) {
    EXPECT_EQ(kFixturePages.size(), static_cast<size_t>(fixtureFiles().size()));
    EXPECT_GE(kCasePages.size(), 240u) << "cases.json";
    for (const std::string service : {"eham_", "qrz_", "qrzcq_", "callook_", "hamcall_"})
        EXPECT_TRUE(std::any_of(kFixturePages.begin(), kFixturePages.end(), [&](auto& p) { return p.name.starts_with(service); }))
            << service;
}

std::string nameOf(const testing::TestParamInfo<Page>& info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(FixturePages, Conformance, testing::ValuesIn(kFixturePages), nameOf);
INSTANTIATE_TEST_SUITE_P(Cases, Conformance, testing::ValuesIn(kCasePages), nameOf);

}  // namespace
