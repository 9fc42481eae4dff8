#include "stationview/refusingpage.h"

#include "pictures/stationviewrules.h"

bool RefusingPage::acceptNavigationRequest(const QUrl& url, NavigationType type, bool isMainFrame) {
    // Frames may hold about:blank and data; the page itself is a web page or nothing.
    if (isMainFrame && !stationview::AddressAllowed(url.toString())) return false;
    if (url.isLocalFile()) return false;
    return QWebEnginePage::acceptNavigationRequest(url, type, isMainFrame);
}
