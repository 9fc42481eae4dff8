#include "ui/filedialog.h"

#include <QDir>
#include <QFileInfo>
#include <QWidget>

QString AddFilterItem(const QString& filter, const QString& description, const QString& pattern) {
    return filter + description + QChar(0) + pattern + QChar(0);
}

QString StripNulls(const QString& text) {
    const qsizetype nul = text.indexOf(QChar(0));
    return nul < 0 ? text : text.left(nul);
}

QStringList QtNameFilters(const QString& filter) {
    QStringList result;
    // The list ends at the first empty part (the closing NUL); a description without its pattern
    // is left out.
    const QStringList parts = filter.split(QChar(0));
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
        const QString& description = parts[i];
        if (description.isEmpty()) break;
        const QString patterns = parts[i + 1].split(u';', Qt::SkipEmptyParts).join(u' ').trimmed();
        if (patterns.isEmpty()) break;
        const QString bracketed = QStringLiteral("(") + patterns + QStringLiteral(")");
        result << (description.endsWith(bracketed) ? description : description + u' ' + bracketed);
    }
    return result;
}

QString ProposedFileName(const QString& fileName) {
    return StripNulls((fileName + QString(kFileNameBufferChars, QChar(0))).left(kFileNameBufferChars));
}

FileDialogSetup MakeFileDialogSetup(int flags, const QString& initialFolder, const QString& filter, int filterIndex,
                                    const QString& defaultExt, const QString& fileName, const QString& title, bool open) {
    FileDialogSetup s;
    s.title = title;
    s.folder = initialFolder.isEmpty() ? QDir::currentPath() : initialFolder;
    s.proposedName = ProposedFileName(fileName);
    s.nameFilters = QtNameFilters(filter);
    // The index counts from 1; one beyond the list (or 0) takes the first filter, as the common dialogs do.
    if (!s.nameFilters.isEmpty())
        s.selectedFilter = s.nameFilters.value(filterIndex - 1, s.nameFilters.first());
    s.defaultSuffix = defaultExt.startsWith(u'.') ? defaultExt.mid(1) : defaultExt;
    s.acceptMode = open ? QFileDialog::AcceptOpen : QFileDialog::AcceptSave;
    if (open && (flags & ofn::kAllowMultiSelect)) s.fileMode = QFileDialog::ExistingFiles;
    else if (open && (flags & ofn::kFileMustExist)) s.fileMode = QFileDialog::ExistingFile;
    else s.fileMode = QFileDialog::AnyFile;
    if (!open && !(flags & ofn::kOverwritePrompt)) s.options |= QFileDialog::DontConfirmOverwrite;
    if (flags & ofn::kHideReadOnly) s.options |= QFileDialog::ReadOnly;
    return s;
}

int FlagsAfterChoice(int flags, const QString& chosen, const QString& defaultExt) {
    const QString ext = defaultExt.startsWith(u'.') ? defaultExt.mid(1) : defaultExt;
    const bool different = !ext.isEmpty() && QFileInfo(chosen).suffix().compare(ext, Qt::CaseInsensitive) != 0;
    return different ? flags | ofn::kExtensionDifferent : flags & ~ofn::kExtensionDifferent;
}

std::optional<QString> RunQtFileDialog(const FileDialogSetup& setup, QWidget* owner) {
    QFileDialog dialog(owner, setup.title, setup.folder);
    dialog.setObjectName(QStringLiteral("FileDialog"));
    // Modal, and asked from windows that are not on top (the station view): above the main window,
    // which always is, so that none of the dialog is hidden under it.
    dialog.setWindowFlag(Qt::WindowStaysOnTopHint);
    dialog.setAcceptMode(setup.acceptMode);
    dialog.setFileMode(setup.fileMode);
    dialog.setOptions(setup.options);
    if (!setup.nameFilters.isEmpty()) {
        dialog.setNameFilters(setup.nameFilters);
        dialog.selectNameFilter(setup.selectedFilter);
    }
    dialog.setDefaultSuffix(setup.defaultSuffix);
    if (!setup.proposedName.isEmpty()) dialog.selectFile(setup.proposedName);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return std::nullopt;
    return dialog.selectedFiles().first();
}

QString ShowFileDialog(int* flags, const QString& initialFolder, const QString& filter, int filterIndex,
                       const QString& defaultExt, const QString& fileName, const QString& title, QWidget* owner, bool open,
                       const FileDialogRunner& run) {
    const FileDialogSetup setup = MakeFileDialogSetup(flags ? *flags : 0, initialFolder, filter, filterIndex, defaultExt,
                                                      fileName, title, open);
    const std::optional<QString> chosen = run ? run(setup, owner) : RunQtFileDialog(setup, owner);
    if (!chosen) return QString();
    if (flags) *flags = FlagsAfterChoice(*flags, *chosen, defaultExt);
    return StripNulls(*chosen);
}
