#include "config/PresetParser.h"

#include "config/StringUtils.h"
#include "log/TesselLog.h"

namespace TesselFX {

namespace {
constexpr char kOutputModeTag[] = "OM";
constexpr char kSoundModeTag[] = "SM";
}  // namespace

PresetParser::PresetParser(PresetDescriptions& presets, const VolumeSubtypeTables& volumeSubtypes,
                           VolumeSubtypeTables& presetVolumeSubtypes,
                           const OrientationSubtypeTables& orientationSubtypes,
                           OrientationSubtypeTables& presetOrientationSubtypes,
                           const DefaultAngles& defaultAngles, DefaultAngles& presetDefaultAngles)
    : m_presets(presets),
      m_volumeSubtypes(volumeSubtypes),
      m_presetVolumeSubtypes(presetVolumeSubtypes),
      m_orientationSubtypes(orientationSubtypes),
      m_presetOrientationSubtypes(presetOrientationSubtypes),
      m_defaultAngles(defaultAngles),
      m_presetDefaultAngles(presetDefaultAngles) {
    m_handlers[kOutputModeTag] = [this](const std::string& value) {
        TESSEL_LOG(1, TESSEL_LOG_FXModule, "PresetParser::ParseOutputMode %s", value.c_str());
        m_outputMode = ToUint32(value);
    };
    m_handlers[kSoundModeTag] = [this](const std::string& value) {
        TESSEL_LOG(1, TESSEL_LOG_FXModule, "PresetParser::ParseSoundMode %s", value.c_str());
        m_soundMode = ToUint32(value);
    };
    m_handlers["ST"] = [this](const std::string& value) {
        TESSEL_LOG(1, TESSEL_LOG_FXModule, "PresetParser::ParseSubtypes %s", value.c_str());
        for (const std::string& token : Split(value, '|')) m_subtypes.push_back(ToUint32(token));
    };
    m_handlers["VST"] = [this](const std::string& value) {
        TESSEL_LOG(1, TESSEL_LOG_FXModule, "PresetParser::ParseVolumeSubtypes %s", value.c_str());
        m_volumeSubtypesName = value;
    };
    m_handlers["OST"] = [this](const std::string& value) {
        TESSEL_LOG(1, TESSEL_LOG_FXModule, "PresetParser::ParseOrientationSubtypes %s",
                   value.c_str());
        m_orientationSubtypesName = value;
    };
}

void PresetParser::Parse(const std::string& name, const std::string& value) {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "PresetParser::Parse %s, %s", name.c_str(), value.c_str());
    m_seen[kOutputModeTag] = false;
    m_seen[kSoundModeTag] = false;
    m_subtypes.clear();
    m_volumeSubtypesName.clear();
    m_orientationSubtypesName.clear();

    for (const std::string& entry : Split(value, ',')) ParseSubEntry(entry);
    if (!m_seen[kOutputModeTag] || !m_seen[kSoundModeTag]) return;

    SubTypeMask mask = 0;
    for (uint32_t subtype : m_subtypes) mask |= 1u << (subtype & 31u);
    m_presets[name] = std::make_shared<PresetDescription>(
        name, m_outputMode, m_soundMode, mask, m_volumeSubtypesName, m_orientationSubtypesName);

    auto orientation = m_orientationSubtypes.find(m_orientationSubtypesName);
    if (orientation != m_orientationSubtypes.end()) {
        m_presetOrientationSubtypes[name] = orientation->second;
    }
    auto defaultAngle = m_defaultAngles.find(m_orientationSubtypesName);
    if (defaultAngle != m_defaultAngles.end()) m_presetDefaultAngles[name] = defaultAngle->second;
    auto volume = m_volumeSubtypes.find(m_volumeSubtypesName);
    if (volume != m_volumeSubtypes.end()) m_presetVolumeSubtypes[name] = volume->second;
}

void PresetParser::ParseSubEntry(const std::string& entry) {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "PresetParser::ParseSubEntry %s", entry.c_str());
    const auto tagAndValue = CutAtFirst(entry, ':');
    MapAt(m_handlers, tagAndValue.first)(tagAndValue.second);
    m_seen[tagAndValue.first] = true;
}

}  // namespace TesselFX
