#include "app/settings.h"

#include "common/vbtext.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>

namespace settings {
namespace {
QString path(Key key) { return QLatin1String(key.section) + u'/' + QLatin1String(key.key); }
}  // namespace

QString GetSetting(Key key, const QString& fallback) {
    const QSettings s(QSettings::UserScope, QLatin1String(kApplication));
    const QVariant value = s.value(path(key));
    return value.isValid() ? value.toString() : fallback;
}

void SaveSetting(Key key, const QString& value) {
    QSettings s(QSettings::UserScope, QLatin1String(kApplication));
    const QVariant stored = s.value(path(key));
    if (stored.isValid() && stored.toString() == value) return;
    s.setValue(path(key), value);
    s.sync();
}

int16_t GetInt16Setting(Key key, int16_t fallback) {
    const auto number = vb::parseNumber(GetSetting(key, QString::number(fallback)));
    if (!number) return fallback;
    return vb::toInt16(*number).value_or(fallback);
}

int32_t GetInt32Setting(Key key, int32_t fallback) {
    const auto number = vb::parseNumber(GetSetting(key, QString::number(fallback)));
    if (!number) return fallback;
    return vb::toInt32(*number).value_or(fallback);
}

double GetDoubleSetting(Key key, double fallback) {
    return vb::parseNumber(GetSetting(key, QString::number(fallback, 'g', 17))).value_or(fallback);
}

QString SettingsFolder() {
    const QSettings s(QSettings::UserScope, QLatin1String(kApplication));
    const QString folder = QFileInfo(s.fileName()).absolutePath();
    QDir().mkpath(folder);
    return folder;
}

}  // namespace settings
