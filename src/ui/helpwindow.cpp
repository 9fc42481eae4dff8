#include "ui/helpwindow.h"

#include "common/cp1252.h"
#include "ui/windowhelpers.h"

#include <QFile>
#include <QFileInfo>
#include <QFontDatabase>

QString ReadHelpText(const QString& file) {
    const QFileInfo info(file);
    if (!info.exists()) return QStringLiteral("The help file was not found:\n") + file;
    if (info.isFile() && info.size() > kHelpMaxBytes)
        return QStringLiteral("The help file is too large to show:\n") + file;
    QFile in(file);
    if (!info.isFile() || !in.open(QIODevice::ReadOnly)) {
        const QString why = info.isDir() ? QStringLiteral("it is a folder") : in.errorString();
        return QStringLiteral("The help file could not be read:\n") + file + u'\n' + why;
    }
    // Read no further than the limit, whatever the file has grown to since.
    const QByteArray bytes = in.read(kHelpMaxBytes + 1);
    if (bytes.size() > kHelpMaxBytes) return QStringLiteral("The help file is too large to show:\n") + file;
    if (in.error() != QFileDevice::NoError)
        return QStringLiteral("The help file could not be read:\n") + file + u'\n' + in.errorString();
    return decodeUtf8OrCp1252(bytes);
}

HelpWindow::HelpWindow(const QString& file, const QString& title, QWidget* parent) : QPlainTextEdit(parent) {
    setWindowFlag(Qt::Window);
    setObjectName(QStringLiteral("frmHelp"));
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(title);
    setReadOnly(true);
    setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    setPlainText(ReadHelpText(file));
    resize(640, 480);
}
