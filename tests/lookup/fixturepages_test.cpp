// The field parsers on the fixture pages of the five services, read as the lookup control
// reads a downloaded page: bytes decoded by their charset, rendered to plain text, then the
// fields in the hosts' order.
#include "lookup/callbookfields.h"
#include "lookup/htmldecode.h"

#include <QFile>
#include <QStringList>
#include <gtest/gtest.h>

namespace {

struct Expected {
    const char* file;  // under tests/fixtures/pages
    int16_t service;
    const char* call;
    const char* cName;
    const char* add1;
    const char* add2;
    const char* ctry;
    double latitude, longitude;
    const char* licenceClass;
    const char* dateOfBirth;
    const char* grid;
    const char* webAddress;
    const char* events;  // names joined by ","
};

QString pageText(const char* file) {
    QFile f(QStringLiteral(PX_SOURCE_DIR "/tests/fixtures/pages/") + QLatin1String(file));
    if (!f.open(QIODevice::ReadOnly)) {
        ADD_FAILURE() << "cannot read " << file;
        return {};
    }
    return lookup::pageToText(f.readAll());
}

constexpr Expected kPages[] = {
    {"eham/found.html", 1, "G4ABC", "Peter Smith", "12 Station Road", "Little Wittering, Kent", "England", 51.2012,
     -0.5123, "Full", "", "", "", ""},
    {"eham/noposition.html", 1, "G4ABC", "Peter Smith", "12 Station Road", "Little Wittering, Kent", "England", 0, 0,
     "Full", "", "", "", ""},
    {"eham/accented-utf8.html", 1, "LA1ABC", "Søren Ødegård", "Bjørnstjerne Bjørnsons gate 7", "0254 Oslo", "Norway",
     59.9139, 10.7522, "Special", "", "", "", ""},
    {"eham/accented-cp1252.html", 1, "LA1ABC", "Søren Ødegård", "Bjørnstjerne Bjørnsons gate 7", "0254 Oslo", "Norway",
     59.9139, 10.7522, "Special", "", "", "", ""},
    {"eham/long.html", 1, "G4ABC", "Peter Smith", "12 Station Road", "Little Wittering, Kent", "England", 51.2012,
     -0.5123, "Full", "", "", "", ""},
    {"eham/notfound.html", 1, "XX9XYZ", "", "", "", "", 0, 0, "", "", "", "", "CallNotFound"},
    {"eham/maintenance.html", 1, "G4ABC", "", "", "", "", 0, 0, "", "", "", "", "CallNotFound"},

    {"qrz/found.html", 2, "DL1ABC", "Hans Müller", "Musterstraße 12", "10115 Berlin", "Germany", 52.52, 13.405, "\tA",
     "\t1961", "\tJO62qm", "\thttp://www.dl1abc.de/", ""},
    {"qrz/noposition.html", 2, "DL1ABC", "Hans Müller", "Musterstraße 12", "10115 Berlin", "Germany", 0, 0, "\tA",
     "\t1961", "\tJO62qm", "\thttp://www.dl1abc.de/", ""},
    {"qrz/accented-utf8.html", 2, "DL2XYZ", "Jürgen Weiß", "Königstraße 5", "70173 Stuttgart", "Germany", 48.7758,
     9.1829, "\tA", "\t1958", "\tJN48ns", "\thttp://www.example.de/~jürgen/", ""},
    {"qrz/accented-cp1252.html", 2, "DL2XYZ", "Jürgen Weiß", "Königstraße 5", "70173 Stuttgart", "Germany", 48.7758,
     9.1829, "\tA", "\t1958", "\tJN48ns", "\thttp://www.example.de/~jürgen/", ""},
    {"qrz/long.html", 2, "LU1ABC", "Ana Gómez", "Avenida de Mayo 1370", "C1085ABE Buenos Aires", "Argentina", -34.6037,
     -58.3816, "\tGeneral", "\t1975", "\tGF05tj", "\thttp://lu1abc.example.ar/", ""},
    {"qrz/login.html", 2, "DL1ABC", "", "", "", "", 0, 0, "", "", "", "", "LoginRequired"},
    {"qrz/notfound.html", 2, "XX9XYZ", "", "", "", "", 0, 0, "", "", "", "", "CallNotFound"},

    {"qrzcq/found.html", 3, "DL1ABC", "Hans Müller", "Musterstraße 12", "10115 Berlin", "Germany", 52.52, 13.405, "A",
     "", "", "", ""},
    {"qrzcq/loggedin.html", 3, "DL1ABC", "Hans Müller", "Musterstraße 12", "10115 Berlin", "Germany", 52.52, 13.405,
     "A", "", "", "", ""},
    {"qrzcq/noposition.html", 3, "DL1ABC", "Hans Müller", "Musterstraße 12", "10115 Berlin", "Germany", 0, 0, "A", "",
     "", "", ""},
    {"qrzcq/accented-utf8.html", 3, "F5ABC", "Françoise Lefèvre", "12 rue de l’Église", "75004 Paris", "France",
     48.8566, 2.3522, "HAREC", "", "", "", ""},
    {"qrzcq/accented-cp1252.html", 3, "F5ABC", "Françoise Lefèvre", "12 rue de l’Église", "75004 Paris", "France",
     48.8566, 2.3522, "HAREC", "", "", "", ""},
    {"qrzcq/long.html", 3, "DL1ABC", "Hans Müller", "Musterstraße 12", "10115 Berlin", "Germany", 52.52, 13.405, "A",
     "", "", "", ""},
    {"qrzcq/notfound.html", 3, "XX9XYZ", "", "", "", "", 0, 0, "", "", "", "", "CallNotFound"},

    {"callook/found.html", 4, "W1XYZ", "JOHN A SMITH", "225 MAIN ST", "NEWINGTON, CT 06111", "U.S.A.", 41.714775,
     -72.72726, "EXTRA", "", "FN31pr\r\n", "", ""},
    {"callook/noposition.html", 4, "W1XYZ", "JOHN A SMITH", "225 MAIN ST", "NEWINGTON, CT 06111", "U.S.A.", 0, 0,
     "EXTRA", "", "FN31pr\r\n", "", ""},
    {"callook/accented-utf8.html", 4, "KP4ABC", "JOSÉ A NÚÑEZ", "1200 CALLE DEL SOL", "SAN JUAN, PR 00901", "U.S.A.",
     18.4663, -66.1057, "GENERAL", "", "FK68wl\r\n", "", ""},
    {"callook/accented-cp1252.html", 4, "KP4ABC", "JOSÉ A NÚÑEZ", "1200 CALLE DEL SOL", "SAN JUAN, PR 00901", "U.S.A.",
     18.4663, -66.1057, "GENERAL", "", "FK68wl\r\n", "", ""},
    {"callook/long.html", 4, "W1XYZ", "JOHN A SMITH", "225 MAIN ST", "NEWINGTON, CT 06111", "U.S.A.", 41.714775,
     -72.72726, "EXTRA", "", "FN31pr\r\n", "", ""},
    {"callook/notfound.html", 4, "XX9XYZ", "", "", "", "U.S.A.", 0, 0, "", "", "", "", "CallNotFound"},

    {"hamcall/found.html", 5, "DL1ABC", "Hans Müller", "Musterstraße 12", "10115 Berlin", "Germany", 52.52, 13.405,
     "A", "1961", "", "", ""},
    {"hamcall/noposition.html", 5, "DL1ABC", "Hans Müller", "Musterstraße 12", "10115 Berlin", "Germany", 0, 0, "A",
     "1961", "", "", ""},
    {"hamcall/accented-utf8.html", 5, "EA4ABC", "Ramón Ibáñez", "Calle Mayor 3", "28013 Madrid", "España", 40.4168,
     -3.7038, "A", "1969", "", "", ""},
    {"hamcall/accented-cp1252.html", 5, "EA4ABC", "Ramón Ibáñez", "Calle Mayor 3", "28013 Madrid", "España", 40.4168,
     -3.7038, "A", "1969", "", "", ""},
    {"hamcall/long.html", 5, "LU1ABC", "Ana Gómez", "Avenida de Mayo 1370", "C1085ABE Buenos Aires", "Argentina",
     -34.6037, -58.3816, "General", "1975", "", "", ""},
    {"hamcall/notfound.html", 5, "XX9XYZ", "", "", "", "", 0, 0, "", "", "", "", "CallNotFound"},
};

TEST(FixturePages, FieldsInTheHostsOrder) {
    for (const Expected& e : kPages) {
        lookup::CallbookFields fields;
        fields.Database = e.service;
        fields.PageText = pageText(e.file);
        QStringList events;
        fields.onEvent = [&](lookup::FieldEvent event, const QString& ca) {
            EXPECT_EQ(ca, QString::fromUtf8(e.call)) << e.file;
            events.append(lookup::eventName(event));
        };
        const auto u = [](const char* s) { return QString::fromUtf8(s); };
        EXPECT_EQ(fields.cName(u(e.call)), u(e.cName)) << e.file;
        EXPECT_EQ(fields.Add1(), u(e.add1)) << e.file;
        EXPECT_EQ(fields.Add2(), u(e.add2)) << e.file;
        EXPECT_EQ(fields.ctry(), u(e.ctry)) << e.file;
        EXPECT_DOUBLE_EQ(fields.Latitude(), e.latitude) << e.file;
        EXPECT_DOUBLE_EQ(fields.Longitude(), e.longitude) << e.file;
        EXPECT_EQ(fields.Class(), u(e.licenceClass)) << e.file;
        EXPECT_EQ(fields.PrevCall(), QString()) << e.file;
        EXPECT_EQ(fields.DateOfBirth(), u(e.dateOfBirth)) << e.file;
        EXPECT_EQ(fields.Grid(), u(e.grid)) << e.file;
        EXPECT_EQ(fields.WebAddress(), u(e.webAddress)) << e.file;
        EXPECT_EQ(events.join(u','), u(e.events)) << e.file;
    }
}

TEST(FixturePages, PageTextHasTheSitesLineStructure) {
    // The lines the parsers of QRZ and HamCall walk over, exactly as the renderer gives them.
    const QString qrz = pageText("qrz/found.html");
    EXPECT_TRUE(qrz.contains(QStringLiteral("\r\nDL1ABC\r\n\r\nHans Müller, DL1ABC\r\nMusterstraße 12\r\n10115 Berlin\r\n"
                                            "Germany\r\n\r\nQRZ Record for DL1ABC\r\nCountry\tGermany\r\n")))
        << qPrintable(qrz);
    const QString hamcall = pageText("hamcall/found.html");
    EXPECT_TRUE(hamcall.contains(QStringLiteral("callsign database!\r\n\t\tHans Müller, DL1ABC\r\nMusterstraße 12\r\n"
                                                "10115 Berlin DE\r\nGermany\r\nLicense Class:\tA\r\n")))
        << qPrintable(hamcall);
    // Script text that holds the markers never shows.
    EXPECT_FALSE(qrz.contains(QStringLiteral("Login is required")));
    EXPECT_FALSE(pageText("eham/found.html").contains(QStringLiteral("Latitude 0")));
    EXPECT_FALSE(pageText("qrzcq/found.html").contains(QStringLiteral("Error")));
}

}  // namespace
