#include "LogRecorder.h"

#include <regex>

namespace TesselFX {
namespace zbctl {

namespace {
constexpr size_t kAndroidSlot = 0;
constexpr size_t kRecorderSlot = 1;
}  // namespace

class LogRecorder::Output : public TesselLogInterface {
  public:
    Output() : TesselLogInterface("ZBCTL_RECORDER") { m_enabled = true; }

    void Print(const std::string&, uint32_t, uint32_t, uint32_t level, const std::string&,
               const std::string& text) override {
        static const std::regex kPositionLine(".*:[0-9]+, ");
        if (!std::regex_match(text, kPositionLine)) m_lines.push_back({level, text});
    }

    std::vector<Line> m_lines;
};

LogRecorder::LogRecorder(uint32_t level) : m_output(std::make_shared<Output>()) {
    TesselLog& log = TesselLog::Get();
    log.WaitForInit();
    for (size_t i = 0; i < kTesselLogTagCount; ++i) {
        m_previousLevels[i] = log.levels[i].load();
        log.levels[i].store(level);
    }
    m_previousAndroid = log.ReplaceOutput(kAndroidSlot, nullptr);
    m_previousSlot = log.ReplaceOutput(kRecorderSlot, m_output);
    log.RefreshOutputFlags();
}

LogRecorder::~LogRecorder() {
    TesselLog& log = TesselLog::Get();
    log.ReplaceOutput(kRecorderSlot, m_previousSlot);
    log.ReplaceOutput(kAndroidSlot, m_previousAndroid);
    log.RefreshOutputFlags();
    for (size_t i = 0; i < kTesselLogTagCount; ++i) log.levels[i].store(m_previousLevels[i]);
}

std::vector<LogRecorder::Line> LogRecorder::Take() {
    std::vector<Line> lines;
    lines.swap(m_output->m_lines);
    return lines;
}

}  // namespace zbctl
}  // namespace TesselFX
