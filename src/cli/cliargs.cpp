#include "cli/cliargs.h"

namespace {

constexpr const char* kValueOptions[] = {"--data", "--service", "--call",  "--name",  "--add1", "--add2",
                                         "--ctry", "--lat",     "--lon",   "--class", "--year",
                                         "--size", "--pdf", "--quality", "--capture", "--map", "--own", "--station"};
constexpr const char* kFlags[] = {"--json", "--miles", "--km", "--help", "--version", "--timings"};

// Qt's options for the window (QGuiApplication, QApplication and the X11 plugin), without their
// leading dash; the first group takes the next argument as its value.
constexpr const char* kQtValueOptions[] = {"platform", "platformpluginpath", "platformtheme", "plugin",
                                           "qwindowgeometry", "geometry", "qwindowtitle", "title",
                                           "qwindowicon", "icon", "session", "display", "name", "style",
                                           "stylesheet"};
constexpr const char* kQtFlags[] = {"reverse", "widgetcount", "sync", "nograb", "dograb", "testability"};
constexpr const char* kQtJoinedOptions[] = {"style=", "stylesheet=", "qmljsdebugger="};

template <size_t N>
bool listed(const char* const (&list)[N], QStringView word) {
    for (const char* entry : list)
        if (word == QLatin1String(entry)) return true;
    return false;
}

bool isNumberLike(const QString& word) {
    return word.size() > 1 && word[0] == u'-' && (word[1].isDigit() || word[1] == u'.');
}

// "-platform" -> "platform"; "" for anything that is not a single-dash option.
QStringView singleDashName(const QString& word) {
    if (word.size() < 2 || word[0] != u'-' || word[1] == u'-' || isNumberLike(word)) return {};
    return QStringView(word).mid(1);
}

bool isQtValueOption(const QString& word) { return listed(kQtValueOptions, singleDashName(word)); }

bool isQtOption(const QString& word) {
    const QStringView name = singleDashName(word);
    if (name.isEmpty()) return false;
    if (listed(kQtValueOptions, name) || listed(kQtFlags, name)) return true;
    for (const char* joined : kQtJoinedOptions)
        if (name.startsWith(QLatin1String(joined))) return true;
    return false;
}

}  // namespace

CliArgs ParseCliArgs(const QStringList& args) {
    CliArgs parsed;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString& word = args[i];
        if (word == QLatin1String("-h")) {
            parsed.flags.insert(QStringLiteral("--help"));
        } else if (listed(kFlags, word)) {
            parsed.flags.insert(word);
        } else if (listed(kValueOptions, word)) {
            if (i + 1 >= args.size()) {
                parsed.error = word + QStringLiteral(" needs a value");
                return parsed;
            }
            parsed.values.insert(word, args[++i]);
        } else if (word.size() > 1 && word[0] == u'-' && !isNumberLike(word)) {
            parsed.error = QStringLiteral("unknown option ") + word;
            return parsed;
        } else {
            parsed.positional.append(word);
        }
    }
    return parsed;
}

bool IsCliInvocation(const QStringList& args) {
    for (qsizetype i = 1; i < args.size(); ++i) {
        if (!isQtOption(args[i])) return true;
        if (isQtValueOption(args[i])) ++i;  // its value, whatever it looks like
    }
    return false;
}

QString WindowOption(const QStringList& args, const QString& name) {
    QString value;
    for (qsizetype i = 1; i + 1 < args.size(); ++i) {
        if (!isQtValueOption(args[i])) continue;
        if (singleDashName(args[i]) == name) value = args[i + 1];
        ++i;
    }
    return value;
}
