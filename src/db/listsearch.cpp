#include "db/listsearch.h"

int FindStringExact(const QStringList& list, const QString& text) {
    if (text.isEmpty()) return -1;
    const qsizetype size = text.size();
    for (qsizetype i = 0; i < list.size(); ++i) {
        const QString& entry = list.at(i);
        if (entry.size() == size && entry.compare(text, Qt::CaseInsensitive) == 0) return static_cast<int>(i);
    }
    return -1;
}

int FindString(const QStringList& list, const QString& text) {
    if (text.isEmpty()) return -1;
    for (qsizetype i = 0; i < list.size(); ++i)
        if (list.at(i).startsWith(text, Qt::CaseInsensitive)) return static_cast<int>(i);
    return -1;
}
