#pragma once

#include <memory>
#include <string>

#include "log/TesselLog.h"

namespace TesselFX {
namespace fuzz {

/// Makes the process-wide logger format every line of every level and throw it away: a
/// discarding output in slot 1, the Android output off. Formatting stays on, so that a bad
/// argument of a log line shows under the sanitizers, and the fuzzer's output stays readable.
/// Call once, before the first input; the sink lives until the process ends.
class FuzzLogSink : public TesselLogInterface {
  public:
    FuzzLogSink() : TesselLogInterface("FUZZ_SINK") { m_enabled = true; }

    void Print(const std::string&, uint32_t, uint32_t, uint32_t, const std::string&,
               const std::string&) override {}

    static void Install() {
        TesselLog& log = TesselLog::Get();
        log.WaitForInit();
        for (auto& level : log.levels) level.store(0);
        log.SetLogOutput("ANDROID_LOG", false);
        log.ReplaceOutput(1, std::make_shared<FuzzLogSink>());
    }
};

}  // namespace fuzz
}  // namespace TesselFX
