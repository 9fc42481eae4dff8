#include "maps/form9.h"

#include "app/modulevalues.h"
#include "common/vbtext.h"
#include "maps/mapdrawing.h"
#include "maps/mappicture.h"
#include "maps/choosemap.h"
#include "maps/mapselection.h"
#include "ui/unimsgbox.h"
#include "ui/windowhelpers.h"

#include <QCursor>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QScrollArea>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>

namespace {
constexpr int kMenuWidth = 160;
constexpr int kWindowMargin = 48;  // room for the frame of the window manager and the taskbar
}  // namespace

Form9::Form9(ModuleValues& g, const QStringList& lstMap, QWidget* parent)
    : QWidget(parent, Qt::Window), g_(g), lstMap_(lstMap) {
    setObjectName(QStringLiteral("Form9"));
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(QStringLiteral("Norvane"));
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(4, 4, 4, 4);
    // The map menu scrolls, so that a folder of many maps still leaves the window on the monitor.
    auto* menuScroll = new QScrollArea(this);
    menuScroll->setFixedWidth(kMenuWidth);
    menuScroll->setFrameShape(QFrame::NoFrame);
    menuScroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    menuScroll->setWidgetResizable(true);
    auto* menu = new QWidget(menuScroll);
    menuColumn_ = new QVBoxLayout(menu);
    menuColumn_->setContentsMargins(0, 0, 0, 0);
    menuColumn_->setSpacing(2);
    imgMap = new QLabel(menu);
    imgMap->setObjectName(QStringLiteral("imgMap"));
    imgMap->setStyleSheet(QStringLiteral("background: rgb(40, 90, 160);"));
    imgMap->hide();
    menuScroll->setWidget(menu);
    row->addWidget(menuScroll);
    picOuter = new QWidget(this);
    picOuter->setObjectName(QStringLiteral("picOuter"));
    row->addWidget(picOuter, 1);
    picInner = new QLabel(picOuter);
    picInner->setObjectName(QStringLiteral("picInner"));
    picInner->setMouseTracking(true);
    picInner->installEventFilter(this);
    tmrMenus = new QTimer(this);
    tmrMenus->setInterval(500);
    connect(tmrMenus, &QTimer::timeout, this, &Form9::tmrMenus_Timer);
    showMessage = [this](const QString& text) {
        ShowUniMsgBox(this, text, msgbox::kNoIcon, QStringLiteral("PX Callsigns"), QStringLiteral("OK"));
    };
    buildMenu();
}

void Form9::buildMenu() {
    for (int k = 0; k < lstMap_.size(); ++k) {
        auto* label = new QLabel(MapMenuCaption(lstMap_[k]), menuColumn_->parentWidget());
        label->setObjectName(QStringLiteral("lblMaps%1").arg(k));
        label->setStyleSheet(QStringLiteral("color: black;"));
        label->setCursor(Qt::PointingHandCursor);
        label->installEventFilter(this);
        menuColumn_->addWidget(label);
        lblMaps.append(label);
    }
    menuColumn_->addStretch();
}

void Form9::lblMaps_Click(int k) {
    if (k < 0 || k >= lblMaps.size()) return;
    if (mapIndex_ >= 0 && mapIndex_ < lblMaps.size()) lblMaps[mapIndex_]->setStyleSheet(QStringLiteral("color: black;"));
    mapIndex_ = k;
    lblMaps[k]->setStyleSheet(QStringLiteral("color: rgb(255, 255, 255);"));
    imgMap->setGeometry(lblMaps[k]->geometry());
    imgMap->show();
    imgMap->lower();
    RefreshMap(CallFromCaption(plot_.callCaption));
}

void Form9::RefreshMap(const QString& call) {
    picInner->clear();
    PlotMap(call);
}

void Form9::PlotMap(const QString& call) {
    savedCursor_ = QCursor::pos();
    cursorSaved_ = true;
    dragReady_ = false;
    if (mapIndex_ < 0 || mapIndex_ >= lstMap_.size()) return;
    const QString entry = lstMap_[mapIndex_];
    // The own latitude is held within 89 degrees in memory only; the saved setting keeps its value.
    plot_ = PlanStations(MapEntryName(entry), g_.MyLat, g_.MyLon, g_.OtherLat, g_.OtherLon, call, g_.DistUnit);
    const Result<QImage> map = ReadMapPicture(g_.DataPath + QStringLiteral("/Maps/") + entry);
    if (!map) {
        showMessage(map.message());
        return;
    }
    if (!plot_.error.isEmpty()) showMessage(plot_.error);
    shown_ = PlotMapPicture(*map, plot_);
    picInner->setPixmap(QPixmap::fromImage(shown_));
    picInner->resize(shown_.size());
    setWindowTitle(MapWindowCaption(entry));
    if (mapIndex_ < lblMaps.size()) {
        for (QLabel* label : lblMaps) label->setStyleSheet(QStringLiteral("color: black;"));
        lblMaps[mapIndex_]->setStyleSheet(QStringLiteral("color: rgb(255, 255, 255);"));
    }

    // The frame fits the monitor; the window sits inside it.
    const QRect area = AvailableAreaAt(savedCursor_);
    const QSize frame(std::min(shown_.width(), area.width() - kMenuWidth - kWindowMargin),
                      std::min(shown_.height(), area.height() - kWindowMargin * 2));
    picOuter->setFixedSize(frame.expandedTo(QSize(100, 100)));
    adjustSize();
    QRect placed(QPoint(0, 0), sizeHint());
    placed.moveCenter(area.center());
    move(placed.topLeft());
    placeInFrame();
    menuColumn_->activate();  // the labels' places, before the highlight goes behind one
    if (mapIndex_ < lblMaps.size()) {
        imgMap->setGeometry(lblMaps[mapIndex_]->geometry());
        imgMap->show();
        imgMap->lower();
    }
    SetTopMost(this, true);
    show();
    raise();
    tmrMenus->start();
}

// The picture scrolled so that both stations are in view where they fit, else the called one.
void Form9::placeInFrame() {
    const QSize outer = picOuter->size(), inner = picInner->size();
    dragHorizontal_ = inner.width() > outer.width();
    dragVertical_ = inner.height() > outer.height();
    QRect wanted;
    if (plot_.calledPlaced) wanted = QRect(plot_.calledX - 40, plot_.calledY - 40, 80, 80);
    if (plot_.ownPlaced) {
        const QRect own(plot_.ownX - 20, plot_.ownY - 20, 40, 40);
        const QRect both = wanted.isNull() ? own : wanted.united(own);
        if (wanted.isNull() || (both.width() <= outer.width() && both.height() <= outer.height())) wanted = both;
    }
    const QPoint centre = wanted.isNull() ? QPoint(inner.width() / 2, inner.height() / 2) : wanted.center();
    const int left = std::clamp(outer.width() / 2 - centre.x(), std::min(0, outer.width() - inner.width()), 0);
    const int top = std::clamp(outer.height() / 2 - centre.y(), std::min(0, outer.height() - inner.height()), 0);
    picInner->move(left, top);
}

void Form9::tmrMenus_Timer() {
    if (QGuiApplication::mouseButtons() == Qt::NoButton) return;
    tmrMenus->stop();
    if (closePopupMenu) closePopupMenu();
}

bool Form9::eventFilter(QObject* watched, QEvent* event) {
    const auto* mouse = static_cast<QMouseEvent*>(event);
    if (event->type() == QEvent::MouseButtonPress) {
        const qsizetype k = lblMaps.indexOf(static_cast<QLabel*>(watched));
        if (k >= 0) {
            lblMaps_Click(static_cast<int>(k));
            return true;
        }
        if (watched == picInner) dragOrigin_ = mouse->position().toPoint();
    }
    if (event->type() == QEvent::MouseButtonDblClick && watched == picInner) {
        close();
        return true;
    }
    if (event->type() == QEvent::MouseMove && watched == picInner) {
        if (!dragReady_) {
            dragReady_ = true;
            dragOrigin_ = mouse->position().toPoint();
            return true;
        }
        if (mouse->buttons() != Qt::LeftButton) return true;
        const QPoint at = mouse->position().toPoint();
        QPoint pos = picInner->pos();
        if (dragVertical_) {
            const float newTop = float(picInner->y()) + float(at.y() - dragOrigin_.y());
            if (picOuter->height() - picInner->height() < newTop && newTop < 1) pos.setY(int(std::lround(newTop)));
        }
        if (dragHorizontal_) {
            const std::optional<int16_t> newLeft = vb::toInt16(double(picInner->x()) + (at.x() - dragOrigin_.x()));
            if (newLeft && picOuter->width() - picInner->width() < *newLeft && *newLeft < 1) pos.setX(*newLeft);
        }
        picInner->move(pos);
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

void Form9::mousePressEvent(QMouseEvent* event) {
    // A click on the window's background closes it.
    if (event->button() == Qt::LeftButton) close();
}

void Form9::closeEvent(QCloseEvent* event) {
    if (cursorSaved_) QCursor::setPos(savedCursor_);
    emit closed(true);
    QWidget::closeEvent(event);
}

namespace {
void refreshAt(Form9*& window, ModuleValues& g, const QStringList& lstMap, int index, const QString& call,
               QWidget* parent) {
    if (!window) {
        window = new Form9(g, lstMap, parent);
        QObject::connect(window, &QObject::destroyed, [&window] { window = nullptr; });
    }
    window->setMapIndex(index);
    window->RefreshMap(call);
}
}  // namespace

void ShowRegionMaps(Form9*& window, ModuleValues& g, const QStringList& lstMap, const QString& call, QWidget* parent,
                    const std::function<void(const QString&)>& showMessage) {
    int index = window ? window->MapIndex() : FindMapEntry(lstMap, QStringLiteral("World Map"));
    if (index < 0 || index >= lstMap.size()) index = lstMap.isEmpty() ? -1 : 0;
    if (index < 0) {
        showMessage(MissingMapMessage(QStringLiteral("World Map")));
        return;
    }
    refreshAt(window, g, lstMap, index, call, parent);
}

void ShowMap(Form9*& window, ModuleValues& g, const QStringList& lstMap, const QString& call, QWidget* parent,
             const std::function<void(const QString&)>& showMessage) {
    const MapSelection selection = SelectMap(lstMap, ChooseMap(g.OtherLat, g.OtherLon));
    for (const QString& message : selection.messages) showMessage(message);
    if (selection.index < 0) return;
    refreshAt(window, g, lstMap, selection.index, call, parent);
}
