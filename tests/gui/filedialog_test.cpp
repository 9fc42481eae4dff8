// The file dialog's rules: filters in Qt's form, the file-name buffer, flags in and out, open and
// save, and the real dialog chosen from and cancelled.
#include "ui/filedialog.h"

#include <QApplication>
#include <QDir>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

namespace {
const QChar kNul(0);

// Answers the dialog that is open once the event loop runs: cancels it, or types name and accepts.
// Notes its filters, chosen filter, title, whether it saves, whether it stays on top, and the name.
void answerDialog(QStringList* seen, const QString& name = QString()) {
    QTimer::singleShot(50, [seen, name] {
        auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        QVERIFY(dialog);
        *seen << dialog->nameFilters().join(u'|') << dialog->selectedNameFilter() << dialog->windowTitle()
              << QString::number(dialog->acceptMode() == QFileDialog::AcceptSave)
              << QString::number(dialog->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
        if (name.isEmpty()) {
            dialog->reject();
            return;
        }
        auto* edit = dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        QVERIFY(edit);
        *seen << edit->text();
        edit->setText(name);
        QMetaObject::invokeMethod(dialog, "accept");
    });
}
}  // namespace

class FileDialogTest : public QObject {
    Q_OBJECT

private slots:
    void addFilterItemAndStripNulls() {
        QCOMPARE(AddFilterItem(QString(), QStringLiteral("jpg files (*.jpg)"), QStringLiteral("*.jpg")),
                 QStringLiteral("jpg files (*.jpg)") + kNul + QStringLiteral("*.jpg") + kNul);
        QCOMPARE(AddFilterItem(QStringLiteral("A") + kNul + QStringLiteral("*.a") + kNul, QStringLiteral("All")),
                 QStringLiteral("A") + kNul + QStringLiteral("*.a") + kNul + QStringLiteral("All") + kNul + QStringLiteral("*.*") + kNul);
        QCOMPARE(StripNulls(QStringLiteral("C:\\x.jpg") + kNul + QStringLiteral("junk") + kNul), QStringLiteral("C:\\x.jpg"));
        QCOMPARE(StripNulls(QStringLiteral("no nul")), QStringLiteral("no nul"));
        QCOMPARE(StripNulls(kNul + QStringLiteral("x")), QString());
    }

    void qtNameFilters_data() {
        QTest::addColumn<QString>("filter");
        QTest::addColumn<QStringList>("qt");
        const QString jpg = AddFilterItem(QString(), QStringLiteral("jpg files (*.jpg)"), QStringLiteral("*.jpg"));
        QTest::newRow("the save dialog's filter") << jpg << QStringList{QStringLiteral("jpg files (*.jpg)")};
        QTest::newRow("no filter: all files") << QString() << QStringList();
        QTest::newRow("pattern appended") << AddFilterItem(jpg, QStringLiteral("All files"))
                                          << QStringList{QStringLiteral("jpg files (*.jpg)"), QStringLiteral("All files (*.*)")};
        QTest::newRow("several patterns") << AddFilterItem(QString(), QStringLiteral("Pictures"), QStringLiteral("*.jpg;*.bmp"))
                                          << QStringList{QStringLiteral("Pictures (*.jpg *.bmp)")};
        QTest::newRow("brackets that are not the pattern")
            << AddFilterItem(QString(), QStringLiteral("jpg files (*.jpg)"), QStringLiteral("*.jpeg"))
            << QStringList{QStringLiteral("jpg files (*.jpg) (*.jpeg)")};
        QTest::newRow("description without a pattern")
            << QStringLiteral("Bitmaps") + kNul << QStringList();
        QTest::newRow("list ended early") << jpg + kNul + QStringLiteral("Ignored") + kNul + QStringLiteral("*.x") + kNul
                                          << QStringList{QStringLiteral("jpg files (*.jpg)")};
    }

    void qtNameFilters() {
        QFETCH(QString, filter);
        QTEST(QtNameFilters(filter), "qt");
    }

    void proposedFileName_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("proposed");
        QTest::newRow("call") << QStringLiteral("DL1ABC") << QStringLiteral("DL1ABC");
        QTest::newRow("empty") << QString() << QString();
        QTest::newRow("255") << QString(255, u'a') << QString(255, u'a');
        QTest::newRow("256") << QString(256, u'b') << QString(256, u'b');
        QTest::newRow("300 cut to the buffer") << QString(300, u'c') << QString(256, u'c');
        QTest::newRow("with a NUL") << QStringLiteral("ab") + kNul + QStringLiteral("cd") << QStringLiteral("ab");
    }

    void proposedFileName() {
        QFETCH(QString, name);
        QTEST(ProposedFileName(name), "proposed");
    }

    void setup_data() {
        QTest::addColumn<int>("flags");
        QTest::addColumn<bool>("open");
        QTest::addColumn<int>("filterIndex");
        QTest::addColumn<int>("fileMode");
        QTest::addColumn<bool>("confirmOverwrite");
        QTest::addColumn<QString>("selectedFilter");
        QTest::newRow("open") << 0 << true << 1 << int(QFileDialog::AnyFile) << true << "jpg files (*.jpg)";
        QTest::newRow("open, file must exist") << ofn::kFileMustExist << true << 2 << int(QFileDialog::ExistingFile) << true
                                               << "All files (*.*)";
        QTest::newRow("open, several") << ofn::kAllowMultiSelect << true << 1 << int(QFileDialog::ExistingFiles) << true
                                       << "jpg files (*.jpg)";
        QTest::newRow("save without prompt") << 0 << false << 1 << int(QFileDialog::AnyFile) << false << "jpg files (*.jpg)";
        QTest::newRow("save with prompt") << ofn::kOverwritePrompt << false << 7 << int(QFileDialog::AnyFile) << true
                                          << "jpg files (*.jpg)";
        QTest::newRow("index 0") << 0 << false << 0 << int(QFileDialog::AnyFile) << false << "jpg files (*.jpg)";
    }

    void setup() {
        QFETCH(int, flags);
        QFETCH(bool, open);
        QFETCH(int, filterIndex);
        const QString filter = AddFilterItem(AddFilterItem(QString(), QStringLiteral("jpg files (*.jpg)"), QStringLiteral("*.jpg")),
                                             QStringLiteral("All files"));
        const FileDialogSetup s = MakeFileDialogSetup(flags, QString(), filter, filterIndex, QStringLiteral("jpg"),
                                                      QStringLiteral("DL1ABC"), QStringLiteral("Save"), open);
        QTEST(int(s.fileMode), "fileMode");
        QTEST(!s.options.testFlag(QFileDialog::DontConfirmOverwrite), "confirmOverwrite");
        QTEST(s.selectedFilter, "selectedFilter");
        QCOMPARE(s.acceptMode, open ? QFileDialog::AcceptOpen : QFileDialog::AcceptSave);
        QCOMPARE(s.folder, QDir::currentPath());
        QCOMPARE(s.defaultSuffix, QStringLiteral("jpg"));
        QCOMPARE(s.proposedName, QStringLiteral("DL1ABC"));
    }

    void flagsOut_data() {
        QTest::addColumn<int>("flagsIn");
        QTest::addColumn<QString>("chosen");
        QTest::addColumn<QString>("defaultExt");
        QTest::addColumn<int>("flagsOut");
        QTest::newRow("same extension") << ofn::kOverwritePrompt << "/x/a.jpg" << "jpg" << ofn::kOverwritePrompt;
        QTest::newRow("other extension") << ofn::kOverwritePrompt << "/x/a.png" << "jpg"
                                         << (ofn::kOverwritePrompt | ofn::kExtensionDifferent);
        QTest::newRow("case only") << 0 << "/x/a.JPG" << ".jpg" << 0;
        QTest::newRow("stale bit cleared") << ofn::kExtensionDifferent << "/x/a.jpg" << "jpg" << 0;
        QTest::newRow("no default") << ofn::kReadOnly << "/x/a" << "" << ofn::kReadOnly;
    }

    void flagsOut() {
        QFETCH(int, flagsIn);
        QFETCH(QString, chosen);
        QFETCH(QString, defaultExt);
        QTEST(FlagsAfterChoice(flagsIn, chosen, defaultExt), "flagsOut");
    }

    void flagsAreWrittenBackOnlyOnAChoice() {
        const FileDialogRunner chooses = [](const FileDialogSetup&, QWidget*) { return std::optional<QString>(QStringLiteral("/t/a.png")); };
        const FileDialogRunner cancels = [](const FileDialogSetup&, QWidget*) { return std::optional<QString>(); };
        int flags = ofn::kOverwritePrompt;
        QCOMPARE(ShowFileDialog(&flags, {}, {}, 1, QStringLiteral("jpg"), {}, {}, nullptr, false, cancels), QString());
        QCOMPARE(flags, ofn::kOverwritePrompt);
        QCOMPARE(ShowFileDialog(&flags, {}, {}, 1, QStringLiteral("jpg"), {}, {}, nullptr, false, chooses), QStringLiteral("/t/a.png"));
        QCOMPARE(flags, ofn::kOverwritePrompt | ofn::kExtensionDifferent);
        QCOMPARE(ShowFileDialog(nullptr, {}, {}, 1, QStringLiteral("jpg"), {}, {}, nullptr, false, chooses), QStringLiteral("/t/a.png"));
    }

    void realDialogChosenAndCancelled() {
        QTemporaryDir dir;
        const QString filter = AddFilterItem(QString(), QStringLiteral("jpg files (*.jpg)"), QStringLiteral("*.jpg"));
        QStringList seen;
        answerDialog(&seen, QStringLiteral("W1AW"));
        const QString chosen = ShowFileDialog(nullptr, dir.path(), filter, 1, QStringLiteral("jpg"), QStringLiteral("DL1ABC"),
                                              QStringLiteral("Save picture"), nullptr, false);
        QCOMPARE(seen, (QStringList{QStringLiteral("jpg files (*.jpg)"), QStringLiteral("jpg files (*.jpg)"),
                                    QStringLiteral("Save picture"), QStringLiteral("1"), QStringLiteral("1"),
                                    QStringLiteral("DL1ABC")}));
        QCOMPARE(chosen, dir.filePath(QStringLiteral("W1AW.jpg")));
        seen.clear();
        answerDialog(&seen);
        int flags = ofn::kFileMustExist;
        QCOMPARE(ShowFileDialog(&flags, dir.path(), filter), QString());
        QCOMPARE(flags, ofn::kFileMustExist);
        QCOMPARE(seen.value(3), QStringLiteral("0"));
        QCOMPARE(seen.value(4), QStringLiteral("1"));  // above the always-on-top main window too
    }
};

int main(int argc, char** argv) {
    // Qt's own dialog, the same on every desktop the tests run on.
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QApplication app(argc, argv);
    FileDialogTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "filedialog_test.moc"
