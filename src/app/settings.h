#pragma once
// The per-user settings store: application "PX Callsigns", values addressed by section and key,
// every value kept as text. Windows: the registry; elsewhere an INI file ($XDG_CONFIG_HOME).
#include <QString>
#include <optional>

namespace settings {

inline constexpr const char* kApplication = "PX Callsigns";

struct Key {
    const char* section;
    const char* key;
};
// The unit lives in section "Mi" under key "Km": odd, but that is where it has always been.
inline constexpr Key kPictaroInstall{"Pictaro", "Install"};
inline constexpr Key kUnit{"Mi", "Km"};
inline constexpr Key kMyLatitude{"My", "latitude"};
inline constexpr Key kMyLongitude{"My", "longitude"};
inline constexpr Key kMyCallsign{"My", "callsign"};
inline constexpr Key kServiceIndex{"DataBase", "Index"};
// Where the user last put the main window: its frame's top-left corner, in pixels.
inline constexpr Key kForm1Left{"Form1", "Left"};
inline constexpr Key kForm1Top{"Form1", "Top"};
// The station view's left edge and size, in pixels.
inline constexpr Key kStViewLeft{"frmStView", "Left"};
inline constexpr Key kStViewHeight{"frmStView", "Height"};
inline constexpr Key kStViewWidth{"frmStView", "Width"};

QString GetSetting(Key key, const QString& fallback);
// Writes the value through to the file at once; a value the file already holds is not written
// again, so that storing an unchanged setting (each start does) costs no write and no flush.
void SaveSetting(Key key, const QString& value);

// Numeric readings. A value that is not a number, or does not fit, reads as the default.
int16_t GetInt16Setting(Key key, int16_t fallback);
int32_t GetInt32Setting(Key key, int32_t fallback);
double GetDoubleSetting(Key key, double fallback);

// The folder the settings file is in (created when missing); the shared cookie file lives there.
QString SettingsFolder();
inline constexpr const char* kCookieFileName = "PX Callsigns.cookies";

}  // namespace settings
