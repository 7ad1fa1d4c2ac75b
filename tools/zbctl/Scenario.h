#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace TesselFX {
namespace zbctl {

/// The calls a scenario line can make; each maps to one exported function of the library,
/// except kInstance, which selects the instance of the lines after it.
enum class ScenarioCall {
    kInstance,
    kSetActive,
    kSetOutputMode,
    kSetSoundMode,
    kSetVolume,
    kSetOrientation,
    kSetParameter,
    kSetLinkLawsValue,
    kSetEnable,
    kSetBypass,
    kWaitForFlush,
    kFlush,
    kDspWakeup,
    kGetVersion,
    kIsFeatureSupported,
    kSetCommand,        ///< zb_set_command with a tuning message
    kGetCommand,        ///< zb_get_command with a tuning message; the reply is decoded
    kRegisterNotifier,  ///< zb_register_notifier with zbctl's notifier
};

/// One line of a scenario. Numbers are held as double (every 32-bit integer fits exactly);
/// text holds the one word argument of get_version and is_feature_supported; frame holds the
/// tuning message of set, get and tuning.
struct ScenarioStep {
    size_t line = 0;
    std::string source;  ///< the line as written, without comment and outer blanks
    ScenarioCall call = ScenarioCall::kFlush;
    uint32_t instance = 0;  ///< the instance in force for this line
    std::vector<double> numbers;
    std::string text;
    std::vector<char> frame;
};

/// Parses a scenario: one call per line, words separated by blanks, "#" starts a comment
/// that runs to the end of the line. Throws ZbctlError "NAME:LINE: reason" at the first bad
/// line, NAME being sourceName.
std::vector<ScenarioStep> ParseScenario(const std::string& text, const std::string& sourceName);

/// The words of one scenario line: "#" starts a comment, blanks separate the words.
std::vector<std::string> ScenarioWords(const std::string& line);

/// The step of one line's words (at least one), without line number and instance; throws
/// ZbctlError with the reason when they are no call.
ScenarioStep ParseScenarioWords(const std::vector<std::string>& words);

/// The scenario keyword of a call, as a scenario line writes it.
const char* ScenarioCallName(ScenarioCall call);

}  // namespace zbctl
}  // namespace TesselFX
