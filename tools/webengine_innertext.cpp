// Prints what a real browser engine makes of HTML files: document.body.innerText of each file,
// as a JSON object {"file": "text", ...}. The reference for the HTML-to-text conversion.
//
// usage: webengine_innertext [--repeat N] FILE...
// Each file is read as UTF-8, whatever its <meta> says (the page is given to the engine with the
// content type "text/html;charset=utf-8", which outranks a <meta>). All files go through one
// engine start and one page, one after the other.
// With --repeat, each page is loaded and read N times after one warm-up and the time per page is
// printed instead, one line per file on stdout: "FILE MILLISECONDS".
// Exit status 1 when a file cannot be read or the engine fails to load or read a page.
#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTimer>
#include <QUrl>
#include <QWebEnginePage>
#include <QWebEngineProfile>
#include <cstdio>
#include <optional>

namespace {

constexpr int kTimeoutMs = 30000;

// Loads html into the page and returns its body's innerText; nothing when the page fails to load
// or the engine does not answer within kTimeoutMs.
std::optional<QString> innerText(QWebEnginePage& page, const QByteArray& html, const QUrl& base) {
    QEventLoop loop;
    bool loaded = false;
    bool answered = false;
    QString text;
    QTimer guard;
    guard.setSingleShot(true);
    QObject::connect(&guard, &QTimer::timeout, &loop, &QEventLoop::quit);
    const auto connection = QObject::connect(&page, &QWebEnginePage::loadFinished, &loop, [&](bool ok) {
        loaded = ok;
        loop.quit();
    });
    guard.start(kTimeoutMs);
    // setHtml is limited to 2 MB; setContent takes the bytes as they are.
    page.setContent(html, QStringLiteral("text/html;charset=utf-8"), base);
    loop.exec();
    QObject::disconnect(connection);
    if (!loaded) return std::nullopt;
    page.runJavaScript(QStringLiteral("document.body ? document.body.innerText : ''"), [&](const QVariant& v) {
        text = v.toString();
        answered = true;
        loop.quit();
    });
    guard.start(kTimeoutMs);
    loop.exec();
    if (!answered) return std::nullopt;
    return text;
}

}  // namespace

int main(int argc, char** argv) {
    // As root the engine's sandbox cannot start; the pages are our own files.
    qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
    qputenv("QTWEBENGINE_CHROMIUM_FLAGS", "--disable-gpu --no-sandbox --disable-background-networking");
    // The engine's start-up report on the graphics it found says nothing about the pages.
    if (qEnvironmentVariableIsEmpty("QT_LOGGING_RULES")) qputenv("QT_LOGGING_RULES", "qt.webenginecontext.info=false");
    QApplication app(argc, argv);
    QStringList args = app.arguments().mid(1);
    int repeat = 0;
    if (args.size() >= 2 && args[0] == QLatin1String("--repeat")) {
        repeat = args[1].toInt();
        args = args.mid(2);
        if (repeat < 1) {
            std::fprintf(stderr, "--repeat needs a count of 1 or more\n");
            return 2;
        }
    }
    if (args.isEmpty()) {
        std::fprintf(stderr, "usage: webengine_innertext [--repeat N] FILE...\n");
        return 2;
    }
    QWebEngineProfile profile;  // off the record: nothing written to disk
    QWebEnginePage page(&profile);
    QJsonObject out;
    for (const QString& name : args) {
        QFile file(name);
        if (!file.open(QIODevice::ReadOnly)) {
            std::fprintf(stderr, "cannot read %s\n", qPrintable(name));
            return 1;
        }
        const QByteArray html = file.readAll();
        const QUrl base = QUrl::fromLocalFile(QFileInfo(name).absoluteFilePath());
        const std::optional<QString> text = innerText(page, html, base);  // with --repeat: the warm-up
        if (!text) {
            std::fprintf(stderr, "the engine failed to load or read %s\n", qPrintable(name));
            return 1;
        }
        if (repeat > 0) {
            QElapsedTimer t;
            t.start();
            for (int i = 0; i < repeat; ++i)
                if (!innerText(page, html, base)) {
                    std::fprintf(stderr, "the engine failed to load or read %s\n", qPrintable(name));
                    return 1;
                }
            std::printf("%s %.4f\n", qPrintable(name), static_cast<double>(t.nsecsElapsed()) / 1e6 / repeat);
            std::fflush(stdout);
            continue;
        }
        out.insert(name, *text);
    }
    if (repeat == 0) {
        const QByteArray json = QJsonDocument(out).toJson(QJsonDocument::Indented);
        std::fwrite(json.constData(), 1, static_cast<size_t>(json.size()), stdout);
    }
    return 0;
}
