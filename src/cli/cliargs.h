#pragma once
// The program's arguments: whether they ask for the command line or the window, the command
// line's options in any position, and Qt's own single-dash options that belong to the window.
#include <QMap>
#include <QSet>
#include <QString>
#include <QStringList>

struct CliArgs {
    QStringList positional;          // the command and its operands, in order
    QMap<QString, QString> values;   // options with a value ("--data" -> "DIR"); the last one counts
    QSet<QString> flags;             // "--json", "--miles", "--help" (also given as "-h"), "--version"
    QString error;                   // why the arguments cannot be used; "" when they can

    bool has(const QString& option) const { return values.contains(option) || flags.contains(option); }
    // Every option given, in no particular order.
    QStringList options() const { return values.keys() + flags.values(); }
};

// The arguments after the program's name. A word that starts with "-" followed by a digit or a
// point is a (negative) number, not an option.
CliArgs ParseCliArgs(const QStringList& args);

// True when the arguments (args[0] is the program) are for the command line: any word, any
// "--" option, "-h", or a single-dash option that is not one of Qt's. No arguments at all, or
// only Qt's own window options in their single-dash form ("-platform offscreen", "-reverse"),
// leave them to the window.
bool IsCliInvocation(const QStringList& args);

// The value of one of Qt's single-dash window options ("platform" for "-platform NAME"); "" when
// it is not given.
QString WindowOption(const QStringList& args, const QString& name);
