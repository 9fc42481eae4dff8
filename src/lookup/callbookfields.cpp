#include "lookup/callbookfields.h"

#include "common/vbtext.h"

#include <limits>

namespace lookup {
namespace {

constexpr QStringView kCrLf = u"\r\n";

// QRZCQ prints its name with its domain ending in the heading line right above the station's
// data ("DL1ABC - QRZCQ.com"); the name follows on the next line, or behind the "Buddy" link
// that the page shows to a logged-in user.
constexpr QStringView kQrzCqHeader = u"QRZCQ.com";

// A position that does not fit the 32-bit cursor.
struct CursorOverflow {};

// Runs a field's steps; an invalid text call (a negative length) or a cursor overflow on the
// way gives the field's default. What the steps did to ParseCursor before that stays.
template <typename T, typename Steps>
T orDefault(T fallback, Steps steps) {
    try {
        return steps();
    } catch (const vb::InvalidCall&) {
        return fallback;
    } catch (const CursorOverflow&) {
        return fallback;
    }
}

}  // namespace

QString eventName(FieldEvent event) {
    return event == FieldEvent::CallNotFound ? QStringLiteral("CallNotFound") : QStringLiteral("LoginRequired");
}

Service CallbookFields::service() const {
    const CallbookService* chosen = ServiceByNumber(Database);
    return chosen ? chosen->number : Service::None;
}

void CallbookFields::raise(FieldEvent event, const QString& ca) {
    if (onEvent) onEvent(event, ca);
}

void CallbookFields::setCursor(qsizetype position) {
    if (position > std::numeric_limits<int32_t>::max()) throw CursorOverflow{};
    ParseCursor = static_cast<int32_t>(position);
}

QString CallbookFields::cName(const QString& ca) {
    return orDefault(QString(), [&] { return nameOf(ca); });
}

QString CallbookFields::nameOf(const QString& ca) {
    const QStringView page = PageText;
    auto find = [&](QStringView what, qsizetype from) { return vb::inStr(from, page, what); };
    auto mid = [&](qsizetype from, qsizetype length) { return vb::midStrict(page, from, length); };
    auto notFound = [&] {
        raise(FieldEvent::CallNotFound, ca);
        return QString();
    };
    // The first position from `from` to `to` whose character sorts above "@" (a letter);
    // one past `to` when there is none.
    auto firstLetter = [&](qsizetype from, qsizetype to) {
        qsizetype i = from;
        while (i <= to && !(i >= 1 && i <= page.size() && page[i - 1] > u'@')) ++i;
        return i;
    };

    switch (service()) {
    case Service::EHam: {
        if (find(u"Country", 1) == 0) return notFound();
        const qsizetype results = find(u"Search Results", 1);
        if (results == 0) return notFound();
        const qsizetype call = find(ca, results + 3);
        const qsizetype callLineEnd = find(kCrLf, call + 3);
        setCursor(find(kCrLf, callLineEnd + 3));
        const QString name = vb::trim(mid(callLineEnd + 2, ParseCursor - callLineEnd - 2));
        return name.isEmpty() ? notFound() : name;
    }
    case Service::Qrz: {
        if (find(u"produced no results", 1) > 0) return notFound();
        if (find(u"Login is required", 1) > 0) {
            raise(FieldEvent::LoginRequired, ca);
            return {};
        }
        const qsizetype call = find(ca, 1);
        if (call == 0) return notFound();
        setCursor(find(u",", call));
        const qsizetype lineStart = vb::inStrRev(page, kCrLf, ParseCursor);
        const QString name = mid(lineStart + 2, ParseCursor - lineStart - 2);
        return name.isEmpty() ? notFound() : name;
    }
    case Service::QrzCq: {
        if (find(u"Error", 1) > 0) return notFound();
        const qsizetype header = find(kQrzCqHeader, 1);
        if (header == 0) return notFound();
        qsizetype i = 0;
        if (const qsizetype buddy = find(u"Buddy", 1); buddy > 0) {
            i = firstLetter(buddy + 5, buddy + 20);
            setCursor(find(kCrLf, i + 5));
        } else {
            const qsizetype headerEnd = find(kCrLf, header);
            i = firstLetter(headerEnd + 2, headerEnd + 20);
            setCursor(find(kCrLf, i + 2));
        }
        return mid(i, ParseCursor - i);
    }
    case Service::Callook: {
        // Without "Show Map" the event is raised and the name is still taken, from position 0
        // up to where the cursor stands.
        const qsizetype p = find(u"Show Map", 1);
        if (p == 0) raise(FieldEvent::CallNotFound, ca);
        if (p > 0) setCursor(find(kCrLf, p + 3));
        if (ParseCursor < 1) return {};
        return vb::trim(mid(p + 9, ParseCursor - p - 9));
    }
    case Service::HamCall: {
        qsizetype p = find(u"callsign database!", 1);
        if (p == 0) raise(FieldEvent::CallNotFound, ca);
        if (p > 0) p = find(kCrLf, p + 3);
        if (p > 0) setCursor(find(u",", p + 3));
        if (ParseCursor < 1) return {};
        return vb::trim(mid(p + 4, ParseCursor - p - 4));
    }
    case Service::None:
        break;
    }
    return {};
}

QString CallbookFields::nextLine(qsizetype dropAtEnd) {
    return orDefault(QString(), [&] {
        const qsizetype p = vb::inStr(ParseCursor, PageText, kCrLf);
        if (p == 0) return QString();
        setCursor(vb::inStr(p + 2, PageText, kCrLf));
        return vb::midStrict(PageText, p + 2, ParseCursor - p - 2 - dropAtEnd);
    });
}

QString CallbookFields::Add1() { return nextLine(0); }

QString CallbookFields::Add2() { return nextLine(service() == Service::HamCall ? 3 : 0); }

QString CallbookFields::ctry() {
    if (service() == Service::Callook) return QStringLiteral("U.S.A.");
    return nextLine(0);
}

double CallbookFields::coordinate(QStringView label, qsizetype longer) {
    return orDefault(0.0, [&] {
        const qsizetype p = vb::inStr(PageText, label);
        if (p == 0) return 0.0;
        auto delimited = [&](QStringView delimiter, qsizetype searchFrom, qsizetype offset) {
            const qsizetype e = vb::inStr(p + searchFrom, PageText, delimiter);
            setCursor(e);
            return vb::midStrict(PageText, p + offset + longer, e - p - offset - longer);
        };
        switch (service()) {
        case Service::EHam: return vb::val(delimited(kCrLf, 3, 9));
        case Service::Qrz: return vb::val(delimited(u" ", 2, 8));
        case Service::QrzCq: return vb::val(delimited(u" ", 2, 9));
        case Service::Callook: return vb::val(delimited(kCrLf, 2, 9));
        case Service::HamCall: {
            // Degrees without a sign, the hemisphere as the last letter: "34.6037 S".
            const QString t = delimited(u",", 2, 9);
            const double value = vb::val(t);
            return t.endsWith(longer ? u'W' : u'S') && value != 0.0 ? -value : value;
        }
        case Service::None: break;
        }
        return 0.0;
    });
}

double CallbookFields::Latitude() { return coordinate(u"Latitude", 0); }

double CallbookFields::Longitude() { return coordinate(u"Longitude", 1); }

QString CallbookFields::labelToLineEnd(QStringView label, qsizetype start, qsizetype lengthOffset) {
    return orDefault(QString(), [&] {
        const qsizetype p = vb::inStr(PageText, label);
        if (p == 0) return QString();
        setCursor(vb::inStr(p + 2, PageText, kCrLf));
        return vb::midStrict(PageText, p + start, ParseCursor - p - lengthOffset);
    });
}

QString CallbookFields::Class() {
    switch (service()) {
    case Service::EHam: return labelToLineEnd(u"License Class", 14, 14);
    case Service::Qrz:
        // The first "Class" behind the record heading, up to the next blank, within its line.
        return orDefault(QString(), [&] {
            const qsizetype record = vb::inStr(PageText, u"QRZ Record");
            if (record == 0) return QString();
            const qsizetype c = vb::inStr(record, PageText, u"Class");
            if (c == 0) return QString();
            setCursor(vb::inStr(c + 2, PageText, u" "));
            QString t = vb::midStrict(PageText, c + 5, ParseCursor - c - 5);
            if (const qsizetype lineEnd = t.indexOf(kCrLf); lineEnd >= 0) t.truncate(lineEnd);
            return t;
        });
    case Service::QrzCq:
    case Service::Callook: return labelToLineEnd(u"Class", 7, 7);
    case Service::HamCall: return labelToLineEnd(u"License Class", 15, 15);
    case Service::None: break;
    }
    return {};
}

QString CallbookFields::PrevCall() {
    // Kept for the windows that read it: no service's page yields a previous call, so it is
    // always empty and leaves ParseCursor where it is.
    return {};
}

QString CallbookFields::DateOfBirth() {
    switch (service()) {
    case Service::Qrz: return labelToLineEnd(u"Born", 4, 4);
    case Service::HamCall: return vb::right(labelToLineEnd(u"Birth Date", 12, 12), 4);  // the year
    default: return {};
    }
}

QString CallbookFields::Grid() {
    switch (service()) {
    case Service::Qrz: return labelToLineEnd(u"Grid Square", 11, 11);
    // Callook's grid starts two characters further on, with the length unchanged.
    case Service::Callook: return labelToLineEnd(u"Grid Square", 13, 11);
    default: return {};
    }
}

QString CallbookFields::WebAddress() {
    return service() == Service::Qrz ? labelToLineEnd(u"Web Page", 8, 8) : QString();
}

}  // namespace lookup
