#include "app/nicknames.h"

#include "common/cp1252.h"

#include <QSaveFile>

namespace {

bool isBlank(QChar c) { return c == u' ' || c == u'\t'; }

// Whether the list reader would give back something else than the entry written as it is: it
// splits at commas and line ends, drops blanks around an item and takes an item that begins with
// a double quote as a quoted one.
bool needsQuotes(const QString& entry) {
    if (isBlank(entry.front()) || entry.front() == u'"' || isBlank(entry.back())) return true;
    for (const QChar c : entry)
        if (c == u',' || c == u'\r' || c == u'\n') return true;
    return false;
}

}  // namespace

QByteArray NicknameFileBytes(const QStringList& entries) {
    QString text;
    for (const QString& entry : entries) {
        if (entry.isEmpty()) continue;
        if (needsQuotes(entry)) {
            // A quoted item ends at the next double quote: none may stand inside it.
            text += u'"' + QString(entry).replace(u'"', u'\'') + u'"';
        } else {
            text += entry;
        }
        text += QStringLiteral("\r\n");
    }
    return cp1252::encode(text);
}

Status SaveNicknames(const QString& path, const QStringList& entries) {
    QSaveFile file(path);
    const QByteArray bytes = NicknameFileBytes(entries);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit()) {
        const QString why = file.errorString();
        file.cancelWriting();
        return Status::Failed(why);
    }
    return Status::Ok();
}
