#include "cli/stationviewcommand.h"
#include "cli/clioutput.h"

#include "pictures/stationviewapi.h"
#include "pictures/stationviewloader.h"
#include "pictures/stationviewrules.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QPointer>
#include <QRegularExpression>
#include <QTimer>
#include <QWidget>

QSize ParseCaptureSize(const QString& text) {
    static const QRegularExpression pattern(QStringLiteral("^(\\d{1,4})x(\\d{1,4})$"));
    const QRegularExpressionMatch m = pattern.match(text);
    if (!m.hasMatch()) return {};
    const int w = m.captured(1).toInt();
    const int h = m.captured(2).toInt();
    if (w < 64 || h < 64 || w > 4096 || h > 4096) return {};
    return {w, h};
}

int RunStationViewCommand(const CliArgs& p) {
    for (const QString& option : p.options())
        if (option != QLatin1String("--size") && option != QLatin1String("--capture") && option != QLatin1String("--timings"))
            return CliUsageError(QStringLiteral("station-view does not take ") + option);
    if (p.positional.size() != 2) return CliUsageError(QStringLiteral("station-view needs one address"));
    const QString out = p.values.value(QStringLiteral("--capture"));
    if (out.isEmpty()) return CliUsageError(QStringLiteral("station-view needs --capture FILE.png"));
    const QSize size = ParseCaptureSize(p.values.value(QStringLiteral("--size"), QStringLiteral("800x600")));
    if (size.isEmpty()) return CliUsageError(QStringLiteral("--size takes WxH, each from 64 to 4096 (pixels)"));
    if (!stationview::AddressAllowed(p.positional[1])) return CliUsageError(QStringLiteral("not a web address: ") + p.positional[1]);

    // From here as from the menu click: the plugin's loading is part of the first opening.
    QElapsedTimer clock;
    clock.start();
    QString why;
    StationViewFactory* factory = LoadStationView(&why);
    if (!factory) return CliFailure(why);
    int status = 1;
    qint64 shownMs = -1;
    qint64 captureMs = -1;
    StationView* view = nullptr;
    StationViewSetup setup;
    setup.request = p.positional[1] + QStringLiteral("*");
    setup.monitor = QRect(0, 0, 8192, 8192);
    setup.keptLeft = 0;
    setup.keptWidth = size.width();
    setup.keptHeight = size.height() + kStationViewMenuBarHeight;
    // The command line has no language file: the English text.
    setup.retryMessage = stationview::RetryMessage(QStringLiteral("PX Callsigns"),
                                                   QStringLiteral("The page could not be shown. The browser is started afresh."));
    setup.tell = [](const QString& text) { CliErr() << QString(text).replace(QLatin1String("\r\n"), QLatin1String("\n")) << "\n"; };
    setup.retried = [](int attempt) { CliErr() << "pxcallsigns: page failed, attempt " << attempt << "\n"; };
    setup.pageDone = [&](bool shown) {
        if (!shown) {
            status = 1;
            QCoreApplication::exit(0);
            return;
        }
        shownMs = clock.elapsed();
        QTimer::singleShot(0, qApp, [&] {
            QElapsedTimer taking;
            taking.start();
            const QImage picture = view ? view->CaptureView() : QImage();
            captureMs = taking.elapsed();
            status = !picture.isNull() && picture.save(out, "PNG") ? 0 : 1;
            if (status != 0) CliErr() << "pxcallsigns: the picture cannot be written to " << out << "\n";
            QCoreApplication::exit(0);
        });
    };
    view = factory->create(setup);
    QPointer<QWidget> window = view->window();
    QApplication::exec();
    if (p.flags.contains(QStringLiteral("--timings")))
        CliErr() << "shown_ms=" << shownMs << " capture_ms=" << captureMs << "\n";
    CliErr().flush();
    delete window.data();
    return status;
}
