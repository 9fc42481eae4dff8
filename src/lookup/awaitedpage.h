#pragma once
// The one page a window waits for from its lookup control. Asking for a new page drops the one
// awaited before and anything still coming under the new call's name (its picture would come
// back under that name and, by the control's rule of going by the latest request's kind, be
// taken for the page); an answer for any other call is not this window's any more.
#include "lookup/uclookup.h"

#include <QString>

class AwaitedPage {
public:
    // Asks the control for the page of call on the given service.
    void ask(ucLookUp& control, int16_t service, const QString& call) {
        forget(control);
        control.CancelDownload(call);
        call_ = call;
        control.setDatabase(service);
        control.GetPage(call);
    }
    // Stops waiting: the awaited download is cancelled.
    void forget(ucLookUp& control) {
        if (!call_.isEmpty()) control.CancelDownload(call_);
        call_.clear();
    }
    // The answer (or failure) of the awaited page has come: nothing is awaited any more.
    void arrived() { call_.clear(); }
    bool isAnswer(const QString& id) const { return !call_.isEmpty() && id == call_; }
    bool waiting() const { return !call_.isEmpty(); }

private:
    QString call_;
};
