// The editor's controls and their layout.
#include "db/form26.h"

#include "lookup/services.h"

#include <QComboBox>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QItemSelectionModel>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>
#include <array>

namespace {

QLineEdit* makeBox(QWidget* parent, const char* name) {
    auto* box = new QLineEdit(parent);
    box->setObjectName(QLatin1String(name));
    return box;
}

QPushButton* makeButton(QWidget* parent, const char* name) {
    auto* button = new QPushButton(parent);
    button->setObjectName(QLatin1String(name));
    button->setEnabled(false);
    return button;
}

}  // namespace

void Form26::createControls() {
    calls = new CallListModel(fontMetrics().height() + 2, this);
    lstCall = new QListView(this);
    lstCall->setObjectName(QStringLiteral("lstCall"));
    lstCall->setModel(calls);
    lstCall->setUniformItemSizes(true);
    lstCall->setVerticalScrollMode(QAbstractItemView::ScrollPerItem);
    lstCall->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    lstCall->setEditTriggers(QAbstractItemView::NoEditTriggers);
    lstCall->setSelectionMode(QAbstractItemView::SingleSelection);
    lstCall->viewport()->setMouseTracking(true);
    lstCall->viewport()->installEventFilter(this);
    // A click, or the arrow keys, on the list: lstCall_Click. A selection the program makes
    // (the search of the typed call, the call just added) is no click.
    connect(lstCall->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
        if (selecting_ > 0 || listIndex() < 0) return;
        changedByPress_ = true;
        lstCall_Click();
    });
    connect(lstCall, &QAbstractItemView::clicked, this, [this] {
        if (!changedByPress_) lstCall_Click();  // a click on the row already selected
    });

    txtCall = makeBox(this, "txtCall");
    txtName = makeBox(this, "txtName");
    txtNickName = makeBox(this, "txtNickName");
    txtAdd1 = makeBox(this, "txtAdd1");
    txtAdd2 = makeBox(this, "txtAdd2");
    txtCtry = makeBox(this, "txtCtry");
    txtLat = makeBox(this, "txtLat");
    txtLon = makeBox(this, "txtLon");
    txtClass = makeBox(this, "txtClass");
    txtYearBorn = makeBox(this, "txtYearBorn");
    lblCall = MakePlainLabel(this, "lblCall");
    lblName = MakePlainLabel(this, "lblName");
    lblNickName = MakePlainLabel(this, "lblNickName");
    lblAdd1 = MakePlainLabel(this, "lblAdd1");
    lblAdd2 = MakePlainLabel(this, "lblAdd2");
    lblCtry = MakePlainLabel(this, "lblCtry");
    lblLat = MakePlainLabel(this, "lblLat");
    lblLon = MakePlainLabel(this, "lblLon");
    lblClass = MakePlainLabel(this, "lblClass");
    lblYearBorn = MakePlainLabel(this, "lblYearBorn");
    txtCall->installEventFilter(this);
    connect(txtCall, &QLineEdit::textChanged, this, &Form26::txtCall_Change);
    connect(txtName, &QLineEdit::textChanged, this, &Form26::txtName_Change);
    connect(txtLat, &QLineEdit::textChanged, this, &Form26::txtLat_Change);
    connect(txtLon, &QLineEdit::textChanged, this, &Form26::txtLon_Change);

    cboDB = new QComboBox(this);
    cboDB->setObjectName(QStringLiteral("cboDB"));
    cmdLookup = makeButton(this, "cmdLookup");
    cmdAddNewSite = makeButton(this, "cmdAddNewSite");
    cmdDeleteSite = makeButton(this, "cmdDeleteSite");
    cmdClose = makeButton(this, "cmdClose");
    cmdClose->setEnabled(true);
    connect(cmdLookup, &QPushButton::clicked, this, &Form26::cmdLookup_Click);
    connect(cmdAddNewSite, &QPushButton::clicked, this, &Form26::cmdAddNewSite_Click);
    connect(cmdDeleteSite, &QPushButton::clicked, this, &Form26::cmdDeleteSite_Click);
    connect(cmdClose, &QPushButton::clicked, this, &Form26::cmdClose_Click);

    lblEntries = MakePlainLabel(this, "lblEntries");
    lblInfo = MakePlainLabel(this, "lblInfo");
    lblInfo->setWordWrap(true);
    Label4 = MakePlainLabel(this, "Label4");
    Label4->hide();
    Image1 = MakePlainLabel(this, "Image1");
    Image1->setScaledContents(true);
    Image1->setCursor(Qt::PointingHandCursor);
    Image1->installEventFilter(this);
    resetPicture();
}

void Form26::layOutControls() {
    if (layout()) return;  // laid out once
    // The window is as large as its contents need, in every language. The list, the info line
    // and the margins are sized so that the picture box lies exactly on kPictureArea.
    auto* root = new QGridLayout(this);
    root->setSizeConstraint(QLayout::SetFixedSize);
    constexpr int margin = 8, spacing = 8, infoGap = 4, top = 2;
    root->setContentsMargins(margin, top, margin, margin);
    root->setHorizontalSpacing(spacing);
    root->setVerticalSpacing(infoGap);
    lblInfo->setWordWrap(false);
    lblInfo->setFixedHeight(kPictureArea.top() - top - infoGap);
    root->addWidget(lblInfo, 0, 0, 1, 3);

    const int frame = 2 * lstCall->frameWidth();
    lstCall->setFixedSize(kPictureArea.left() - margin - spacing, kVisibleRows * calls->rowHeight() + frame);
    root->addWidget(lstCall, 1, 0, Qt::AlignTop);

    auto* pictureColumn = new QVBoxLayout;
    pictureColumn->setSpacing(4);
    picArea = new QFrame(this);
    picArea->setObjectName(QStringLiteral("picArea"));
    picArea->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
    picArea->setFixedSize(kPictureArea.size());
    pictureColumn->addWidget(picArea);
    // Notices under the picture: up to three lines.
    Label4->setWordWrap(true);
    Label4->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    Label4->setFixedSize(kPictureArea.width(), 3 * fontMetrics().lineSpacing() + 4);
    QSizePolicy keepsItsRoom = Label4->sizePolicy();
    keepsItsRoom.setRetainSizeWhenHidden(true);  // shown and hidden, the window keeps its size
    Label4->setSizePolicy(keepsItsRoom);
    pictureColumn->addWidget(Label4);
    pictureColumn->addStretch(1);
    root->addLayout(pictureColumn, 1, 1);
    Image1->raise();  // above its box

    auto* fields = new QGridLayout;
    fields->setContentsMargins(4, 0, 0, 0);
    fields->setHorizontalSpacing(6);
    fields->setVerticalSpacing(2);
    const std::array<QLabel*, 10> captions{lblCall, lblName, lblNickName, lblAdd1, lblAdd2,
                                           lblCtry, lblLat,  lblLon,      lblClass, lblYearBorn};
    const std::array<QLineEdit*, 10> boxes{txtCall, txtName, txtNickName, txtAdd1, txtAdd2,
                                           txtCtry, txtLat,  txtLon,      txtClass, txtYearBorn};
    for (int i = 0; i < 10; ++i) {
        boxes[i]->setMinimumWidth(204);
        fields->addWidget(captions[i], i, 0);
        fields->addWidget(boxes[i], i, 1);
    }
    fields->setRowStretch(10, 1);
    root->addLayout(fields, 1, 2);

    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(6);
    buttons->addWidget(cmdLookup);
    buttons->addWidget(cboDB);
    buttons->addSpacing(6);
    buttons->addWidget(cmdAddNewSite);
    buttons->addWidget(cmdDeleteSite);
    buttons->addStretch(1);
    buttons->addWidget(cmdClose);
    root->addLayout(buttons, 2, 0, 1, 3);
    root->addWidget(lblEntries, 3, 0, 1, 3);
    root->setRowMinimumHeight(2, 28);
}

void Form26::fitButtonsToCaptions() {
    // Each button as wide as its widest caption: the word "callsign" at the start, or a call of
    // six characters, on whichever service.
    const LanguageTexts& t = g_.Texts;
    const QString serviceName = g_.ServiceName;
    for (QPushButton* button : {cmdLookup, cmdAddNewSite, cmdDeleteSite}) {
        const QString caption = button->text();
        int widest = 0;
        for (const QString& call : {QStringLiteral("callsign"), QStringLiteral("WW0WWW"), QString()}) {
            QStringList texts;
            if (button == cmdAddNewSite) texts << withCall(t.EditorAdd, call);
            if (button == cmdDeleteSite) texts << withCall(t.EditorDelete, call);
            if (button == cmdLookup)
                for (const CallbookService& service : kServices) {
                    g_.ServiceName = QLatin1String(service.domain);
                    texts << lookupCaption(call);
                }
            for (const QString& text : texts) {
                button->setText(text);
                widest = std::max(widest, button->sizeHint().width());
            }
        }
        g_.ServiceName = serviceName;
        button->setText(caption);
        button->setMinimumWidth(widest);
    }
    cmdClose->setMinimumWidth(std::max(100, cmdClose->sizeHint().width()));
    cboDB->setMinimumWidth(std::max(100, cboDB->sizeHint().width()));
}
