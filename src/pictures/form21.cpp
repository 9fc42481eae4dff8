#include "pictures/form21.h"

#include "app/settings.h"
#include "pictures/niceslider.h"
#include "pictures/printpicture.h"
#include "ui/filedialog.h"
#include "ui/language.h"
#include "ui/unimsgbox.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QStandardPaths>

namespace {

const settings::Key kPrintWidth{"Form21", "Width"};
constexpr double kPreviewPixelsPerMm = 0.9;

// The page drawn at a small scale: paper, the printable area's edge, and the picture where the
// print puts it.
class PagePreview : public QWidget {
public:
    PagePreview(const QImage& picture, std::function<int()> widthCm, QWidget* parent)
        : QWidget(parent), picture_(picture), widthCm_(std::move(widthCm)) {
        const QSizeF page = PrintPageLayout().fullRect(QPageLayout::Millimeter).size();
        setFixedSize((page * kPreviewPixelsPerMm).toSize() + QSize(2, 2));
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter p(this);
        const QPageLayout layout = PrintPageLayout();
        const QRectF page(QPointF(1, 1), layout.fullRect(QPageLayout::Millimeter).size() * kPreviewPixelsPerMm);
        p.fillRect(page, Qt::white);
        p.setPen(QColor(120, 120, 120));
        p.drawRect(page.adjusted(-0.5, -0.5, 0.5, 0.5));
        const QRectF area = layout.paintRect(QPageLayout::Millimeter);
        const QRectF mm = PrintedPictureRect(area.size(), picture_.size(), widthCm_());
        const QRectF at((area.x() + mm.x()) * kPreviewPixelsPerMm + 1, (area.y() + mm.y()) * kPreviewPixelsPerMm + 1,
                        mm.width() * kPreviewPixelsPerMm, mm.height() * kPreviewPixelsPerMm);
        p.setRenderHint(QPainter::SmoothPixmapTransform);
        p.drawImage(at, picture_);
    }

private:
    QImage picture_;
    std::function<int()> widthCm_;
};

}  // namespace

Form21::Form21(const QImage& picture, const LanguageTexts& texts, QWidget* parent)
    : QWidget(parent, Qt::Window), picture_(picture), texts_(texts) {
    setObjectName(QStringLiteral("Form21"));
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(texts.PrintTitle);

    picPreview = new PagePreview(picture_, [this] { return printWidthCm(); }, this);
    lblWidth = new QLabel(this);
    Slider1 = new NiceSlider(this);
    Slider1->setMinimumWidth(picPreview->width());
    cmdPrint = new QPushButton(texts.PrintButton, this);
    cmdPdf = new QPushButton(texts.PrintPdf, this);
    cmdClose = new QPushButton(texts.PrintClose, this);

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(cmdPrint);
    buttons->addWidget(cmdPdf);
    buttons->addStretch();
    buttons->addWidget(cmdClose);
    auto* grid = new QGridLayout(this);
    grid->addWidget(picPreview, 0, 0, Qt::AlignHCenter);
    grid->addWidget(lblWidth, 1, 0);
    grid->addWidget(Slider1, 2, 0);
    grid->addLayout(buttons, 3, 0);
    grid->setSizeConstraint(QLayout::SetFixedSize);

    // The slider's own properties first, then the width the user chose last time.
    Slider1->ReadProperties({{QStringLiteral("Value"), kPrintWidthDefaultCm},
                             {QStringLiteral("Max"), kPrintWidthMaxCm},
                             {QStringLiteral("Min"), kPrintWidthMinCm}});
    connect(Slider1, &NiceSlider::Change, this, &Form21::Slider1_Change);
    Slider1->setValue(settings::GetInt16Setting(kPrintWidth, kPrintWidthDefaultCm));
    connect(cmdPrint, &QPushButton::clicked, this, &Form21::cmdPrint_Click);
    connect(cmdPdf, &QPushButton::clicked, this, &Form21::cmdPdf_Click);
    connect(cmdClose, &QPushButton::clicked, this, &QWidget::close);
}

int Form21::printWidthCm() const { return Slider1->value(); }

QImage Form21::previewImage() const { return picPreview->grab().toImage(); }

void Form21::Slider1_Change() {
    lblWidth->setText(QString(texts_.PrintWidth).replace(QStringLiteral("###"), QString::number(printWidthCm())));
    picPreview->update();
    settings::SaveSetting(kPrintWidth, QString::number(printWidthCm()));
}

void Form21::cmdPrint_Click() {
    QPrinter printer(QPrinter::HighResolution);
    printer.setPageLayout(PrintPageLayout());
    QPrintDialog dialog(&printer, this);
    if (dialog.exec() != QDialog::Accepted) return;
    if (const Status printed = PrintPicture(printer, picture_, printWidthCm()); !printed) fail(printed.message());
}

void Form21::cmdPdf_Click() {
    const QString desktop = QStandardPaths::writableLocation(QStandardPaths::DesktopLocation);
    const QString filter = AddFilterItem(QString(), QStringLiteral("PDF files (*.pdf)"), QStringLiteral("*.pdf"));
    int flags = ofn::kOverwritePrompt | ofn::kPathMustExist;
    const QString file = ShowFileDialog(&flags, desktop, filter, 1, QStringLiteral("pdf"), QStringLiteral("PX Callsigns.pdf"),
                                        texts_.PrintPdf, this, false);
    if (file.isEmpty()) return;  // cancelled
    if (const Status printed = PrintPictureToPdf(file, picture_, printWidthCm()); !printed) fail(printed.message());
}

void Form21::fail(const QString& message) {
    ShowUniMsgBox(this, message, msgbox::kIconExclamation, QStringLiteral("PX Callsigns"), QStringLiteral("OK"));
}
