#include "app/callflow.h"
#include "testutil.h"

#include <gtest/gtest.h>

TEST(CallFlowTest, ClipboardTextToCall) {
    struct Case { const char* text; const char16_t* call; };
    for (const Case& c : {Case{"de g4abc rest", u"G4ABC"}, Case{"G0ABC/P", u"G\u00d8ABC"}, Case{"  G4ABC", u""},
                          Case{"DEG4ABC", u"DEG4ABC"}, Case{"dl1abc\r\n", u"DL1ABC"}, Case{"", u""},
                          Case{"w1aw{x}", u"W1AW"}, Case{"k1abc|z", u"K1ABC"}, Case{"de de k1a", u"DE"},
                          Case{"f5\xc3\xb8" "ab", u"F5\u00d8AB"}, Case{"EA8/DL1ABC", u"EA8"}})
        EXPECT_EQ(CallFromClipboardText(QString::fromUtf8(c.text)), QString::fromUtf16(c.call)) << c.text;
}

// The distance grouped and the azimuth's decimals written as the chosen locale writes them.
TEST(CallFlowTest, DistanceLineInTheLocale) {
    struct Case { QLocale locale; double distance, azimuth; int unit; const char16_t* line; };
    const QLocale english(QLocale::English, QLocale::UnitedStates), german(QLocale::German, QLocale::Germany),
        french(QLocale::French, QLocale::France);
    const Case cases[] = {
        {english, 12345.6, 45, 0, u"12,346 km 45\u00b0 "},
        {english, 62, 0, 1, u"62 mi 0\u00b0 "},
        {english, 0, 0, 2, u"0 km 0\u00b0 "},
        {english, 1234567, 359, 1, u"1,234,567 mi 359\u00b0 "},
        {english, -20048, 90, 0, u"-20,048 km 90\u00b0 "},
        {english, 999.4, 45.5, 0, u"999 km 45.5\u00b0 "},
        {QLocale::c(), 12345.6, 45, 0, u"12,346 km 45\u00b0 "},  // grouped although C leaves it out
        {german, 12345.6, 45, 0, u"12.346 km 45\u00b0 "},
        {german, 1234567, 359.25, 1, u"1.234.567 mi 359,25\u00b0 "},
        {german, -20048, 90, 0, u"-20.048 km 90\u00b0 "},
        {french, 12345.6, 45, 0, u"12\u202f346 km 45\u00b0 "},
        {french, 1234567, 7.5, 1, u"1\u202f234\u202f567 mi 7,5\u00b0 "},
    };
    const QLocale saved;
    for (const Case& c : cases) {
        QLocale::setDefault(c.locale);
        EXPECT_EQ(FormatDxAz(c.distance, c.azimuth, c.unit), QString::fromUtf16(c.line))
            << c.locale.name().toStdString() << ' ' << c.distance << ' ' << c.azimuth;
    }
    QLocale::setDefault(saved);
}

TEST(CallFlowTest, NicknameByPrefix) {
    const QStringList list{"W1XYZABC*Long", "W1XYZ*Short", "JA1XYZ*a*b", "g4abc*Ally", "K1ABC"};
    EXPECT_EQ(NicknameSuffix(list, "W1XYZ"), "  (Long)");  // the first entry that begins with it
    EXPECT_EQ(NicknameSuffix(list, "G4ABC"), "  (Ally)");  // without regard to case
    EXPECT_EQ(NicknameSuffix(list, "JA1XYZ"), "");         // three parts
    EXPECT_EQ(NicknameSuffix(list, "K1ABC"), "");          // no "*"
    EXPECT_EQ(NicknameSuffix(list, "DL1ABC"), "");
}

TEST(CallFlowTest, WebMapLinks) {
    EXPECT_EQ(WebMapLink(1, 51.5072, -0.1276, " 1 Sample Lane ", "Exampleton EX1 2AB", "England"),
              "https://www.google.com/maps/place/1+Sample+Lane,Exampleton+EX1+2AB,England/@51.5072,-0.1276,19z/data=!3m1!1e3");
    EXPECT_EQ(WebMapLink(2, -33.8688, 151.2093, "", "", ""),
              "https://www.google.com/maps/place/-33.8688,151.2093/@-33.8688,151.2093,19z/data=!3m1!1e3");
    EXPECT_FALSE(WebMapLink(1, 89, 89, "a", "b", "c") || WebMapLink(2, 0, 0, "a", "b", "c"));
    EXPECT_TRUE(WebMapLink(2, 0, 5, "", "", "") && WebMapLink(2, 89, 0, "", "", ""));
    // A decimal comma of the user's locale never reaches the link.
    const QLocale saved;
    QLocale::setDefault(QLocale(QLocale::German));
    EXPECT_EQ(WebMapLink(2, 52.5, 13.25, "", "", ""),
              "https://www.google.com/maps/place/52.5,13.25/@52.5,13.25,19z/data=!3m1!1e3");
    QLocale::setDefault(saved);
}

TEST(CallFlowTest, PicturePlacement) {
    // Wide pictures are 57 wide, the others 39 high; margin from the right, centred on line 26.
    EXPECT_EQ(PicturePlacement({240, 160}, 350, 10), QRect(283, 7, 57, 38));  // h/w 0.667
    EXPECT_EQ(PicturePlacement({200, 150}, 350, 10), QRect(288, 6, 52, 39));  // h/w 0.75: the tall rule; 6.5 rounds to even
    EXPECT_EQ(PicturePlacement({120, 200}, 350, 20), QRect(307, 6, 23, 39));
    EXPECT_EQ(PicturePlacement({400, 100}, 350, 20), QRect(273, 19, 57, 14));
    EXPECT_EQ(PicturePlacement({0, 10}, 350, 10), QRect());
}
