#include "app/lookuphosts.h"

#include "app/settings.h"

LookupHosts LookupHostsFromSettings() {
    auto host = [](const char* key, const char* fallback) {
        QString value = settings::GetSetting({"Hosts", key}, QLatin1String(fallback));
        while (value.endsWith(u'/')) value.chop(1);
        return value;
    };
    LookupHosts hosts;
    for (size_t i = 0; i < kServices.size(); ++i) hosts.services[i] = host(kServices[i].name, kServices[i].defaultHost);
    hosts.pictures = host("Pictures", "http://files.qrz.com");
    hosts.updates = host("Updates", "");
    hosts.timeoutMs = settings::GetInt32Setting({"Hosts", "TimeoutMs"}, hosts.timeoutMs);
    hosts.maxBytes = settings::GetInt32Setting({"Hosts", "MaxBytes"}, static_cast<int32_t>(hosts.maxBytes));
    return hosts;
}
