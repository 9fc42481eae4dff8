#include "app/appcfg.h"

#include "common/cp1252.h"

#include <QFile>
#include <array>

QString LanguageFromAppCfg(const QString& line59) {
    // 3 and 6 have no language here: those digits, like any other text, stay as they are.
    static constexpr std::array<std::pair<char16_t, const char*>, 8> kDigits{{
        {u'0', "English"}, {u'1', "French"}, {u'2', "German"}, {u'4', "Japanese"},
        {u'5', "Dutch"}, {u'7', "Polish"}, {u'8', "Spanish"}, {u'9', "Russian"}}};
    if (line59.size() == 1)
        for (const auto& [digit, language] : kDigits)
            if (line59[0] == QChar(digit)) return QLatin1String(language);
    return line59;
}

QStringList SplitLines(const QString& text) {
    QStringList lines;
    qsizetype start = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] != u'\r' && text[i] != u'\n') continue;
        lines.append(text.mid(start, i - start));
        if (text[i] == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n') ++i;
        start = i + 1;
    }
    if (start < text.size()) lines.append(text.mid(start));
    return lines;
}

Result<AppCfg> ReadAppCfg(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return Status::Failed(QStringLiteral("File not found\r\n") + path);
    // app.cfg is a few kilobytes; read no more than its first megabyte.
    const QStringList lines = SplitLines(cp1252::decode(file.read(1 << 20)));
    if (lines.size() < 59) return Status::Failed(QStringLiteral("Input past end of file\r\n") + path);
    return AppCfg{lines[0], LanguageFromAppCfg(lines[58])};
}
