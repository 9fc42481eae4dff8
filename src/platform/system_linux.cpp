// Linux: the data folder from the XDG variables and the process scan through /proc; no X11 here.
#include "platform/system.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <algorithm>
#include <vector>

namespace platform {

QString GetAppDataFolder() {
    const QByteArray xdg = qgetenv("XDG_DATA_HOME");
    if (!xdg.isEmpty() && QDir::isAbsolutePath(QString::fromLocal8Bit(xdg))) return QString::fromLocal8Bit(xdg);
    const QString home = QDir::homePath();
    return home.isEmpty() ? QString() : home + QStringLiteral("/.local/share");
}

namespace {

QString winePrefixOf(const QByteArray& environ) {
    QString prefix;
    QString home;
    for (const QByteArray& entry : environ.split('\0')) {
        if (entry.startsWith("WINEPREFIX=")) prefix = QString::fromLocal8Bit(entry.mid(11));
        else if (entry.startsWith("HOME=")) home = QString::fromLocal8Bit(entry.mid(5));
    }
    if (!prefix.isEmpty()) return prefix;
    if (home.isEmpty()) home = QDir::homePath();
    return home + QStringLiteral("/.wine");
}

// "C:\Program Files\Pictaro\Pictaro.exe" -> the Linux path through the prefix's drive links.
QString mapWindowsPath(const QString& path, const QString& prefix) {
    if (path.size() < 3 || !path[0].isLetter() || path[1] != u':' || path[2] != u'\\') return {};
    const QString drive = path.left(2).toLower();
    QString root = QFileInfo(prefix + QStringLiteral("/dosdevices/") + drive).canonicalFilePath();
    if (root.isEmpty() && drive == QLatin1String("c:")) root = prefix + QStringLiteral("/drive_c");
    if (root.isEmpty()) return {};
    return root + QString(path.mid(2)).replace(u'\\', u'/');
}

QString folderOf(const QString& path) {
    const qsizetype slash = path.lastIndexOf(u'/');
    return slash < 0 ? QString() : path.left(slash + 1);
}

}  // namespace

QString DefaultPictaroInstall() {
    QString prefix = QString::fromLocal8Bit(qgetenv("WINEPREFIX"));
    if (prefix.isEmpty()) prefix = QDir::homePath() + QStringLiteral("/.wine");
    return prefix + QStringLiteral("/drive_c/Program Files/Pictaro/");
}

QString FindProgPath(const QString& name) {
    if (name.isEmpty()) return {};
    QDir proc(QStringLiteral("/proc"));
    std::vector<long> pids;
    for (const QString& entry : proc.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        bool ok = false;
        const long pid = entry.toLong(&ok);
        if (ok) pids.push_back(pid);
    }
    std::sort(pids.begin(), pids.end());
    for (const long pid : pids) {
        const QString dir = QStringLiteral("/proc/") + QString::number(pid);
        const QString exe = QFile::symLinkTarget(dir + QStringLiteral("/exe"));
        if (!exe.isEmpty() && exe.contains(name, Qt::CaseSensitive)) return folderOf(exe);
        QFile cmdline(dir + QStringLiteral("/cmdline"));
        if (!cmdline.open(QIODevice::ReadOnly)) continue;
        for (const QByteArray& arg : cmdline.readAll().split('\0')) {
            const QString text = QString::fromLocal8Bit(arg);
            if (!text.contains(name, Qt::CaseSensitive)) continue;
            if (text.startsWith(u'/')) return folderOf(text);
            QFile environ(dir + QStringLiteral("/environ"));
            const QByteArray env = environ.open(QIODevice::ReadOnly) ? environ.readAll() : QByteArray();
            const QString mapped = mapWindowsPath(text, winePrefixOf(env));
            if (!mapped.isEmpty()) return folderOf(mapped);
        }
    }
    return {};
}

}  // namespace platform
