#pragma once
// The call-book services, the picture server and the update site: what follows each host is
// fixed, the hosts themselves are given by the caller (the program reads them from its settings,
// app/lookuphosts.h); the defaults are the real ones.
//
// kServices is the one list of the services: every window, the lookup control, the field
// parsers and the command line read their names, paths and differences from it.
#include <QString>
#include <array>
#include <cstdint>

namespace lookup {

// The call-book services, numbered as the Database setting selects them.
enum class Service : int16_t { None = 0, EHam = 1, Qrz = 2, QrzCq = 3, Callook = 4, HamCall = 5 };

}  // namespace lookup

// Which of the language's texts the status lines use for a service where the services differ.
enum class ServiceTexts : uint8_t {
    Shared,   // logged in / not logged in, lookup failed, position found
    Qrzcq,    // QRZCQ's own: no login needed, lookup failed, position found
    Callook,  // Callook's own: no login needed, its status after a page and for a position
};

struct CallbookService {
    lookup::Service number;
    const char* name;         // as the settings key and in messages
    const char* boxName;      // the main window's service box
    const char* editorName;   // the call-sign file editor's service box
    const char* domain;       // the editor's name for the service (captions, messages)
    const char* defaultHost;  // scheme and host, no trailing "/"
    const char* loginPath;    // appended to the host for the login check
    const char* lookupPath;   // appended to the host, followed by the call sign
    const char* loginMarker;  // text that shows a logged-in page; nullptr: never logged in
    ServiceTexts texts;
    // A page that is not logged in leaves the shown station in the main window, without the
    // failure tone (the service shows its stations without a login).
    bool keepsWindowWhenLoggedOut;
};

// Indexed by the service number - 1. The editor's box spells Callook "CallLook" on purpose.
inline constexpr std::array<CallbookService, 5> kServices{{
    {lookup::Service::EHam, "eHam", "eHam", "eHam", "eHam.net", "http://www.eham.net", "/", "/callbook/", "Log Out",
     ServiceTexts::Shared, false},
    {lookup::Service::Qrz, "QRZ", "QRZ", "QRZ", "QRZ.com", "http://www.qrz.com", "/", "/db/", "Logout",
     ServiceTexts::Shared, false},
    {lookup::Service::QrzCq, "QRZCQ", "QRZCQ", "QRZCQ", "QRZCQ.com", "http://www.qrzcq.com", "/", "/call/",
     "Logged in", ServiceTexts::Qrzcq, true},
    {lookup::Service::Callook, "Callook", "CALLOOK", "CallLook", "Callook.info", "http://callook.info", "/", "/",
     nullptr, ServiceTexts::Callook, true},
    {lookup::Service::HamCall, "HamCall", "HamCall", "HamCall", "HamCall.net", "http://hamcall.net", "/call",
     "/call?callsign=", "Log Out", ServiceTexts::Shared, false},
}};

// The table is in number order: entry i is service i + 1.
inline constexpr bool kServicesInNumberOrder = [] {
    for (size_t i = 0; i < kServices.size(); ++i)
        if (static_cast<size_t>(kServices[i].number) != i + 1) return false;
    return true;
}();
static_assert(kServicesInNumberOrder, "kServices must list the services by number");

// The service of a number from 1 to 5, nullptr for any other.
const CallbookService* ServiceByNumber(int number);

struct LookupHosts {
    std::array<QString, 5> services;
    QString pictures;  // QRZ's picture server, whichever service is chosen
    QString updates;   // where the update probe looks ("" : no probe)
    int timeoutMs = 20000;           // a transfer that stalls this long fails
    qint64 maxBytes = 8 * 1024 * 1024;  // a larger download fails
};
