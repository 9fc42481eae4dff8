// The editor's layout and the rules it is built on: where the picture goes in its box, and the
// captions that name a call.
#include "db/form26.h"

#include <QComboBox>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>
#include <array>

QString ReplaceCall(const QString& text, const QString& call) {
    if (!call.isEmpty()) return QString(text).replace(QStringLiteral("???"), call);
    QString out = text;
    for (qsizetype at = out.indexOf(QStringLiteral("???")); at >= 0; at = out.indexOf(QStringLiteral("???"), at)) {
        if (at > 0 && out.at(at - 1) == u' ') out.remove(at - 1, 4), --at;
        else if (at + 3 < out.size() && out.at(at + 3) == u' ') out.remove(at, 4);
        else out.remove(at, 3);
    }
    return out;
}

QRect FitPicture(QSize natural) {
    if (natural.isEmpty()) return {};
    const QRect area = Form26::kPictureArea;
    const qint64 w = natural.width(), h = natural.height();
    int width = 0, height = 0;
    if (w * area.height() >= h * area.width()) {
        // Wider than the area: as wide as the area.
        width = area.width();
        height = std::max<int>(1, static_cast<int>((h * area.width() + w / 2) / w));
    } else {
        // Taller: as high as the area.
        height = area.height();
        width = std::max<int>(1, static_cast<int>((w * area.height() + h / 2) / h));
    }
    const QPoint centre = Form26::kPictureCentre;
    return {centre.x() - width / 2, centre.y() - height / 2, width, height};
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
                for (const char* service : kServiceDomains) {
                    g_.ServiceName = QLatin1String(service);
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
