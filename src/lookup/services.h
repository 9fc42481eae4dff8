#pragma once
// The call-book services, the picture server and the update site: what follows each host is
// fixed, the hosts themselves are given by the caller (the program reads them from its settings,
// app/lookuphosts.h); the defaults are the real ones.
#include <QString>
#include <array>

struct CallbookService {
    const char* name;         // as the settings key and in messages
    const char* defaultHost;  // scheme and host, no trailing "/"
    const char* loginPath;    // appended to the host for the login check
    const char* lookupPath;   // appended to the host, followed by the call sign
    const char* loginMarker;  // text that shows a logged-in page; nullptr: never logged in
};

// Indexed by the service number - 1 (1 eHam, 2 QRZ, 3 QRZCQ, 4 Callook, 5 HamCall).
inline constexpr std::array<CallbookService, 5> kServices{{
    {"eHam", "http://www.eham.net", "/", "/callbook/", "Log Out"},
    {"QRZ", "http://www.qrz.com", "/", "/db/", "Logout"},
    {"QRZCQ", "http://www.qrzcq.com", "/", "/call/", "Logged in"},
    {"Callook", "http://callook.info", "/", "/", nullptr},
    {"HamCall", "http://hamcall.net", "/call", "/call?callsign=", "Log Out"},
}};

// The service of a number from 1 to 5, nullptr for any other.
const CallbookService* ServiceByNumber(int number);

struct LookupHosts {
    std::array<QString, 5> services;
    QString pictures;  // QRZ's picture server, whichever service is chosen
    QString updates;   // where the update probe looks ("" : no probe)
    int timeoutMs = 20000;           // a transfer that stalls this long fails
    qint64 maxBytes = 8 * 1024 * 1024;  // a larger download fails
};
