#include "cli/windowcommands.h"
#include "cli/clioutput.h"

#include "cli/cliargs.h"
#include "cli/stationviewcommand.h"
#include "pictures/printpicture.h"
#include "pictures/savejpg.h"
#include "app/datafolder.h"
#include "app/startup.h"
#include "common/vbtext.h"
#include "maps/mapdrawing.h"
#include "maps/mappicture.h"
#include "maps/mapselection.h"
#include "maps/stationplot.h"

#include <QLoggingCategory>
#include <cstdio>

namespace {

// print IMAGE --size N --pdf OUT.pdf: the picture N centimetres wide on an A4 page, as the print
// window prints it.
int runPrint(const CliArgs& p) {
    for (const QString& option : p.options())
        if (option != QLatin1String("--size") && option != QLatin1String("--pdf"))
            return CliUsageError(QStringLiteral("print does not take ") + option);
    if (p.positional.size() != 2) return CliUsageError(QStringLiteral("print needs one picture"));
    if (!p.values.contains(QStringLiteral("--pdf"))) return CliUsageError(QStringLiteral("print needs --pdf FILE"));
    bool ok = false;
    const int size = p.values.value(QStringLiteral("--size"), QString::number(kPrintWidthDefaultCm)).toInt(&ok);
    if (!ok || size < kPrintWidthMinCm || size > kPrintWidthMaxCm)
        return CliUsageError(QStringLiteral("--size takes %1 to %2 (centimetres)").arg(kPrintWidthMinCm).arg(kPrintWidthMaxCm));
    const Result<QImage> picture = ReadPictureFile(p.positional[1]);
    Status done = picture ? PrintPictureToPdf(p.values.value(QStringLiteral("--pdf")), *picture, size) : picture.status();
    return done ? 0 : CliFailure(done.message());
}

// The arguments as given: map plot's --own and --station take two numbers each.
QStringList g_rawArgs;

// The two numbers after option in the raw arguments; false when they are not there.
bool numberPair(const QString& option, double& lat, double& lon) {
    const qsizetype at = g_rawArgs.indexOf(option);
    if (at < 0 || at + 2 >= g_rawArgs.size()) return false;
    const std::optional<double> a = vb::parseNumber(g_rawArgs[at + 1]), b = vb::parseNumber(g_rawArgs[at + 2]);
    if (!a || !b) return false;
    lat = *a;
    lon = *b;
    return true;
}

// map plot --map NAME --own LAT LON --station LAT LON --call CALL [--km|--miles] OUT.png: the
// whole map picture with both stations, drawn as the map window draws them.
int runMapPlot(const CliArgs& p) {
    if (p.positional.value(1) != QLatin1String("plot")) return CliUsageError(QStringLiteral("unknown map command"));
    const QStringList allowed{"--map", "--own", "--station", "--call", "--km", "--miles", "--data"};
    for (const QString& option : p.options())
        if (!allowed.contains(option)) return CliUsageError(QStringLiteral("map plot does not take ") + option);
    double myLat = 0, myLon = 0, lat = 0, lon = 0;
    if (!numberPair(QStringLiteral("--own"), myLat, myLon)) return CliUsageError(QStringLiteral("map plot needs --own LAT LON"));
    if (!numberPair(QStringLiteral("--station"), lat, lon))
        return CliUsageError(QStringLiteral("map plot needs --station LAT LON"));
    if (!p.values.contains(QStringLiteral("--map")) || !p.values.contains(QStringLiteral("--call")))
        return CliUsageError(QStringLiteral("map plot needs --map NAME and --call CALL"));
    // The operands left: the command, the second numbers of the two pairs, the output file.
    if (p.positional.size() != 5) return CliUsageError(QStringLiteral("map plot needs one output file"));
    const QString out = p.positional.last();
    QString dataPath = p.values.value(QStringLiteral("--data"));
    if (dataPath.isEmpty()) {
        if (const Status seeded = SeedUserDataFolder(); !seeded) return CliFailure(seeded.message());
        dataPath = UserDataFolder();
    }
    const QString name = p.values.value(QStringLiteral("--map"));
    const QStringList catalogue = MapCatalogue(dataPath);
    const int index = FindMapEntry(catalogue, name);
    if (index < 0) return CliFailure(MissingMapMessage(name).replace(QStringLiteral("\r\n"), QStringLiteral("\n")));
    const int unit = p.flags.contains(QStringLiteral("--miles")) ? 1 : 0;
    const StationPlot plot = PlanStations(MapEntryName(catalogue[index]), myLat, myLon, lat, lon,
                                          p.values.value(QStringLiteral("--call")), unit);
    if (!plot.error.isEmpty()) CliErr() << "pxcallsigns: " << plot.error << "\n";
    const Result<QImage> map = ReadMapPicture(dataPath + QStringLiteral("/Maps/") + catalogue[index]);
    if (!map) return CliFailure(map.message());
    if (!PlotMapPicture(*map, plot).save(out, "PNG")) return CliFailure(QStringLiteral("cannot write ") + out);
    return plot.error.isEmpty() ? 0 : 1;
}

struct WindowCommand {
    const char* name;
    const char* verb;  // the second word, or nullptr
    int (*run)(const CliArgs&);
};
constexpr WindowCommand kWindowCommands[] = {
    {"print", nullptr, runPrint}, {"station-view", nullptr, RunStationViewCommand}, {"map", "plot", runMapPlot}};

bool matches(const WindowCommand& c, const CliArgs& p) {
    return p.positional.value(0) == QLatin1String(c.name) && (!c.verb || p.positional.value(1) == QLatin1String(c.verb));
}

}  // namespace

bool IsWindowCommand(const QStringList& args) {
    const CliArgs p = ParseCliArgs(args.mid(1));
    if (!p.error.isEmpty() || p.flags.contains(QStringLiteral("--help")) || p.flags.contains(QStringLiteral("--version")))
        return false;
    for (const WindowCommand& c : kWindowCommands)
        if (matches(c, p)) return true;
    return false;
}

int RunWindowCommand(const QStringList& args) {
    // A refused picture or a file that cannot be written is said in our own words; Qt's reader and
    // painter need not say it too.
    QLoggingCategory::setFilterRules(QStringLiteral("qt.gui.imageio.warning=false\ndefault.warning=false\nqt.webenginecontext.info=false"));
    const CliArgs p = ParseCliArgs(args.mid(1));
    g_rawArgs = args.mid(1);
    for (const WindowCommand& c : kWindowCommands)
        if (matches(c, p)) return c.run(p);
    return CliUsageError(QStringLiteral("unknown command ") + p.positional.value(0));
}
