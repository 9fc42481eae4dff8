// The field parsers on page texts built for each rule: markers, offsets, delimiters, the
// continuing cursor and the events of cName. The usual shapes of each service's page are
// checked on the fixture pages (fixturepages_test.cpp); these are the edges.
#include "lookup/callbookfields.h"

#include <QStringList>
#include <gtest/gtest.h>

namespace {

using lookup::CallbookFields;
using lookup::FieldEvent;

constexpr int16_t kEHam = 1, kQrz = 2, kQrzCq = 3, kCallook = 4, kHamCall = 5;

QString text(const char* utf8) { return QString::fromUtf8(utf8); }

// A parser over `page` for `service` that records the events it raises as "Event:call".
struct Parser {
    CallbookFields fields;
    QStringList events;
    Parser(int16_t service, const char* page, int32_t cursor = 0) {
        fields.Database = service;
        fields.PageText = text(page);
        fields.ParseCursor = cursor;
        fields.onEvent = [this](FieldEvent e, const QString& ca) { events.append(lookup::eventName(e) + u':' + ca); };
    }
    // 1-based position of `marker` in the page (where a delimiter leaves the cursor); 0 for "".
    int32_t at(const char* marker) const {
        return *marker ? static_cast<int32_t>(fields.PageText.indexOf(text(marker)) + 1) : 0;
    }
};

TEST(CName, FollowsEachServicesSteps) {
    const char* const kNotFound = "CallNotFound";
    struct Case {
        const char* name;
        int16_t service;
        const char* page;  // looked up for DL1ABC
        const char* expected;
        const char* event;         // raised with the call, or ""
        const char* cursorAt;      // see Parser::at; nullptr: the cursor stays
        int32_t cursorBefore = 0;
    };
    const Case cases[] = {
        // eHam: the whole line after the line that holds the call, trimmed.
        {"eHam found", kEHam, "Country\r\nSearch Results\r\nDL1ABC\r\n  Peter Smith  \r\n12 Road\r\n", "Peter Smith", "",
         "\r\n12 Road"},
        {"eHam without Country", kEHam, "Search Results\r\nDL1ABC\r\nPeter Smith\r\n", "", kNotFound, nullptr},
        {"eHam without Search Results", kEHam, "Country\r\nNo entries.\r\nDL1ABC\r\n", "", kNotFound, nullptr},
        {"eHam empty name line", kEHam, "Country\r\nSearch Results\r\nDL1ABC\r\n   \r\nx\r\n", "", kNotFound, "\r\nx"},
        // The call missing behind the results: the search for the line end starts near the top.
        {"eHam call missing behind the results", kEHam, "Country\r\nSearch Results\r\nNobody\r\n", "Search Results", "",
         "\r\nNobody"},

        // QRZ: from the start of the line with the first comma behind the call up to that comma.
        {"QRZ name is not trimmed", kQrz, "DL1ABC\r\n\tHans Müller , x\r\n", "\tHans Müller ", "", ", x"},
        {"QRZ comma on the call's line", kQrz, "x\r\nDL1ABC Hans, x\r\n", "DL1ABC Hans", "", ", x"},
        {"QRZ no results beats login", kQrz, "Login is required\r\nDL1ABC produced no results\r\n", "", kNotFound, nullptr},
        {"QRZ login required", kQrz, "DL1ABC\r\nHans, DL1ABC\r\nLogin is required for more.\r\n", "", "LoginRequired",
         nullptr},
        {"QRZ call missing", kQrz, "Hans, DL9ZZZ\r\n", "", kNotFound, nullptr},
        {"QRZ no comma behind the call gives the default", kQrz, "Hans, x\r\nDL1ABC\r\nStreet\r\n", "", "", "", 7},
        {"QRZ empty name", kQrz, "DL1ABC\r\n, x\r\n", "", kNotFound, ", x"},

        // QRZCQ: the line after the header (first letter within reach), not trimmed.
        {"QRZCQ found", kQrzCq, "DL1ABC - QRZCQ.com\r\nHans Müller  \r\nStreet\r\n", "Hans Müller  ", "", "\r\nStreet"},
        {"QRZCQ skips what is no letter", kQrzCq, "QRZCQ.com\r\n\t 12 Hans\r\nx\r\n", "Hans", "", "\r\nx"},
        {"QRZCQ no letter within reach", kQrzCq, "QRZCQ.com\r\n12345678901234567890AB\r\nx", "0AB", "", "\r\nx"},
        {"QRZCQ short name behind Buddy runs on", kQrzCq, "Buddy Al\r\nQRZCQ.com\r\nX\r\n", "Al\r\nQRZCQ.com", "", "\r\nX"},
        {"QRZCQ error", kQrzCq, "DL1ABC - QRZCQ.com\r\nError: unknown\r\n", "", kNotFound, nullptr},
        {"QRZCQ header missing", kQrzCq, "DL1ABC - QRZCQ.net\r\nHans\r\n", "", kNotFound, nullptr},

        // Callook: behind "Show Map" and one more character up to the line end, trimmed.
        {"Callook found", kCallook, "DL1ABC\r\nShow Map\tJOHN A SMITH \r\n225 MAIN ST\r\n", "JOHN A SMITH", "", "\r\n225"},
        {"Callook not found", kCallook, "DL1ABC\r\nNot in the database.\r\n", "", kNotFound, nullptr},
        // Without the marker the name is still cut, from position 9 to where the cursor stands.
        {"Callook not found with a cursor left standing", kCallook, "0123456789ABCDEFGHIJKLMNOP", "89ABCDEFGHI", kNotFound,
         nullptr, 20},
        {"Callook without a line end", kCallook, "Show Map\tJOHN", "", "", "", 5},

        // HamCall: the line after the heading, from its third character up to the first comma, trimmed.
        {"HamCall found", kHamCall, "DL1ABC was found in the HamCall callsign database!\r\n\t\t Hans Müller, DL1ABC\r\n",
         "Hans Müller", "", ", DL1ABC"},
        {"HamCall not found", kHamCall, "DL1ABC was not found.\r\n", "", kNotFound, nullptr},
        {"HamCall not found with a cursor left standing", kHamCall, "0123456789ABCDEF", "3456789A", kNotFound, nullptr, 12},
        {"HamCall no comma", kHamCall, "HamCall callsign database!\r\n\t\tHans Müller\r\n", "", "", nullptr},
    };
    for (const Case& c : cases) {
        Parser p(c.service, c.page, c.cursorBefore);
        EXPECT_EQ(p.fields.cName(QStringLiteral("DL1ABC")), text(c.expected)) << c.name;
        EXPECT_EQ(p.events, *c.event ? QStringList{text(c.event) + QStringLiteral(":DL1ABC")} : QStringList()) << c.name;
        EXPECT_EQ(p.fields.ParseCursor, c.cursorAt ? p.at(c.cursorAt) : c.cursorBefore) << c.name;
    }
}

TEST(CName, EventsCarryTheCallAsPassed) {
    Parser p(kQrz, "Login is required");
    p.fields.cName(text("SMØABC"));
    EXPECT_EQ(p.events, QStringList{text("LoginRequired:SMØABC")});

    CallbookFields silent;  // no receiver: nothing breaks
    silent.Database = kQrz;
    silent.PageText = QStringLiteral("produced no results");
    EXPECT_EQ(silent.cName(QStringLiteral("X")), QString());
}

TEST(Fields, NoServiceGivesNothingAndFixedFieldsLeaveTheCursor) {
    for (const int16_t service : {-1, 0, 1, 2, 3, 4, 5, 6}) {
        Parser p(service, "DL1ABC\r\nHans, DL1ABC\r\nLatitude\t1.5 x\r\nClass\tA\r\nPrevious Call: DL0OLD</td>\r\n", 3);
        EXPECT_EQ(p.fields.PrevCall(), QString()) << service;  // no page shows one
        if (service == kCallook) {
            EXPECT_EQ(p.fields.ctry(), QStringLiteral("U.S.A.")) << service;
        }
        if (service < 1 || service > 5) {
            EXPECT_EQ(p.fields.cName(QStringLiteral("DL1ABC")), QString()) << service;
            EXPECT_EQ(p.fields.Latitude(), 0.0) << service;
            EXPECT_EQ(p.fields.Class(), QString()) << service;
            EXPECT_TRUE(p.events.isEmpty()) << service;
        }
        EXPECT_EQ(p.fields.ParseCursor, 3) << service;
    }
}

TEST(AddressLines, EndOfTextGivesEmptyLines) {
    Parser p(kQrz, "DL1ABC\r\nHans, DL1ABC\r\nStreet 1");
    EXPECT_EQ(p.fields.cName(QStringLiteral("DL1ABC")), QStringLiteral("Hans"));
    EXPECT_EQ(p.fields.Add1(), QString());  // no line end behind it: the default
    EXPECT_EQ(p.fields.ParseCursor, 0);
    EXPECT_EQ(p.fields.Add2(), QString());
    EXPECT_EQ(p.fields.ctry(), QString());
}

TEST(AddressLines, HamCallShortSecondLineGivesTheDefault) {
    Parser p(kHamCall, "callsign database!\r\n\t\tHans, X\r\nStreet\r\nAB\r\nend");
    p.fields.cName(QStringLiteral("X"));
    EXPECT_EQ(p.fields.Add1(), QStringLiteral("Street"));
    EXPECT_EQ(p.fields.Add2(), QString());
    EXPECT_EQ(p.fields.ParseCursor, p.at("\r\nend"));
}

TEST(ParseCursor, IsNeverResetBetweenPages) {
    Parser p(kQrz, "DL1ABC\r\nHans, DL1ABC\r\nStreet 1\r\n");
    p.fields.cName(QStringLiteral("DL1ABC"));
    EXPECT_EQ(p.fields.ParseCursor, p.at(", DL1ABC"));
    p.fields.PageText = QStringLiteral("0123456789abcdefghij\r\nnext line\r\n");
    EXPECT_EQ(p.fields.Add1(), QStringLiteral("next line"));  // found from the old position on
}

TEST(Coordinates, OffsetsAndDelimitersPerService) {
    struct Case {
        const char* name;
        int16_t service;
        const char* page;
        double latitude, longitude;
    };
    const Case cases[] = {
        {"eHam", kEHam, "Latitude: 12.5\r\nLongitude: -3.25\r\n", 12.5, -3.25},
        // QRZ starts right behind the label, QRZCQ one character later.
        {"QRZ right behind the label", kQrz, "Latitude-12.5 N\r\nLongitude-3.25 W\r\n", -12.5, -3.25},
        {"QRZCQ one character later", kQrzCq, "Latitude-12.5 N\r\nLongitude-3.25 W\r\n", 12.5, 3.25},
        {"QRZ blank behind the label ends the value", kQrz, "Latitude 52.52 (N)\r\nLongitude 13.4 (E)\r\n", 0, 0},
        {"HamCall hemisphere letters are upper case", kHamCall, "Latitude 34.5 s, Longitude 58.4 w,", 34.5, 58.4},
        {"HamCall without commas", kHamCall, "Latitude 34.5 S\r\nLongitude 58.4 W\r\n", 0, 0},
        {"eHam without line ends", kEHam, "Latitude 12.5", 0, 0},
        {"labels missing", kEHam, "Lat 12.5\r\nLon 3\r\n", 0, 0},
    };
    for (const Case& c : cases) {
        Parser p(c.service, c.page, 99);
        EXPECT_DOUBLE_EQ(p.fields.Latitude(), c.latitude) << c.name;
        EXPECT_DOUBLE_EQ(p.fields.Longitude(), c.longitude) << c.name;
    }
}

TEST(Coordinates, LeaveTheCursorAtTheDelimiter) {
    Parser p(kHamCall, "Latitude 34.5 S, Longitude 58.4 W, Grid GF05");
    p.fields.Latitude();
    EXPECT_EQ(p.fields.ParseCursor, p.at(", Longitude"));
    p.fields.Longitude();
    EXPECT_EQ(p.fields.ParseCursor, p.at(", Grid"));

    Parser missing(kEHam, "Nothing here", 42);
    missing.fields.Latitude();
    EXPECT_EQ(missing.fields.ParseCursor, 42);
}

TEST(TextFields, OffsetsAndDelimitersPerService) {
    struct Case {
        const char* name;
        int16_t service;
        const char* page;
        const char *licenceClass, *dateOfBirth, *grid, *webAddress;
    };
    const Case cases[] = {
        {"eHam reads only the class", kEHam, "License Class\tExtra\r\nGrid Square\tJO62\r\nBorn\t1961\r\nWeb Page\tx\r\n",
         "Extra", "", "", ""},
        {"eHam offset counts the colon", kEHam, "License Class: Extra\r\n", " Extra", "", "", ""},
        {"QRZ class only behind the record heading", kQrz, "Class\tA\r\nQRZ Record\r\n", "", "", "", ""},
        {"QRZ class up to the next blank", kQrz, "QRZ Record\r\nClassA B\r\n", "A", "", "", ""},
        {"QRZ class with a blank behind the label", kQrz, "QRZ Record\r\nClass E x\r\n", "", "", "", ""},
        {"QRZ class without a blank behind it", kQrz, "QRZ Record\r\nClass\tA", "", "", "", ""},
        {"QRZCQ reads only the class", kQrzCq, "Class:\tA\r\nGrid Square:\tJO62\r\nBorn\t1961\r\n", "A", "", "", ""},
        {"Callook grid at the end", kCallook, "Grid Square:\tFN31pr", "", "", "", ""},
        {"HamCall reads no grid", kHamCall, "License Class:\tA\r\nBirth Date:\t12 Mar 1961\r\nGrid Square\tJO62\r\n", "A",
         "1961", "", ""},
        {"HamCall offset skips two characters", kHamCall, "License Class\tA\r\nBirth Date:\t61\r\n", "", "61", "", ""},
        {"labels missing", kQrz, "Nothing\r\n", "", "", "", ""},
    };
    for (const Case& c : cases) {
        Parser p(c.service, c.page);
        EXPECT_EQ(p.fields.Class(), text(c.licenceClass)) << c.name;
        EXPECT_EQ(p.fields.DateOfBirth(), text(c.dateOfBirth)) << c.name;
        EXPECT_EQ(p.fields.Grid(), text(c.grid)) << c.name;
        EXPECT_EQ(p.fields.WebAddress(), text(c.webAddress)) << c.name;
        EXPECT_TRUE(p.events.isEmpty()) << c.name;
    }
}

TEST(TextFields, LeaveTheCursorAtTheLineEnd) {
    Parser p(kQrz, "QRZ Record\r\nClass\tA\r\nBorn\t1961\r\nWeb Page\tx\r\nGrid Square\tJO62\r\nend");
    p.fields.Class();
    EXPECT_EQ(p.fields.ParseCursor, p.at(" Page"));  // the blank that ends QRZ's class
    p.fields.DateOfBirth();
    EXPECT_EQ(p.fields.ParseCursor, p.at("\r\nWeb"));
    p.fields.Grid();
    EXPECT_EQ(p.fields.ParseCursor, p.at("\r\nend"));
    p.fields.WebAddress();
    EXPECT_EQ(p.fields.ParseCursor, p.at("\r\nGrid"));
}

}  // namespace
