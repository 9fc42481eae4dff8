// A stand-in for Pictaro, for the tests and the demo: a window titled "Pictaro" that, on F7,
// takes the clipboard's picture as its transmit picture and shows it.
//
//   pictaro_standin [--title T] [--received FILE] [--log FILE] [--minimised]
//
// --received: each picture received is written there (PNG, lossless); --log: a line per F7,
// "F7 WIDTHxHEIGHT" or "F7 no picture"; --title: another title (a window that must not get keys).
#include <QApplication>
#include <QClipboard>
#include <QFile>
#include <QKeyEvent>
#include <QLabel>
#include <QTextStream>
#include <QTimer>
#include <QVBoxLayout>

namespace {

class Standin : public QWidget {
public:
    Standin(QString received, QString log) : received_(std::move(received)), log_(std::move(log)) {
        auto* layout = new QVBoxLayout(this);
        status_ = new QLabel(QStringLiteral("Transmit picture: waiting for F7 (paste)"), this);
        status_->setObjectName(QStringLiteral("status"));
        picture_ = new QLabel(this);
        picture_->setObjectName(QStringLiteral("transmitPicture"));
        picture_->setMinimumSize(320, 256);
        picture_->setAlignment(Qt::AlignCenter);
        picture_->setStyleSheet(QStringLiteral("background: #203040; color: white"));
        picture_->setText(QStringLiteral("TX"));
        layout->addWidget(status_);
        layout->addWidget(picture_, 1);
    }

protected:
    void keyPressEvent(QKeyEvent* event) override {
        if (event->key() != Qt::Key_F7 || event->isAutoRepeat()) return QWidget::keyPressEvent(event);
        const QImage image = QApplication::clipboard()->image();
        QString line;
        if (image.isNull()) {
            line = QStringLiteral("F7 no picture");
            status_->setText(QStringLiteral("F7: the clipboard holds no picture"));
        } else {
            line = QStringLiteral("F7 %1x%2").arg(image.width()).arg(image.height());
            status_->setText(QStringLiteral("Transmit picture: %1 x %2 pasted").arg(image.width()).arg(image.height()));
            picture_->setPixmap(QPixmap::fromImage(image.scaled(picture_->size(), Qt::KeepAspectRatio, Qt::SmoothTransformation)));
            if (!received_.isEmpty()) image.save(received_, "PNG");
        }
        if (!log_.isEmpty()) {
            QFile f(log_);
            if (f.open(QIODevice::Append)) QTextStream(&f) << line << "\n";
        }
        QTextStream(stdout) << line << Qt::endl;
    }

private:
    QString received_, log_;
    QLabel* status_;
    QLabel* picture_;
};

}  // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    const QStringList args = app.arguments();
    auto value = [&](const char* option) {
        const qsizetype at = args.indexOf(QLatin1String(option));
        return at >= 0 ? args.value(at + 1) : QString();
    };
    Standin window(value("--received"), value("--log"));
    const QString title = value("--title");
    window.setWindowTitle(title.isEmpty() ? QStringLiteral("Pictaro") : title);
    window.show();
    // Minimised once it is on the screen, as a user would leave it.
    if (args.contains(QStringLiteral("--minimised"))) QTimer::singleShot(300, &window, &QWidget::showMinimized);
    QTextStream(stdout) << "ready" << Qt::endl;
    return app.exec();
}
