#pragma once
// The plugin that the program loads when the station view is first opened: the one place that
// links the browser engine.
#include "pictures/stationviewapi.h"

#include <QObject>

class StationViewPlugin : public QObject, public StationViewFactory {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID PX_STATIONVIEW_IID)
    Q_INTERFACES(StationViewFactory)

public:
    StationViewPlugin();
    StationView* create(const StationViewSetup& setup) override;
};
