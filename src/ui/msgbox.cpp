#include "ui/msgbox.h"

#include <QMessageBox>

void ShowMessageBox(QWidget* owner, const QString& text, const QString& title, MsgIcon icon) {
    QMessageBox box(owner);
    box.setWindowTitle(title);
    box.setTextFormat(Qt::PlainText);
    box.setText(QString(text).replace(QStringLiteral("\r\n"), QStringLiteral("\n")));
    switch (icon) {
    case MsgIcon::Critical: box.setIcon(QMessageBox::Critical); break;
    case MsgIcon::Question: box.setIcon(QMessageBox::Question); break;
    case MsgIcon::Exclamation: box.setIcon(QMessageBox::Warning); break;
    case MsgIcon::Information: box.setIcon(QMessageBox::Information); break;
    case MsgIcon::None: break;
    }
    box.setWindowFlag(Qt::WindowStaysOnTopHint);
    box.exec();
}
