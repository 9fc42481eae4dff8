#include "cli/cli.h"

#include "common/vbtext.h"
#include "app/settings.h"
#include "db/calldatabase.h"
#include "db/storestation.h"
#include "lookup/uclookup.h"
#include "geo/distanceazimuth.h"
#include "geo/grid.h"
#include "lookup/callbookfields.h"
#include "lookup/cleancall.h"
#include "lookup/htmldecode.h"
#include "lookup/stationreader.h"
#include "platform/platform.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTextStream>
#include <cstdio>

namespace {

constexpr const char* kUsage =
    "Usage: pxcallsigns [COMMAND]\n"
    "Without a command the program opens its main window.\n"
    "\n"
    "Commands:\n"
    "  db count                     number of records in the call-sign file\n"
    "  db list                      every call sign, in file order\n"
    "  db find CALL [--json]        the record of CALL (exit 1 when absent)\n"
    "  db add --call CALL [--name T] [--add1 T] [--add2 T] [--ctry T] [--lat T] [--lon T]\n"
    "         [--class T] [--year T]\n"
    "                               adds the record, or updates the one of that call\n"
    "  db delete CALL               removes every record of CALL\n"
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
    "\n"
    "Options:\n"
    "  --data DIR                   data folder to use (default: the user's Norvane folder)\n"
    "  --help                       this text\n"
    "  --version                    the program's version\n";

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

QTextStream& out() {
    static QTextStream s(stdout);
    return s;
}
QTextStream& err() {
    static QTextStream s(stderr);
    return s;
}

int usageError(const QString& message) {
    err() << "pxcallsigns: " << message << "\n" << "Try 'pxcallsigns --help'.\n";
    err().flush();
    return 2;
}

struct Parsed {
    QStringList positional;
    QMap<QString, QString> options;
    bool json = false;
    bool miles = false;
    QString error;
};

Parsed parse(const QStringList& args) {
    Parsed p;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString& a = args[i];
        if (a == QLatin1String("--json")) {
            p.json = true;
        } else if (a == QLatin1String("--miles")) {
            p.miles = true;
        } else if (a.startsWith(QLatin1String("--")) && a != QLatin1String("--help") &&
                   a != QLatin1String("--version")) {
            if (i + 1 >= args.size()) {
                p.error = a + QStringLiteral(" needs a value");
                return p;
            }
            p.options.insert(a, args[++i]);
        } else {
            p.positional.append(a);
        }
    }
    return p;
}

int runDb(const Parsed& p, CallDatabase& db) {
    const QString verb = p.positional.value(1);
    if (verb == QLatin1String("count")) {
        out() << db.CountRecords() << "\n";
        return 0;
    }
    if (verb == QLatin1String("list")) {
        QStringList calls;
        db.FillCallList(calls);
        for (const QString& call : calls) out() << call << "\n";
        return 0;
    }
    if (verb == QLatin1String("find")) {
        if (p.positional.size() != 3) return usageError(QStringLiteral("db find needs one call sign"));
        const int32_t n = db.FindCallRecord(p.positional[2]);
        if (p.json) {
            QJsonObject o;
            o.insert(QStringLiteral("found"), n > 0);
            o.insert(QStringLiteral("record"), n);
            if (n > 0)
                for (const FieldOption& f : kFieldOptions)
                    o.insert(QLatin1String(f.jsonKey), vb::trim(db.CurrentRecord.field(f.field)));
            out() << QJsonDocument(o).toJson(QJsonDocument::Compact) << "\n";
        } else if (n > 0) {
            out() << "record " << n << "\n";
            for (const FieldOption& f : kFieldOptions)
                out() << f.jsonKey << ": " << vb::trim(db.CurrentRecord.field(f.field)) << "\n";
        } else {
            err() << p.positional[2] << ": not found\n";
        }
        return n > 0 ? 0 : 1;
    }
    if (verb == QLatin1String("add")) {
        const QString call = vb::trim(p.options.value(QStringLiteral("--call")));
        if (call.isEmpty()) return usageError(QStringLiteral("db add needs --call"));
        for (const QString& key : p.options.keys()) {
            bool known = key == QLatin1String("--data");
            for (const FieldOption& f : kFieldOptions) known = known || key == QLatin1String(f.option);
            if (!known) return usageError(QStringLiteral("unknown option ") + key);
        }
        if (!db.exists()) db.FindCallRecord(call);  // creates the empty file
        const int32_t n = db.FindCallRecord(call);
        db.ClearRecord();
        for (const FieldOption& f : kFieldOptions)
            db.CurrentRecord.setField(f.field, f.field == CallField::Call ? call : p.options.value(QLatin1String(f.option)));
        const bool ok = n == 0 ? db.AppendSorted() : db.UpdateRecord(n);
        if (!ok) {
            err() << "pxcallsigns: " << db.lastError() << "\n";
            return 1;
        }
        out() << (n == 0 ? "added " : "updated ") << call << "\n";
        return 0;
    }
    if (verb == QLatin1String("delete")) {
        if (p.positional.size() != 3) return usageError(QStringLiteral("db delete needs one call sign"));
        if (!db.DeleteCallRecord(p.positional[2])) {
            err() << "pxcallsigns: " << db.lastError() << "\n";
            return 1;
        }
        return 0;
    }
    return usageError(verb.isEmpty() ? QStringLiteral("db needs a command") : QStringLiteral("unknown db command ") + verb);
}

int runDistance(const Parsed& p) {
    if (p.positional.size() != 5) return usageError(QStringLiteral("distance needs LAT1 LON1 LAT2 LON2"));
    double v[4];
    for (int i = 0; i < 4; ++i) {
        const auto number = vb::parseNumber(p.positional[i + 1]);
        if (!number) return usageError(QStringLiteral("not a number: ") + p.positional[i + 1]);
        v[i] = *number;
    }
    double distance = 0, azimuth = 0;
    DistanceAzimuth(v[0], v[1], v[2], v[3], p.miles ? 1 : 0, distance, azimuth);
    const QString unit = p.miles ? QStringLiteral("mi") : QStringLiteral("km");
    if (p.json) {
        QJsonObject o{{"distance", distance}, {"azimuth", azimuth}, {"unit", unit}};
        out() << QJsonDocument(o).toJson(QJsonDocument::Compact) << "\n";
    } else {
        out() << distance << " " << unit << " " << azimuth << "\u00b0\n";
    }
    return 0;
}

// The position read as the setup window reads it: the number at the start of the text, 0 for none.
int runGrid(const Parsed& p) {
    if (p.positional.size() != 3) return usageError(QStringLiteral("grid needs LAT LON"));
    const QString grid = GridSquare(vb::val(p.positional[1]), vb::val(p.positional[2]));
    if (grid.isEmpty()) return 1;
    out() << grid << "\n";
    return 0;
}

bool readPage(const QString& path, QString& text) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        err() << "pxcallsigns: cannot read " << path << ": " << file.errorString() << "\n";
        return false;
    }
    text = lookup::pageToText(file.readAll());
    return true;
}

int runDecode(const Parsed& p) {
    if (p.positional.size() != 2) return usageError(QStringLiteral("decode needs one file"));
    QString text;
    if (!readPage(p.positional[1], text)) return 1;
    if (!text.isEmpty()) out() << text << "\r\n";
    return 0;
}

// One JSON value as text.
QString jsonText(const QJsonValue& value) {
    const QByteArray array = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return QString::fromUtf8(array.mid(1, array.size() - 2));
}

int runParse(const Parsed& p) {
    bool ok = false;
    const int service = p.options.value(QStringLiteral("--service")).toShort(&ok);
    if (!ok) return usageError(QStringLiteral("parse needs --service N"));
    if (!p.options.contains(QStringLiteral("--call"))) return usageError(QStringLiteral("parse needs --call CALL"));
    if (p.positional.size() != 2) return usageError(QStringLiteral("parse needs one file"));
    const QString call = p.options.value(QStringLiteral("--call"));

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
    if (p.json) {
        // Written by hand to keep the reading order (QJsonObject sorts its keys).
        QStringList members;
        for (const auto& [key, value] : values) members.append(jsonText(QLatin1String(key)) + u':' + jsonText(value));
        members.append(QStringLiteral("\"events\":") + jsonText(QJsonArray::fromStringList(events)));
        out() << "{" << members.join(u',') << "}\n";
    } else {
        for (const auto& [key, value] : values)
            out() << key << ": " << (value.isString() ? value.toString() : jsonText(value)) << "\n";
        out() << "events: " << events.join(QStringLiteral(", ")) << "\n";
    }
    return 0;
}

int runCleanCall(const Parsed& p) {
    if (p.positional.size() != 2) return usageError(QStringLiteral("clean-call needs one text"));
    QString call = p.positional[1];
    const QString cleaned = CleanCall(call);
    if (cleaned.isEmpty()) return 1;
    out() << cleaned << "\n";
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
        out() << QJsonDocument(o).toJson(QJsonDocument::Compact) << "\n";
        return;
    }
    out() << "source: " << shown.source << "\n";
    for (const auto& [key, value] : shown.fields) out() << key << ": " << value << "\n";
}

int runLookup(const Parsed& p) {
    if (p.positional.size() != 2) return usageError(QStringLiteral("lookup needs one call sign"));
    QString call = p.positional[1];
    if (CleanCall(call).isEmpty()) return usageError(QStringLiteral("no usable call sign: ") + p.positional[1]);
    const QString data = p.options.value(QStringLiteral("--data"), platform::GetAppDataFolder() + QStringLiteral("/Norvane"));
    CallDatabase db(data + u'/' + QLatin1String(CallDatabase::kFileName));

    Shown shown;
    if (db.FindCallRecord(call) > 0 && !vb::trim(db.CurrentRecord.Name()).isEmpty()) {
        shown.source = QStringLiteral("database");
        for (const FieldOption& f : kFieldOptions) shown.fields.append({f.jsonKey, vb::trim(db.CurrentRecord.field(f.field))});
        printStation(shown, p.json);
        return 0;
    }

    int service = settings::GetInt16Setting(settings::kServiceIndex, 1) + 1;
    if (p.options.contains(QStringLiteral("--service"))) {
        bool ok = false;
        service = p.options.value(QStringLiteral("--service")).toInt(&ok);
        if (!ok || !ServiceByNumber(service)) return usageError(QStringLiteral("--service takes 1 to 5"));
    }
    QByteArray buffer;
    ucLookUp control(buffer, LookupHosts::FromSettings());
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
        err() << "pxcallsigns: " << serviceName << " could not be reached\n";
        return 3;
    }
    const lookup::StationReading reading = lookup::ReadStation(control, call);
    if (!reading.station) {
        err() << call << ": " << (reading.refusal == lookup::FieldEvent::LoginRequired ? "login required on " : "not found on ")
              << serviceName << "\n";
        return 1;
    }
    const StationFields& station = *reading.station;
    if (!StoreStation(db, station)) {
        err() << "pxcallsigns: " << db.lastError() << "\n";
        return 1;
    }
    shown.source = serviceName;
    db.FindCallRecord(call);
    for (const FieldOption& f : kFieldOptions) shown.fields.append({f.jsonKey, vb::trim(db.CurrentRecord.field(f.field))});
    printStation(shown, p.json);
    return 0;
}

}  // namespace

bool IsCliInvocation(const QStringList& args) {
    static const QStringList kCommands{QStringLiteral("db"),         QStringLiteral("distance"), QStringLiteral("grid"), QStringLiteral("decode"),
                                       QStringLiteral("parse"),      QStringLiteral("clean-call"), QStringLiteral("lookup"), QStringLiteral("--help"),
                                       QStringLiteral("-h"),         QStringLiteral("--version")};
    return args.size() > 1 && kCommands.contains(args[1]);
}

int RunCli(const QStringList& args) {
    const Parsed p = parse(args.mid(1));
    int status = 0;
    if (!p.error.isEmpty()) {
        status = usageError(p.error);
    } else if (args.contains(QStringLiteral("--help")) || args.contains(QStringLiteral("-h"))) {
        out() << kUsage;
    } else if (args.contains(QStringLiteral("--version"))) {
        out() << "pxcallsigns " << PX_VERSION << "\n";
    } else if (p.positional.value(0) == QLatin1String("db")) {
        const QString data = p.options.value(QStringLiteral("--data"),
                                             platform::GetAppDataFolder() + QStringLiteral("/Norvane"));
        CallDatabase db(data + u'/' + QLatin1String(CallDatabase::kFileName));
        status = runDb(p, db);
    } else if (p.positional.value(0) == QLatin1String("grid")) {
        status = runGrid(p);
    } else if (p.positional.value(0) == QLatin1String("distance")) {
        status = runDistance(p);
    } else if (p.positional.value(0) == QLatin1String("decode")) {
        status = runDecode(p);
    } else if (p.positional.value(0) == QLatin1String("parse")) {
        status = runParse(p);
    } else if (p.positional.value(0) == QLatin1String("lookup")) {
        status = runLookup(p);
    } else if (p.positional.value(0) == QLatin1String("clean-call")) {
        status = runCleanCall(p);
    } else {
        status = usageError(QStringLiteral("unknown command ") + p.positional.value(0));
    }
    out().flush();
    err().flush();
    return status;
}
