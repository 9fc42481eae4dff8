// HTMLDecode beside a browser engine: every fixture page and a set of small hand-written pages are
// rendered by HTMLDecode and by Qt WebEngine (document.body.innerText, through the
// webengine_innertext tool), and the two must give the same lines.
//
// Both get the same text: a fixture page's bytes are decoded by decodePageBytes first; the engine
// is given that text as UTF-8 with an explicit utf-8 charset. All pages go through one engine start
// (the tool is run once, on first use). HTMLDecode's lines are split on CR LF, innerText's on LF.
#include "lookup/htmldecode.h"
#include "lookup/pagecharset.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

namespace {

struct Page {
    std::string name;  // letters, digits and '_': the test's name and the file's name
    QString html;
};

// Where HTMLDecode knowingly renders otherwise than the browser engine, with what each gives
// (lines joined by LF). These are checked as they stand, so the list stays true.
struct KnownDifference {
    const char* name;
    const char* why;
    const char* ours;
    const char* browser;
};

constexpr KnownDifference kKnownDifferences[] = {
    {"style_sheet_rules", "HTMLDecode applies style attributes only, never the rules of a style sheet", "ab", "b"},
    {"dialog_in_paragraph", "our parser knows no <dialog>, so it does not close an open <p> as it should", "a\nb\nc",
     "a\n\nb\nc"},
};

const KnownDifference* knownDifference(const std::string& name) {
    for (const KnownDifference& k : kKnownDifferences)
        if (name == k.name) return &k;
    return nullptr;
}

QString fixturesDir() { return QStringLiteral(PX_SOURCE_DIR "/tests/fixtures/pages"); }

// "qrz/accented-cp1252.html" -> "qrz_accented_cp1252"
std::string testName(QString path) {
    path.chop(5);  // ".html"
    for (QChar& c : path)
        if (!c.isLetterOrNumber()) c = u'_';
    return path.toStdString();
}

const std::vector<Page>& fixturePages() {
    static const std::vector<Page> pages = [] {
        std::vector<Page> out;
        QStringList files;
        QDirIterator it(fixturesDir(), {QStringLiteral("*.html")}, QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext()) files.append(QDir(fixturesDir()).relativeFilePath(it.next()));
        files.sort();
        for (const QString& file : files) {
            QFile f(fixturesDir() + u'/' + file);
            if (!f.open(QIODevice::ReadOnly)) continue;  // reported by the test on the page count
            out.push_back({testName(file), lookup::decodePageBytes(f.readAll())});
        }
        return out;
    }();
    return pages;
}

// Small pages, each for one rule of the rendering: [name, html] pairs in cases.json (the last
// two are the known differences below).
const std::vector<Page>& casePages() {
    static const std::vector<Page> pages = [] {
        std::vector<Page> out;
        QFile file(QStringLiteral(PX_SOURCE_DIR "/tests/conformance/cases.json"));
        if (!file.open(QIODevice::ReadOnly)) return out;  // reported by the test on the page count
        for (const QJsonValue& c : QJsonDocument::fromJson(file.readAll()).array())
            out.push_back({c[0].toString().toStdString(), c[1].toString()});
        return out;
    }();
    return pages;
}

// innerText of every page by name, from one run of the tool; an error text when the run failed.
struct Reference {
    std::map<std::string, QString> text;
    QString error;
};

const Reference& reference() {
    static const Reference ref = [] {
        Reference r;
        QTemporaryDir dir;
        if (!dir.isValid()) {
            r.error = QStringLiteral("no temporary folder");
            return r;
        }
        QStringList files;
        for (const auto* set : {&fixturePages(), &casePages()})
            for (const Page& page : *set) {
                const QString file = dir.filePath(QString::fromStdString(page.name) + QStringLiteral(".html"));
                QFile f(file);
                if (!f.open(QIODevice::WriteOnly) || f.write(page.html.toUtf8()) < 0) {
                    r.error = QStringLiteral("cannot write ") + file;
                    return r;
                }
                files.append(file);
            }
        QProcess tool;
        // Under an X server (CI runs the tests under Xvfb) the engine uses it; without one it
        // runs on the offscreen platform.
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        if (env.value(QStringLiteral("DISPLAY")).isEmpty() && env.value(QStringLiteral("WAYLAND_DISPLAY")).isEmpty() &&
            env.value(QStringLiteral("QT_QPA_PLATFORM")).isEmpty())
            env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        tool.setProcessEnvironment(env);
        tool.start(QStringLiteral(PX_WEBENGINE_TOOL), files);
        if (!tool.waitForFinished(300000) || tool.exitStatus() != QProcess::NormalExit || tool.exitCode() != 0) {
            r.error = QStringLiteral("webengine_innertext failed (exit %1): %2 %3")
                          .arg(tool.exitCode())
                          .arg(tool.errorString(), QString::fromLocal8Bit(tool.readAllStandardError()));
            return r;
        }
        const QJsonObject json = QJsonDocument::fromJson(tool.readAllStandardOutput()).object();
        for (auto it = json.begin(); it != json.end(); ++it)
            r.text[QFileInfo(it.key()).completeBaseName().toStdString()] = it.value().toString();
        return r;
    }();
    return ref;
}

QString visible(const QString& line) {
    QString out;
    for (const QChar c : line) {
        if (c == u'\t') out += QStringLiteral("\\t");
        else if (c == u'\u00A0') out += QStringLiteral("\\u00A0");
        else if (c == u'\r') out += QStringLiteral("\\r");
        else if (c == u'\n') out += QStringLiteral("\\n");
        else if (c == u'\f') out += QStringLiteral("\\f");
        else if (c.unicode() < 0x20) out += QStringLiteral("\\x%1").arg(static_cast<int>(c.unicode()), 2, 16, QChar(u'0'));
        else out += c;
    }
    return out;
}

// The lines of both, with the first difference and two lines around it when they differ.
testing::AssertionResult sameLines(const QStringList& ours, const QStringList& browser) {
    const qsizetype common = std::min(ours.size(), browser.size());
    qsizetype first = 0;
    while (first < common && ours[first] == browser[first]) ++first;
    if (first == common && ours.size() == browser.size()) return testing::AssertionSuccess();
    auto excerpt = [&](const QStringList& lines) {
        std::string out;
        for (qsizetype i = std::max<qsizetype>(0, first - 2); i < std::min(lines.size(), first + 3); ++i)
            out += (i == first ? "  > " : "    ") + std::to_string(i + 1) + ": [" + visible(lines[i]).toStdString() + "]\n";
        if (first >= lines.size()) out += "  > " + std::to_string(first + 1) + ": (no more lines)\n";
        return out;
    };
    return testing::AssertionFailure() << "first difference at line " << first + 1 << " (HTMLDecode " << ours.size()
                                       << " lines, innerText " << browser.size() << " lines)\nHTMLDecode:\n"
                                       << excerpt(ours) << "innerText:\n"
                                       << excerpt(browser);
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
    if (const KnownDifference* known = knownDifference(GetParam().name)) {
        EXPECT_TRUE(sameLines(ours, QString::fromUtf8(known->ours).split(u'\n'))) << "HTMLDecode: " << known->why;
        EXPECT_TRUE(sameLines(QString::fromUtf8(known->browser).split(u'\n'), browser)) << "innerText: " << known->why;
        return;
    }
    EXPECT_TRUE(sameLines(ours, browser));
}

TEST(ConformancePages, AllFixturePagesAreThere) {
    // Every service's pages are compared, the update index too.
    QDirIterator it(fixturesDir(), {QStringLiteral("*.html")}, QDir::Files, QDirIterator::Subdirectories);
    int files = 0;
    for (; it.hasNext(); it.next()) ++files;
    EXPECT_EQ(fixturePages().size(), static_cast<size_t>(files));
    EXPECT_GE(casePages().size(), 240u) << "cases.json";
    for (const char* service : {"eham_", "qrz_", "qrzcq_", "callook_", "hamcall_"})
        EXPECT_TRUE(std::any_of(fixturePages().begin(), fixturePages().end(),
                                [&](const Page& p) { return p.name.rfind(service, 0) == 0; }))
            << service;
}

std::string nameOf(const testing::TestParamInfo<Page>& info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(FixturePages, Conformance, testing::ValuesIn(fixturePages()), nameOf);
INSTANTIATE_TEST_SUITE_P(Cases, Conformance, testing::ValuesIn(casePages()), nameOf);

}  // namespace
