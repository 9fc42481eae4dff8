#pragma once
// Texts of the user interface in the user's language, read from
// <data folder>/Languages/Norvane_<Language>.Language. A text's meaning is its line number in the
// file; each used line reads "Key= text" (the key is not checked, one separator follows "=").
#include <QString>
#include <array>
#include <functional>

struct LanguageTexts {
    // Main window
    QString UpdateButton;          // cmdUpdate; "***" -> " " + service
    QString LookingUp;             // lblCall while searching; "???" -> call
    QString Searching;             // lblName while searching; "***" -> service, then ". . ."
    QString Contacting;            // lblCall on Update; "***" -> service, then ". . ."
    QString SourceDatabase;        // "(…)" behind a call shown from the call-sign file
    QString SourceWeb;             // "(…" + service + ")" behind a call shown from a service
    QString LookupOk;              // lblStatus after a page arrived
    QString UnitCaption;           // setup window: distance unit caption (stored with a blank in front)
    QString LoggedIn;              // lblStatus after a login check: logged in; "***" -> service
    QString Ready;                 // lblCall at start: how to look a call up
    QString NotLoggedIn;           // two lines: not logged in ("***" -> service) + LoginHint
    QString LoginHint;             // how to log in
    QString LoginNotNeededQrzcq;   // login state text of the third service
    QString LoginNotNeededCallook; // login state text of the fourth service
    QString LookupFailed;          // lblStatus when a page could not be read
    QString LookupFailedQrzcq;     // the same for the third service
    QString CallookStatus;         // lblStatus note for the fourth service
    QString LoginRequired;         // lblCall when the service wants a login
    QString ServiceUnreachable;    // editor: service name + " " + this
    QString MenuMapOfStation;      // maps menu
    QString MenuWebMapAddress;
    QString NotFound;              // "not found" prefix (trimmed, one blank appended)
    QString MenuWebMapPosition;
    QString MenuStationView;
    QString MenuRegionMaps;
    QString MenuSetup;             // setup menu
    QString MenuDatabaseEditor;
    QString MenuHelp;
    QString EditorTitle;           // database editor
    QString EditorInfo1;
    QString EditorInfo2;
    QString EditorInfo3;
    QString EditorInfo4;
    QString EditorEntries;         // "xxx" -> number of calls
    QString EditorAdd;             // "???" -> call
    QString EditorLookup;          // "???" -> call, "***" -> service
    QString EditorDelete;          // "???" -> call
    QString CloseButton;
    QString FieldCall;             // field captions (": " is appended where shown)
    QString FieldName;
    QString FieldNickname;
    QString FieldAdd1;
    QString FieldAdd2;
    QString FieldCountry;
    QString FieldLatitude;
    QString FieldLongitude;
    QString FieldClass;
    QString FieldYearBorn;
    QString SetupTitle;            // setup window
    QString SetupGetLatLon;
    QString SetupGrid;
    QString SetupPositionFound;    // after a lookup on the first, second and fifth services; "***" -> own call
    QString SetupPositionQrzcq;    // the same for the third service

    // Texts read by their keys from the lines after the numbered ones (see kKeyedLines).
    QString StatusNoCall;          // lblStatus: nothing to look up
    QString StatusNotACall;        // lblStatus: "???" -> the text that is no call sign
    QString StatusUnreachable;     // lblStatus: "***" -> service
    QString StatusHttpError;       // lblStatus: "***" -> service, "###" -> HTTP status
    QString StatusTimedOut;        // lblStatus: "***" -> service
    QString StatusTooLarge;        // lblStatus: "***" -> service
    QString SetupNoPosition;       // setup window: "???" -> own call, "***" -> service
    QString MenuQuit;              // setup menu: end the program
    QString PrintTitle;            // print window: its caption
    QString PrintWidth;            // print window: "###" -> the printed width in centimetres
    QString PrintButton;           // print window: print on a printer
    QString PrintPdf;              // print window: print into a PDF file
    QString PrintClose;            // print window: close it
    QString MenuPictureCopy;       // picture menu: copy the picture
    QString MenuPictureBitmap;     // picture menu: save it as a bitmap on the desktop
    QString MenuPicturePictaro;    // picture menu: paste it into Pictaro's transmit picture
    QString MenuPictureJpeg;       // picture menu: save it as a JPEG file
    QString StatusBitmapSaved;     // lblStatus: "###" -> the bitmap's file name
    QString StatusPictaroAbsent;   // lblStatus: no Pictaro window; the picture is on the clipboard
    QString StatusPictaroFocus;    // lblStatus: Pictaro lost the focus before F7; picture on the clipboard
    QString StatusNoKeys;          // lblStatus: keys cannot be sent on this desktop; picture on the clipboard
    QString StViewCopy;            // station view: the copy label
    QString StViewRetry;           // station view: the page failed again, the browser starts afresh
    QString MenuLogIn;             // maps menu: "***" -> service; the login page in the station view
};

// Line number (as the CR split counts, from 0) -> slot and the key the shipped files use.
struct LanguageLine {
    int line;
    QString LanguageTexts::*slot;  // nullptr: read into the loader's locals, not kept
    const char* key;
};

// The file version the loader expects on line kVersionLine.
inline constexpr int kVersionLine = 134;
inline constexpr const char* kLanguageFileVersion = "1";

extern const std::array<LanguageLine, 55> kLanguageLines;

// Texts added after the numbered lines: found by their key anywhere past kLastNumberedLine, so
// that the numbered lines keep their meaning and an older file simply leaves these as they were.
inline constexpr int kLastNumberedLine = 213;
struct KeyedLine {
    const char* key;
    QString LanguageTexts::*slot;
};
extern const std::array<KeyedLine, 24> kKeyedLines;

enum class LanguageLoad { Ok, NotFound, Corrupt, WrongVersion, Overflow };

struct LanguageResult {
    LanguageLoad status = LanguageLoad::Ok;
    QString fileName;            // "" for a language outside the table
    QString wrongVersionMessage; // the language's own texts for the failures
    QString notFoundMessage;
    // The text meant for a failed load ("" where the language has none, and for Ok).
    QString message() const;
};

// Fills texts from the language's file in dataPath/Languages. Stops at a missing file, at a used
// line without "=" or at a wrong version line; slots not reached keep their texts. After a
// complete load, showReady (when given) receives the Ready text.
LanguageResult LoadLanguage(const QString& language, const QString& dataPath, LanguageTexts& texts,
                            const std::function<void(const QString&)>& showReady = {});

// Same, over file contents already read (the built-in English defaults).
LanguageResult LoadLanguageText(const QByteArray& contents, LanguageTexts& texts);

// The text of one line: everything from the second character after the first "=".
QString LanguageValue(const QString& line);
