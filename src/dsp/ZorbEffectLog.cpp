#include "dsp/ZorbEffectLog.h"

#include <android/log.h>

#include <cstdarg>
#include <cstdio>
#include <vector>

namespace TesselFX {

void ZorbEffectLogError(const char* format, ...) {
    va_list args;
    va_start(args, format);
    va_list copy;
    va_copy(copy, args);
    const int length = std::vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    std::vector<char> text(length > 0 ? static_cast<size_t>(length) + 1 : 1, '\0');
    if (length > 0) std::vsnprintf(text.data(), text.size(), format, args);
    va_end(args);
    __android_log_write(ANDROID_LOG_ERROR, kZorbEffectLogTag, text.data());
}

}  // namespace TesselFX
