// HTMLDecode and pageToText over the renderer of lookup/html/ (render.h, and the parts it
// names: the prescan, the text marks, the parse arena, the boxes, the walk and the text sink).
#include "lookup/htmldecode.h"

#include "lookup/html/render.h"
#include "lookup/pagecharset.h"

#include <QByteArray>

#include <string_view>

namespace lookup {

QString HTMLDecode(QStringView html) {
    const QByteArray utf8 = html.toUtf8();
    return lookup::html::renderUtf8(std::string_view(utf8.constData(), static_cast<size_t>(utf8.size()))).text;
}

QString pageToText(QByteArrayView bytes, QByteArrayView contentType) {
    QByteArray decoded;
    const QByteArrayView utf8 = pageUtf8(bytes, contentType, decoded);
    return lookup::html::renderUtf8(std::string_view(utf8.data(), static_cast<size_t>(utf8.size()))).text;
}

}  // namespace lookup
