#include "app/startup.h"

#include "common/cp1252.h"
#include "common/vbtext.h"
#include "db/calldatabase.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

QStringList MapCatalogue(const QString& dataPath) {
    QStringList maps;
    const QDir dir(dataPath + QStringLiteral("/Maps"));
    for (const QString& name : dir.entryList(QDir::Files, QDir::Name | QDir::IgnoreCase)) {
        if (name.size() < 4) continue;  // no extension to take off
        const QString stem = name.left(name.size() - 4);
        if (stem.right(3) == QLatin1String("Map")) maps.append(name);
    }
    return maps;
}

QStringList ParseNicknames(const QString& text) {
    QStringList items;
    qsizetype i = 0;
    const qsizetype n = text.size();
    while (i < n) {
        while (i < n && (text[i] == u' ' || text[i] == u'\t')) ++i;
        QString item;
        if (i < n && text[i] == u'"') {
            const qsizetype close = text.indexOf(u'"', i + 1);
            const qsizetype end = close < 0 ? n : close;
            item = text.mid(i + 1, end - i - 1);
            i = close < 0 ? n : close + 1;
            while (i < n && text[i] != u',' && text[i] != u'\r' && text[i] != u'\n') ++i;
        } else {
            const qsizetype start = i;
            while (i < n && text[i] != u',' && text[i] != u'\r' && text[i] != u'\n') ++i;
            item = text.mid(start, i - start);
            while (!item.isEmpty() && (item.back() == u' ' || item.back() == u'\t')) item.chop(1);
        }
        if (!item.isEmpty()) items.append(item);
        if (i < n) ++i;  // the separator
    }
    return items;
}

std::optional<QStringList> ReadNicknames(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return std::nullopt;
    return ParseNicknames(cp1252::decode(file.readAll()));
}

PictaroFolder ResolvePictaroFolder(const QString& installSetting, QString (*findProgPath)(const QString&)) {
    if (QFileInfo(installSetting + QStringLiteral("Pictaro.exe")).isFile()) return {installSetting, false, {}};
    const QString running = findProgPath(QStringLiteral("Pictaro.exe"));
    if (QFileInfo(running + QStringLiteral("app.cfg")).isFile() && !running.isEmpty()) return {running, true, {}};
    return {running, false, QStringLiteral("File not found\r\n") + running + QStringLiteral("app.cfg")};
}

Position OwnPosition(double savedLat, double savedLon, const QString& myCall, const QString& callFilePath) {
    if (savedLat != 0 || savedLon != 0) return {savedLat, savedLon};
    CallDatabase db(callFilePath);
    if (db.FindCallRecord(myCall) == 0) return {savedLat, savedLon};
    return {vb::val(db.CurrentRecord.Lat()), vb::val(db.CurrentRecord.Lon())};
}
