#pragma once
// Modal message boxes of the program.
#include <QString>

class QWidget;

enum class MsgIcon { None, Critical, Question, Exclamation, Information };

void ShowMessageBox(QWidget* owner, const QString& text, const QString& title, MsgIcon icon);
