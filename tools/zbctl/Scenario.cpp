#include "Scenario.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <sstream>

#include "MessageCatalog.h"
#include "ZbctlError.h"

namespace TesselFX {
namespace zbctl {

namespace {

enum class ArgKind {
    kUnsigned,    // 0 to 4294967295
    kModeOrKeep,  // as kUnsigned, and -1 for "keep the current mode"
    kInteger,     // 32-bit signed
    kReal,        // finite double
    kSwitch,      // 0 or 1
    kWord,        // one word of text
    kOnOff,       // on or off: a StartTuningMode message
    kMessage,     // the remaining words: a tuning message name and its fields
};

struct CallSyntax {
    ScenarioCall call;
    const char* name;
    std::vector<ArgKind> args;
    const char* usage;
};

const std::vector<CallSyntax>& Syntax() {
    static const std::vector<CallSyntax> kSyntax = {
        {ScenarioCall::kInstance, "instance", {ArgKind::kUnsigned}, "instance INSTANCE"},
        {ScenarioCall::kSetActive,
         "set_active",
         {ArgKind::kModeOrKeep, ArgKind::kModeOrKeep},
         "set_active OUTPUT_MODE SOUND_MODE"},
        {ScenarioCall::kSetOutputMode,
         "set_output_mode",
         {ArgKind::kUnsigned},
         "set_output_mode OUTPUT_MODE"},
        {ScenarioCall::kSetSoundMode,
         "set_sound_mode",
         {ArgKind::kUnsigned},
         "set_sound_mode SOUND_MODE"},
        {ScenarioCall::kSetVolume, "set_volume", {ArgKind::kReal}, "set_volume LINEAR_VOLUME"},
        {ScenarioCall::kSetOrientation,
         "set_orientation",
         {ArgKind::kInteger},
         "set_orientation DEGREES"},
        {ScenarioCall::kSetParameter,
         "set_parameter",
         {ArgKind::kUnsigned, ArgKind::kReal},
         "set_parameter ID VALUE"},
        {ScenarioCall::kSetLinkLawsValue,
         "set_linklaws_value",
         {ArgKind::kUnsigned, ArgKind::kReal, ArgKind::kReal},
         "set_linklaws_value SOURCE SOURCE_VALUE MASTER_VALUE"},
        {ScenarioCall::kSetLinkLawsValue,
         "linklaws_value",
         {ArgKind::kUnsigned, ArgKind::kReal, ArgKind::kReal},
         "linklaws_value SOURCE SOURCE_VALUE MASTER_VALUE"},
        {ScenarioCall::kSetEnable, "set_enable", {ArgKind::kSwitch}, "set_enable 0|1"},
        {ScenarioCall::kSetBypass, "set_bypass", {ArgKind::kSwitch}, "set_bypass 0|1"},
        {ScenarioCall::kWaitForFlush, "wait_for_flush", {}, "wait_for_flush"},
        {ScenarioCall::kFlush, "flush", {}, "flush"},
        {ScenarioCall::kDspWakeup, "dsp_wakeup", {}, "dsp_wakeup"},
        {ScenarioCall::kGetVersion,
         "get_version",
         {ArgKind::kWord},
         "get_version dsp|halcontroller|dspkit"},
        {ScenarioCall::kIsFeatureSupported,
         "is_feature_supported",
         {ArgKind::kWord},
         "is_feature_supported FEATURE"},
        {ScenarioCall::kSetCommand, "set", {ArgKind::kMessage}, "set MESSAGE FIELDS..."},
        {ScenarioCall::kGetCommand, "get", {ArgKind::kMessage}, "get MESSAGE FIELDS..."},
        {ScenarioCall::kSetCommand, "tuning", {ArgKind::kOnOff}, "tuning on|off"},
        {ScenarioCall::kRegisterNotifier, "register_notifier", {}, "register_notifier"},
    };
    return kSyntax;
}

// Reads one argument into step; returns an empty text on success, else what is wrong.
// A message argument takes word and all the words after it.
std::string ReadArg(ArgKind kind, const std::string& word, const std::vector<std::string>& after,
                    ScenarioStep& step) {
    if (kind == ArgKind::kWord) {
        step.text = word;
        return "";
    }
    if (kind == ArgKind::kOnOff) {
        if (word != "on" && word != "off") return "\"" + word + "\" is not on or off";
        step.frame = MessageCatalog::Encode("StartTuningMode", {word == "on" ? "1" : "0"});
        return "";
    }
    if (kind == ArgKind::kMessage) {
        try {
            step.frame = MessageCatalog::Encode(word, after);
        } catch (const ZbctlError& e) {
            return e.what();
        }
        return "";
    }
    errno = 0;
    char* end = nullptr;
    const double real = std::strtod(word.c_str(), &end);
    const bool numeric = end != word.c_str() && *end == '\0' && errno == 0 && std::isfinite(real);
    const bool whole =
        numeric && real == std::floor(real) && word.find_first_of("xXpP") == std::string::npos;
    switch (kind) {
        case ArgKind::kReal:
            if (!numeric) return "\"" + word + "\" is not a number";
            step.numbers.push_back(real);
            return "";
        case ArgKind::kSwitch:
            if (word != "0" && word != "1") return "\"" + word + "\" is not 0 or 1";
            step.numbers.push_back(real);
            return "";
        case ArgKind::kInteger:
            if (!whole || real < INT32_MIN || real > INT32_MAX) {
                return "\"" + word + "\" is not a whole number from -2147483648 to 2147483647";
            }
            step.numbers.push_back(real);
            return "";
        case ArgKind::kModeOrKeep:
            if (word == "-1") {
                step.numbers.push_back(4294967295.0);
                return "";
            }
            // fall through
        case ArgKind::kUnsigned:
            if (!whole || real < 0 || real > UINT32_MAX) {
                return "\"" + word + "\" is not a whole number from 0 to 4294967295";
            }
            step.numbers.push_back(real);
            return "";
        case ArgKind::kWord:
        case ArgKind::kOnOff:
        case ArgKind::kMessage:
            break;
    }
    return "";
}

}  // namespace

const char* ScenarioCallName(ScenarioCall call) {
    for (const CallSyntax& syntax : Syntax()) {
        if (syntax.call == call) return syntax.name;
    }
    return "?";
}

std::vector<std::string> ScenarioWords(const std::string& line) {
    std::istringstream words(line.substr(0, line.find('#')));
    std::vector<std::string> tokens;
    for (std::string word; words >> word;) tokens.push_back(word);
    return tokens;
}

ScenarioStep ParseScenarioWords(const std::vector<std::string>& tokens) {
    const CallSyntax* syntax = nullptr;
    for (const CallSyntax& candidate : Syntax()) {
        if (tokens[0] == candidate.name) syntax = &candidate;
    }
    if (syntax == nullptr) throw ZbctlError("unknown call \"" + tokens[0] + "\"");
    const bool open = !syntax->args.empty() && syntax->args.back() == ArgKind::kMessage;
    if (open ? tokens.size() - 1 < syntax->args.size() : tokens.size() - 1 != syntax->args.size()) {
        throw ZbctlError(tokens[0] + " takes " + std::to_string(syntax->args.size()) +
                         " argument(s), " + std::to_string(tokens.size() - 1) +
                         " given; usage: " + syntax->usage);
    }
    ScenarioStep step;
    step.call = syntax->call;
    for (size_t i = 0; i < syntax->args.size(); ++i) {
        const std::vector<std::string> after(tokens.begin() + static_cast<std::ptrdiff_t>(i) + 2,
                                             tokens.end());
        const std::string fault = ReadArg(syntax->args[i], tokens[i + 1], after, step);
        // A message's own fault already ends with the message's usage.
        if (!fault.empty() && syntax->args[i] == ArgKind::kMessage) throw ZbctlError(fault);
        if (!fault.empty()) throw ZbctlError(fault + "; usage: " + syntax->usage);
    }
    for (size_t i = 0; i < tokens.size(); ++i) step.source += (i ? " " : "") + tokens[i];
    return step;
}

std::vector<ScenarioStep> ParseScenario(const std::string& text, const std::string& sourceName) {
    std::vector<ScenarioStep> steps;
    std::istringstream lines(text);
    std::string line;
    uint32_t instance = 0;
    for (size_t number = 1; std::getline(lines, line); ++number) {
        const std::vector<std::string> tokens = ScenarioWords(line);
        if (tokens.empty()) continue;
        ScenarioStep step;
        try {
            step = ParseScenarioWords(tokens);
        } catch (const ZbctlError& e) {
            throw ZbctlError(sourceName + ":" + std::to_string(number) + ": " + e.what());
        }
        step.line = number;
        if (step.call == ScenarioCall::kInstance) instance = static_cast<uint32_t>(step.numbers[0]);
        step.instance = instance;
        steps.push_back(step);
    }
    return steps;
}

}  // namespace zbctl
}  // namespace TesselFX
