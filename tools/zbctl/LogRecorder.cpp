#include "LogRecorder.h"

#include <algorithm>

namespace TesselFX {
namespace zbctl {

namespace {
constexpr size_t kAndroidSlot = 0;
constexpr size_t kRecorderSlot = 1;

// "file:line, ": the first line of every error pair.
bool IsPositionLine(const std::string& text) {
    const size_t end = text.size() >= 2 ? text.size() - 2 : 0;
    if (end == 0 || text.compare(end, 2, ", ") != 0) return false;
    const size_t colon = text.rfind(':', end);
    return colon != std::string::npos && colon + 1 < end &&
           std::all_of(text.begin() + static_cast<long>(colon) + 1,
                       text.begin() + static_cast<long>(end),
                       [](char c) { return c >= '0' && c <= '9'; });
}
}  // namespace

class LogRecorder::Output : public TesselLogInterface {
  public:
    explicit Output(uint32_t level) : TesselLogInterface("ZBCTL_RECORDER"), m_level(level) {
        m_enabled = true;
    }

    // Lines logged without the tag's level check (TesselLog::Print called directly) are
    // filtered here, so that a recorder of errors does not collect every trace line.
    void Print(const std::string&, uint32_t, uint32_t, uint32_t level, const std::string&,
               const std::string& text) override {
        if (level >= m_level && !IsPositionLine(text)) m_lines.push_back({level, text});
    }

    const uint32_t m_level;
    std::vector<Line> m_lines;
};

LogRecorder::LogRecorder(uint32_t level) : m_output(std::make_shared<Output>(level)) {
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
