// libFuzzer target: a downloaded call-book page through pageToText and every field parser of
// the selected service, read in the windows' order, again in a shuffled order from wherever the
// cursor stopped, and once more on a shortened page with the cursor left over; plus CleanCall on
// a slice of the input and on the call passed to cName.
//
// Input layout:
//   byte 0  bits 0-2  the Database value, 0..7 (1..5 select a service; 0, 6 and 7 select none)
//           bits 3-7  the call passed to cName: 0 "", 1..10 one of kCalls, 11..31 the first
//                     word of the page text (so the page itself can name any call)
//   byte 1  bits 0-1  Content-Type header: none, charset utf-8, iso-8859-1, utf-16le
//           bits 2-7  seed of the second pass's reading order
//   rest    the page bytes
//
// Any broken property is reported on stderr and ends the run with abort(), which libFuzzer
// records as a crash.
#include "common/cp1252.h"
#include "common/vbtext.h"
#include "lookup/callbookfields.h"
#include "lookup/cleancall.h"
#include "lookup/htmldecode.h"

#include <QByteArrayView>
#include <QString>
#include <QStringView>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <utility>
#include <vector>

namespace {

using lookup::CallbookFields;
using lookup::FieldEvent;
using lookup::Service;

// The calls of the fixture pages, so that seeds made from them reach the "found" paths.
constexpr const char16_t* kCalls[] = {u"",       u"G4ABC", u"LA1ABC", u"DL1ABC", u"DL2XYZ", u"LU1ABC",
                                      u"F5ABC",  u"W1XYZ", u"KP4ABC", u"EA4ABC", u"XX9XYZ"};
constexpr std::size_t kCallCount = sizeof(kCalls) / sizeof(kCalls[0]);

constexpr const char* kContentTypes[] = {nullptr, "text/html; charset=utf-8", "text/html; charset=iso-8859-1",
                                         "text/html; charset=utf-16le"};

[[noreturn]] void fail(const char* what, const QString& detail = {}) {
    std::fprintf(stderr, "fuzz_callbook_page: %s %s\n", what, detail.toUtf8().constData());
    std::abort();
}

void check(bool ok, const char* what, const QString& detail = {}) {
    if (!ok) fail(what, detail);
}

// Whether `needle` occurs in `hay`, in linear time (Knuth-Morris-Pratt): pages and fields can
// both be long and repetitive, where a plain search goes quadratic.
bool contains(QStringView hay, QStringView needle) {
    if (needle.isEmpty()) return true;
    if (needle.size() > hay.size()) return false;
    std::vector<qsizetype> border(static_cast<std::size_t>(needle.size()), 0);
    for (qsizetype i = 1, k = 0; i < needle.size(); ++i) {
        while (k > 0 && needle[i] != needle[k]) k = border[static_cast<std::size_t>(k - 1)];
        if (needle[i] == needle[k]) ++k;
        border[static_cast<std::size_t>(i)] = k;
    }
    for (qsizetype i = 0, k = 0; i < hay.size(); ++i) {
        while (k > 0 && hay[i] != needle[k]) k = border[static_cast<std::size_t>(k - 1)];
        if (hay[i] == needle[k]) ++k;
        if (k == needle.size()) return true;
    }
    return false;
}

// Where a field may leave ParseCursor: 0 (its delimiter was missing), or the 1-based position
// of a delimiter it searched for: the CR of a CR LF, a comma or a blank.
bool cursorAtDelimiter(const QString& page, int32_t cursor) {
    if (cursor == 0) return true;
    if (cursor < 1 || cursor > page.size()) return false;
    const QChar c = page[cursor - 1];
    if (c == u'\r') return cursor < page.size() && page[cursor] == u'\n';
    return c == u',' || c == u' ';
}

enum class Field { CName, Add1, Add2, Ctry, Latitude, Longitude, Class, PrevCall, DateOfBirth, Grid, WebAddress };
constexpr std::array<Field, 11> kWindowsOrder = {Field::CName,    Field::Add1,     Field::Add2,        Field::Ctry,
                                                 Field::Latitude, Field::Longitude, Field::Class,      Field::PrevCall,
                                                 Field::DateOfBirth, Field::Grid,  Field::WebAddress};

// Whether the field reads the page at all for this service; one that does not gives its
// default and leaves ParseCursor alone.
bool readsPage(Field field, Service service) {
    if (service == Service::None) return false;
    switch (field) {
    case Field::Ctry: return service != Service::Callook;
    case Field::PrevCall: return false;
    case Field::DateOfBirth: return service == Service::Qrz || service == Service::HamCall;
    case Field::Grid: return service == Service::Qrz || service == Service::Callook;
    case Field::WebAddress: return service == Service::Qrz;
    default: return true;
    }
}

class Reader {
public:
    Reader(CallbookFields& fields, const QString& call) : fields_(fields), call_(call) {
        fields_.onEvent = [this](FieldEvent event, const QString& ca) {
            ++events_;
            check(ca == call_, "event carries another call than was passed to cName", ca);
            check(event == FieldEvent::CallNotFound || fields_.service() == Service::Qrz,
                  "LoginRequired raised by a service other than QRZ");
            lastEvent_ = event;
        };
    }

    // Reads one field and checks what holds for every field on every page. With `staleCursor`
    // the cursor may start beyond this page (left over from a longer one).
    void read(Field field, bool staleCursor) {
        const Service service = fields_.service();
        const int32_t before = fields_.ParseCursor;
        const int eventsBefore = events_;
        QString text;
        double number = 0.0;
        bool isNumber = false;
        switch (field) {
        case Field::CName: text = fields_.cName(call_); break;
        case Field::Add1: text = fields_.Add1(); break;
        case Field::Add2: text = fields_.Add2(); break;
        case Field::Ctry: text = fields_.ctry(); break;
        case Field::Latitude: number = fields_.Latitude(); isNumber = true; break;
        case Field::Longitude: number = fields_.Longitude(); isNumber = true; break;
        case Field::Class: text = fields_.Class(); break;
        case Field::PrevCall: text = fields_.PrevCall(); break;
        case Field::DateOfBirth: text = fields_.DateOfBirth(); break;
        case Field::Grid: text = fields_.Grid(); break;
        case Field::WebAddress: text = fields_.WebAddress(); break;
        }
        const QString& page = fields_.PageText;
        const int32_t after = fields_.ParseCursor;
        const int raised = events_ - eventsBefore;

        // The cursor moves only to a delimiter of this page, or to 0.
        if (after != before || !staleCursor)
            check(cursorAtDelimiter(page, after), "ParseCursor is not 0 or at a delimiter of the page",
                  QString::number(after) + u'/' + QString::number(page.size()));
        if (!readsPage(field, service)) check(after == before, "a field that reads nothing moved ParseCursor");

        // Only cName raises events, at most one per call, none without a service.
        check(raised == 0 || field == Field::CName, "an event from a field other than cName");
        check(raised <= 1, "cName raised more than one event");
        check(raised == 0 || service != Service::None, "an event without a service");
        // eHam, QRZ and QRZCQ give no name with an event; Callook and HamCall still may.
        if (raised == 1 && (service == Service::EHam || service == Service::Qrz || service == Service::QrzCq))
            check(text.isEmpty(), "a name together with an event", text);
        if (raised == 1 && lastEvent_ == FieldEvent::LoginRequired) check(text.isEmpty(), "a name with LoginRequired");

        if (isNumber) {
            check(std::isfinite(number), "a coordinate that is not finite");
            if (service == Service::None) check(number == 0.0, "a coordinate without a service");
            return;
        }
        if (field == Field::Ctry && service == Service::Callook) {
            check(text == u"U.S.A.", "Callook country", text);
            return;
        }
        if (!readsPage(field, service)) {
            check(text.isEmpty(), "a field that reads nothing gave text", text);
            return;
        }
        // Every other field is a piece of the page.
        check(text.size() <= page.size(), "a field longer than the page", text);
        check(contains(page, text), "a field that is no piece of the page", text);
    }

private:
    CallbookFields& fields_;
    const QString call_;
    int events_ = 0;
    FieldEvent lastEvent_ = FieldEvent::CallNotFound;
};

// A deterministic shuffle of the eleven fields (Fisher-Yates on a small linear congruential
// generator), so that a reproducer gives the same order on every build.
std::array<Field, 11> shuffledOrder(unsigned seed) {
    std::array<Field, 11> order = kWindowsOrder;
    uint32_t state = 0x9E3779B9u ^ (seed * 0x85EBCA6Bu);
    for (std::size_t i = order.size() - 1; i > 0; --i) {
        state = state * 1664525u + 1013904223u;
        const std::size_t j = (state >> 8) % (i + 1);
        std::swap(order[i], order[j]);
    }
    return order;
}

// The call CleanCall gives back is empty, or at most six letters and digits that are also what
// it left in its argument. The digit test comes before a suffix is cut ("DLABC/1" gives
// "DLABC"), so the digit need not survive; it must have been in the input, though (or a
// slashed O that became one).
void checkCleanCall(const QString& input) {
    QString call = input;
    const QString result = CleanCall(call);
    if (result.isEmpty()) return;
    check(result == call, "CleanCall returned other text than it left in its argument", result);
    check(result.size() <= 6, "CleanCall gave a call longer than 6", result);
    for (const QChar c : result)
        check(vb::isAlphaNumeric(c), "CleanCall kept a character that is no letter or digit", result);
    bool digit = false;
    for (const QChar c : input.toUpper()) digit = digit || (c >= u'0' && c <= u'9') || c == QChar(0x00D8);
    check(digit, "CleanCall accepted a text without a digit", input);
}

// The first word of the text (up to a blank, tab or line end), at most 16 characters.
QString firstWord(const QString& text) {
    qsizetype end = 0;
    while (end < text.size() && end < 16 && text[end] != u' ' && text[end] != u'\t' && text[end] != u'\r' &&
           text[end] != u'\n')
        ++end;
    return text.left(end);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    if (size < 2) return 0;
    const uint8_t select = data[0];
    const uint8_t options = data[1];
    const QByteArrayView page(reinterpret_cast<const char*>(data + 2), static_cast<qsizetype>(size - 2));
    const char* contentType = kContentTypes[options & 3];

    const QString text = lookup::pageToText(page, contentType ? QByteArrayView(contentType) : QByteArrayView());
    // Lines are joined with CR LF, and no line feed stands alone.
    for (qsizetype i = 0; i < text.size(); ++i)
        if (text[i] == u'\n') check(i > 0 && text[i - 1] == u'\r', "a line feed without its carriage return");

    const unsigned callIndex = select >> 3;
    const QString call =
        callIndex < kCallCount ? QString::fromUtf16(kCalls[callIndex]) : firstWord(text);

    CallbookFields fields;
    fields.Database = static_cast<int16_t>(select & 7);
    fields.PageText = text;
    Reader reader(fields, call);

    // As the windows read a page that arrived, then in another order from where the cursor is.
    for (const Field f : kWindowsOrder) reader.read(f, false);
    for (const Field f : shuffledOrder(options >> 2)) reader.read(f, false);

    // The next page is shorter; the cursor stays where the last one left it.
    fields.PageText = text.left(text.size() / 2);
    for (const Field f : kWindowsOrder) reader.read(f, true);

    // CleanCall on what an operator might type or paste: the start of the page bytes read as
    // UTF-8 and as Windows-1252, and the call that was looked up.
    const QByteArrayView slice = page.first(std::min<qsizetype>(page.size(), 24));
    checkCleanCall(QString::fromUtf8(slice));
    checkCleanCall(cp1252::decode(slice.data(), slice.size()));
    checkCleanCall(call);
    return 0;
}
