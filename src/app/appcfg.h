#pragma once
// Reading Pictaro's app.cfg: line 1 is the own call sign, line 59 the language digit.
#include <QString>
#include <QStringList>
#include <optional>

struct AppCfg {
    QString myCall;
    QString language;
};

// The language for line 59 of app.cfg: one digit from the table, else the line as it stands.
QString LanguageFromAppCfg(const QString& line59);

// Reads lines 1 to 59 (Windows-1252; CR LF, LF or CR line ends). nullopt with *error set when
// the file cannot be read or has fewer than 59 lines.
std::optional<AppCfg> ReadAppCfg(const QString& path, QString* error);

// Splits text into lines at CR LF, CR or LF; a final line end does not start another line.
QStringList SplitLines(const QString& text);
