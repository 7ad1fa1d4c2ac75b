#include "LogCapture.h"

#include <algorithm>

namespace TesselFX {
namespace test {

class LogCapture::Recorder : public TesselLogInterface {
  public:
    Recorder() : TesselLogInterface("TEST_CAPTURE") { m_enabled = true; }

    void Print(const std::string&, uint32_t, uint32_t, uint32_t level, const std::string& tag,
               const std::string& text) override {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_lines.push_back({level, tag, text});
    }

    std::vector<LogLine> Lines() const {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_lines;
    }

    void Clear() {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_lines.clear();
    }

  private:
    mutable std::mutex m_mutex;
    std::vector<LogLine> m_lines;
};

LogCapture::LogCapture(uint32_t level) : m_recorder(std::make_shared<Recorder>()) {
    TesselLog& log = TesselLog::Get();
    log.WaitForInit();
    for (size_t i = 0; i < kTesselLogTagCount; ++i) {
        m_previousLevels[i] = log.levels[i].load();
        log.levels[i].store(level);
    }
    log.SetLogOutput("ANDROID_LOG", false);
    m_previousSlot1 = log.ReplaceOutput(1, m_recorder);
}

LogCapture::~LogCapture() {
    TesselLog& log = TesselLog::Get();
    log.ReplaceOutput(1, m_previousSlot1);
    log.SetLogOutput("ANDROID_LOG", true);
    for (size_t i = 0; i < kTesselLogTagCount; ++i) log.levels[i].store(m_previousLevels[i]);
}

std::vector<LogLine> LogCapture::Lines() const { return m_recorder->Lines(); }

std::vector<std::string> LogCapture::Texts() const {
    std::vector<std::string> texts;
    for (const auto& line : Lines()) texts.push_back(line.text);
    return texts;
}

std::vector<std::string> LogCapture::Texts(uint32_t level) const {
    std::vector<std::string> texts;
    for (const auto& line : Lines())
        if (line.level == level) texts.push_back(line.text);
    return texts;
}

bool LogCapture::Has(const std::string& text) const { return Count(text) > 0; }

bool LogCapture::Has(uint32_t level, const std::string& text) const {
    const auto lines = Lines();
    return std::any_of(lines.begin(), lines.end(),
                       [&](const LogLine& l) { return l.level == level && l.text == text; });
}

bool LogCapture::HasFragment(const std::string& fragment) const {
    const auto lines = Lines();
    return std::any_of(lines.begin(), lines.end(), [&](const LogLine& l) {
        return l.text.find(fragment) != std::string::npos;
    });
}

size_t LogCapture::Count(const std::string& text) const {
    const auto lines = Lines();
    return static_cast<size_t>(std::count_if(lines.begin(), lines.end(),
                                             [&](const LogLine& l) { return l.text == text; }));
}

namespace {

bool IsPositionLine(const std::string& text) {
    const size_t colon = text.rfind(".cpp:");
    if (colon == std::string::npos || text.size() < colon + 8) return false;
    if (text.compare(text.size() - 2, 2, ", ") != 0) return false;
    const std::string line = text.substr(colon + 5, text.size() - colon - 7);
    return line.find_first_not_of("0123456789") == std::string::npos;
}

}  // namespace

std::vector<std::string> LogCapture::ErrorTexts() const {
    std::vector<std::string> texts;
    for (const auto& text : Texts(4))
        if (!IsPositionLine(text)) texts.push_back(text);
    return texts;
}

size_t LogCapture::PositionLines() const { return Texts(4).size() - ErrorTexts().size(); }

void LogCapture::Clear() { m_recorder->Clear(); }

}  // namespace test
}  // namespace TesselFX
