#pragma once
// What the status line says when a lookup cannot go on: the typed or copied text held no call
// sign, or the service could not be asked.
#include "lookup/uclookup.h"
#include "ui/language.h"

#include <QString>

// For a text that gave no call sign: the "nothing to look up" text when it is blank, else the
// "is not a call sign" text naming it (its first 20 characters, "..." behind a longer one).
QString NoCallStatus(const LanguageTexts& texts, const QString& text);

// For a failed download: unreachable, the HTTP status, timed out or too large, naming the service.
QString FailureStatus(const LanguageTexts& texts, const DownloadFailure& failure, const QString& service);
