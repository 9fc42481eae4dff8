#pragma once
#include "db/callrecord.h"

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <initializer_list>

#include <ostream>

// Readable failure messages for texts.
inline void PrintTo(const QString& s, std::ostream* os) { *os << '"' << s.toStdString() << '"'; }
inline void PrintTo(const QStringList& list, std::ostream* os) {
    *os << '{';
    for (qsizetype i = 0; i < list.size(); ++i) *os << (i ? ", \"" : "\"") << list[i].toStdString() << '"';
    *os << '}';
}

namespace testutil {

// The 167 bytes of a record with the given call and name and the other fields blank.
inline QByteArray recordBytes(const QString& call, const QString& name = QStringLiteral("X")) {
    CallRecord r;
    r.setField(CallField::Call, call);
    r.setField(CallField::Name, name);
    return QByteArray(r.bytes().data(), CallRecord::kSize);
}

inline QByteArray records(std::initializer_list<const char*> calls) {
    QByteArray all;
    for (const char* c : calls) all += recordBytes(QString::fromLatin1(c), QStringLiteral("Op ") + QLatin1String(c));
    return all;
}

inline QByteArray readFile(const QString& path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<missing>");
}

inline void writeFile(const QString& path, const QByteArray& bytes) {
    QFile f(path);
    if (f.open(QIODevice::WriteOnly | QIODevice::Truncate)) f.write(bytes);
}

}  // namespace testutil
