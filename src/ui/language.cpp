#include "ui/language.h"

#include "common/cp1252.h"
#include "common/vbtext.h"

#include <QFile>
#include <limits>

using T = LanguageTexts;

const std::array<LanguageLine, 55> kLanguageLines{{
    {20, &T::UpdateButton, "UpdateButton"},
    {38, &T::LookingUp, "LookingUp"},
    {39, &T::Searching, "Searching"},
    {40, &T::Contacting, "Contacting"},
    {41, &T::SourceDatabase, "SourceDatabase"},
    {42, &T::SourceWeb, "SourceWeb"},
    {71, &T::LookupOk, "LookupOk"},
    {84, &T::UnitCaption, "UnitCaption"},
    {92, &T::LoggedIn, "LoggedIn"},
    {93, &T::Ready, "Ready"},
    {97, &T::NotLoggedIn, "NotLoggedIn"},
    {98, &T::LoginHint, "LoginHint"},
    {99, &T::LoginNotNeededQrzcq, "LoginNotNeededQrzcq"},
    {100, &T::LoginNotNeededCallook, "LoginNotNeededCallook"},
    {101, &T::LookupFailed, "LookupFailed"},
    {102, &T::LookupFailedQrzcq, "LookupFailedQrzcq"},
    {103, &T::CallookStatus, "CallookStatus"},
    {104, &T::LoginRequired, "LoginRequired"},
    {105, &T::ServiceUnreachable, "ServiceUnreachable"},
    {111, &T::MenuMapOfStation, "MenuMapOfStation"},
    {115, &T::MenuWebMapAddress, "MenuWebMapAddress"},
    {117, &T::NotFound, "NotFound"},
    {129, &T::MenuWebMapPosition, "MenuWebMapPosition"},
    {131, &T::MenuStationView, "MenuStationView"},
    {132, &T::MenuRegionMaps, "MenuRegionMaps"},
    {133, &T::MenuSetup, "MenuSetup"},
    {134, nullptr, "Version"},
    {135, nullptr, "Language"},
    {136, &T::MenuDatabaseEditor, "MenuDatabaseEditor"},
    {137, &T::MenuHelp, "MenuHelp"},
    {138, &T::EditorTitle, "EditorTitle"},
    {139, &T::EditorInfo1, "EditorInfo1"},
    {140, &T::EditorInfo2, "EditorInfo2"},
    {141, &T::EditorInfo3, "EditorInfo3"},
    {158, &T::EditorInfo4, "EditorInfo4"},
    {160, &T::EditorEntries, "EditorEntries"},
    {181, &T::EditorAdd, "EditorAdd"},
    {188, &T::EditorLookup, "EditorLookup"},
    {189, &T::EditorDelete, "EditorDelete"},
    {190, &T::CloseButton, "CloseButton"},
    {191, &T::FieldCall, "FieldCall"},
    {192, &T::FieldName, "FieldName"},
    {193, &T::FieldNickname, "FieldNickname"},
    {194, &T::FieldAdd1, "FieldAdd1"},
    {195, &T::FieldAdd2, "FieldAdd2"},
    {196, &T::FieldCountry, "FieldCountry"},
    {204, &T::FieldLatitude, "FieldLatitude"},
    {206, &T::FieldLongitude, "FieldLongitude"},
    {207, &T::FieldClass, "FieldClass"},
    {208, &T::FieldYearBorn, "FieldYearBorn"},
    {209, &T::SetupTitle, "SetupTitle"},
    {210, &T::SetupGetLatLon, "SetupGetLatLon"},
    {211, &T::SetupGrid, "SetupGrid"},
    {212, &T::SetupPositionFound, "SetupPositionFound"},
    {213, &T::SetupPositionQrzcq, "SetupPositionQrzcq"},
}};

const std::array<KeyedLine, 24> kKeyedLines{{
    {"StatusNoCall", &T::StatusNoCall},
    {"StatusNotACall", &T::StatusNotACall},
    {"StatusUnreachable", &T::StatusUnreachable},
    {"StatusHttpError", &T::StatusHttpError},
    {"StatusTimedOut", &T::StatusTimedOut},
    {"StatusTooLarge", &T::StatusTooLarge},
    {"SetupNoPosition", &T::SetupNoPosition},
    {"MenuQuit", &T::MenuQuit},
    {"PrintTitle", &T::PrintTitle},
    {"PrintWidth", &T::PrintWidth},
    {"PrintButton", &T::PrintButton},
    {"PrintPdf", &T::PrintPdf},
    {"PrintClose", &T::PrintClose},
    {"MenuPictureCopy", &T::MenuPictureCopy},
    {"MenuPictureBitmap", &T::MenuPictureBitmap},
    {"MenuPicturePictaro", &T::MenuPicturePictaro},
    {"MenuPictureJpeg", &T::MenuPictureJpeg},
    {"StatusBitmapSaved", &T::StatusBitmapSaved},
    {"StatusPictaroAbsent", &T::StatusPictaroAbsent},
    {"StatusPictaroFocus", &T::StatusPictaroFocus},
    {"StatusNoKeys", &T::StatusNoKeys},
    {"StViewCopy", &T::StViewCopy},
    {"StViewRetry", &T::StViewRetry},
    {"MenuLogIn", &T::MenuLogIn},
}};

namespace {

struct LanguageFile {
    const char* language;
    const char* file;
    const char* wrongVersion;
    const char* notFound;
};

constexpr const char* kEnglishWrongVersion = "Wrong language file version.";

constexpr std::array<LanguageFile, 8> kLanguages{{
    {"English", "Norvane_English.Language", kEnglishWrongVersion, "Language file not found or corrupt"},
    {"Spanish", "Norvane_Spanish.Language", kEnglishWrongVersion, ""},
    {"German", "Norvane_German.Language", kEnglishWrongVersion, ""},
    {"French", "Norvane_French.Language", "Mauvaise version de fichier langage.",
     "Fichier langage non trouv\u00e9 ou corrompu."},
    {"Dutch", "Norvane_Dutch.Language", "Foute taalbestand versie.", "Taalbestand ontbreekt of corrupt."},
    {"Polish", "Norvane_Polish.Language", kEnglishWrongVersion, ""},
    {"Japanese", "Norvane_Japanese.Language", kEnglishWrongVersion, ""},
    {"Russian", "Norvane_Russian.Language", kEnglishWrongVersion, ""},
}};

const LanguageLine* usedLine(int index) {
    if (index < 20 || index > kLastNumberedLine) return nullptr;
    for (const LanguageLine& l : kLanguageLines)
        if (l.line == index) return &l;
    return nullptr;
}

// "Key= text" past the numbered lines: the slot of that key, when there is one, gets the text.
void fillKeyedSlot(const QString& line, LanguageTexts& texts) {
    const qsizetype equals = line.indexOf(u'=');
    if (equals < 0) return;
    const QString key = line.left(equals).trimmed();
    for (const KeyedLine& keyed : kKeyedLines) {
        if (key == QLatin1String(keyed.key)) {
            texts.*(keyed.slot) = LanguageValue(line);
            return;
        }
    }
}

LanguageLoad fillSlots(const QString& text, LanguageTexts& texts) {
    const QStringList lines = text.split(QChar(13));
    for (int index = 0; index < lines.size(); ++index) {
        // The running line number is a 16-bit counter: a file of more lines overflows it.
        if (index > std::numeric_limits<int16_t>::max()) return LanguageLoad::Overflow;
        const QString& line = lines[index];
        if (index > kLastNumberedLine) {
            fillKeyedSlot(line, texts);
            continue;
        }
        const LanguageLine* used = usedLine(index);
        if (!used) continue;  // read and discarded
        if (!line.contains(u'=')) return LanguageLoad::Corrupt;
        const QString value = LanguageValue(line);
        if (!used->slot) {
            if (used->line == kVersionLine && value != QLatin1String(kLanguageFileVersion))
                return LanguageLoad::WrongVersion;
            continue;
        }
        QString& slot = texts.*(used->slot);
        switch (used->line) {
        case 84: slot = u' ' + value; break;
        case 98:
            slot = value;
            texts.NotLoggedIn += QStringLiteral("\r\n") + value;
            break;
        case 117: slot = vb::trim(value) + u' '; break;
        default: slot = value;
        }
    }
    return LanguageLoad::Ok;
}

}  // namespace

QString LanguageValue(const QString& line) { return vb::mid(line, vb::inStr(line, u"=") + 2); }

QString LanguageResult::message() const {
    switch (status) {
    case LanguageLoad::Ok: return {};
    case LanguageLoad::WrongVersion: return wrongVersionMessage;
    case LanguageLoad::Overflow: return QStringLiteral("Overflow");
    default: return notFoundMessage;
    }
}

LanguageResult LoadLanguageText(const QByteArray& contents, LanguageTexts& texts) {
    LanguageResult result;
    result.status = fillSlots(decodeUtf8OrCp1252(contents), texts);
    return result;
}

LanguageResult LoadLanguage(const QString& language, const QString& dataPath, LanguageTexts& texts,
                            const std::function<void(const QString&)>& showReady) {
    LanguageResult result;
    for (const LanguageFile& l : kLanguages) {
        if (language == QLatin1String(l.language)) {
            result.fileName = QLatin1String(l.file);
            result.wrongVersionMessage = QString::fromUtf8(l.wrongVersion);
            result.notFoundMessage = QString::fromUtf8(l.notFound);
            break;
        }
    }
    QFile file(dataPath + QStringLiteral("/Languages/") + result.fileName);
    if (result.fileName.isEmpty() || !file.open(QIODevice::ReadOnly)) {
        result.status = LanguageLoad::NotFound;
        return result;
    }
    // Language files are a few kilobytes; anything this large is not one.
    constexpr qint64 kMaxSize = 4 << 20;
    if (file.size() > kMaxSize) {
        result.status = LanguageLoad::Corrupt;
        return result;
    }
    const QByteArray contents = file.readAll();
    file.close();
    result.status = fillSlots(decodeUtf8OrCp1252(contents), texts);
    if (result.status == LanguageLoad::Ok && showReady) showReady(texts.Ready);
    return result;
}
