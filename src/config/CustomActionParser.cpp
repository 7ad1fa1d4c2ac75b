#include "config/CustomActionParser.h"

#include <vector>

#include "config/StringUtils.h"
#include "log/TesselLog.h"

namespace TesselFX {

namespace {
constexpr uint32_t kUnset = 0xFFFFFFFFu;
}  // namespace

CustomActionParser::CustomActionParser(const PresetDescriptions& presets,
                                       std::shared_ptr<CustomAction> action)
    : m_presets(presets), m_action(std::move(action)) {}

void CustomActionParser::Parse(const std::string& /*name*/, const std::string& value) {
    TESSEL_LOG_ENTERING(TESSEL_LOG_FXModule);
    uint32_t priority = kUnset;
    uint32_t outputMode = kUnset;
    uint32_t soundMode = kUnset;
    std::vector<std::vector<int32_t>> allowed;

    for (const std::string& entry : Split(value, ',')) {
        const auto tagAndText = CutAtFirst(entry, ':');
        const std::string& tag = tagAndText.first;
        const std::string& text = tagAndText.second;
        if (tag == "PRIORITY") {
            priority = static_cast<uint32_t>(std::stoi(text));
        } else if (tag == "NUMBERS") {
            for (const std::string& position : Split(text, ':')) {
                std::vector<int32_t> numbers;
                for (const std::string& token : Split(position, '|')) {
                    numbers.push_back(std::stoi(token));
                }
                allowed.push_back(numbers);
            }
        } else if (tag == "PRESET") {
            auto preset = m_presets.find(text);
            if (preset != m_presets.end()) {
                outputMode = preset->second->GetOutputMode();
                soundMode = preset->second->GetSoundMode();
            }
        }
    }

    if (priority == kUnset || outputMode == kUnset || soundMode == kUnset) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule,
                         "%s invalid value %s audioDataPriority %d audioDataOm %d audioDataSm %d",
                         "Parse", value.c_str(), static_cast<int>(priority),
                         static_cast<int>(outputMode), static_cast<int>(soundMode));
        return;
    }
    m_action->AddRule(priority, allowed, outputMode, soundMode);
}

}  // namespace TesselFX
