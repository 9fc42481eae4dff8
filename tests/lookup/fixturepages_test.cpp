// The field parsers on the fixture pages of the five services, read as the lookup control
// reads a downloaded page: bytes decoded by their charset, rendered to plain text, then the
// fields in the hosts' order.
#include "lookup/callbookfields.h"
#include "lookup/htmldecode.h"

#include <QFile>
#include <QStringList>
#include <gtest/gtest.h>

namespace {

// What the fields give for one station; a page without one gives the defaults.
struct Fields {
    const char *call = "", *name = "", *add1 = "", *add2 = "", *ctry = "";
    double latitude = 0, longitude = 0;
    const char *licenceClass = "", *dateOfBirth = "", *grid = "", *webAddress = "";
};

struct Pages {
    int16_t service;
    const char* files;  // under tests/fixtures/pages/<service>, ".html" left out; "noposition" shows no coordinates
    Fields fields;
    const char* events = "";  // names joined by ","
};

const char* const kFolders[] = {"", "eham", "qrz", "qrzcq", "callook", "hamcall"};

const Pages kPages[] = {
    {1, "found noposition long", {"G4ABC", "Peter Smith", "12 Station Road", "Little Wittering, Kent", "England", 51.2012,
                                  -0.5123, "Full"}},
    {1, "accented-utf8 accented-cp1252", {"LA1ABC", "Søren Ødegård", "Bjørnstjerne Bjørnsons gate 7", "0254 Oslo",
                                          "Norway", 59.9139, 10.7522, "Special"}},
    {1, "notfound", {"XX9XYZ"}, "CallNotFound"},
    {1, "maintenance", {"G4ABC"}, "CallNotFound"},

    {2, "found noposition", {"DL1ABC", "Hans Müller", "Musterstraße 12", "10115 Berlin", "Germany", 52.52, 13.405, "\tA",
                             "\t1961", "\tJO62qm", "\thttp://www.dl1abc.de/"}},
    {2, "accented-utf8 accented-cp1252", {"DL2XYZ", "Jürgen Weiß", "Königstraße 5", "70173 Stuttgart", "Germany", 48.7758,
                                          9.1829, "\tA", "\t1958", "\tJN48ns", "\thttp://www.example.de/~jürgen/"}},
    {2, "long", {"LU1ABC", "Ana Gómez", "Avenida de Mayo 1370", "C1085ABE Buenos Aires", "Argentina", -34.6037, -58.3816,
                 "\tGeneral", "\t1975", "\tGF05tj", "\thttp://lu1abc.example.ar/"}},
    {2, "login", {"DL1ABC"}, "LoginRequired"},
    {2, "notfound", {"XX9XYZ"}, "CallNotFound"},

    {3, "found loggedin noposition long", {"DL1ABC", "Hans Müller", "Musterstraße 12", "10115 Berlin", "Germany", 52.52,
                                           13.405, "A"}},
    {3, "accented-utf8 accented-cp1252", {"F5ABC", "Françoise Lefèvre", "12 rue de l’Église", "75004 Paris", "France",
                                          48.8566, 2.3522, "HAREC"}},
    {3, "notfound", {"XX9XYZ"}, "CallNotFound"},

    {4, "found noposition long", {"W1XYZ", "JOHN A SMITH", "225 MAIN ST", "NEWINGTON, CT 06111", "U.S.A.", 41.714775,
                                  -72.72726, "EXTRA", "", "FN31pr\r\n"}},
    {4, "accented-utf8 accented-cp1252", {"KP4ABC", "JOSÉ A NÚÑEZ", "1200 CALLE DEL SOL", "SAN JUAN, PR 00901", "U.S.A.",
                                          18.4663, -66.1057, "GENERAL", "", "FK68wl\r\n"}},
    {4, "notfound", {"XX9XYZ", "", "", "", "U.S.A."}, "CallNotFound"},

    {5, "found noposition", {"DL1ABC", "Hans Müller", "Musterstraße 12", "10115 Berlin", "Germany", 52.52, 13.405, "A",
                             "1961"}},
    {5, "accented-utf8 accented-cp1252", {"EA4ABC", "Ramón Ibáñez", "Calle Mayor 3", "28013 Madrid", "España", 40.4168,
                                          -3.7038, "A", "1969"}},
    {5, "long", {"LU1ABC", "Ana Gómez", "Avenida de Mayo 1370", "C1085ABE Buenos Aires", "Argentina", -34.6037, -58.3816,
                 "General", "1975"}},
    {5, "notfound", {"XX9XYZ"}, "CallNotFound"},
};

QString pageText(const QString& file) {
    QFile f(QStringLiteral(PX_SOURCE_DIR "/tests/fixtures/pages/") + file);
    if (!f.open(QIODevice::ReadOnly)) ADD_FAILURE() << "cannot read " << file.toStdString();
    return lookup::pageToText(f.readAll());
}

QString u(const char* s) { return QString::fromUtf8(s); }

TEST(FixturePages, FieldsInTheHostsOrder) {
    for (const Pages& row : kPages) {
        const Fields& e = row.fields;
        for (const QString& name : QString::fromLatin1(row.files).split(u' ')) {
            const QString file = QLatin1String(kFolders[row.service]) + u'/' + name + QStringLiteral(".html");
            SCOPED_TRACE(file.toStdString());
            lookup::CallbookFields fields;
            fields.Database = row.service;
            fields.PageText = pageText(file);
            QStringList events;
            fields.onEvent = [&](lookup::FieldEvent event, const QString& ca) {
                EXPECT_EQ(ca, u(e.call));
                events.append(lookup::eventName(event));
            };
            const bool positioned = name != QLatin1String("noposition");
            EXPECT_EQ(fields.cName(u(e.call)), u(e.name));
            EXPECT_EQ(fields.Add1(), u(e.add1));
            EXPECT_EQ(fields.Add2(), u(e.add2));
            EXPECT_EQ(fields.ctry(), u(e.ctry));
            EXPECT_DOUBLE_EQ(fields.Latitude(), positioned ? e.latitude : 0);
            EXPECT_DOUBLE_EQ(fields.Longitude(), positioned ? e.longitude : 0);
            EXPECT_EQ(fields.Class(), u(e.licenceClass));
            EXPECT_EQ(fields.DateOfBirth(), u(e.dateOfBirth));
            EXPECT_EQ(fields.Grid(), u(e.grid));
            EXPECT_EQ(fields.WebAddress(), u(e.webAddress));
            EXPECT_EQ(events.join(u','), u(row.events));
        }
    }
}

}  // namespace
