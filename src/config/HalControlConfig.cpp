#include "config/HalControlConfig.h"

#include "config/ConfigLineError.h"
#include "config/ControlDescriptionParser.h"
#include "config/CustomActionParser.h"
#include "config/OrientationSubtypesParser.h"
#include "config/PresetParser.h"
#include "config/StreamTypeToVolumePriorityParser.h"
#include "config/StringUtils.h"
#include "config/SupportedFeaturesParser.h"
#include "config/SupportedSampleRatesParser.h"
#include "config/VolumeSubtypesParser.h"
#include "log/TesselLog.h"

namespace TesselFX {

HalControlConfig::HalControlConfig() = default;

HalControlConfig::~HalControlConfig() = default;

void HalControlConfig::ParseConfig(std::shared_ptr<CIniFile> iniFile) {
    if (!iniFile) return;
    LineParsers parsers = MakeLineParsers();
    AddCustomActionParsers(iniFile, parsers);
    for (const auto& sectionAndParser : parsers) {
        const CIniFile::CSection* section = iniFile->GetSection(sectionAndParser.first);
        if (section == nullptr) continue;
        for (const auto& key : section->GetKeys()) {
            const std::string name = key.second->GetName();
            const std::string value = RemoveWhiteSpace(key.second->GetValue());
            ParseLine(*sectionAndParser.second, section->GetName(), name, value);
        }
    }
}

void HalControlConfig::ParseLine(ISingleLineParser& parser, const std::string& section,
                                 const std::string& name, const std::string& value) {
    try {
        parser.Parse(name, value);
    } catch (const std::exception&) {
        ConfigLineError::RethrowWithLine(section, name, value);
    }
}

int32_t HalControlConfig::CustomActionId(const std::string& section) {
    try {
        return std::stoi(section.substr(std::string(kCustomActionPrefix).size()));
    } catch (const std::exception&) {
        ConfigLineError::RethrowWithLine(section, "", "");
    }
}

LineParsers HalControlConfig::MakeLineParsers() {
    return {
        {kSampleRatesSection, std::make_shared<SupportedSampleRatesParser>(m_sampleRates)},
        {kVolumeSubtypesSection, std::make_shared<VolumeSubtypesParser>(m_volumeSubtypes)},
        {kOrientationSubtypesSection,
         std::make_shared<OrientationSubtypesParser>(m_orientationSubtypes, m_defaultAngles)},
        {kVolumePrioritySection,
         std::make_shared<StreamTypeToVolumePriorityParser>(m_volumePriorities)},
        {kPresetsSection,
         std::make_shared<PresetParser>(m_presets, m_volumeSubtypes, m_presetVolumeSubtypes,
                                        m_orientationSubtypes, m_presetOrientationSubtypes,
                                        m_defaultAngles, m_presetDefaultAngles)},
        {kControlsSection,
         std::make_shared<ControlDescriptionParser>(m_controls, m_sampleRates, m_presets)},
        {kFeaturesSection, std::make_shared<SupportedFeaturesParser>(m_features)},
    };
}

void HalControlConfig::AddCustomActionParsers(std::shared_ptr<CIniFile> iniFile,
                                              LineParsers& parsers) {
    TESSEL_LOG_ENTERING(TESSEL_LOG_FXModule);
    if (!iniFile) return;
    const std::string prefix = kCustomActionPrefix;
    for (const auto& section : iniFile->GetSections()) {
        const std::string& name = section.second->GetName();
        if (name.compare(0, prefix.size(), prefix) != 0) continue;
        const int32_t id = CustomActionId(name);
        auto action = std::make_shared<CustomAction>(id);
        m_customActions[id] = action;
        parsers.emplace_back(name, std::make_shared<CustomActionParser>(m_presets, action));
    }
}

}  // namespace TesselFX
