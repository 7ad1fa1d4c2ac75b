#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "log/TesselLog.h"

namespace TesselFX {
namespace zbctl {

/// Collects the lines of the given level and above that the library code linked into zbctl
/// logs while the recorder lives, instead of printing them (lower ones are dropped): it takes
/// output slot 1 of the process-wide logger, takes the Android output out and sets every tag
/// to the given level. The destructor restores all.
/// One recorder at a time, on the thread that uses the library.
class LogRecorder {
  public:
    struct Line {
        uint32_t level;
        std::string text;
    };

    explicit LogRecorder(uint32_t level);
    ~LogRecorder();
    LogRecorder(const LogRecorder&) = delete;
    LogRecorder& operator=(const LogRecorder&) = delete;

    /// The lines since construction or the last Take, without the source position lines
    /// ("file:line, ") that open every error; the recorder is empty afterwards.
    std::vector<Line> Take();

  private:
    class Output;
    std::shared_ptr<Output> m_output;
    std::shared_ptr<TesselLogInterface> m_previousSlot;
    std::shared_ptr<TesselLogInterface> m_previousAndroid;
    uint32_t m_previousLevels[kTesselLogTagCount];
};

}  // namespace zbctl
}  // namespace TesselFX
