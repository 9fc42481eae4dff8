#include "cli/cli.h"
#include "cli/clioutput.h"

#include "cli/cliargs.h"
#include "cli/clipictures.h"
#include "cli/climaps.h"
#include "common/vbtext.h"
#include "app/datafolder.h"
#include "app/lookuphosts.h"
#include "app/settings.h"
#include "db/calldatabase.h"
#include "db/storestation.h"
#include "app/stationservice.h"
#include "lookup/uclookup.h"
#include "geo/distanceazimuth.h"
#include "geo/grid.h"
#include "lookup/callbookfields.h"
#include "lookup/cleancall.h"
#include "lookup/htmldecode.h"
#include "platform/system.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTextStream>
#include <array>
#include <cstdio>
#include <optional>

namespace {

constexpr const char* kUsage =
    "Usage: pxcallsigns [COMMAND] [OPERAND]... [OPTION]...\n"
    "Without arguments the program opens its main window. Options may stand anywhere.\n"
    "\n"
    "Commands:\n"
    "  db count                     number of records in the call-sign file\n"
    "  db list                      every call sign, in file order\n"
    "  db find CALL [--json]        the record of CALL (exit 1 when absent)\n"
    "  db add --call CALL [--name T] [--add1 T] [--add2 T] [--ctry T] [--lat T] [--lon T]\n"
    "         [--class T] [--year T]\n"
    "                               adds the record, or updates the one of that call; the call\n"
    "                               is cleaned as for a lookup, --lat and --lon are numbers\n"
    "                               within 90 and 180 degrees\n"
    "  db delete CALL               removes every record of CALL (exit 1 when there is none)\n"
    "  grid LAT LON                 the six-character grid square of a position (exit 1 beyond\n"
    "                               90 degrees of latitude)\n"
    "  distance LAT1 LON1 LAT2 LON2 [--miles] [--json]\n"
    "                               distance and azimuth from the first position to the second\n"
    "  decode FILE                  the plain text of an HTML page, each line ended by CR LF\n"
    "  parse --service N --call CALL FILE [--json]\n"
    "                               the station fields of a call-book page (service 1 eHam,\n"
    "                               2 QRZ, 3 QRZCQ, 4 Callook, 5 HamCall) and the events raised\n"
    "  clean-call TEXT              the call sign TEXT cleaned for a lookup (exit 1: no call)\n"
    "  lookup CALL [--service N] [--json]\n"
    "                               the station from the call-sign file, else from the service\n"
    "                               (default: the one chosen in the program), and keeps what it\n"
    "                               found; exit 1 not found, 3 service not reached\n"
    "  picture jpeg IN OUT [--quality N]\n"
    "                               the picture IN (any format the program reads) written as the\n"
    "                               JPEG file OUT at quality N (0 to 100, default 70); an existing\n"
    "                               OUT keeps its times and permissions\n"
    "  pictaro paste IMAGE          the picture onto the clipboard and F7 to the window titled\n"
    "                               Pictaro, as the picture menu does (exit 1: no such window;\n"
    "                               the picture stays on the clipboard)\n"
    "  map choose LAT LON           the region map of a position\n"
    "  map position NAME LAT LON [--json]\n"
    "                               the pixel x and y of a position on the map NAME (\"Europe\n"
    "                               Map\"); exit 1 for another name or a position off its range\n"
    "  map plot --map NAME --own LAT LON --station LAT LON --call CALL [--km|--miles] OUT.png\n"
    "                               the map picture with both stations as the map window draws\n"
    "                               them\n"
    "  print IMAGE --pdf OUT.pdf [--size N]\n"
    "                               the picture N centimetres wide (2 to 18, default 10) on an A4\n"
    "                               page of a PDF file, as the print window prints it\n"
    "  station-view URL --capture OUT.png [--size WxH] [--timings]\n"
    "                               the web page in the station view, its page area WxH pixels\n"
    "                               (default 800x600), captured as the window captures it;\n"
    "                               exit 1 when the page fails after the retries\n"
    "\n"
    "Options:\n"
    "  --data DIR                   data folder of db and lookup; it must exist (default: the\n"
    "                               user's Norvane folder, which a first use copies from the\n"
    "                               shipped one)\n"
    "  -h, --help                   this text\n"
    "  --version                    the program's version\n"
    "\n"
    "Negative numbers are operands (distance 0 0 -33.9 151.2). Qt's own window options, in their\n"
    "single-dash form only, go to the window: -platform NAME, -display NAME, -style NAME,\n"
    "-geometry WxH+X+Y, -reverse and the like; given with a command they are refused.\n"
    "Without a display the window is not opened (exit 1). A second start of the window, for the\n"
    "same user and data folder, brings the running one to the front and ends (exit 0).\n"
    "\n"
    "Exit status: 0 done, 1 not found or failed, 2 unknown command or bad argument,\n"
    "3 call-book service not reached.\n";

struct FieldOption {
    const char* option;
    CallField field;
    const char* jsonKey;
};
constexpr FieldOption kFieldOptions[] = {
    {"--call", CallField::Call, "Call"},       {"--name", CallField::Name, "Name"},
    {"--add1", CallField::Add1, "Add1"},       {"--add2", CallField::Add2, "Add2"},
    {"--ctry", CallField::Ctry, "Ctry"},       {"--lat", CallField::Lat, "Lat"},
    {"--lon", CallField::Lon, "Lon"},          {"--class", CallField::Class, "Class"},
    {"--year", CallField::YearBorn, "YearBorn"},
};

// Refuses an option that the command does not take; false after the message.
bool takesOnly(const CliArgs& p, const QString& command, const QStringList& allowed) {
    for (const QString& option : p.options()) {
        if (allowed.contains(option)) continue;
        CliUsageError(command + QStringLiteral(" does not take ") + option);
        return false;
    }
    return true;
}

// The call-sign file of the data folder that --data names (it must be there), else of the user's,
// which a first run seeds from the shipped default folder as the window's first run does. Without
// a file, *status is the exit status: 2 for a bad --data, 1 when the seeding failed.
std::optional<CallDatabase> openDatabase(const CliArgs& p, int* status) {
    const QString folder = p.values.value(QStringLiteral("--data"), UserDataFolder());
    if (p.values.contains(QStringLiteral("--data")) && !QFileInfo(folder).isDir()) {
        *status = CliUsageError(QStringLiteral("no such folder: ") + folder);
        return std::nullopt;
    }
    const Status seeded = p.values.contains(QStringLiteral("--data")) ? Status::Ok() : SeedUserDataFolder();
    if (!seeded) {
        *status = CliFailure(seeded.message());
        return std::nullopt;
    }
    return CallDatabase(folder + u'/' + QLatin1String(CallDatabase::kFileName));
}

// A latitude or longitude given to db add: a number within ±limit degrees; "" when fine.
QString positionError(const CliArgs& p, const char* option, double limit) {
    if (!p.values.contains(QLatin1String(option))) return {};
    const QString text = p.values.value(QLatin1String(option));
    const std::optional<double> value = vb::parseNumber(text);
    if (value && *value >= -limit && *value <= limit) return {};
    return QLatin1String(option) + QStringLiteral(" takes a number from -%1 to %1, not '").arg(limit) + text + u'\'';
}

int runDb(const CliArgs& p) {
    const QString verb = p.positional.value(1);
    const QString command = QStringLiteral("db ") + verb;
    const bool listing = verb == QLatin1String("count") || verb == QLatin1String("list");
    const bool oneCall = verb == QLatin1String("find") || verb == QLatin1String("delete");
    if (!listing && !oneCall && verb != QLatin1String("add"))
        return CliUsageError(verb.isEmpty() ? QStringLiteral("db needs a command") : QStringLiteral("unknown db command ") + verb);
    if (oneCall && p.positional.size() != 3) return CliUsageError(command + QStringLiteral(" needs one call sign"));
    if (!oneCall && p.positional.size() > 2) return CliUsageError(QStringLiteral("unexpected argument ") + p.positional[2]);
    QStringList allowed{QStringLiteral("--data")};
    if (verb == QLatin1String("find")) allowed << QStringLiteral("--json");
    if (verb == QLatin1String("add"))
        for (const FieldOption& f : kFieldOptions) allowed << QLatin1String(f.option);
    if (!takesOnly(p, command, allowed)) return 2;
    int status = 0;
    std::optional<CallDatabase> opened = openDatabase(p, &status);
    if (!opened) return status;
    CallDatabase& db = *opened;

    if (verb == QLatin1String("count")) {
        CliOut() << db.CountRecords() << "\n";
        return 0;
    }
    if (verb == QLatin1String("list")) {
        QStringList calls;
        db.FillCallList(calls);
        for (const QString& call : calls) CliOut() << call << "\n";
        return 0;
    }
    if (verb == QLatin1String("find")) {
        const int32_t n = db.FindCallRecord(p.positional[2]);
        if (p.flags.contains(QStringLiteral("--json"))) {
            QJsonObject o;
            o.insert(QStringLiteral("found"), n > 0);
            o.insert(QStringLiteral("record"), n);
            if (n > 0)
                for (const FieldOption& f : kFieldOptions)
                    o.insert(QLatin1String(f.jsonKey), vb::trim(db.CurrentRecord.field(f.field)));
            CliOut() << QJsonDocument(o).toJson(QJsonDocument::Compact) << "\n";
        } else if (n > 0) {
            CliOut() << "record " << n << "\n";
            for (const FieldOption& f : kFieldOptions)
                CliOut() << f.jsonKey << ": " << vb::trim(db.CurrentRecord.field(f.field)) << "\n";
        } else {
            CliErr() << p.positional[2] << ": not found\n";
        }
        return n > 0 ? 0 : 1;
    }
    if (verb == QLatin1String("add")) {
        if (!p.values.contains(QStringLiteral("--call"))) return CliUsageError(QStringLiteral("db add needs --call"));
        QString given = p.values.value(QStringLiteral("--call"));
        const QString call = CleanCall(given);
        if (call.isEmpty()) return CliUsageError(QStringLiteral("no usable call sign: ") + p.values.value(QStringLiteral("--call")));
        for (const auto& [option, limit] : {std::pair{"--lat", 90.0}, {"--lon", 180.0}})
            if (const QString error = positionError(p, option, limit); !error.isEmpty()) return CliUsageError(error);
        if (!db.exists()) db.FindCallRecord(call);  // creates the empty file
        const auto value = [&](const char* option) { return p.values.value(QLatin1String(option)); };
        const StoreOutcome stored = StoreRecord(db, {call, value("--name"), value("--add1"), value("--add2"), value("--ctry"),
                                                     value("--lat"), value("--lon"), value("--class"), value("--year")});
        if (!stored.written) {
            return CliFailure(stored.written.message());
        }
        CliOut() << (stored.appended ? "added " : "updated ") << call << "\n";
        return 0;
    }
    // delete: every record of the call, found by reading them all as the delete itself does.
    QStringList calls;
    db.FillCallList(calls);
    if (!calls.contains(vb::trim(p.positional[2]))) {
        CliErr() << p.positional[2] << ": not found\n";
        return 1;
    }
    if (const Status deleted = db.DeleteCallRecord(p.positional[2]); !deleted) {
        return CliFailure(deleted.message());
    }
    return 0;
}

// The four numbers of a position pair, or of one position; nullopt after the message.
template <size_t N>
std::optional<std::array<double, N>> numbers(const CliArgs& p) {
    std::array<double, N> v{};
    for (size_t i = 0; i < N; ++i) {
        const QString& text = p.positional[qsizetype(i) + 1];
        const std::optional<double> number = vb::parseNumber(text);
        if (!number) {
            CliUsageError(QStringLiteral("not a number: ") + text);
            return std::nullopt;
        }
        v[i] = *number;
    }
    return v;
}

int runDistance(const CliArgs& p) {
    if (!takesOnly(p, QStringLiteral("distance"), {QStringLiteral("--miles"), QStringLiteral("--json")})) return 2;
    if (p.positional.size() != 5) return CliUsageError(QStringLiteral("distance needs LAT1 LON1 LAT2 LON2"));
    const auto v = numbers<4>(p);
    if (!v) return 2;
    const bool miles = p.flags.contains(QStringLiteral("--miles"));
    double distance = 0, azimuth = 0;
    DistanceAzimuth((*v)[0], (*v)[1], (*v)[2], (*v)[3], miles ? 1 : 0, distance, azimuth);
    const QString unit = miles ? QStringLiteral("mi") : QStringLiteral("km");
    if (p.flags.contains(QStringLiteral("--json"))) {
        QJsonObject o{{"distance", distance}, {"azimuth", azimuth}, {"unit", unit}};
        CliOut() << QJsonDocument(o).toJson(QJsonDocument::Compact) << "\n";
    } else {
        CliOut() << distance << " " << unit << " " << azimuth << "\u00b0\n";
    }
    return 0;
}

int runGrid(const CliArgs& p) {
    if (!takesOnly(p, QStringLiteral("grid"), {})) return 2;
    if (p.positional.size() != 3) return CliUsageError(QStringLiteral("grid needs LAT LON"));
    const auto v = numbers<2>(p);
    if (!v) return 2;
    const QString grid = GridSquare((*v)[0], (*v)[1]);
    if (grid.isEmpty()) return CliFailure(QStringLiteral("no grid square beyond 90 degrees of latitude"));
    CliOut() << grid << "\n";
    return 0;
}

bool readPage(const QString& path, QString& text) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        CliErr() << "pxcallsigns: cannot read " << path << ": " << file.errorString() << "\n";
        return false;
    }
    text = lookup::pageToText(file.readAll());
    return true;
}

int runDecode(const CliArgs& p) {
    if (!takesOnly(p, QStringLiteral("decode"), {})) return 2;
    if (p.positional.size() != 2) return CliUsageError(QStringLiteral("decode needs one file"));
    QString text;
    if (!readPage(p.positional[1], text)) return 1;
    if (!text.isEmpty()) CliOut() << text << "\r\n";
    return 0;
}

// One JSON value as text.
QString jsonText(const QJsonValue& value) {
    const QByteArray array = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return QString::fromUtf8(array.mid(1, array.size() - 2));
}

// The service that --service names; 0 after the message.
int serviceOption(const CliArgs& p) {
    bool ok = false;
    const int service = p.values.value(QStringLiteral("--service")).toInt(&ok);
    if (ok && ServiceByNumber(service)) return service;
    CliUsageError(QStringLiteral("--service takes 1 to 5"));
    return 0;
}

int runParse(const CliArgs& p) {
    if (!takesOnly(p, QStringLiteral("parse"), {QStringLiteral("--service"), QStringLiteral("--call"), QStringLiteral("--json")}))
        return 2;
    if (!p.values.contains(QStringLiteral("--service"))) return CliUsageError(QStringLiteral("parse needs --service N"));
    const int service = serviceOption(p);
    if (service == 0) return 2;
    if (!p.values.contains(QStringLiteral("--call"))) return CliUsageError(QStringLiteral("parse needs --call CALL"));
    if (p.positional.size() != 2) return CliUsageError(QStringLiteral("parse needs one file"));
    const QString call = p.values.value(QStringLiteral("--call"));

    lookup::CallbookFields fields;
    if (!readPage(p.positional[1], fields.PageText)) return 1;
    fields.Database = static_cast<int16_t>(service);
    QStringList events;
    fields.onEvent = [&](lookup::FieldEvent event, const QString&) { events.append(lookup::eventName(event)); };

    // The order in which the windows read them: the first four continue from one another.
    const std::pair<const char*, QJsonValue> values[] = {
        {"cName", fields.cName(call)},
        {"Add1", fields.Add1()},
        {"Add2", fields.Add2()},
        {"ctry", fields.ctry()},
        {"Latitude", fields.Latitude()},
        {"Longitude", fields.Longitude()},
        {"Class", fields.Class()},
        {"PrevCall", fields.PrevCall()},
        {"DateOfBirth", fields.DateOfBirth()},
        {"Grid", fields.Grid()},
        {"WebAddress", fields.WebAddress()},
    };
    if (p.flags.contains(QStringLiteral("--json"))) {
        // Written by hand to keep the reading order (QJsonObject sorts its keys).
        QStringList members;
        for (const auto& [key, value] : values) members.append(jsonText(QLatin1String(key)) + u':' + jsonText(value));
        members.append(QStringLiteral("\"events\":") + jsonText(QJsonArray::fromStringList(events)));
        CliOut() << "{" << members.join(u',') << "}\n";
    } else {
        for (const auto& [key, value] : values)
            CliOut() << key << ": " << (value.isString() ? value.toString() : jsonText(value)) << "\n";
        CliOut() << "events: " << events.join(QStringLiteral(", ")) << "\n";
    }
    return 0;
}

int runCleanCall(const CliArgs& p) {
    if (!takesOnly(p, QStringLiteral("clean-call"), {})) return 2;
    if (p.positional.size() != 2) return CliUsageError(QStringLiteral("clean-call needs one text"));
    QString call = p.positional[1];
    const QString cleaned = CleanCall(call);
    if (cleaned.isEmpty()) return 1;
    CliOut() << cleaned << "\n";
    return 0;
}

// The station of a record or of a page, as printed.
struct Shown {
    QString source;
    QStringList events;
    QList<std::pair<const char*, QString>> fields;
};

void printStation(const Shown& shown, bool json) {
    if (json) {
        QJsonObject o;
        o.insert(QStringLiteral("source"), shown.source);
        o.insert(QStringLiteral("events"), QJsonArray::fromStringList(shown.events));
        for (const auto& [key, value] : shown.fields) o.insert(QLatin1String(key), value);
        CliOut() << QJsonDocument(o).toJson(QJsonDocument::Compact) << "\n";
        return;
    }
    CliOut() << "source: " << shown.source << "\n";
    for (const auto& [key, value] : shown.fields) CliOut() << key << ": " << value << "\n";
}

int runLookup(const CliArgs& p) {
    if (!takesOnly(p, QStringLiteral("lookup"), {QStringLiteral("--data"), QStringLiteral("--service"), QStringLiteral("--json")}))
        return 2;
    if (p.positional.size() != 2) return CliUsageError(QStringLiteral("lookup needs one call sign"));
    QString given = p.positional[1];
    const QString call = CleanCall(given);
    if (call.isEmpty()) return CliUsageError(QStringLiteral("no usable call sign: ") + p.positional[1]);
    int service = settings::GetInt16Setting(settings::kServiceIndex, 1) + 1;
    if (p.values.contains(QStringLiteral("--service"))) {
        if ((service = serviceOption(p)) == 0) return 2;
    } else if (!ServiceByNumber(service)) {
        return CliUsageError(QStringLiteral("the settings choose no service (DataBase/Index %1); give --service").arg(service - 1));
    }
    int status = 0;
    std::optional<CallDatabase> opened = openDatabase(p, &status);
    if (!opened) return status;
    CallDatabase& db = *opened;
    const bool json = p.flags.contains(QStringLiteral("--json"));

    Shown shown;
    if (db.FindCallRecord(call) > 0 && !vb::trim(db.CurrentRecord.Name()).isEmpty()) {
        shown.source = QStringLiteral("database");
        for (const FieldOption& f : kFieldOptions) shown.fields.append({f.jsonKey, vb::trim(db.CurrentRecord.field(f.field))});
        printStation(shown, json);
        return 0;
    }

    QByteArray buffer;
    ucLookUp control(buffer, LookupHostsFromSettings());
    control.setDatabase(static_cast<int16_t>(service));
    QEventLoop loop;
    bool arrived = false;
    QObject::connect(&control, &ucLookUp::GotPage, &loop, [&](const QString&, bool) {
        arrived = true;
        loop.quit();
    });
    QObject::connect(&control, &ucLookUp::PageNotFound, &loop, &QEventLoop::quit);
    QObject::connect(&control, &ucLookUp::CallNotFound, &loop, [&] { shown.events << QStringLiteral("CallNotFound"); });
    QObject::connect(&control, &ucLookUp::LoginRequired, &loop, [&] { shown.events << QStringLiteral("LoginRequired"); });
    control.GetPage(call);
    loop.exec();
    const QString serviceName = QLatin1String(ServiceByNumber(service)->name);
    if (!arrived) {
        CliErr() << "pxcallsigns: " << serviceName << " could not be reached\n";
        return 3;
    }
    const QString dataPath = QFileInfo(db.filePath()).absolutePath();
    StationService stations(control, dataPath);
    const TakenPage taken = stations.Take(call);
    if (!taken.station) {
        CliErr() << call << ": " << (taken.refusal == lookup::FieldEvent::LoginRequired ? "login required on " : "not found on ")
              << serviceName << "\n";
        return 1;
    }
    if (!taken.stored.written) {
        return CliFailure(taken.stored.written.message());
    }
    // The station's picture into the cache, as the windows keep it; none is no failure.
    QObject::connect(&control, &ucLookUp::PictureReady, &loop, [&](const QString& id) {
        stations.KeepPicture(id, buffer);
        loop.quit();
    });
    QObject::connect(&control, &ucLookUp::NoPic, &loop, &QEventLoop::quit);
    loop.exec();
    shown.source = serviceName;
    db.FindCallRecord(call);
    for (const FieldOption& f : kFieldOptions) shown.fields.append({f.jsonKey, vb::trim(db.CurrentRecord.field(f.field))});
    printStation(shown, json);
    return 0;
}

}  // namespace

int RunCli(const QStringList& args) {
    const CliArgs p = ParseCliArgs(args.mid(1));
    struct Command { const char* name; int (*run)(const CliArgs&); };
    static constexpr Command kCommands[] = {{"db", runDb},         {"grid", runGrid},   {"distance", runDistance},
                                            {"decode", runDecode}, {"parse", runParse}, {"lookup", runLookup},
                                            {"clean-call", runCleanCall}, {"picture", RunPictureCommand},
                                            {"map", RunMapCommand}};
    int status = -1;
    if (!p.error.isEmpty()) {
        status = CliUsageError(p.error);
    } else if (p.flags.contains(QStringLiteral("--help"))) {
        CliOut() << kUsage;
        status = 0;
    } else if (p.flags.contains(QStringLiteral("--version"))) {
        CliOut() << "pxcallsigns " << PX_VERSION << "\n";
        status = 0;
    } else {
        for (const Command& c : kCommands)
            if (p.positional.value(0) == QLatin1String(c.name)) status = c.run(p);
        if (status < 0)
            status = CliUsageError(p.positional.isEmpty() ? QStringLiteral("no command given")
                                                       : QStringLiteral("unknown command ") + p.positional[0]);
    }
    CliOut().flush();
    CliErr().flush();
    return status;
}
