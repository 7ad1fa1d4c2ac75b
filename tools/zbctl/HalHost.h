#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "HalLibrary.h"
#include "Scenario.h"
#include "SimulatedDsp.h"

namespace TesselFX {
namespace zbctl {

/// What the host side is made of.
struct HostOptions {
    std::string halLibrary;  ///< libzbhalcontroller.so
    std::string config;      ///< the configuration as given
    std::string systemPresets;
    std::string userPresets;  ///< may be empty
    std::string dspKit;       ///< the algorithm library of both the library and the DSP side
};

/// The host side of libzbhalcontroller.so on a desk machine, as an audio HAL has it: the
/// library loaded with dlopen, one handle, and behind buffer_sender a simulated DSP per
/// instance. The library reads the DSP library's path from its configuration, so it is given a
/// temporary copy whose last section sets DspKitPath64 to the DSP library of the options.
///
/// What the library sends during a call (frames to the DSP, notifications to zbctl's notifier)
/// goes to the listener, on the calling thread, before the call returns. Not thread safe: one
/// thread makes every call.
class HalHost {
  public:
    class IListener {
      public:
        virtual ~IListener() = default;
        /// A buffer of size bytes reached the simulated DSP of instance, which saw exchange
        /// and answered status (0 served, -1 refused).
        virtual void OnFrame(uint32_t instance, uint32_t size, const DspExchange& exchange,
                             int status) = 0;
        /// A notification: its closing terminator dropped, the rest as Printable has it, so
        /// that it never holds a line end.
        virtual void OnNotification(const std::string& text) = 0;
    };

    explicit HalHost(const HostOptions& options);
    /// zb_destroy when a handle is open; removes the temporary configuration.
    ~HalHost();
    HalHost(const HalHost&) = delete;
    HalHost& operator=(const HalHost&) = delete;

    /// The receiver of frames and notifications from now on; null drops them. Not owned.
    void SetListener(IListener* listener) { m_listener = listener; }

    /// Reads the configuration (the DSP side takes its audio format from it) and writes the
    /// temporary copy. Returns a note when the configuration throws while it is parsed, else
    /// "". Throws ZbctlError when a file cannot be read or written, UsageError when --dspkit
    /// is unusable.
    std::string PrepareConfig();
    /// Loads the library (ZbctlError when it does not load) and calls zb_create.
    int Create();
    int Initialize();
    /// zb_destroy; nothing when no handle is open.
    void Destroy();

    /// The host call of a scenario line, on step.instance. kInstance answers 1; kGetCommand
    /// discards the reply; get_version's answer goes to version.
    int Call(const ScenarioStep& step, std::string& version);
    int SetCommand(uint32_t instance, std::string command);
    /// zb_get_command with a reply buffer of room bytes; reply receives the text up to its
    /// terminator (or the whole buffer without one).
    int GetCommand(uint32_t instance, const std::string& command, uint32_t room,
                   std::string& reply);
    /// zb_register_notifier with zbctl's notifier, which passes notifications to the listener.
    int RegisterNotifier(uint32_t instance);

    /// The simulated DSP of instance, made on first use.
    SimulatedDsp& Dsp(uint32_t instance);
    uint32_t Channels() const { return m_channels; }
    uint32_t SampleRate() const { return m_sampleRate; }

  private:
    static int SendTrampoline(void* handle, uint32_t instance, const void* data, uint32_t size,
                              void* reply, uint32_t* replySize, void* context);
    static int NotifyTrampoline(void* handle, const void* data, uint32_t size, void* context);

    HostOptions m_options;
    IListener* m_listener = nullptr;
    std::unique_ptr<HalLibrary> m_library;
    void* m_handle = nullptr;
    std::map<uint32_t, std::unique_ptr<SimulatedDsp>> m_dsps;
    uint32_t m_sampleRate = 48000;
    uint32_t m_channels = 2;
    uint32_t m_sampleSize = 4;
    std::string m_config;  // the temporary copy
};

}  // namespace zbctl
}  // namespace TesselFX
