#include "app/pictaropaste.h"

#include <QClipboard>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QThread>

PasteOutcome PasteToPictaro(const QImage& picture, const PictaroDesktop& desktop) {
    if (picture.isNull() || !desktop.putPicture(picture)) return PasteOutcome::NoPicture;
    PasteOutcome outcome = PasteOutcome::NoPictaro;
    if (const platform::WindowId pictaro = desktop.activate(QString::fromLatin1(kPictaroTitle), desktop.wait)) {
        desktop.wait(500);
        // The user may have moved the focus during the pauses: the key goes only to Pictaro.
        if (desktop.focusedWindow() != pictaro) outcome = PasteOutcome::FocusElsewhere;
        else outcome = desktop.sendF7() ? PasteOutcome::KeySent : PasteOutcome::NoKeyboard;
    }
    desktop.wait(500);
    return outcome;
}

void WaitKeepingWindowsPainted(int ms) {
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < ms) {
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents, static_cast<int>(ms - timer.elapsed()));
        QThread::msleep(1);
    }
}

PictaroDesktop SessionDesktop(QClipboard* clipboard) {
    PictaroDesktop d;
    d.putPicture = [clipboard](const QImage& picture) {
        if (!clipboard) return false;
        clipboard->clear();
        clipboard->setImage(picture);
        return true;
    };
    d.activate = platform::ActivateWindowByTitle;
    d.focusedWindow = platform::FocusedWindow;
    d.sendF7 = platform::SendKeyF7;
    d.wait = WaitKeepingWindowsPainted;
    return d;
}
