#pragma once
// What the status line says when a lookup cannot go on: the typed or copied text held no call
// sign, or the service could not be asked; and the texts that depend on the chosen service
// (serviceNo 1 to 5, as in kServices).
#include "lookup/uclookup.h"
#include "ui/language.h"

#include <QString>

// For a text that gave no call sign: the "nothing to look up" text when it is blank, else the
// "is not a call sign" text naming it (its first 20 characters, "..." behind a longer one).
QString NoCallStatus(const LanguageTexts& texts, const QString& text);

// For a failed download: unreachable, the HTTP status, timed out or too large, naming the service.
QString FailureStatus(const LanguageTexts& texts, const DownloadFailure& failure, const QString& service);

// After the login check: logged in or not, or the service's own "no login needed" text.
QString LoginStatus(const LanguageTexts& texts, int serviceNo, bool loggedIn);

// After a page that shows no login: "lookup failed", or the service's own text.
QString LoggedOutPageStatus(const LanguageTexts& texts, int serviceNo);

// In the own-station window once the own position was read from the service ("lookup failed"
// for a number that names no service).
QString OwnPositionStatus(const LanguageTexts& texts, int serviceNo);
