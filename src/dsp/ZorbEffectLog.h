#pragma once

namespace TesselFX {

/// Tag of the lines that the algorithm library's wrapper and converter write.
constexpr const char kZorbEffectLogTag[] = "TESSEL_LOG_TAG";

/// Writes one error line (priority 6) straight to the Android log under kZorbEffectLogTag,
/// bypassing the log front end. Thread safe as liblog is.
void ZorbEffectLogError(const char* format, ...) __attribute__((format(printf, 1, 2)));

}  // namespace TesselFX
