#include "config/ControlDescriptionParser.h"

#include "config/ControlDescription.h"
#include "config/StringUtils.h"
#include "log/TesselLog.h"

namespace TesselFX {

namespace {
constexpr uint32_t kNoDevice = 0xFFFFFFFFu;
}  // namespace

ControlDescriptionParser::ControlDescriptionParser(
    ControlDescriptions& controls, const std::map<std::string, std::vector<int32_t>>& sampleRates,
    const PresetDescriptions& presets)
    : m_controls(controls), m_sampleRates(sampleRates), m_presets(presets) {}

void ControlDescriptionParser::Parse(const std::string& name, const std::string& value) {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "ControlDescriptionParser::Parse %s, %s", name.c_str(),
               value.c_str());
    uint32_t device = kNoDevice;
    std::vector<int32_t> rates;
    std::vector<std::shared_ptr<PresetDescription>> presets;
    std::string controlType;
    auto settings = std::make_shared<CommonSettings>();

    for (const std::string& entry : Split(value, ',')) {
        const auto tagAndValue = CutAtFirst(entry, ':');
        const std::string& tag = tagAndValue.first;
        const std::string& text = tagAndValue.second;
        if (tag == "DEV") {
            const char* cursor = text.c_str();
            uint32_t parsed = 0;
            if (ScanUint(cursor, 10, parsed)) {
                device = parsed;
                settings->AddInt("DEV", static_cast<int32_t>(parsed));
            } else {
                TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "parse %s error for %s", text.c_str(),
                                 tag.c_str());
            }
        } else if (tag == "SR") {
            auto found = m_sampleRates.find(text);
            if (found != m_sampleRates.end()) {
                rates = found->second;
            } else {
                TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "could not find %s for %s", text.c_str(),
                                 tag.c_str());
            }
        } else if (tag == "PRESET") {
            for (const std::string& presetName : Split(text, '|')) {
                auto found = m_presets.find(presetName);
                if (found != m_presets.end()) {
                    presets.push_back(found->second);
                } else {
                    TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "could not find %s for %s", text.c_str(),
                                     tag.c_str());
                }
            }
        } else if (tag == "CONTROL_TYPE") {
            controlType = text;
        } else {
            settings->AddString(tag, text);
        }
    }

    if (device == kNoDevice || rates.empty() || presets.empty()) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "parse ControlDescriptionParser fail for key %s",
                         name.c_str());
        return;
    }
    m_controls[name] =
        std::make_shared<ControlDescription>(name, device, rates, presets, settings, controlType);
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "parse ControlDescriptionParser OK for key %s",
               name.c_str());
}

}  // namespace TesselFX
