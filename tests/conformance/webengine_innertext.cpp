// Prints what a real browser engine makes of HTML files: document.body.innerText of each file,
// as a JSON object {"file": "text", ...}. The reference for the HTML-to-text conversion.
//
// usage: webengine_innertext [--repeat N] FILE...
// With --repeat, each page is loaded and read N times and the time per page is printed instead
// (milliseconds, to stderr), for the benchmark.
#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTextStream>
#include <QTimer>
#include <QUrl>
#include <QWebEnginePage>
#include <QWebEngineProfile>
#include <cstdio>

namespace {

// Loads html into the page and returns its body's innerText ("" on failure or after 30 s).
QString innerText(QWebEnginePage& page, const QByteArray& html, const QUrl& base) {
    QEventLoop loop;
    QString text;
    bool loaded = false;
    QTimer guard;
    guard.setSingleShot(true);
    QObject::connect(&guard, &QTimer::timeout, &loop, &QEventLoop::quit);
    auto connection = QObject::connect(&page, &QWebEnginePage::loadFinished, &loop, [&](bool ok) {
        loaded = ok;
        loop.quit();
    });
    guard.start(30000);
    // setHtml is limited to 2 MB; setContent takes the bytes as they are.
    page.setContent(html, QStringLiteral("text/html;charset=utf-8"), base);
    loop.exec();
    QObject::disconnect(connection);
    if (!loaded) return {};
    page.runJavaScript(QStringLiteral("document.body ? document.body.innerText : ''"), [&](const QVariant& v) {
        text = v.toString();
        loop.quit();
    });
    guard.start(30000);
    loop.exec();
    return text;
}

}  // namespace

int main(int argc, char** argv) {
    qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
    qputenv("QTWEBENGINE_CHROMIUM_FLAGS", "--disable-gpu --no-sandbox --disable-background-networking");
    QApplication app(argc, argv);
    QStringList args = app.arguments().mid(1);
    int repeat = 0;
    if (args.size() >= 2 && args[0] == QLatin1String("--repeat")) {
        repeat = args[1].toInt();
        args = args.mid(2);
    }
    QWebEngineProfile profile;  // off the record: nothing written to disk
    QWebEnginePage page(&profile);
    QJsonObject out;
    for (const QString& name : args) {
        QFile file(name);
        if (!file.open(QIODevice::ReadOnly)) {
            fprintf(stderr, "cannot read %s\n", qPrintable(name));
            return 1;
        }
        const QByteArray html = file.readAll();
        const QUrl base = QUrl::fromLocalFile(QFileInfo(name).absoluteFilePath());
        if (repeat > 0) {
            innerText(page, html, base);  // warm-up
            QElapsedTimer t;
            t.start();
            for (int i = 0; i < repeat; ++i) innerText(page, html, base);
            fprintf(stderr, "%s %.3f ms\n", qPrintable(name), t.nsecsElapsed() / 1e6 / repeat);
            continue;
        }
        out.insert(name, innerText(page, html, base));
    }
    if (repeat == 0) {
        QTextStream(stdout) << QJsonDocument(out).toJson(QJsonDocument::Indented);
    }
    return 0;
}
