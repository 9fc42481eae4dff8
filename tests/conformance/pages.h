#pragma once
// The pages HTMLDecode is checked on against a browser engine's innerText (every fixture page,
// and the small pages of cases.json), the browser's texts of them committed in expected.json,
// and the comparison, shared by the test that runs the browser (htmldecode_conformance) and the
// one that runs in every build on the committed texts (lookup_tests).
#include <QString>
#include <QStringList>
#include <gtest/gtest.h>

#include <map>
#include <ostream>
#include <string>
#include <vector>

namespace conformance {

// name: letters, digits and '_', the test's name and the file's name.
struct Page {
    std::string name;
    QString html;
};
inline void PrintTo(const Page& page, std::ostream* os) { *os << page.name; }
inline std::string nameOf(const testing::TestParamInfo<Page>& info) { return info.param.name; }

// The fixture pages' files, relative to tests/fixtures/pages, sorted.
QStringList fixtureFiles();
// Every fixture page, decoded by decodePageBytes as a download is; named after its file
// ("qrz/accented-cp1252.html" is qrz_accented_cp1252). A page that cannot be read is missing.
const std::vector<Page>& fixturePages();
// The small pages of cases.json, each for one rule of the rendering.
const std::vector<Page>& casePages();
// Both, fixture pages first.
std::vector<Page> allPages();

// The committed browser texts by page name (lines joined by LF, as innerText joins them).
using Texts = std::map<std::string, QString>;
// Reads expected.json; on failure the result is empty and `error` says why.
Texts readExpected(QString* error = nullptr);
// Writes `texts` into expected.json; false when the file cannot be written.
bool writeExpected(const Texts& texts);
extern const char* const kExpectedFile;

// Where HTMLDecode knowingly renders otherwise than the browser engine, with what each gives
// (lines joined by LF); null for a page without one.
struct KnownDifference {
    const char *name, *why, *ours, *browser;
};
const KnownDifference* knownDifference(const std::string& page);

// Whether two texts have the same lines; if not, the first line where they differ, with
// control characters and no-break spaces shown as escapes.
testing::AssertionResult sameLines(const QStringList& ours, const QStringList& browser);

// Checks HTMLDecode's text of `page` against `browser`, the browser's innerText of it: line by
// line, or for a known difference, ours against the recorded "ours" and `browser` against the
// recorded "browser" (so the list stays true).
void expectBrowsersLines(const Page& page, const QString& browser);

}  // namespace conformance
