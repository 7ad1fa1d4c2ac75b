#include "log/AndroidLog.h"

#include <android/log.h>

namespace TesselFX {

void AndroidLog::Print(const std::string&, uint32_t, uint32_t, uint32_t level,
                       const std::string& tag, const std::string& text) {
    // Levels 0..4 map to Android's verbose..error priorities 2..6.
    __android_log_print(static_cast<int>(level) + ANDROID_LOG_VERBOSE, tag.c_str(), "%s",
                        text.c_str());
}

}  // namespace TesselFX
