#pragma once
// The two searches of a list box, both from the top and without regard to case. "" finds nothing.
#include <QString>
#include <QStringList>

// The first entry equal to text, else -1.
int FindStringExact(const QStringList& list, const QString& text);
// The first entry that begins with text, else -1.
int FindString(const QStringList& list, const QString& text);
