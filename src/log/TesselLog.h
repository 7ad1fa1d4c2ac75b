#pragma once

#include <atomic>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "log/TesselLogInterface.h"

namespace TesselFX {

/// Tag indices of the level table. The macros below take the tag by this name and print
/// the name itself as the tag text.
enum TesselLogTag : uint32_t {
    TESSEL_LOG_FXLibrary = 0,
    TESSEL_LOG_FXModule = 1,
    TESSEL_LOG_JNI = 2,
    TESSEL_LOG_OpenSLES = 3,
    TESSEL_LOG_MediaPlayerJni = 4,
    TESSEL_LOG_UnitTest = 5,
    TESSEL_LOG_Preset = 6,
    TESSEL_LOG_DspKit = 7,
    TESSEL_LOG_DefaultLog = 8,
};
constexpr size_t kTesselLogTagCount = 9;
constexpr size_t kTesselLogOutputSlots = 5;

class ITesselLog {
  public:
    virtual ~ITesselLog() = default;
    virtual bool SetLogLevel(const char* tagName, uint32_t level) = 0;
    virtual bool SetLogOutput(const char* outputName, bool enable) = 0;
    virtual void Print(uint32_t level, const char* tag, const char* format, ...)
        __attribute__((format(printf, 4, 5))) = 0;
    virtual void PrintV(uint32_t level, const char* tag, const char* format, va_list args)
        __attribute__((format(printf, 4, 0))) = 0;
};

class TesselLogImpl;

/// The one process-wide logger, built on first use by Get() and never destroyed, so that it
/// outlives every caller; at process exit its threads end and the file output is written out.
/// Thread safety: any thread may log. The levels are read at every call site without a lock
/// (relaxed atomics); the settings are meant to be written by the loader thread and, after it
/// finished, by SetLogLevel/SetLogOutput.
class TesselLog : public ITesselLog {
  public:
    static TesselLog& Get();

    /// Asynchronous: a loader thread applies the first readable log INI of iniPaths
    /// (DefaultIniPaths() when not given) while the constructor returns at once; until it has
    /// finished, SetLogLevel/SetLogOutput refuse. Otherwise no INI is read.
    explicit TesselLog(bool asynchronous);
    TesselLog(bool asynchronous, std::vector<std::string> iniPaths);
    /// Joins the loader thread, ends the file output's queue thread, releases the outputs.
    ~TesselLog() override;
    TesselLog(const TesselLog&) = delete;
    TesselLog& operator=(const TesselLog&) = delete;

    bool SetLogLevel(const char* tagName, uint32_t level) override;
    bool SetLogOutput(const char* outputName, bool enable) override;
    void Print(uint32_t level, const char* tag, const char* format, ...) override
        __attribute__((format(printf, 4, 5)));
    void PrintV(uint32_t level, const char* tag, const char* format, va_list args) override
        __attribute__((format(printf, 4, 0)));

    /// Internal, never exported: for tests and tools of this project.
    /// Waits until the loader thread has applied the log INI and the file output's queue
    /// thread has executed what it was given.
    void WaitForInit();
    /// Applies log INI text as the loader does (force: not barred by the init rule).
    bool LoadFromIniText(const std::string& text);
    /// The output in a slot (0 to 4), or null.
    std::shared_ptr<TesselLogInterface> GetOutput(size_t slot) const;
    /// Puts an output in a slot (0 to 4), replacing what was there; null empties the slot.
    /// Returns the previous output. Call only when no other thread logs.
    std::shared_ptr<TesselLogInterface> ReplaceOutput(size_t slot,
                                                      std::shared_ptr<TesselLogInterface> output);
    /// Re-computes anyOutput/androidOnly after outputs were enabled or replaced directly.
    void RefreshOutputFlags();

    /// "/vendor/etc/zorb_conf.ini", then "/system/etc/zorb_conf.ini".
    static std::vector<std::string> DefaultIniPaths();

    /// Level per tag; a line of level L on tag T is written when levels[T] <= L.
    std::atomic<uint32_t> levels[kTesselLogTagCount];

  private:
    std::shared_ptr<TesselLogImpl> m_impl;
};

/// SetLogLevel of the process-wide logger, building it if needed.
bool TesselLogSetLogLevel(uint32_t level, const char* tagName);
/// SetLogOutput of the process-wide logger, building it if needed.
bool TesselLogSetLogOutput(const char* outputName, bool enable);

}  // namespace TesselFX

/// The call-site guard: arguments of a line that is not printed are not evaluated.
#define TESSEL_LOG(level, tag, ...)                                                        \
    do {                                                                                   \
        ::TesselFX::TesselLog& tesselLog_ = ::TesselFX::TesselLog::Get();                  \
        if (tesselLog_.levels[::TesselFX::tag].load(std::memory_order_relaxed) <= (level)) \
            tesselLog_.Print((level), #tag, __VA_ARGS__);                                  \
    } while (0)

/// An error is two lines at level 4: the source position, then the text.
#define TESSEL_LOG_ERROR(tag, ...)                                        \
    do {                                                                  \
        ::TesselFX::TesselLog& tesselLog_ = ::TesselFX::TesselLog::Get(); \
        tesselLog_.Print(4, #tag, "%s:%d, ", __FILE__, __LINE__);         \
        tesselLog_.Print(4, #tag, __VA_ARGS__);                           \
    } while (0)

/// The level-0 entry trace with the compiler's pretty function name.
#define TESSEL_LOG_ENTERING(tag) TESSEL_LOG(0, tag, "Entering function %s", __PRETTY_FUNCTION__)

/// Whether a line of this level on this tag would be written.
#define TESSEL_LOG_ON(level, tag)                                                            \
    (::TesselFX::TesselLog::Get().levels[::TesselFX::tag].load(std::memory_order_relaxed) <= \
     (level))
