#include "setup/form2.h"

#include "app/lookuphosts.h"
#include "app/settings.h"
#include "app/stationservice.h"
#include "app/statustexts.h"
#include "common/vbtext.h"
#include "db/storestation.h"
#include "geo/grid.h"
#include "lookup/services.h"
#include "lookup/uclookup.h"
#include "ui/windowhelpers.h"

#include <QApplication>
#include <QCloseEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

namespace {
QLabel* caption(QWidget* parent, const char* name, const QString& text) {
    auto* label = new QLabel(text.isEmpty() ? QString() : text + QStringLiteral(": "), parent);
    label->setObjectName(QLatin1String(name));
    label->setTextFormat(Qt::PlainText);
    return label;
}
}  // namespace

Form2::Form2(ModuleValues& values, QWidget* parent) : QWidget(parent, Qt::Window), g_(values) {
    setObjectName(QStringLiteral("Form2"));
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(g_.Texts.SetupTitle);
    const LanguageTexts& t = g_.Texts;

    lblCall = caption(this, "lblCall", t.FieldCall);
    Label1 = caption(this, "Label1", t.FieldLatitude);
    Label2 = caption(this, "Label2", t.FieldLongitude);
    txtCall = new QLineEdit(this);
    txtLat = new QLineEdit(this);
    txtLon = new QLineEdit(this);
    for (auto [edit, name] : {std::pair{txtCall, "txtCall"}, {txtLat, "txtLat"}, {txtLon, "txtLon"}}) {
        edit->setObjectName(QLatin1String(name));
        edit->setMinimumWidth(140);
    }
    txtCall->setMaxLength(32);
    lblGrid = new QLabel(this);
    lblGrid->setObjectName(QStringLiteral("lblGrid"));
    lblGrid->setTextFormat(Qt::PlainText);
    cmdGetLatLon = new QPushButton(t.SetupGetLatLon, this);
    cmdGetLatLon->setObjectName(QStringLiteral("cmdGetLatLon"));
    lblDx = caption(this, "lblDx", t.UnitCaption.trimmed());
    optKm = new QRadioButton(QStringLiteral("km"), this);
    optKm->setObjectName(QStringLiteral("optKm"));
    optMi = new QRadioButton(QStringLiteral("mi"), this);
    optMi->setObjectName(QStringLiteral("optMi"));
    Label3 = new QLabel(this);
    Label3->setObjectName(QStringLiteral("Label3"));
    Label3->setTextFormat(Qt::PlainText);
    Label3->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    cmdClose = new QPushButton(t.CloseButton, this);
    cmdClose->setObjectName(QStringLiteral("cmdClose"));
    layOutControls();

    lookUp = new ucLookUp(g_.DownloadBuffer, LookupHostsFromSettings(), this);
    connect(lookUp, &ucLookUp::GotPage, this, &Form2::onGotPage);
    for (auto refused : {&ucLookUp::LoginRequired, &ucLookUp::CallNotFound})
        connect(lookUp, refused, this, [this] { busy_.set(false); });
    connect(lookUp, &ucLookUp::PageNotFound, this, [this] {
        busy_.set(false);
        Label3->setText(u'\n' + FailureStatus(g_.Texts, lookUp->LastFailure, g_.ServiceName));
    });

    // Load: the saved call, the program-wide position and unit.
    txtCall->setText(settings::GetSetting(settings::kMyCallsign, QString()));
    txtLat->setText(CoordinateText(g_.MyLat));
    txtLon->setText(CoordinateText(g_.MyLon));
    (g_.DistUnit == 1 ? optMi : optKm)->setChecked(true);
    ShowGrid();

    connect(txtLat, &QLineEdit::textChanged, this, [this](const QString& text) {
        g_.MyLat = vb::val(text);
        ShowGrid();
    });
    connect(txtLon, &QLineEdit::textChanged, this, [this](const QString& text) {
        g_.MyLon = vb::val(text);
        ShowGrid();
    });
    // The unit is saved the moment it is chosen.
    connect(optMi, &QRadioButton::clicked, this, [this] {
        g_.DistUnit = 1;
        settings::SaveSetting(settings::kUnit, QStringLiteral("1"));
    });
    connect(optKm, &QRadioButton::clicked, this, [this] {
        g_.DistUnit = 0;
        settings::SaveSetting(settings::kUnit, QStringLiteral("0"));
    });
    connect(cmdGetLatLon, &QPushButton::clicked, this, &Form2::cmdGetLatLon_Click);
    connect(cmdClose, &QPushButton::clicked, this, &QWidget::close);
    SetTopMost(this, true);
    ScreenKeeper::of(this);
}

void Form2::layOutControls() {
    const LanguageTexts& t = g_.Texts;
    auto* grid = new QGridLayout(this);
    grid->setSizeConstraint(QLayout::SetFixedSize);
    grid->setContentsMargins(15, 15, 15, 12);
    grid->setHorizontalSpacing(10);
    grid->setVerticalSpacing(6);
    grid->addWidget(lblCall, 0, 0);
    grid->addWidget(txtCall, 0, 1);
    grid->addWidget(Label1, 1, 0);
    grid->addWidget(txtLat, 1, 1);
    grid->addWidget(Label2, 2, 0);
    grid->addWidget(txtLon, 2, 1);
    grid->addWidget(lblGrid, 3, 0, 1, 2);
    grid->addWidget(cmdGetLatLon, 4, 0, 1, 2, Qt::AlignLeft);
    // The unit's caption may be longer than the others: its row has a layout of its own.
    auto* units = new QHBoxLayout;
    units->setSpacing(10);
    units->addWidget(lblDx);
    units->addWidget(optKm);
    units->addWidget(optMi);
    units->addStretch(1);
    grid->addLayout(units, 5, 0, 1, 2);
    grid->addWidget(Label3, 6, 0, 1, 2);
    grid->addWidget(cmdClose, 7, 0, 1, 2, Qt::AlignRight);
    // What a fetch of the position says: an empty line, then its text, wrapped to the width the
    // other rows need. Room for the longest of them from the start, so that the window never
    // changes its size.
    ensurePolished();
    const QMargins margins = grid->contentsMargins();
    const int width = grid->sizeHint().width() - margins.left() - margins.right();
    const QString call = QStringLiteral("WW0WWW/W");
    QStringList said{QString(t.SetupPositionFound).replace(QStringLiteral("***"), call),
                     QString(t.SetupPositionQrzcq).replace(QStringLiteral("***"), call), t.CallookStatus, t.LookupFailed,
                     t.NotFound + u' ' + call};
    // The service by the main window's name or by the editor's.
    for (const CallbookService& service : kServices)
        for (const char* name : {service.boxName, service.domain})
            said << QString(t.SetupNoPosition).replace(QStringLiteral("???"), call).replace(QStringLiteral("***"), QLatin1String(name));
    int height = 2 * Label3->fontMetrics().lineSpacing();
    for (const QString& text : said)
        height = std::max(height, Label3->fontMetrics().boundingRect(QRect(0, 0, width, 1 << 16), Qt::TextWordWrap,
                                                                     u'\n' + text).height());
    Label3->setWordWrap(true);
    Label3->setFixedSize(width, height + 2);
}

void Form2::ShowGrid() {
    const QString grid = GridSquare(g_.MyLat, g_.MyLon);
    lblGrid->setText(grid.isEmpty() ? QString() : g_.Texts.SetupGrid + QStringLiteral(":   ") + grid);
}

void Form2::cmdGetLatLon_Click() {
    g_.MyCall = txtCall->text();
    Label3->clear();
    if (g_.MyCall.isEmpty()) return;
    // Refused before anything is asked of the service.
    if (g_.MyCall.contains(u'-') || g_.MyCall.contains(u' ')) {
        Label3->setText(g_.Texts.NotFound + u' ' + g_.MyCall);
        return;
    }
    lookUp->setDatabase(g_.ServiceNo);
    busy_.set(true);
    lookUp->GetPage(g_.MyCall);
}

void Form2::onGotPage(const QString& call, bool) {
    busy_.set(false);
    // Only a station with a known position replaces the typed one: a page without the station,
    // or one that gives no position, would put the own station at 0, 0.
    const lookup::StationReading reading = StationService(*lookUp, g_.DataPath).Read(call);
    if (!reading.station || (reading.station->lat == 0 && reading.station->lon == 0)) {
        Label3->setText(u'\n' + QString(g_.Texts.SetupNoPosition)
                                     .replace(QStringLiteral("???"), g_.MyCall)
                                     .replace(QStringLiteral("***"), g_.ServiceName));
        return;
    }
    txtLat->setText(CoordinateText(reading.station->lat));
    txtLon->setText(CoordinateText(reading.station->lon));
    QString status = OwnPositionStatus(g_.Texts, g_.ServiceNo);
    Label3->setText(u'\n' + status.replace(QStringLiteral("***"), g_.MyCall));
}

void Form2::closeEvent(QCloseEvent* event) {
    settings::SaveSetting(settings::kMyCallsign, txtCall->text());
    settings::SaveSetting(settings::kMyLatitude, txtLat->text());
    settings::SaveSetting(settings::kMyLongitude, txtLon->text());
    g_.MyLat = vb::val(txtLat->text());
    g_.MyLon = vb::val(txtLon->text());
    emit closed();
    event->accept();
}
