#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "log/TesselLog.h"

namespace TesselFX {
namespace test {

struct LogLine {
    uint32_t level;
    std::string tag;
    std::string text;
};

/// Captures every line of the process-wide logger while it lives: it puts a recording output
/// in the empty slot 1, disables the Android output and sets all tags to the given level.
/// The destructor restores levels and outputs. One capture at a time; thread safe to read.
class LogCapture {
  public:
    explicit LogCapture(uint32_t level = 0);
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<LogLine> Lines() const;
    /// Texts only, in order.
    std::vector<std::string> Texts() const;
    /// Texts of one level only, in order.
    std::vector<std::string> Texts(uint32_t level) const;
    /// True when some line's text equals text exactly.
    bool Has(const std::string& text) const;
    /// True when some line of that level has exactly this text.
    bool Has(uint32_t level, const std::string& text) const;
    /// True when some line's text contains the fragment.
    bool HasFragment(const std::string& fragment) const;
    /// The number of lines whose text equals text.
    size_t Count(const std::string& text) const;
    /// The error (level 4) texts without the source position line, "<file>.cpp:<line>, ",
    /// that precedes each, in order.
    std::vector<std::string> ErrorTexts() const;
    /// The number of source position lines among the error lines.
    size_t PositionLines() const;
    void Clear();

  private:
    class Recorder;
    std::shared_ptr<Recorder> m_recorder;
    std::shared_ptr<TesselLogInterface> m_previousSlot1;
    uint32_t m_previousLevels[kTesselLogTagCount];
};

}  // namespace test
}  // namespace TesselFX
