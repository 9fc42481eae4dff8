#pragma once
// The print window: a station picture on a page, its printed width set by the slider, a
// preview of the page, and printing to any printer the system has or to a PDF file.
#include <QImage>
#include <QWidget>

class NiceSlider;
class QLabel;
class QPushButton;
struct LanguageTexts;

class Form21 : public QWidget {
    Q_OBJECT

public:
    Form21(const QImage& picture, const LanguageTexts& texts, QWidget* parent = nullptr);

    // The printed width in centimetres, as the slider stands.
    int printWidthCm() const;

    NiceSlider* Slider1;
    QLabel* lblWidth;
    QWidget* picPreview;
    QPushButton* cmdPrint;
    QPushButton* cmdPdf;
    QPushButton* cmdClose;

    // The page as the preview shows it (for the tests, and what the print matches).
    QImage previewImage() const;

signals:
    void closed();

private:
    void Slider1_Change();
    void cmdPrint_Click();
    void cmdPdf_Click();
    void fail(const QString& message);

    QImage picture_;
    const LanguageTexts& texts_;
};
