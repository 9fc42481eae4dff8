#include "app/lookuphosts.h"

#include "app/settings.h"

namespace {

// A host from the settings, without the slashes that end it.
QString Host(const char* key, const char* fallback) {
    QString value = settings::GetSetting({"Hosts", key}, QLatin1String(fallback));
    while (value.endsWith(u'/')) value.chop(1);
    return value;
}

}  // namespace

LookupHosts LookupHostsFromSettings() {
    LookupHosts hosts;
    for (size_t i = 0; i < kServices.size(); ++i) hosts.services[i] = Host(kServices[i].name, kServices[i].defaultHost);
    hosts.pictures = Host("Pictures", "http://files.qrz.com");
    hosts.updates = Host("Updates", "");
    hosts.timeoutMs = settings::GetInt32Setting({"Hosts", "TimeoutMs"}, hosts.timeoutMs);
    hosts.maxBytes = settings::GetInt32Setting({"Hosts", "MaxBytes"}, static_cast<int32_t>(hosts.maxBytes));
    return hosts;
}

QString WebMapHost() { return Host("WebMaps", "https://www.google.com"); }
