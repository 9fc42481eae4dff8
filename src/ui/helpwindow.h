#pragma once
// The help text in a plain read-only window of the program: for a desktop that has no viewer for
// text files.
#include <QPlainTextEdit>
#include <QString>

// The help file's text: UTF-8 when its bytes are valid UTF-8, else Windows-1252. A file that is
// missing, cannot be read or is too large to show gives a text that says so and names the file.
QString ReadHelpText(const QString& file);
inline constexpr qint64 kHelpMaxBytes = 4 << 20;

class HelpWindow : public QPlainTextEdit {
    Q_OBJECT

public:
    // title: the window's caption (the setup menu's help item).
    HelpWindow(const QString& file, const QString& title, QWidget* parent = nullptr);
};
