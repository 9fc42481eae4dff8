#pragma once
// The own station: call sign, position (typed, or fetched from the chosen call-book service),
// its grid square, and the unit of every distance shown.
#include "app/modulevalues.h"

#include "ui/windowhelpers.h"

#include <QWidget>

class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;
class ucLookUp;

class Form2 : public QWidget {
    Q_OBJECT

public:
    explicit Form2(ModuleValues& values, QWidget* parent = nullptr);

    // The grid line from the program-wide own position: caption, ":   ", six characters; empty
    // beyond 90 degrees of latitude.
    void ShowGrid();

    QLineEdit* txtCall;
    QLineEdit* txtLat;
    QLineEdit* txtLon;
    QLabel* lblGrid;
    QRadioButton* optKm;
    QRadioButton* optMi;
    QPushButton* cmdGetLatLon;
    QPushButton* cmdClose;
    QLabel* lblDx;
    QLabel* lblCall;
    QLabel* Label1;
    QLabel* Label2;
    QLabel* Label3;  // what the last fetch of the coordinates said
    ucLookUp* lookUp;

signals:
    // The window has closed and saved the own station.
    void closed();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void layOutControls();
    void cmdGetLatLon_Click();
    void onGotPage(const QString& call, bool loggedIn);

    ModuleValues& g_;
    BusyPointer busy_;
};
