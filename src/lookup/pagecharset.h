#pragma once
// Text of a downloaded page. A page is read in the charset it declares: a byte-order mark first,
// then the charset of the HTTP Content-Type header, then a <meta charset> or
// <meta http-equiv="Content-Type"> near the top of the page. A page that declares nothing (or
// only charsets we do not know) is read as UTF-8 when its bytes are valid UTF-8, else as
// Windows-1252. Labels are read as browsers read them: ISO-8859-1 and US-ASCII mean
// Windows-1252, and a <meta> that claims UTF-16 means UTF-8.
#include <QByteArray>
#include <QByteArrayView>
#include <QString>

namespace lookup {

// contentType: the value of the HTTP Content-Type header, empty when there was none.
QString decodePageBytes(QByteArrayView bytes, QByteArrayView contentType = {});

// The same text as decodePageBytes gives, in UTF-8: the bytes themselves (behind a byte-order
// mark) when they are to be read as UTF-8 and are valid UTF-8, else the decoded text, which is
// put into `storage`. The result points into `bytes` or `storage`.
QByteArrayView pageUtf8(QByteArrayView bytes, QByteArrayView contentType, QByteArray& storage);

// The charset label of a Content-Type value ("text/html; charset=\"UTF-8\"" gives "UTF-8"),
// empty when it names none.
QByteArray charsetFromContentType(QByteArrayView contentType);

// The charset label the first <meta> that declares one names within the first kMetaScanBytes
// bytes of the page; empty when there is none.
inline constexpr qsizetype kMetaScanBytes = 8192;
QByteArray charsetFromMeta(QByteArrayView page);

}  // namespace lookup
