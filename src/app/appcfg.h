#pragma once
// Reading Pictaro's app.cfg: line 1 is the own call sign, line 59 the language digit.
#include "common/status.h"

#include <QString>
#include <QStringList>

struct AppCfg {
    QString myCall;
    QString language;
};

// The language for line 59 of app.cfg: one digit from the table, else the line as it stands.
QString LanguageFromAppCfg(const QString& line59);

// Reads lines 1 to 59 (Windows-1252; CR LF, LF or CR line ends). Fails with the message to show
// when the file cannot be read or has fewer than 59 lines.
Result<AppCfg> ReadAppCfg(const QString& path);

// Splits text into lines at CR LF, CR or LF; a final line end does not start another line.
QStringList SplitLines(const QString& text);
