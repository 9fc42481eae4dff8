#pragma once
// The lookup engine's hosts as the settings give them; the engine itself knows no settings.
#include "lookup/services.h"

// From the settings, section "Hosts": keys "eHam", "QRZ", "QRZCQ", "Callook", "HamCall",
// "Pictures", "Updates", "TimeoutMs", "MaxBytes"; a key that is not there keeps the default.
LookupHosts LookupHostsFromSettings();

// The web map service's host for the maps menu's place pages: key "WebMaps" of section "Hosts".
QString WebMapHost();
