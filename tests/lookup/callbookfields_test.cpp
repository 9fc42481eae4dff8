// The field parsers on page texts built for each rule: markers, offsets, delimiters, the
// continuing cursor and the events of cName.
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
    // 1-based position of `marker` in the page (where a delimiter is expected to leave the cursor).
    int32_t at(const char* marker) const { return static_cast<int32_t>(fields.PageText.indexOf(text(marker)) + 1); }
};

struct NameCase {
    const char* name;
    int16_t service;
    const char* page;
    const char* call;
    int32_t cursorBefore;
    const char* expected;
    QStringList events;
    const char* cursorAt;  // text at which ParseCursor ends up, or nullptr: expectedCursor
    int32_t expectedCursor;
};

TEST(CName, FollowsEachServicesSteps) {
    const QStringList none;
    const QStringList notFound{QStringLiteral("CallNotFound:G4ABC")};
    const NameCase cases[] = {
        // eHam: the whole line after the line that holds the call, trimmed.
        {"eHam found", kEHam, "Country\r\nSearch Results\r\nG4ABC\r\n  Peter Smith  \r\n12 Road\r\n", "G4ABC", 0,
         "Peter Smith", none, "\r\n12 Road", 0},
        {"eHam without Country", kEHam, "Search Results\r\nG4ABC\r\nPeter Smith\r\n", "G4ABC", 0, "", notFound, nullptr, 0},
        {"eHam without Search Results", kEHam, "Country\r\nNo entries.\r\nG4ABC\r\n", "G4ABC", 0, "", notFound, nullptr, 0},
        {"eHam empty name line", kEHam, "Country\r\nSearch Results\r\nG4ABC\r\n   \r\nx\r\n", "G4ABC", 0, "", notFound,
         "\r\nx", 0},
        // The call missing behind the results: the search for the line end starts near the top.
        {"eHam call missing behind the results", kEHam, "Country\r\nSearch Results\r\nNobody\r\n", "G4ABC", 0,
         "Search Results", none, "\r\nNobody", 0},

        // QRZ: from the start of the line with the first comma behind the call up to that comma.
        {"QRZ found", kQrz, "DL1ABC\r\nHans Müller, DL1ABC\r\nStreet\r\n", "DL1ABC", 0, "Hans Müller", none,
         ", DL1ABC", 0},
        {"QRZ name is not trimmed", kQrz, "DL1ABC\r\n\tHans Müller , x\r\n", "DL1ABC", 0, "\tHans Müller ", none,
         ", x", 0},
        {"QRZ comma on the call's line", kQrz, "x\r\nDL1ABC Hans, x\r\n", "DL1ABC", 0, "DL1ABC Hans", none, ", x", 0},
        {"QRZ no results beats login", kQrz, "Login is required\r\nDL1ABC produced no results\r\n", "DL1ABC", 0, "",
         {QStringLiteral("CallNotFound:DL1ABC")}, nullptr, 0},
        {"QRZ login required", kQrz, "DL1ABC\r\nHans, DL1ABC\r\nLogin is required for more.\r\n", "DL1ABC", 0, "",
         {QStringLiteral("LoginRequired:DL1ABC")}, nullptr, 0},
        {"QRZ call missing", kQrz, "Hans, DL9ZZZ\r\n", "DL1ABC", 0, "", {QStringLiteral("CallNotFound:DL1ABC")}, nullptr, 0},
        {"QRZ no comma behind the call gives the default", kQrz, "Hans, x\r\nDL1ABC\r\nStreet\r\n", "DL1ABC", 7, "", none,
         nullptr, 0},
        {"QRZ empty name", kQrz, "DL1ABC\r\n, x\r\n", "DL1ABC", 0, "", {QStringLiteral("CallNotFound:DL1ABC")}, ", x", 0},

        // QRZCQ: the line after the header (first letter within reach), not trimmed.
        {"QRZCQ found", kQrzCq, "DL1ABC - QRZCQ.com\r\nHans Müller  \r\nStreet\r\n", "DL1ABC", 0, "Hans Müller  ", none,
         "\r\nStreet", 0},
        {"QRZCQ skips what is no letter", kQrzCq, "QRZCQ.com\r\n\t 12 Hans\r\nx\r\n", "DL1ABC", 0, "Hans", none, "\r\nx", 0},
        {"QRZCQ no letter within reach", kQrzCq, "QRZCQ.com\r\n12345678901234567890AB\r\nx", "DL1ABC", 0, "0AB", none,
         "\r\nx", 0},
        {"QRZCQ behind the Buddy link", kQrzCq, "QRZCQ.com\r\n+ Buddy\r\nHans Müller\r\nStreet\r\n", "DL1ABC", 0,
         "Hans Müller", none, "\r\nStreet", 0},
        {"QRZCQ short name behind Buddy runs on", kQrzCq, "Buddy Al\r\nQRZCQ.com\r\nX\r\n", "DL1ABC", 0,
         "Al\r\nQRZCQ.com", none, "\r\nX", 0},
        {"QRZCQ error", kQrzCq, "DL1ABC - QRZCQ.com\r\nError: unknown\r\n", "DL1ABC", 0, "",
         {QStringLiteral("CallNotFound:DL1ABC")}, nullptr, 0},
        {"QRZCQ header missing", kQrzCq, "DL1ABC - QRZCQ.net\r\nHans\r\n", "DL1ABC", 0, "",
         {QStringLiteral("CallNotFound:DL1ABC")}, nullptr, 0},

        // Callook: behind "Show Map" and one more character up to the line end, trimmed.
        {"Callook found", kCallook, "W1XYZ\r\nShow Map\tJOHN A SMITH \r\n225 MAIN ST\r\n", "W1XYZ", 0, "JOHN A SMITH", none,
         "\r\n225", 0},
        {"Callook not found", kCallook, "W1XYZ\r\nNot in the database.\r\n", "W1XYZ", 0, "",
         {QStringLiteral("CallNotFound:W1XYZ")}, nullptr, 0},
        // Without the marker the name is still cut, from position 9 to where the cursor stands.
        {"Callook not found with a cursor left standing", kCallook, "0123456789ABCDEFGHIJKLMNOP", "W1XYZ", 20,
         "89ABCDEFGHI", {QStringLiteral("CallNotFound:W1XYZ")}, nullptr, 20},
        {"Callook without a line end", kCallook, "Show Map\tJOHN", "W1XYZ", 5, "", none, nullptr, 0},

        // HamCall: the line after the heading, from its third character up to the first comma, trimmed.
        {"HamCall found", kHamCall, "DL1ABC was found in the HamCall callsign database!\r\n\t\t Hans Müller, DL1ABC\r\n",
         "DL1ABC", 0, "Hans Müller", none, ", DL1ABC", 0},
        {"HamCall not found", kHamCall, "DL1ABC was not found.\r\n", "DL1ABC", 0, "",
         {QStringLiteral("CallNotFound:DL1ABC")}, nullptr, 0},
        {"HamCall not found with a cursor left standing", kHamCall, "0123456789ABCDEF", "DL1ABC", 12, "3456789A",
         {QStringLiteral("CallNotFound:DL1ABC")}, nullptr, 12},
        {"HamCall no comma", kHamCall, "HamCall callsign database!\r\n\t\tHans Müller\r\n", "DL1ABC", 0, "", none, nullptr, 0},
    };
    for (const NameCase& c : cases) {
        Parser p(c.service, c.page, c.cursorBefore);
        EXPECT_EQ(p.fields.cName(text(c.call)), text(c.expected)) << c.name;
        EXPECT_EQ(p.events, c.events) << c.name;
        EXPECT_EQ(p.fields.ParseCursor, c.cursorAt ? p.at(c.cursorAt) : c.expectedCursor) << c.name;
    }
}

TEST(CName, NoServiceSelectedGivesNothing) {
    for (const int16_t service : {int16_t(0), int16_t(6), int16_t(-1)}) {
        Parser p(service, "DL1ABC\r\nHans, DL1ABC\r\nLatitude\t1.5 x\r\nClass\tA\r\n", 3);
        EXPECT_EQ(p.fields.cName(QStringLiteral("DL1ABC")), QString()) << service;
        EXPECT_EQ(p.fields.Latitude(), 0.0) << service;
        EXPECT_EQ(p.fields.Class(), QString()) << service;
        EXPECT_TRUE(p.events.isEmpty()) << service;
        EXPECT_EQ(p.fields.ParseCursor, 3) << service;
    }
}

TEST(AddressLines, ContinueFromTheName) {
    struct Case {
        int16_t service;
        const char* page;
        const char* call;
        const char* name;
        const char* add1;
        const char* add2;
        const char* ctry;
        const char* cursorAt;  // where ctry leaves the cursor
    };
    const Case cases[] = {
        {kEHam, "Country\r\nSearch Results\r\nG4ABC\r\nPeter\r\n12 Road\r\nKent\r\nEngland\r\nend", "G4ABC", "Peter",
         "12 Road", "Kent", "England", "\r\nend"},
        {kQrz, "DL1ABC\r\nHans, DL1ABC\r\nStreet 1\r\n10115 Berlin\r\nGermany\r\nend", "DL1ABC", "Hans", "Street 1",
         "10115 Berlin", "Germany", "\r\nend"},
        {kQrzCq, "QRZCQ.com\r\nHans\r\nStreet 1\r\n10115 Berlin\r\nGermany\r\nend", "DL1ABC", "Hans", "Street 1",
         "10115 Berlin", "Germany", "\r\nend"},
        // Callook's country is fixed and leaves the cursor behind the second address line.
        {kCallook, "Show Map\tJOHN\r\n225 MAIN ST\r\nNEWINGTON, CT 06111\r\nend", "W1XYZ", "JOHN", "225 MAIN ST",
         "NEWINGTON, CT 06111", "U.S.A.", "\r\nend"},
        // HamCall's second line loses its last three characters.
        {kHamCall, "callsign database!\r\n\t\tHans, DL1ABC\r\nStreet 1\r\n10115 Berlin DE\r\nGermany\r\nend", "DL1ABC",
         "Hans", "Street 1", "10115 Berlin", "Germany", "\r\nend"},
    };
    for (const Case& c : cases) {
        Parser p(c.service, c.page);
        EXPECT_EQ(p.fields.cName(text(c.call)), text(c.name)) << c.service;
        EXPECT_EQ(p.fields.Add1(), text(c.add1)) << c.service;
        EXPECT_EQ(p.fields.Add2(), text(c.add2)) << c.service;
        EXPECT_EQ(p.fields.ctry(), text(c.ctry)) << c.service;
        EXPECT_EQ(p.fields.ParseCursor, p.at(c.cursorAt)) << c.service;
        EXPECT_TRUE(p.events.isEmpty()) << c.service;
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
    Parser p(kHamCall, "callsign database!\r\n\t\tHans, X\r\nStreet\r\nAB\r\nend", 0);
    p.fields.cName(QStringLiteral("X"));
    EXPECT_EQ(p.fields.Add1(), QStringLiteral("Street"));
    EXPECT_EQ(p.fields.Add2(), QString());
    EXPECT_EQ(p.fields.ParseCursor, p.at("\r\nend"));
}

TEST(AddressLines, CallookCountryNeedsNoPage) {
    Parser p(kCallook, "", 17);
    EXPECT_EQ(p.fields.ctry(), QStringLiteral("U.S.A."));
    EXPECT_EQ(p.fields.ParseCursor, 17);
}

TEST(ParseCursor, IsNeverResetBetweenPages) {
    Parser p(kQrz, "DL1ABC\r\nHans, DL1ABC\r\nStreet 1\r\n");
    p.fields.cName(QStringLiteral("DL1ABC"));
    const int32_t comma = p.fields.ParseCursor;
    EXPECT_EQ(comma, p.at(", DL1ABC"));
    p.fields.PageText = QStringLiteral("0123456789abcdefghij\r\nnext line\r\n");
    EXPECT_EQ(p.fields.Add1(), QStringLiteral("next line"));  // found from the old position on
}

struct CoordinateCase {
    const char* name;
    int16_t service;
    const char* page;
    double latitude, longitude;
};

TEST(Coordinates, OffsetsAndDelimitersPerService) {
    const CoordinateCase cases[] = {
        {"eHam", kEHam, "Latitude: 12.5\r\nLongitude: -3.25\r\n", 12.5, -3.25},
        {"eHam table cells", kEHam, "Latitude\t51.2012\r\nLongitude\t-0.5123\r\n", 51.2012, -0.5123},
        // QRZ starts right behind the label, QRZCQ one character later.
        {"QRZ right behind the label", kQrz, "Latitude-12.5 N\r\nLongitude-3.25 W\r\n", -12.5, -3.25},
        {"QRZCQ one character later", kQrzCq, "Latitude-12.5 N\r\nLongitude-3.25 W\r\n", 12.5, 3.25},
        {"QRZ table cells", kQrz, "Latitude\t52.52 (N)\r\nLongitude\t13.4 (E)\r\n", 52.52, 13.4},
        {"QRZ blank behind the label ends the value", kQrz, "Latitude 52.52 (N)\r\nLongitude 13.4 (E)\r\n", 0, 0},
        {"QRZCQ table cells", kQrzCq, "Latitude:\t52.52 (x)\r\nLongitude:\t13.4 (y)\r\n", 52.52, 13.4},
        {"Callook", kCallook, "Latitude:\t41.714775\r\nLongitude:\t-72.72726\r\n", 41.714775, -72.72726},
        {"HamCall south and west", kHamCall, "Latitude 34.5 S, Longitude 58.4 W, Grid GF05", -34.5, -58.4},
        {"HamCall north and east", kHamCall, "Latitude 52.52 N, Longitude 13.4 E, Grid JO62", 52.52, 13.4},
        {"HamCall hemisphere letters are upper case", kHamCall, "Latitude 34.5 s, Longitude 58.4 w,", 34.5, 58.4},
        {"HamCall without commas", kHamCall, "Latitude 34.5 S\r\nLongitude 58.4 W\r\n", 0, 0},
        {"eHam without line ends", kEHam, "Latitude 12.5", 0, 0},
        {"labels missing", kEHam, "Lat 12.5\r\nLon 3\r\n", 0, 0},
    };
    for (const CoordinateCase& c : cases) {
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

struct TextFieldCase {
    const char* name;
    int16_t service;
    const char* page;
    const char* licenceClass;
    const char* dateOfBirth;
    const char* grid;
    const char* webAddress;
};

TEST(TextFields, OffsetsAndDelimitersPerService) {
    const TextFieldCase cases[] = {
        {"eHam", kEHam, "License Class\tExtra\r\nGrid Square\tJO62\r\nBorn\t1961\r\nWeb Page\tx\r\n", "Extra", "", "", ""},
        {"eHam offset counts the colon", kEHam, "License Class: Extra\r\n", " Extra", "", "", ""},
        {"QRZ", kQrz, "QRZ Record for X\r\nClass\tA\r\nBorn\t1961\r\nGrid Square\tJO62qm\r\nWeb Page\thttp://x.de/\r\n",
         "\tA", "\t1961", "\tJO62qm", "\thttp://x.de/"},
        {"QRZ class only behind the record heading", kQrz, "Class\tA\r\nQRZ Record\r\n", "", "", "", ""},
        {"QRZ class up to the next blank", kQrz, "QRZ Record\r\nClassA B\r\n", "A", "", "", ""},
        {"QRZ class with a blank behind the label", kQrz, "QRZ Record\r\nClass E x\r\n", "", "", "", ""},
        {"QRZ class without a blank behind it", kQrz, "QRZ Record\r\nClass\tA", "", "", "", ""},
        {"QRZCQ", kQrzCq, "Class:\tA\r\nGrid Square:\tJO62\r\nBorn\t1961\r\n", "A", "", "", ""},
        // Callook's grid starts two characters later than QRZ's and keeps QRZ's length.
        {"Callook", kCallook, "Class:\tEXTRA\r\nGrid Square:\tFN31pr\r\nLatitude:\t1\r\n", "EXTRA", "", "FN31pr\r\n", ""},
        {"Callook grid at the end", kCallook, "Grid Square:\tFN31pr", "", "", "", ""},
        {"HamCall", kHamCall, "License Class:\tA\r\nBirth Date:\t12 Mar 1961\r\nGrid Square\tJO62\r\n", "A", "1961", "", ""},
        {"HamCall offset skips two characters", kHamCall, "License Class\tA\r\nBirth Date:\t61\r\n", "", "61", "", ""},
        {"labels missing", kQrz, "Nothing\r\n", "", "", "", ""},
    };
    for (const TextFieldCase& c : cases) {
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

TEST(PrevCall, IsAlwaysEmptyAndLeavesTheCursor) {
    for (int16_t service = 0; service <= 5; ++service) {
        Parser p(service, "Previous Call: DL0OLD</td>\r\n", 5);
        EXPECT_EQ(p.fields.PrevCall(), QString()) << service;
        EXPECT_EQ(p.fields.ParseCursor, 5) << service;
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

}  // namespace
