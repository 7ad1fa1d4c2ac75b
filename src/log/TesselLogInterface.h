#pragma once

#include <atomic>
#include <cstdint>
#include <string>

namespace TesselFX {

/// One log output. The front end calls Print only while the output is enabled.
/// Print may be called from any thread; each back end states its own thread safety.
class TesselLogInterface {
  public:
    explicit TesselLogInterface(std::string name) : m_name(std::move(name)) {}
    virtual ~TesselLogInterface() = default;

    virtual void Print(const std::string& timestamp, uint32_t pid, uint32_t tid, uint32_t level,
                       const std::string& tag, const std::string& text) = 0;

    /// Stores enable and returns true when name is this output's name; false otherwise.
    virtual bool SetOutputEnabled(const char* name, bool enable);

    bool IsEnabled() const { return m_enabled.load(std::memory_order_relaxed); }
    const std::string& GetName() const { return m_name; }

  protected:
    std::string m_name;
    // Read by every logging thread, written by the settings path.
    std::atomic<bool> m_enabled{false};
};

/// The level words of console and file lines, indexed by level 0 to 4.
const char* LogLevelWord(uint32_t level);

}  // namespace TesselFX
