#pragma once
// Whether the texts of a window show whole: a test of layouts in every language.
#include <QAbstractButton>
#include <QLabel>
#include <QStringList>
#include <QWidget>

// The texts of the window's labels and buttons that do not show whole: a one-line label's lines
// wider or higher than the label's inside, a word-wrapped label's text higher than the label, a
// button smaller than its text and frame need. Empty when everything shows.
inline QStringList clippedTexts(const QWidget& window) {
    QStringList out;
    for (const QLabel* l : window.findChildren<QLabel*>()) {
        if (l->text().isEmpty() || l->isHidden()) continue;
        const QRect room = l->contentsRect();
        if (l->wordWrap()) {
            if (l->heightForWidth(room.width()) > room.height()) out << l->objectName() + ": " + l->text();
            continue;
        }
        for (const QString& line : l->text().split(u'\n'))
            if (l->fontMetrics().horizontalAdvance(line) > room.width() || l->fontMetrics().height() > room.height())
                out << l->objectName() + ": " + line;
    }
    for (const QAbstractButton* b : window.findChildren<QAbstractButton*>())
        if (!b->isHidden() && (b->sizeHint().width() > b->width() || b->sizeHint().height() > b->height()))
            out << b->objectName() + ": " + b->text();
    return out;
}
