#pragma once
// The map window: the chosen map picture in a frame the size of the monitor at most, both stations
// drawn on it, dragging of a picture larger than the frame, and the menu of every catalogued map.
#include "maps/stationplot.h"

#include <QImage>
#include <QPoint>
#include <QWidget>
#include <functional>

struct ModuleValues;
class QLabel;
class QTimer;
class QVBoxLayout;

class Form9;
// Chooses the map for the called station (OtherLat, OtherLon), shows the messages for missing
// files and has the map window (made on first use, kept in window) drawn. Nothing is drawn when
// neither the chosen map nor the world map is catalogued.
void ShowMap(Form9*& window, ModuleValues& g, const QStringList& lstMap, const QString& call, QWidget* parent,
             const std::function<void(const QString&)>& showMessage);

// The map window on the map it shows, else on the world map, else on the first catalogued one;
// the world map's message when the catalogue is empty.
void ShowRegionMaps(Form9*& window, ModuleValues& g, const QStringList& lstMap, const QString& call, QWidget* parent,
                    const std::function<void(const QString&)>& showMessage);

class Form9 : public QWidget {
    Q_OBJECT
public:
    Form9(ModuleValues& g, const QStringList& lstMap, QWidget* parent = nullptr);

    // The map at MapIndex with the stations, the window placed on the monitor under the pointer.
    void RefreshMap(const QString& call);
    // Choosing entry k of the map menu.
    void lblMaps_Click(int k);

    int MapIndex() const { return mapIndex_; }
    void setMapIndex(int index) { mapIndex_ = index; }
    const StationPlot& plot() const { return plot_; }
    const QImage& shownPicture() const { return shown_; }
    QWidget* picOuter;
    QLabel* picInner;
    QLabel* imgMap;
    QList<QLabel*> lblMaps;
    QTimer* tmrMenus;
    // Closes the main window's pop-up menu; tmrMenus calls it once a mouse button is down.
    std::function<void()> closePopupMenu;
    // How a message reaches the user; tests replace it.
    std::function<void(const QString&)> showMessage;

signals:
    // The window closed; the main window is called back with true.
    void closed(bool done);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void PlotMap(const QString& call);
    void buildMenu();
    void placeInFrame();
    void tmrMenus_Timer();

    ModuleValues& g_;
    const QStringList& lstMap_;
    int mapIndex_ = 0;
    StationPlot plot_;
    QImage shown_;
    QPoint savedCursor_;
    bool cursorSaved_ = false;
    bool dragReady_ = false;
    bool dragVertical_ = false, dragHorizontal_ = false;
    QPoint dragOrigin_;
    QVBoxLayout* menuColumn_;
};
