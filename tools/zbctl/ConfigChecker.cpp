#include "ConfigChecker.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <sstream>
#include <stdexcept>

#include "FileAccess.h"
#include "LogRecorder.h"
#include "Printable.h"
#include "ZbctlError.h"
#include "config/CIniFile.h"
#include "config/ConfigLineError.h"
#include "config/Hifi3zHalControlConfig.h"
#include "config/StringUtils.h"

namespace TesselFX {
namespace zbctl {

namespace {

// Lines of these levels and above are collected while a parser runs.
constexpr uint32_t kRecordedLevel = 3;
constexpr uint32_t kErrorLevel = 4;

std::string Lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

std::string Join(const std::vector<std::string>& words, const std::string& separator) {
    std::string text;
    for (size_t i = 0; i < words.size(); ++i) text += (i ? separator : "") + words[i];
    return text;
}

std::string Subtypes(uint32_t mask) {
    std::vector<std::string> numbers;
    for (unsigned int bit = 0; bit < 32; ++bit) {
        if (mask & (1u << bit)) numbers.push_back(std::to_string(bit));
    }
    return numbers.empty() ? "none" : Join(numbers, "|");
}

std::string Number(double value) {
    std::ostringstream text;
    text << value;
    return text.str();
}

// What the library does with an exception of a configuration line, with its log line.
std::string ExceptionText(const std::exception& e) {
    return "zb_initialize stops reading the configuration here and fails with \"zb_initialize: " +
           ConfigLineError::Describe(e) + "\"";
}

// A number that a line parser of the library converts, and how.
enum class NumberKind {
    kInteger,   // std::stoi, strtol
    kUnsigned,  // std::stoul or strtoul, kept in 32 bits
    kFloat,     // std::stof
    kAngle,     // std::stod, truncated toward zero
};
struct NumberToken {
    std::string text;
    NumberKind kind;
};

// The numbers that the library's parser of a section converts in a value (white space
// removed), split as that parser splits it.
std::vector<NumberToken> NumbersOf(const std::string& section, const std::string& key,
                                   const std::string& value) {
    std::vector<NumberToken> numbers;
    const auto each = [&numbers](const std::string& text, char delimiter, NumberKind kind) {
        for (const std::string& token : Split(text, delimiter)) numbers.push_back({token, kind});
    };
    const bool volume = section == HalControlConfig::kVolumeSubtypesSection;
    if (section == HalControlConfig::kSampleRatesSection) {
        each(value, '|', NumberKind::kInteger);
        return numbers;
    }
    if (section == Hifi3zHalControlConfig::kCoefsConverterSection) {
        if (key.compare(0, 11, "AudioFormat") == 0)
            numbers.push_back({value, NumberKind::kInteger});
        return numbers;
    }
    if (section == HalControlConfig::kFeaturesSection) {
        numbers.push_back({value, NumberKind::kUnsigned});
        return numbers;
    }
    if (volume || section == HalControlConfig::kOrientationSubtypesSection) {
        for (const std::string& entry : Split(value, ',')) {
            const std::vector<std::string> pair = Split(entry, ':');
            if (pair.size() != 2) continue;
            numbers.push_back({pair[0], volume ? NumberKind::kFloat : NumberKind::kAngle});
            if (pair[1] == "NULL" || pair[1] == "DEFAULT_ANGLE") continue;
            if (volume) {
                numbers.push_back({pair[1], NumberKind::kUnsigned});
            } else {
                each(pair[1], '|', NumberKind::kUnsigned);
            }
        }
        return numbers;
    }
    // Presets, controls and custom actions: TAG:TEXT entries.
    const bool presets = section == HalControlConfig::kPresetsSection;
    const bool controls = section == HalControlConfig::kControlsSection;
    const bool action = section.compare(0, std::strlen(HalControlConfig::kCustomActionPrefix),
                                        HalControlConfig::kCustomActionPrefix) == 0;
    for (const std::string& entry : Split(value, ',')) {
        const auto tagAndText = CutAtFirst(entry, ':');
        const std::string& tag = tagAndText.first;
        const std::string& text = tagAndText.second;
        if ((presets && (tag == "OM" || tag == "SM")) || (controls && tag == "DEV")) {
            numbers.push_back({text, NumberKind::kUnsigned});
        } else if (presets && tag == "ST") {
            each(text, '|', NumberKind::kUnsigned);
        } else if (action && tag == "PRIORITY") {
            numbers.push_back({text, NumberKind::kInteger});
        } else if (action && tag == "NUMBERS") {
            for (const std::string& position : Split(text, ':'))
                each(position, '|', NumberKind::kInteger);
        }
    }
    return numbers;
}

// What the library reads from a number that it reads only in part (trailing characters, a
// fraction of an angle, a negative or too large unsigned number): "44100abc" gives "44100".
// Empty when it reads the whole text, or nothing at all (the parser refuses that itself).
std::string LooseReading(const NumberToken& number) {
    const char* begin = number.text.c_str();
    char* end = nullptr;
    errno = 0;
    switch (number.kind) {
        case NumberKind::kInteger: {
            const long value = std::strtol(begin, &end, 10);
            if (end == begin || errno != 0 || value < INT_MIN || value > INT_MAX) return "";
            return *end == '\0' ? "" : std::to_string(value);
        }
        case NumberKind::kUnsigned: {
            const unsigned long value = std::strtoul(begin, &end, 10);
            if (end == begin || errno != 0) return "";
            const bool whole = *end == '\0' && number.text[0] != '-' && value <= UINT32_MAX;
            return whole ? "" : std::to_string(static_cast<uint32_t>(value));
        }
        case NumberKind::kFloat: {
            const float value = std::strtof(begin, &end);
            if (end == begin || errno != 0) return "";
            return *end == '\0' ? "" : Number(value);
        }
        case NumberKind::kAngle: {
            const double value = std::strtod(begin, &end);
            if (end == begin || errno != 0 || !(value > -2147483649.0 && value < 2147483648.0))
                return "";
            const auto angle = static_cast<int64_t>(value);
            return *end == '\0' && angle == value ? "" : std::to_string(angle);
        }
    }
    return "";
}

}  // namespace

ConfigChecker::ConfigChecker(const std::string& path)
    : m_path(path), m_text(ReadText(path, "configuration")) {
    // The library's reader stops at the first NUL byte, and so does everything below.
    const size_t nul = m_text.find('\0');
    if (nul != std::string::npos) {
        m_text.resize(nul);
        const size_t lineStart = m_text.rfind('\n');
        Add(static_cast<size_t>(std::count(m_text.begin(), m_text.end(), '\n')) + 1, "(file)",
            "a NUL byte at column " +
                std::to_string(nul - (lineStart == std::string::npos ? 0 : lineStart + 1) + 1) +
                ": the library reads nothing from there on",
            true);
    }
    IndexLines();
}

// Finds the line of every section header and key as the INI reader classifies lines.
void ConfigChecker::IndexLines() {
    std::istringstream lines(m_text);
    std::string line;
    std::string section;
    bool inSection = false;
    for (size_t number = 1; std::getline(lines, line); ++number) {
        line.erase(0, line.find_first_not_of(" \t"));
        while (!line.empty() && (line.back() == '\r' || line.back() == '\n')) line.pop_back();
        if (line.empty() || line[0] == '#' || line[0] == ';') continue;
        const size_t last = line.find_last_not_of(" \t\r\n");
        if (line[0] == '[' && line[last] == ']') {
            section = Lower(CIniFile::Trim(line.substr(1, line.size() - 2)));
            inSection = true;
            m_sectionLines.emplace(section, number);
            continue;
        }
        const size_t equals = line.find('=');
        if (equals == std::string::npos || equals == 0) {
            Add(number, "\"" + line + "\"", "neither a section, a key nor a comment: ignored",
                false);
        } else if (!inSection) {
            Add(number, "\"" + line + "\"", "key before the first section: dropped", false);
        } else {
            m_keyLines[{section, Lower(CIniFile::Trim(line.substr(0, equals)))}] = number;
        }
    }
}

size_t ConfigChecker::LineOf(const std::string& section, const std::string& key) const {
    auto it = m_keyLines.find({Lower(CIniFile::Trim(section)), Lower(CIniFile::Trim(key))});
    return it == m_keyLines.end() ? 0 : it->second;
}

size_t ConfigChecker::LineOfSection(const std::string& section) const {
    auto it = m_sectionLines.find(Lower(CIniFile::Trim(section)));
    return it == m_sectionLines.end() ? 0 : it->second;
}

void ConfigChecker::Add(size_t line, const std::string& where, const std::string& reason,
                        bool error) {
    m_findings.push_back({line, where, reason, error});
}

bool ConfigChecker::HasErrors() const {
    return std::any_of(m_findings.begin(), m_findings.end(),
                       [](const Finding& f) { return f.error; });
}

void ConfigChecker::Check() {
    auto ini = std::make_shared<CIniFile>();
    ini->LoadMemory(m_text);
    Hifi3zHalControlConfig config;
    LineParsers parsers = config.MakeLineParsers();

    // A custom action section whose id is not a number makes the library throw before any line
    // is parsed; such sections are reported and left out here.
    auto actionSections = std::make_shared<CIniFile>();
    actionSections->LoadMemory(m_text);
    const std::string prefix = HalControlConfig::kCustomActionPrefix;
    for (const auto& section : ini->GetSections()) {
        const std::string& name = section.second->GetName();
        if (name.compare(0, prefix.size(), prefix) != 0) continue;
        try {
            (void)HalControlConfig::CustomActionId(name);
        } catch (const std::exception& e) {
            Add(LineOfSection(name), "[" + name + "]", ExceptionText(e), true);
            actionSections->RemoveSection(name);
        }
        const NumberToken id{name.substr(prefix.size()), NumberKind::kInteger};
        if (!LooseReading(id).empty()) {
            Add(LineOfSection(name), "[" + name + "]",
                "section name: \"" + id.text + "\" is read as " + LooseReading(id), false);
        }
    }
    config.AddCustomActionParsers(actionSections, parsers);

    LogRecorder recorder(kRecordedLevel);
    for (const auto& sectionAndParser : parsers) {
        const CIniFile::CSection* section = ini->GetSection(sectionAndParser.first);
        if (section == nullptr) continue;
        for (const auto& key : section->GetKeys()) {
            const std::string name = key.second->GetName();
            const std::string value = RemoveWhiteSpace(key.second->GetValue());
            const size_t line = LineOf(section->GetName(), name);
            const std::string where = "[" + section->GetName() + "] " + name;
            recorder.Take();
            try {
                HalControlConfig::ParseLine(*sectionAndParser.second, section->GetName(), name,
                                            value);
            } catch (const std::exception& e) {
                Add(line, where, ExceptionText(e), true);
            }
            for (const LogRecorder::Line& logged : recorder.Take()) {
                Add(line, where, logged.text, logged.level >= kErrorLevel);
            }
            for (const NumberToken& number : NumbersOf(sectionAndParser.first, name, value)) {
                const std::string read = LooseReading(number);
                if (!read.empty()) {
                    Add(line, where, "\"" + number.text + "\" is read as " + read, false);
                }
            }
            if (sectionAndParser.first == HalControlConfig::kPresetsSection &&
                config.GetPresets().count(name) == 0) {
                Add(line, where, "dropped without a log line: OM and SM are both required", true);
            }
            if (sectionAndParser.first == Hifi3zHalControlConfig::kCoefsConverterSection) {
                static const std::vector<std::string> kKnown = {
                    "AudioFormatType",
                    "AudioFormatChannels",
                    "AudioFormatSampleRate",
                    "AudioFormatBitsPerSample",
                    "AudioFormatSampleSize",
                    "AudioFormatIncrement",
                    Hifi3zHalControlConfig::kDspKitPath64Key};
                if (std::find(kKnown.begin(), kKnown.end(), name) == kKnown.end()) {
                    Add(line, where, "unknown key: ignored", false);
                }
            }
        }
    }

    if (m_text.find_first_not_of(" \t\r\n\v\f") == std::string::npos) {
        Add(0, "(file)", "empty: the library reads no configuration from it", true);
    } else {
        if (config.GetPresets().empty()) {
            Add(LineOfSection(HalControlConfig::kPresetsSection),
                std::string("[") + HalControlConfig::kPresetsSection + "]",
                "no preset: no control can select one", true);
        }
        if (config.GetControls().empty()) {
            Add(LineOfSection(HalControlConfig::kControlsSection),
                std::string("[") + HalControlConfig::kControlsSection + "]",
                "no control: no instance of the effect can work", true);
        }
    }

    auto& rates = m_summary.emplace_back("sample rates", std::vector<std::string>()).second;
    for (const auto& table : config.GetSampleRates()) {
        std::vector<std::string> numbers;
        for (int32_t rate : table.second) numbers.push_back(std::to_string(rate));
        rates.push_back(table.first + ": " + Join(numbers, " "));
    }
    auto& volumes = m_summary.emplace_back("volume subtypes", std::vector<std::string>()).second;
    for (const auto& table : config.GetVolumeSubtypes()) {
        std::vector<std::string> entries;
        for (const auto& entry : table.second) {
            entries.push_back("up to " + Number(entry.first) + " dB: " + Subtypes(entry.second));
        }
        volumes.push_back(table.first + ": " + Join(entries, ", "));
    }
    auto& orientations =
        m_summary.emplace_back("orientation subtypes", std::vector<std::string>()).second;
    const DefaultAngles defaults = config.GetDefaultAngles();
    for (const auto& table : config.GetOrientationSubtypes()) {
        std::vector<std::string> entries;
        for (const auto& entry : table.second) {
            entries.push_back(std::to_string(entry.first) + " deg: " + Subtypes(entry.second));
        }
        auto angle = defaults.find(table.first);
        orientations.push_back(table.first + ": " + Join(entries, ", ") + "; default angle " +
                               std::to_string(angle == defaults.end() ? 0 : angle->second));
    }
    auto& priorities =
        m_summary.emplace_back("volume priorities", std::vector<std::string>()).second;
    for (const auto& entry : config.GetVolumePriorities()) {
        priorities.push_back("stream " + std::to_string(entry.first) + ": priority " +
                             std::to_string(entry.second));
    }
    auto& presets = m_summary.emplace_back("presets", std::vector<std::string>()).second;
    const VolumeSubtypeTables presetVolumes = config.GetPresetVolumeSubtypes();
    const OrientationSubtypeTables presetOrientations = config.GetPresetOrientationSubtypes();
    for (const auto& entry : config.GetPresets()) {
        const PresetDescription& preset = *entry.second;
        std::string text = entry.first + ": om " + std::to_string(preset.GetOutputMode()) +
                           ", sm " + std::to_string(preset.GetSoundMode()) + ", subtypes " +
                           Subtypes(preset.GetSubtypeMask());
        if (!preset.GetVolumeSubtypesName().empty()) {
            text += ", volume table " + preset.GetVolumeSubtypesName() +
                    (presetVolumes.count(entry.first) ? "" : " (no such table)");
        }
        if (!preset.GetOrientationSubtypesName().empty()) {
            text += ", orientation table " + preset.GetOrientationSubtypesName() +
                    (presetOrientations.count(entry.first) ? "" : " (no such table)");
        }
        presets.push_back(text);
    }
    auto& controls = m_summary.emplace_back("controls", std::vector<std::string>()).second;
    for (const auto& entry : config.GetControls()) {
        const IControlDescription& control = *entry.second;
        std::vector<std::string> rateTexts;
        for (int32_t rate : control.GetSampleRates()) rateTexts.push_back(std::to_string(rate));
        std::vector<std::string> presetNames;
        for (const auto& preset : control.GetPresets()) {
            presetNames.push_back(preset->GetName());
            ControlPreset used{entry.first,
                               preset->GetName(),
                               preset->GetOutputMode(),
                               preset->GetSoundMode(),
                               {}};
            uint32_t mask = preset->GetSubtypeMask();
            auto volume = presetVolumes.find(preset->GetName());
            if (volume != presetVolumes.end()) {
                for (const auto& step : volume->second) mask |= step.second;
            }
            auto orientation = presetOrientations.find(preset->GetName());
            if (orientation != presetOrientations.end()) {
                for (const auto& step : orientation->second) mask |= step.second;
            }
            for (unsigned int bit = 0; bit < 32; ++bit) {
                if (mask & (1u << bit)) used.subtypes.push_back(bit);
            }
            m_controlPresets.push_back(used);
        }
        controls.push_back(entry.first + ": DEV " + std::to_string(control.GetDevice()) +
                           ", rates " + Join(rateTexts, " ") + ", presets " +
                           Join(presetNames, "|") + ", type " +
                           (control.GetControlType().empty() ? "-" : control.GetControlType()) +
                           ", settings " + control.GetSettings()->ToString());
    }
    auto& features = m_summary.emplace_back("features", std::vector<std::string>()).second;
    for (const std::string& feature : config.GetFeatures()) features.push_back(feature);
    m_summary.emplace_back(
        "coefficient converter",
        std::vector<std::string>{
            "format type " + std::to_string(config.GetAudioFormatType()) + ", channels " +
                std::to_string(config.GetAudioFormatChannels()) + ", sample rate " +
                std::to_string(config.GetAudioFormatSampleRate()) + ", bits " +
                std::to_string(config.GetAudioFormatBitsPerSample()) + ", sample size " +
                std::to_string(config.GetAudioFormatSampleSize()) + ", increment " +
                std::to_string(config.GetAudioFormatIncrement()),
            "DspKitPath64 " + config.GetDspKitPath64()});
    auto& actions = m_summary.emplace_back("custom actions", std::vector<std::string>()).second;
    for (const auto& action : config.GetCustomActions()) {
        for (const auto& section : ini->GetSections()) {
            const std::string& name = section.second->GetName();
            if (name.compare(0, prefix.size(), prefix) != 0) continue;
            if (actionSections->GetSection(name) == nullptr) continue;
            if (std::stoi(name.substr(prefix.size())) != action.first) continue;
            for (const auto& key : section.second->GetKeys()) {
                actions.push_back("action " + std::to_string(action.first) + " [" + name + "] " +
                                  key.second->GetName() + "=" +
                                  RemoveWhiteSpace(key.second->GetValue()));
            }
        }
    }
}

void ConfigChecker::CheckPresets(const ZpsDocument& presets, const std::string& presetsName) {
    auto has = [&](uint32_t om, uint32_t sm, uint32_t mask) {
        if (!presets.systemPresets) return false;
        return std::any_of(
            presets.systemPresets->begin(), presets.systemPresets->end(), [&](const ZpsPreset& p) {
                return p.outputMode == om && p.soundMode == sm && p.subtypeMask == mask;
            });
    };
    for (const ControlPreset& used : m_controlPresets) {
        const std::string where = "control " + used.control + ", preset " + used.preset;
        const size_t line = LineOf(HalControlConfig::kPresetsSection, used.preset);
        const std::string modes =
            "om " + std::to_string(used.om) + ", sm " + std::to_string(used.sm);
        if (!has(used.om, used.sm, 0)) {
            Add(line, where, presetsName + " has no base preset for " + modes, true);
            continue;
        }
        for (uint32_t bit : used.subtypes) {
            if (!has(used.om, used.sm, 1u << bit)) {
                Add(line, where,
                    presetsName + " has no sub preset for subtype " + std::to_string(bit) + " of " +
                        modes + ": the base preset serves alone",
                    false);
            }
        }
    }
}

void ConfigChecker::Print(std::ostream& out) const {
    out << "configuration " << Printable(m_path) << "\n";
    for (const auto& item : m_summary) {
        out << "  " << item.first << (item.second.empty() ? ": none" : ":") << "\n";
        for (const std::string& line : item.second) out << "    " << Printable(line) << "\n";
    }
    size_t errors = 0;
    size_t warnings = 0;
    std::vector<Finding> findings = m_findings;
    std::stable_sort(findings.begin(), findings.end(),
                     [](const Finding& a, const Finding& b) { return a.line < b.line; });
    for (const Finding& finding : findings) {
        (finding.error ? errors : warnings)++;
        out << Printable(m_path + ":" +
                         (finding.line != 0 ? std::to_string(finding.line) + ":" : "") + " " +
                         (finding.error ? "refused" : "warning") + ": " + finding.where + ": " +
                         finding.reason)
            << "\n";
    }
    out << errors << " refused, " << warnings << " warnings\n";
}

}  // namespace zbctl
}  // namespace TesselFX
