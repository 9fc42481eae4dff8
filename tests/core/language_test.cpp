#include "common/cp1252.h"
#include "ui/language.h"
#include "testutil.h"

#include <QDir>
#include <gtest/gtest.h>

#include <map>

using namespace testutil;

namespace {

// A language file whose line i reads "Key<i>= text<i>" (the version line "Version= 1"), but for those given.
QByteArray languageFile(int lines, const std::map<int, QString>& replaced = {}) {
    QStringList out;
    for (int i = 0; i < lines; ++i)
        out.append(replaced.count(i) ? replaced.at(i)
                   : i == kVersionLine ? QStringLiteral("Version= 1") : QStringLiteral("Key%1= text%1").arg(i));
    return out.join("\r\n").toLatin1() + "\r\n";
}

class LanguageTest : public testing::Test {
protected:
    QTemporaryDir dir;
    LanguageTexts texts;
    void SetUp() override { QDir(dir.path()).mkdir("Languages"); }
    void install(const char* language, const QByteArray& bytes) { writeFile(dir.path() + "/Languages/Norvane_" + language + ".Language", bytes); }
};

TEST_F(LanguageTest, SpecialLines) {
    install("English", languageFile(214, {{117, "K117=   padded  "}, {20, "K20="}, {38, "K38=X"}, {39, "K39= a=b"}}));
    QString shown;
    const LanguageResult r = LoadLanguage("English", dir.path(), texts, [&](const QString& t) { shown = t; });
    ASSERT_EQ(r.status, LanguageLoad::Ok);
    EXPECT_EQ(r.message(), "");
    EXPECT_EQ(shown, "text93");
    EXPECT_EQ(texts.UnitCaption, " text84");
    EXPECT_EQ(texts.NotLoggedIn, "text97\r\ntext98");
    EXPECT_EQ(texts.LoginHint, "text98");
    EXPECT_EQ(texts.NotFound, "padded ");
    EXPECT_EQ(texts.UpdateButton, "");  // nothing after "="
    EXPECT_EQ(texts.LookingUp, "");     // only the separator
    EXPECT_EQ(texts.Searching, "a=b");  // the first "=" counts
    EXPECT_EQ(texts.Ready + texts.SetupPositionQrzcq, "text93text213");
}

TEST_F(LanguageTest, FailuresAndTheirMessages) {
    struct Case { const char* language; QByteArray file; LanguageLoad status; const char* message; };  // file empty: none
    const QByteArray noEquals = languageFile(214, {{92, "K92 no equals"}});
    const QByteArray oldVersion = languageFile(214, {{kVersionLine, "Version= 0"}});
    for (const Case& c : {
             Case{"English", {}, LanguageLoad::NotFound, "Language file not found or corrupt"},
             Case{"French", {}, LanguageLoad::NotFound, "Fichier langage non trouv\u00e9 ou corrompu."},
             Case{"Dutch", {}, LanguageLoad::NotFound, "Taalbestand ontbreekt of corrupt."},
             Case{"Spanish", {}, LanguageLoad::NotFound, ""}, Case{"english", {}, LanguageLoad::NotFound, ""},
             Case{"Polish", noEquals, LanguageLoad::Corrupt, ""},
             Case{"English", noEquals, LanguageLoad::Corrupt, "Language file not found or corrupt"},
             Case{"Dutch", oldVersion, LanguageLoad::WrongVersion, "Foute taalbestand versie."},
             Case{"French", oldVersion, LanguageLoad::WrongVersion, "Mauvaise version de fichier langage."},
             Case{"Russian", oldVersion, LanguageLoad::WrongVersion, "Wrong language file version."},
         }) {
        QDir(dir.path() + "/Languages").removeRecursively();
        QDir(dir.path()).mkdir("Languages");
        if (!c.file.isEmpty()) install(c.language, c.file);
        LanguageTexts t;
        t.FieldCall = "kept";  // line 191: after every failing line below
        const LanguageResult r = LoadLanguage(c.language, dir.path(), t);
        EXPECT_EQ(r.status, c.status) << c.language;
        EXPECT_EQ(r.message(), QString::fromUtf8(c.message)) << c.language;
        EXPECT_EQ(t.FieldCall, "kept") << "a failed load leaves later slots alone";
        if (c.status != LanguageLoad::NotFound) { EXPECT_EQ(t.LookupOk, "text71") << "slots before the failure are filled"; }
    }
    // A file with LF line ends only is one line to the CR split: nothing is filled.
    install("English", languageFile(214).replace("\r\n", "\n"));
    EXPECT_EQ(LoadLanguage("English", dir.path(), texts).status, LanguageLoad::Ok);
    EXPECT_EQ(texts.LookupOk, "");
}

TEST_F(LanguageTest, ShortFileAndLineCounterOverflow) {
    texts.FieldCall = "before";
    install("German", languageFile(72));  // lines 0..71: only the slots they reach are filled
    EXPECT_EQ(LoadLanguage("German", dir.path(), texts).status, LanguageLoad::Ok);
    EXPECT_EQ(texts.LookupOk + ' ' + texts.FieldCall, "text71 before");
    install("English", languageFile(214) + QByteArray(40000, '\r'));
    EXPECT_EQ(LoadLanguage("English", dir.path(), texts).status, LanguageLoad::Overflow);
    EXPECT_EQ(texts.SetupPositionQrzcq, "text213") << "the lines before the overflow are read";
    install("English", QByteArray(32767, '\r'));  // 32768 lines: the last index still fits
    EXPECT_EQ(LoadLanguage("English", dir.path(), texts).status, LanguageLoad::Corrupt);  // line 20 has no "="
}

TEST_F(LanguageTest, KeyedTextsAfterTheNumberedLines) {
    QByteArray file = languageFile(214, {{150, "StatusTimedOut= too early"}});
    file += "\r\nStatusUnreachable= *** gone\r\nno equals here\r\nUnknownKey= x\r\n  MenuQuit = Stop=now\r\n"
            "StatusHttpError=\r\n";
    install("English", file);
    texts.StatusTimedOut = "kept";
    texts.StatusHttpError = "replaced";
    ASSERT_EQ(LoadLanguage("English", dir.path(), texts).status, LanguageLoad::Ok);
    EXPECT_EQ(texts.StatusUnreachable, "*** gone");
    EXPECT_EQ(texts.MenuQuit, "Stop=now");        // the key trimmed, the text from the second character on
    EXPECT_EQ(texts.StatusTimedOut, "kept");      // a key among the numbered lines is no keyed text
    EXPECT_EQ(texts.StatusHttpError, "");         // present and empty
    EXPECT_EQ(texts.Ready, "text93");

    // A load that ends early never reaches them.
    install("English", languageFile(214, {{92, "K92 no equals"}}) + "MenuQuit= late\r\n");
    LanguageTexts t;
    EXPECT_EQ(LoadLanguage("English", dir.path(), t).status, LanguageLoad::Corrupt);
    EXPECT_EQ(t.MenuQuit, "");
}

TEST(ShippedLanguagesTest, EveryFileLoadsCompletelyWithTheSameKeys) {
    const QString data = QStringLiteral(PX_SOURCE_DIR "/data");
    for (const char* language : {"English", "Spanish", "German", "French", "Dutch", "Polish", "Japanese", "Russian"}) {
        SCOPED_TRACE(language);
        LanguageTexts t;
        const LanguageResult r = LoadLanguage(language, data, t);
        ASSERT_EQ(r.status, LanguageLoad::Ok);
        const QStringList lines = decodeUtf8OrCp1252(readFile(data + "/Languages/" + r.fileName)).split('\r');
        ASSERT_GE(lines.size(), 214);
        for (const LanguageLine& l : kLanguageLines) {
            EXPECT_EQ(lines[l.line].trimmed().section('=', 0, 0), QLatin1String(l.key)) << "line " << l.line;
            if (l.slot) { EXPECT_FALSE((t.*(l.slot)).trimmed().isEmpty()) << l.key; }
        }
        // Placeholders the windows replace.
        EXPECT_TRUE(t.UpdateButton.endsWith("***") && t.LookingUp.contains("???") && t.EditorEntries.contains("xxx"));
        EXPECT_TRUE(t.EditorLookup.contains("???") && t.EditorLookup.contains("***") && t.NotLoggedIn.contains("\r\n"));
        for (const KeyedLine& k : kKeyedLines) { EXPECT_FALSE((t.*(k.slot)).trimmed().isEmpty()) << k.key; }
        for (const QString* service : {&t.StatusUnreachable, &t.StatusHttpError, &t.StatusTimedOut, &t.StatusTooLarge,
                                       &t.SetupNoPosition})
            EXPECT_TRUE(service->contains("***")) << service->toStdString();
        EXPECT_TRUE(t.StatusHttpError.contains("###") && t.StatusNotACall.contains("???") && t.SetupNoPosition.contains("???"));
    }
}

}  // namespace
