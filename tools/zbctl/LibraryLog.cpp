#include "LibraryLog.h"

#include <android/log.h>

#include <atomic>

namespace TesselFX {
namespace zbctl {

namespace {

// liblog's logger is a plain function, so its state is the process's.
std::atomic<bool> g_verbose{false};
std::atomic<size_t> g_heldBack{0};

void Filter(const struct __android_logger_data* data, const char* message) {
    if (g_verbose.load() || data->priority >= ANDROID_LOG_ERROR) {
        __android_log_stderr_logger(data, message);
    } else {
        g_heldBack.fetch_add(1);
    }
}

}  // namespace

void RouteLibraryLog(bool verbose) {
    g_verbose.store(verbose);
    // Verbose shows even the lines below liblog's own default level.
    if (verbose) __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
    __android_log_set_logger(&Filter);
}

void PrintHeldBackLog(std::ostream& out) {
    const size_t count = g_heldBack.load();
    if (count == 0) return;
    out << "zbctl: " << count << (count == 1 ? " line" : " lines")
        << " of the library's log held back (warnings and below); -v shows them\n";
}

}  // namespace zbctl
}  // namespace TesselFX
