// Writing the nickname list back: the file read, edited and written again keeps every other entry
// as the user wrote it, in its place.
#include "app/nicknames.h"
#include "app/startup.h"
#include "testutil.h"

#include <QDir>
#include <QTemporaryDir>
#include <functional>
#include <gtest/gtest.h>

using namespace testutil;

namespace {

struct RoundTrip {
    const char* name;
    QByteArray file;                            // as the user left it
    std::function<void(QStringList&)> edit;     // what the editor did to the list
    QStringList expectedList;                   // the list after the edit
    QByteArray expectedFile;                    // the bytes written
};

void none(QStringList&) {}

TEST(NicknamesTest, ReadEditWriteKeepsTheOtherEntries) {
    const RoundTrip cases[] = {
        {"unchanged lines", "PA3XYZ*Jan\r\nG4ABC*Ally\r\n", none, {"PA3XYZ*Jan", "G4ABC*Ally"},
         "PA3XYZ*Jan\r\nG4ABC*Ally\r\n"},
        {"commas, LF and CR, blanks and empty items", "  PA3XYZ*Jan  ,\n\n,G4ABC*Ally,\tK1ABC*Bo\r", none,
         {"PA3XYZ*Jan", "G4ABC*Ally", "K1ABC*Bo"}, "PA3XYZ*Jan\r\nG4ABC*Ally\r\nK1ABC*Bo\r\n"},
        {"an unterminated quote runs to the end", "\"unterminated", none, {"unterminated"}, "unterminated\r\n"},
        {"an empty nickname", "DL1XYZ*", none, {"DL1XYZ*"}, "DL1XYZ*\r\n"},
        {"no line end after the last", "PA3XYZ*Jan", none, {"PA3XYZ*Jan"}, "PA3XYZ*Jan\r\n"},
        {"quoted with a comma stays quoted", "\"W1AW*Smith, Jr\"\r\nK1ABC*Bo\r\n", none,
         {"W1AW*Smith, Jr", "K1ABC*Bo"}, "\"W1AW*Smith, Jr\"\r\nK1ABC*Bo\r\n"},
        {"quotes that are not needed go", "\"K1ABC*Bo\"\r\n", none, {"K1ABC*Bo"}, "K1ABC*Bo\r\n"},
        {"blanks inside quotes stay", "\" K1ABC*Bo \"\r\n", none, {" K1ABC*Bo "}, "\" K1ABC*Bo \"\r\n"},
        {"a line break inside quotes", "\"VK2XYZ*Bruce\r\nthe second\"\r\n", none, {"VK2XYZ*Bruce\r\nthe second"},
         "\"VK2XYZ*Bruce\r\nthe second\"\r\n"},
        {"a quote inside an entry", "DL1ABC*Big \"J\"\r\n", none, {"DL1ABC*Big \"J\""}, "DL1ABC*Big \"J\"\r\n"},
        {"Windows-1252 letters", "DL1ABC*J\xfcrgen\r\nF5XYZ*Ren\xe9\r\n", none,
         {QString::fromUtf8("DL1ABC*J\u00fcrgen"), QString::fromUtf8("F5XYZ*Ren\u00e9")},
         "DL1ABC*J\xfcrgen\r\nF5XYZ*Ren\xe9\r\n"},
        {"an entry replaced goes last, the others keep their order", "PA3XYZ*Jan,G4ABC*Ally\r\nK1ABC*Bo\r\n",
         [](QStringList& l) {
             l.removeAt(1);
             l.append("G4ABC*Alice");
         },
         {"PA3XYZ*Jan", "K1ABC*Bo", "G4ABC*Alice"}, "PA3XYZ*Jan\r\nK1ABC*Bo\r\nG4ABC*Alice\r\n"},
        {"an entry added, an empty nickname kept", "PA3XYZ*Jan\r\n",
         [](QStringList& l) {
             l.append("W1XYZ*");
             l.append("JA1XYZ*Taro");
         },
         {"PA3XYZ*Jan", "W1XYZ*", "JA1XYZ*Taro"}, "PA3XYZ*Jan\r\nW1XYZ*\r\nJA1XYZ*Taro\r\n"},
        {"an empty file", "", none, {}, ""},
    };
    for (const RoundTrip& c : cases) {
        SCOPED_TRACE(c.name);
        QTemporaryDir dir;
        const QString path = dir.path() + "/nicknames.txt";
        writeFile(path, c.file);
        auto list = ReadNicknames(path);
        ASSERT_TRUE(list.has_value());
        c.edit(*list);
        EXPECT_EQ(*list, c.expectedList);
        const Status saved = SaveNicknames(path, *list);
        ASSERT_TRUE(saved);
        EXPECT_EQ(saved.message(), "");
        EXPECT_EQ(readFile(path), c.expectedFile);
        // And read once more: the same list.
        EXPECT_EQ(ReadNicknames(path).value_or(QStringList{"<unreadable>"}), c.expectedList);
    }
}

TEST(NicknamesTest, EntriesTheEditorMade) {
    struct Case {
        QStringList entries;
        QByteArray bytes;
        QStringList readBack;
    };
    const Case cases[] = {
        {{"K1ABC*Bo "}, "\"K1ABC*Bo \"\r\n", {"K1ABC*Bo "}},
        {{"W1AW*Smith, Jr"}, "\"W1AW*Smith, Jr\"\r\n", {"W1AW*Smith, Jr"}},
        // A quoted entry cannot hold a double quote: it becomes an apostrophe.
        {{"W1AW*\"Smith, Jr\""}, "\"W1AW*'Smith, Jr'\"\r\n", {"W1AW*'Smith, Jr'"}},
        {{"\"Q*x"}, "\"'Q*x\"\r\n", {"'Q*x"}},
        {{"G4ABC*Ally", "", "PA3XYZ*Jan"}, "G4ABC*Ally\r\nPA3XYZ*Jan\r\n", {"G4ABC*Ally", "PA3XYZ*Jan"}},
        {{QString::fromUtf8("UA3ABC*\u0418\u0432\u0430\u043d")}, "UA3ABC*????\r\n", {"UA3ABC*????"}},
        {{"A*tab\tinside"}, "A*tab\tinside\r\n", {"A*tab\tinside"}},
        {{}, "", {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.entries.join('|').toStdString());
        EXPECT_EQ(NicknameFileBytes(c.entries), c.bytes);
        EXPECT_EQ(ParseNicknames(QString::fromLatin1(c.bytes)), c.readBack);
    }
}

TEST(NicknamesTest, WritesInOneStepOrNotAtAll) {
    QTemporaryDir dir;
    const QString path = dir.path() + "/nicknames.txt";
    EXPECT_FALSE(ReadNicknames(path).has_value()) << "no file, no list";
    writeFile(path, "OLD*entry\r\n");
    ASSERT_TRUE(SaveNicknames(path, {"PA3XYZ*Jan"}));
    EXPECT_EQ(readFile(path), "PA3XYZ*Jan\r\n");
    // Nothing else is left beside it.
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"nicknames.txt"});

    // A folder that cannot exist (its parent is a file), and a path that is a folder.
    writeFile(dir.path() + "/plain", "x");
    for (const QString& bad : {dir.path() + "/plain/nicknames.txt", dir.path()}) {
        SCOPED_TRACE(bad.toStdString());
        const Status saved = SaveNicknames(bad, {"PA3XYZ*Jan"});
        EXPECT_FALSE(saved);
        EXPECT_NE(saved.message(), "");
    }
    EXPECT_EQ(readFile(path), "PA3XYZ*Jan\r\n");
    EXPECT_EQ(readFile(dir.path() + "/plain"), "x");
    QStringList left = QDir(dir.path()).entryList(QDir::Files | QDir::Hidden);
    left.sort();
    EXPECT_EQ(left, (QStringList{"nicknames.txt", "plain"}));
}

}  // namespace
