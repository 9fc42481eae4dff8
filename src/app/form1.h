#pragma once
// The main window: a small always-on-top strip that shows one station at a time.
#include "app/modulevalues.h"

#include <QStringList>
#include <QWidget>
#include <array>
#include <functional>

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSystemTrayIcon;
class QTimer;

class Form1 : public QWidget {
    Q_OBJECT

public:
    static constexpr const char* kVersionMark = "Ver:07/OCT/2014";
    static constexpr const char* kFailureTitle = "PX RxOk";
    static constexpr std::array<const char*, 5> kServices{"eHam", "QRZ", "QRZCQ", "CALLOOK", "HamCall"};

    explicit Form1(ModuleValues& values, QWidget* parent = nullptr);

    // Loads the window as described in its steps; false when the program has to end (the
    // message has been shown).
    bool Form_Load();

    // Closes every window of the program and ends it.
    void Unload();

    // How failures reach the user; tests replace it to read the texts.
    std::function<void(const QString& text, const QString& title)> showFailure;

    // Looks a call sign up in the call-sign file and shows it.
    void LookUpCall(const QString& call);
    void ShowDbRecord();

    // Hidden lists filled at start-up.
    QStringList lstMap;
    QStringList lstNicknames;
    // Captions of the pop-up menus: setup (three entries) and maps (five entries).
    std::array<QString, 3> SetupMenuCaptions;
    std::array<QString, 5> MapsMenuCaptions;

    QLabel* lblCall;
    QLabel* lblName;
    QLabel* lblAdd1;
    QLabel* lblAdd2;
    QLabel* lblCtry;
    QLabel* lblDxAz;
    QLabel* lblStatus;
    QLabel* lblMaps;
    QLabel* lblSetup;
    QLabel* Image1;
    QLineEdit* txtCall;
    QPushButton* cmdUpdate;
    QComboBox* cboDB;
    QTimer* tmrMenus;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void cboDB_Click(int index);
    void createTrayIcon();
    void layOutControls();
    void clearStation();
    QString updateCaption() const;
    QString nicknameSuffix(const QString& call) const;

    ModuleValues& g_;
    bool startupFlag_ = true;  // the first service-box click is the one loading causes
    bool unloading_ = false;
    QSystemTrayIcon* tray_ = nullptr;
};
