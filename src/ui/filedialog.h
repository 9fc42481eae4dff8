#pragma once
// The open and save dialogs behind one call with optional arguments, over QFileDialog so that
// each desktop shows its own dialog. Filters come in the common dialogs' form: pairs of a
// description and a pattern, each ended by a NUL, the list ended by one more NUL.
#include <QFileDialog>
#include <QString>
#include <QStringList>
#include <functional>
#include <optional>

class QWidget;

// The common dialogs' flags that the dialog reads or reports.
namespace ofn {
inline constexpr int kReadOnly = 0x1;
inline constexpr int kOverwritePrompt = 0x2;
inline constexpr int kHideReadOnly = 0x4;
inline constexpr int kNoChangeDir = 0x8;
inline constexpr int kAllowMultiSelect = 0x200;
inline constexpr int kExtensionDifferent = 0x400;  // out: the chosen name's extension is not the default one
inline constexpr int kPathMustExist = 0x800;
inline constexpr int kFileMustExist = 0x1000;
}  // namespace ofn

// The file-name buffer holds this many characters.
inline constexpr int kFileNameBufferChars = 256;

// filter + description + NUL + pattern + NUL.
QString AddFilterItem(const QString& filter, const QString& description, const QString& pattern = QStringLiteral("*.*"));

// The part before the first NUL; the whole text when it holds none.
QString StripNulls(const QString& text);

// The filter list in Qt's form: "description (patterns)" for each complete pair, the patterns
// separated by spaces (";" in the common dialogs). A description that already ends in its
// patterns in brackets is kept as it is. No filter: an empty list (the dialog lists all files).
QStringList QtNameFilters(const QString& filter);

// The name the dialog proposes: the argument followed by NULs, cut to the buffer, up to its NUL.
QString ProposedFileName(const QString& fileName);

// Everything the dialog is made from.
struct FileDialogSetup {
    QString title;
    QString folder;
    QString proposedName;
    QStringList nameFilters;
    QString selectedFilter;  // "" with no filters
    QString defaultSuffix;   // without the leading point
    QFileDialog::AcceptMode acceptMode = QFileDialog::AcceptOpen;
    QFileDialog::FileMode fileMode = QFileDialog::AnyFile;
    QFileDialog::Options options;
};

FileDialogSetup MakeFileDialogSetup(int flags, const QString& initialFolder, const QString& filter, int filterIndex,
                                    const QString& defaultExt, const QString& fileName, const QString& title, bool open);

// The flags after a choice: the ones passed, with kExtensionDifferent telling whether the chosen
// name's extension differs from the default one (when one was given).
int FlagsAfterChoice(int flags, const QString& chosen, const QString& defaultExt);

// Shows the dialog and gives the chosen path, "" when it was cancelled. flags (when given) is
// read, and on a choice written back. How the dialog is run can be replaced (tests): it gets the
// setup and the owner and gives the chosen path, or nothing on cancel.
using FileDialogRunner = std::function<std::optional<QString>(const FileDialogSetup&, QWidget* owner)>;
QString ShowFileDialog(int* flags = nullptr, const QString& initialFolder = QString(), const QString& filter = QString(),
                       int filterIndex = 1, const QString& defaultExt = QString(), const QString& fileName = QString(),
                       const QString& title = QString(), QWidget* owner = nullptr, bool open = true,
                       const FileDialogRunner& run = {});

// The runner that shows a QFileDialog, modal to owner.
std::optional<QString> RunQtFileDialog(const FileDialogSetup& setup, QWidget* owner);
