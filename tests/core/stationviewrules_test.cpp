#include "pictures/stationviewrules.h"

#include <gtest/gtest.h>

#include <limits>

using namespace stationview;

namespace {

TEST(StationViewRequest, SplitsAtTheFirstStar) {
    struct Case {
        const char* request;
        const char* address;
        const char* call;
    };
    const Case cases[] = {
        {"https://example.org/db/G4ABC*G4ABC", "https://example.org/db/G4ABC", "G4ABC"},
        {"http://a/b*c*d", "http://a/b", "c*d"},
        {"http://a/only", "http://a/only", ""},
        {"*K1AB", "", "K1AB"},
        {"", "", ""},
    };
    for (const Case& c : cases) {
        const Request r = SplitRequest(QString::fromUtf8(c.request));
        EXPECT_EQ(r.address, QString::fromUtf8(c.address)) << c.request;
        EXPECT_EQ(r.call, QString::fromUtf8(c.call)) << c.request;
    }
    EXPECT_EQ(Caption(QStringLiteral("DL1XYZ")), QStringLiteral("Norvane   DL1XYZ"));
    EXPECT_EQ(SplitRequest(MapRequest(QStringLiteral("https://m/x"), QStringLiteral("Map"))).address,
              QStringLiteral("https://m/x"));
}

TEST(StationViewLinks, NumbersArePlainDecimalsWithAPoint) {
    struct Case {
        double value;
        const char* text;
    };
    const Case cases[] = {
        {51.5, "51.5"},      {-0.125, "-0.125"},   {12, "12"},   {0, "0"},   {-0.0, "0"},
        {0.00001, "0.00001"}, {52.123456789012345, "52.1234567890123"}, {-179.999, "-179.999"},
        {std::numeric_limits<double>::quiet_NaN(), "0"},
    };
    for (const Case& c : cases) EXPECT_EQ(LinkNumber(c.value), QString::fromUtf8(c.text)) << c.value;
}

TEST(StationViewLinks, WebMapLinks) {
    const QString host = QStringLiteral("https://www.google.com");
    struct Case {
        const char* add1;
        const char* add2;
        const char* ctry;
        double lat, lon;
        const char* byAddress;
        const char* byPosition;
    };
    const Case cases[] = {
        {" 12 High Street ", "Little Town", "United Kingdom", 51.5, -0.25,
         "https://www.google.com/maps/place/12+High+Street,Little+Town,United+Kingdom/@51.5,-0.25,19z/data=!3m1!1e3",
         "https://www.google.com/maps/place/51.5,-0.25/@51.5,-0.25,19z/data=!3m1!1e3"},
        {"", "", "", -33.75, 151, "https://www.google.com/maps/place/,,/@-33.75,151,19z/data=!3m1!1e3",
         "https://www.google.com/maps/place/-33.75,151/@-33.75,151,19z/data=!3m1!1e3"},
        // Only one of the two at a mark value still is a position.
        {"A", "B", "C", 89.0, 10, "https://www.google.com/maps/place/A,B,C/@89,10,19z/data=!3m1!1e3",
         "https://www.google.com/maps/place/89,10/@89,10,19z/data=!3m1!1e3"},
        {"A", "B", "C", 0, 7.5, "https://www.google.com/maps/place/A,B,C/@0,7.5,19z/data=!3m1!1e3",
         "https://www.google.com/maps/place/0,7.5/@0,7.5,19z/data=!3m1!1e3"},
        // Unknown positions give no link.
        {"A", "B", "C", 89.0, 89.0, "", ""},
        {"A", "B", "C", 0, 0, "", ""},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(WebMapByAddress(host, QString::fromUtf8(c.add1), QString::fromUtf8(c.add2), QString::fromUtf8(c.ctry),
                                  c.lat, c.lon),
                  QString::fromUtf8(c.byAddress));
        EXPECT_EQ(WebMapByPosition(host, c.lat, c.lon), QString::fromUtf8(c.byPosition));
    }
}

TEST(StationViewRetry, StepsByAttempt) {
    struct Case {
        int attempt;
        bool tell, fresh, reopen;
    };
    const Case cases[] = {
        {1, false, false, true}, {2, false, false, true}, {3, true, true, true},
        {4, true, true, true},   {5, false, false, false}, {0, false, false, false}, {-1, false, false, false},
    };
    for (const Case& c : cases) {
        const RetryStep step = RetryStepFor(c.attempt);
        EXPECT_EQ(step.tellUser, c.tell) << c.attempt;
        EXPECT_EQ(step.freshBrowser, c.fresh) << c.attempt;
        EXPECT_EQ(step.reopen, c.reopen) << c.attempt;
    }
    EXPECT_EQ(RetryMessage(QStringLiteral("PX Callsigns"), QStringLiteral("Not shown.")),
              QStringLiteral("PX Callsigns\r\n\r\nNot shown. "));
}

TEST(StationViewCapture, PageCrop) {
    struct Case {
        QSize picture;
        int frame, caption, menuBar;
        QRect crop;
    };
    const Case cases[] = {
        {{800, 600}, 0, 0, 24, QRect(0, 24, 800, 576)},
        {{800, 600}, 4, 26, 24, QRect(4, 50, 796, 550)},
        {{800, 24}, 0, 0, 24, QRect()},
        {{0, 0}, 0, 0, 24, QRect()},
        {{10, 100}, 10, 0, 0, QRect()},
        {{50, 60}, -3, -5, 10, QRect(0, 10, 50, 50)},
    };
    for (const Case& c : cases) EXPECT_EQ(PageCrop(c.picture, c.frame, c.caption, c.menuBar), c.crop);
}

TEST(StationViewPlacement, OnTheMonitorUnderThePointer) {
    const QRect second(1280, 0, 1024, 768);
    struct Case {
        QRect monitor;
        int left, width, height;
        QRect placed;
    };
    const Case cases[] = {
        {second, 1400, 600, 500, QRect(1400, 0, 600, 500)},
        {second, 100, 600, 500, QRect(1280, 0, 600, 500)},      // kept left on the other monitor
        {second, 2000, 600, 500, QRect(1280, 0, 600, 500)},     // would stick out on the right
        {second, 1300, 4000, 3000, QRect(1280, 0, 1024, 768)},  // cut to the monitor
        {second, 1300, 0, 0, QRect(1300, 0, 900, 700)},         // nothing kept
        {second, 1300, 10, 5000, QRect(1300, 0, 900, 700)},     // a window shrunk to nothing
        {QRect(0, 30, 640, 400), 0, 800, 600, QRect(0, 30, 640, 400)},
    };
    for (const Case& c : cases) EXPECT_EQ(Placement(c.monitor, c.left, c.width, c.height), c.placed) << c.left;
}

}  // namespace

namespace {

TEST(StationViewAddress, WebPagesOnly) {
    struct Case {
        const char* address;
        bool allowed;
    };
    const Case cases[] = {
        {"https://www.qrz.com/db/G4ABC", true}, {"http://127.0.0.1:8080/x", true}, {" HTTP://Example.org ", true},
        {"file:///etc/passwd", false},          {"/etc/passwd", false},            {"FILE:///C:/x", false},
        {"javascript:alert(1)", false},         {"ftp://h/x", false},              {"http://", false},
        {"", false},                            {"data:text/html,<b>x</b>", false},
    };
    for (const Case& c : cases) EXPECT_EQ(AddressAllowed(QString::fromUtf8(c.address)), c.allowed) << c.address;
}

}  // namespace
