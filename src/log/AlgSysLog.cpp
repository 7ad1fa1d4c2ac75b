#include "log/AlgSysLog.h"

#include <cstdarg>
#include <cstdio>

#include "log/TesselLog.h"

namespace TesselFX {

namespace {

constexpr size_t kTextBufferSize = 1000;

uint32_t LevelOfSeverity(int severity) {
    switch (severity) {
        case 0:
            return 4;
        case 1:
            return 3;
        case 2:
            return 2;
        case 3:
            return 1;
        default:
            return 0;
    }
}

}  // namespace

void AlgSysLog(const char* /*file*/, int number, int severity, const char* module,
               const char* format, ...) {
    const uint32_t level = LevelOfSeverity(severity);
    if (severity != 0 && !TESSEL_LOG_ON(level, TESSEL_LOG_DspKit)) return;
    char text[kTextBufferSize] = "";
    if (format != nullptr) {
        va_list args;
        va_start(args, format);
        vsnprintf(text, sizeof(text), format, args);
        va_end(args);
    }
    if (module == nullptr) module = "";
    if (severity == 0) {
        TESSEL_LOG_ERROR(TESSEL_LOG_DspKit, "[%s] (%d) %s", module, number, text);
    } else {
        TESSEL_LOG(level, TESSEL_LOG_DspKit, "[%s] (%d) %s", module, number, text);
    }
}

}  // namespace TesselFX
