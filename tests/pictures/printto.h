#pragma once
// Readable failure messages for texts.
#include <QString>
#include <ostream>

inline void PrintTo(const QString& s, std::ostream* os) { *os << '"' << s.toStdString() << '"'; }
