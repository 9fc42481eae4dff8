#include "cli/windowcommands.h"

#include "cli/cliargs.h"
#include "cli/stationviewcommand.h"
#include "pictures/printpicture.h"
#include "pictures/savejpg.h"

#include <QLoggingCategory>
#include <QTextStream>
#include <cstdio>

namespace {

QTextStream& err() {
    static QTextStream s(stderr);
    return s;
}

int usageError(const QString& message) {
    err() << "pxcallsigns: " << message << "\nTry 'pxcallsigns --help'.\n";
    err().flush();
    return 2;
}

// print IMAGE --size N --pdf OUT.pdf: the picture N centimetres wide on an A4 page, as the print
// window prints it.
int runPrint(const CliArgs& p) {
    for (const QString& option : p.options())
        if (option != QLatin1String("--size") && option != QLatin1String("--pdf"))
            return usageError(QStringLiteral("print does not take ") + option);
    if (p.positional.size() != 2) return usageError(QStringLiteral("print needs one picture"));
    if (!p.values.contains(QStringLiteral("--pdf"))) return usageError(QStringLiteral("print needs --pdf FILE"));
    bool ok = false;
    const int size = p.values.value(QStringLiteral("--size"), QString::number(kPrintWidthDefaultCm)).toInt(&ok);
    if (!ok || size < kPrintWidthMinCm || size > kPrintWidthMaxCm)
        return usageError(QStringLiteral("--size takes %1 to %2 (centimetres)").arg(kPrintWidthMinCm).arg(kPrintWidthMaxCm));
    const Result<QImage> picture = ReadPictureFile(p.positional[1]);
    Status done = picture ? PrintPictureToPdf(p.values.value(QStringLiteral("--pdf")), *picture, size) : picture.status();
    if (done) return 0;
    err() << "pxcallsigns: " << done.message() << "\n";
    err().flush();
    return 1;
}

struct WindowCommand {
    const char* name;
    int (*run)(const CliArgs&);
};
constexpr WindowCommand kWindowCommands[] = {{"print", runPrint}, {"station-view", RunStationViewCommand}};

}  // namespace

bool IsWindowCommand(const QStringList& args) {
    const CliArgs p = ParseCliArgs(args.mid(1));
    if (!p.error.isEmpty() || p.flags.contains(QStringLiteral("--help")) || p.flags.contains(QStringLiteral("--version")))
        return false;
    for (const WindowCommand& c : kWindowCommands)
        if (p.positional.value(0) == QLatin1String(c.name)) return true;
    return false;
}

int RunWindowCommand(const QStringList& args) {
    // A refused picture or a file that cannot be written is said in our own words; Qt's reader and
    // painter need not say it too.
    QLoggingCategory::setFilterRules(QStringLiteral("qt.gui.imageio.warning=false\ndefault.warning=false\nqt.webenginecontext.info=false"));
    const CliArgs p = ParseCliArgs(args.mid(1));
    for (const WindowCommand& c : kWindowCommands)
        if (p.positional.value(0) == QLatin1String(c.name)) return c.run(p);
    return usageError(QStringLiteral("unknown command ") + p.positional.value(0));
}
