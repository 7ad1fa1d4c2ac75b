#pragma once

#include <cstdint>
#include <map>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <vector>

#include "HalHost.h"
#include "Scenario.h"
#include "WavFile.h"
#include "ZbctlError.h"

namespace TesselFX {
namespace zbctl {

/// What `zbctl run` plays, and against what.
struct RunOptions : HostOptions {
    std::string scenario;  ///< scenario file; empty for none
    bool json = false;
    std::string input;   ///< WAV to render after each step; empty for none
    std::string output;  ///< given with input only
    uint32_t renderInstance = 0;
};

/// Plays a scenario against the library through its exported functions, as a host does, with
/// a simulated DSP per instance behind buffer_sender, and writes a trace to out: every call
/// with its result, every frame that reaches the DSP (opcode, size, coefficient block ids),
/// every notification text, and every tuning reply and notification decoded. Not thread safe; one
/// run per process at a time.
class ScenarioRunner : private HalHost::IListener {
  public:
    ScenarioRunner(const RunOptions& options, std::ostream& out);
    ~ScenarioRunner() override;
    ScenarioRunner(const ScenarioRunner&) = delete;
    ScenarioRunner& operator=(const ScenarioRunner&) = delete;

    /// Runs the whole scenario and returns the exit status: kExitSuccess, or kExitFailure
    /// when zb_initialize returned 0. Throws ZbctlError for bad input (files, scenario lines)
    /// before the library is called, UsageError for options that cannot work together (an
    /// output that is one of the inputs); the output is written whole or not at all.
    int Run() {
        const int status = Play();
        return status != kExitSuccess ? status : Finish();
    }

    /// The first part of Run: sets the library up and plays the scenario, leaving the handle
    /// open for further calls through Host(). Returns kExitSuccess, or kExitFailure.
    int Play();
    /// The rest of Run: zb_destroy, then the rendered audio and the JSON trace. Returns
    /// kExitSuccess.
    int Finish();

    /// The library and its DSPs. While it has another listener, this runner traces nothing.
    HalHost& Host() { return m_host; }

  private:
    void OnFrame(uint32_t instance, uint32_t size, const DspExchange& exchange,
                 int status) override;
    void OnNotification(const std::string& text) override;

    void BeginCall(size_t line, const std::string& text);
    void EndCall(int result, const std::string& detail = "");
    /// Prints the header of the call being traced, once, before its first event.
    void FlushHeader();
    void Note(const std::string& text);
    /// One event of the call being traced: "    kind: text", or {kind: text} in JSON.
    void Event(const std::string& kind, const std::string& text);
    /// Traces the tuning message in frame, and the merged message once frame is the last
    /// missing piece of a long one.
    void TraceMessage(const std::string& kind, const std::vector<char>& frame);
    /// zb_get_command with frame; traces the reply and fetches the other pieces of a long one.
    int GetCommand(uint32_t instance, const std::vector<char>& frame);
    /// zb_get_command with frame; the decoded reply goes to answer.
    int Exchange(uint32_t instance, const std::vector<char>& frame, std::vector<char>& answer);
    void Render();

    RunOptions m_options;
    std::ostream& m_out;
    HalHost m_host;
    std::string m_pendingHeader;                  // the call being traced, text mode
    nlohmann::ordered_json m_json;                // the JSON trace
    nlohmann::ordered_json* m_current = nullptr;  // the call being traced, JSON mode
    AudioBuffer m_input;
    AudioBuffer m_output;
    std::map<uint32_t, std::vector<std::vector<char>>> m_pieces;  // by session, until merged
};

}  // namespace zbctl
}  // namespace TesselFX
