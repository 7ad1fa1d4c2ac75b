#pragma once

namespace TesselFX {

/// The logging entry of algorithm code: writes "[module] (number) text" on TESSEL_LOG_DspKit.
/// Severity 0 is an error (level 4, always written, as a pair whose first line names this
/// function's own source position; file is not used); 1, 2, 3 write at levels 3, 2, 1 and
/// any other severity at level 0, each only when the tag's level lets it through. The text is
/// cut to 999 characters.
void AlgSysLog(const char* file, int number, int severity, const char* module, const char* format,
               ...) __attribute__((format(printf, 5, 6)));

}  // namespace TesselFX
