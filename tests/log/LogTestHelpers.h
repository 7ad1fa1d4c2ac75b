#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <sstream>
#include <string>
#include <vector>

#include "TempDir.h"
#include "log/Message.h"
#include "log/MessageQueue.h"
#include "log/TesselLogInterface.h"

namespace TesselFX {
namespace test {

/// A one-shot latch: Wait blocks until Open.
class Gate {
  public:
    void Open() {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_open = true;
        m_condition.notify_all();
    }
    void Wait() {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_condition.wait(lock, [this] { return m_open; });
    }

  private:
    std::mutex m_mutex;
    std::condition_variable m_condition;
    bool m_open = false;
};

/// A message that runs a function on the consumer thread.
class CallMessage : public TesselInterprocess::Message {
  public:
    explicit CallMessage(std::function<void()> call) : m_call(std::move(call)) {}
    void Execute() override { m_call(); }

  private:
    std::function<void()> m_call;
};

/// A MessageQueue whose Clear and unbounded enqueue call a hook afterwards, so that a test
/// can act at exactly that point of a Stop, Abort or FlushQueue. (The enqueue hook runs after
/// the wait of a synchronous message.)
class HookedQueue : public TesselInterprocess::MessageQueue {
  public:
    explicit HookedQueue(uint32_t maxSize) : MessageQueue(maxSize) {}
    bool EnqueueWithLimit(std::shared_ptr<TesselInterprocess::Message> message,
                          bool checkFull) override {
        const bool accepted = MessageQueue::EnqueueWithLimit(std::move(message), checkFull);
        if (!checkFull && afterBypassEnqueue) afterBypassEnqueue();
        return accepted;
    }
    void Clear() override {
        MessageQueue::Clear();
        if (afterClear) afterClear();
    }
    std::function<void()> afterBypassEnqueue;
    std::function<void()> afterClear;
};

/// An output that records what it is given.
struct RecordedLine {
    std::string timestamp;
    uint32_t pid;
    uint32_t tid;
    uint32_t level;
    std::string tag;
    std::string text;
};

class RecordingOutput : public TesselLogInterface {
  public:
    explicit RecordingOutput(std::string name, bool enabled = true)
        : TesselLogInterface(std::move(name)) {
        m_enabled = enabled;
    }
    void Print(const std::string& timestamp, uint32_t pid, uint32_t tid, uint32_t level,
               const std::string& tag, const std::string& text) override {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_lines.push_back({timestamp, pid, tid, level, tag, text});
    }
    std::vector<RecordedLine> Lines() const {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_lines;
    }
    std::vector<std::string> Texts() const {
        std::vector<std::string> texts;
        for (const auto& line : Lines()) texts.push_back(line.text);
        return texts;
    }

  private:
    mutable std::mutex m_mutex;
    std::vector<RecordedLine> m_lines;
};

/// Replaces the source position of the first line of an error pair ("/any/dir/File.cpp:123, ")
/// by "File.cpp:N, ", so that texts can be compared whole.
inline std::vector<std::string> WithoutLineNumbers(const std::vector<std::string>& texts) {
    std::vector<std::string> result;
    for (const std::string& text : texts) {
        const size_t colon = text.rfind(".cpp:");
        const bool position = colon != std::string::npos && text.size() >= 2 &&
                              text.compare(text.size() - 2, 2, ", ") == 0;
        if (!position) {
            result.push_back(text);
            continue;
        }
        const size_t slash = text.rfind('/', colon);
        const size_t begin = slash == std::string::npos ? 0 : slash + 1;
        result.push_back(text.substr(begin, colon + 5 - begin) + "N, ");
    }
    return result;
}

/// True when text has the shape: every '9' of the shape stands for one decimal digit, every
/// other character for itself.
inline bool MatchesShape(const std::string& text, const std::string& shape) {
    if (text.size() != shape.size()) return false;
    for (size_t i = 0; i < text.size(); ++i) {
        const bool digit = text[i] >= '0' && text[i] <= '9';
        if (shape[i] == '9' ? !digit : text[i] != shape[i]) return false;
    }
    return true;
}

/// The shape of a console or file time stamp, "MM-DD hh:mm:ss:mmm".
inline const std::string kTimestampShape = "99-99 99:99:99:999";

/// The lines of a text, each without its line feed; a last line without one is kept too.
inline std::vector<std::string> SplitLines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    std::string line;
    while (std::getline(stream, line)) lines.push_back(line);
    return lines;
}

}  // namespace test
}  // namespace TesselFX
