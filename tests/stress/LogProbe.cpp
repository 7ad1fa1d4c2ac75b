// A library that embeds the process-wide logger the way libzbhalcontroller.so does, so that a
// test can give it a log configuration and close it with dlclose: the logger is this module's
// own and is destroyed when the module is unloaded or the process exits.
#include "log/TesselLog.h"

#define ZB_PROBE_EXPORT extern "C" __attribute__((visibility("default")))

/// Applies log INI text once the loader thread has finished. Returns 1 on success.
ZB_PROBE_EXPORT int zb_log_probe_configure(const char* text) {
    TesselFX::TesselLog& log = TesselFX::TesselLog::Get();
    log.WaitForInit();
    return log.LoadFromIniText(text) ? 1 : 0;
}

/// Writes one line at level 0: "probe <thread> <line>".
ZB_PROBE_EXPORT void zb_log_probe_print(unsigned thread, unsigned line) {
    TESSEL_LOG(0, TESSEL_LOG_FXModule, "probe %u %u", thread, line);
}
