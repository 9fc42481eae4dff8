// HTMLDecode beside Qt WebEngine's innerText (webengine_innertext, run once for all pages) on every
// fixture page, decoded by decodePageBytes first, and the small pages of cases.json; and the
// browser's texts committed in expected.json (which lookup_tests checks HTMLDecode against in
// every build) beside what the browser says now.
//
// With PX_REFRESH_EXPECTED=1 in the environment, expected.json is first rewritten from the
// browser, so that the committed texts are the browser's again (review the change before
// committing it).
#include "pages.h"

#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <algorithm>

namespace {

using conformance::Page;
using conformance::Texts;

// innerText of every page by name, from one run of the tool; an error text when the run failed.
struct Reference { Texts text; QString error; };

const Reference& reference() {
    static const Reference ref = [] {
        Reference r;
        QTemporaryDir dir;
        QStringList files;
        for (const Page& page : conformance::allPages()) {
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

// The committed texts; rewritten from the browser first when PX_REFRESH_EXPECTED is set (and
// the browser gave a text for every page).
struct Committed { Texts text; QString error; };

const Committed& committed() {
    static const Committed c = [] {
        Committed result;
        if (!qEnvironmentVariableIsEmpty("PX_REFRESH_EXPECTED")) {
            const Reference& ref = reference();
            if (!ref.error.isEmpty()) return Committed{{}, "not refreshed: " + ref.error};
            for (const Page& page : conformance::allPages())
                if (!ref.text.contains(page.name))
                    return Committed{{}, QStringLiteral("not refreshed: no innerText for ") + page.name.c_str()};
            if (!conformance::writeExpected(ref.text))
                return Committed{{}, QStringLiteral("cannot write ") + conformance::kExpectedFile};
        }
        result.text = conformance::readExpected(&result.error);
        return result;
    }();
    return c;
}

class Conformance : public testing::TestWithParam<Page> {
protected:
    // The browser's text of the page, or a failure.
    const QString* browser() {
        const Reference& ref = reference();
        EXPECT_TRUE(ref.error.isEmpty()) << ref.error.toStdString();
        const auto it = ref.text.find(GetParam().name);
        EXPECT_NE(it, ref.text.end()) << "no innerText for " << GetParam().name;
        return it == ref.text.end() ? nullptr : &it->second;
    }
};

TEST_P(Conformance, HTMLDecodeGivesTheLinesOfInnerText) {
    if (const QString* text = browser()) conformance::expectBrowsersLines(GetParam(), *text);
}

TEST_P(Conformance, CommittedTextIsTheBrowsers) {
    const QString* text = browser();
    if (!text) return;
    const Committed& c = committed();
    ASSERT_TRUE(c.error.isEmpty()) << c.error.toStdString();
    const auto it = c.text.find(GetParam().name);
    ASSERT_NE(it, c.text.end()) << "no text in expected.json (PX_REFRESH_EXPECTED=1 writes it)";
    EXPECT_TRUE(conformance::sameLines(it->second.split(u'\n'), text->split(u'\n')))
        << "expected.json holds another text than the browser gives now (PX_REFRESH_EXPECTED=1 rewrites it)";
}

TEST(ConformancePages, AllFixturePagesAreThere) {
    const auto& fixtures = conformance::fixturePages();
    EXPECT_EQ(fixtures.size(), static_cast<size_t>(conformance::fixtureFiles().size()));
    EXPECT_GE(conformance::casePages().size(), 240u) << "cases.json";
    for (const std::string service : {"eham_", "qrz_", "qrzcq_", "callook_", "hamcall_"})
        EXPECT_TRUE(std::any_of(fixtures.begin(), fixtures.end(), [&](auto& p) { return p.name.starts_with(service); }))
            << service;
}

INSTANTIATE_TEST_SUITE_P(FixturePages, Conformance, testing::ValuesIn(conformance::fixturePages()), conformance::nameOf);
INSTANTIATE_TEST_SUITE_P(Cases, Conformance, testing::ValuesIn(conformance::casePages()), conformance::nameOf);

}  // namespace
