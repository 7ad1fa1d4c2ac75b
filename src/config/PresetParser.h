#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "config/ConfigTypes.h"
#include "config/ISingleLineParser.h"
#include "config/PresetDescription.h"

namespace TesselFX {

/// "name=OM:n,SM:n,ST:n|n,VST:table,OST:table" -> presets[name], and copies of the named
/// volume and orientation tables under the preset's name. A line without OM or SM is dropped
/// silently; an unknown tag throws std::out_of_range, a bad number std::invalid_argument.
class PresetParser : public ISingleLineParser {
  public:
    PresetParser(PresetDescriptions& presets, const VolumeSubtypeTables& volumeSubtypes,
                 VolumeSubtypeTables& presetVolumeSubtypes,
                 const OrientationSubtypeTables& orientationSubtypes,
                 OrientationSubtypeTables& presetOrientationSubtypes,
                 const DefaultAngles& defaultAngles, DefaultAngles& presetDefaultAngles);
    void Parse(const std::string& name, const std::string& value) override;

  private:
    void ParseSubEntry(const std::string& entry);

    PresetDescriptions& m_presets;
    const VolumeSubtypeTables& m_volumeSubtypes;
    VolumeSubtypeTables& m_presetVolumeSubtypes;
    const OrientationSubtypeTables& m_orientationSubtypes;
    OrientationSubtypeTables& m_presetOrientationSubtypes;
    const DefaultAngles& m_defaultAngles;
    DefaultAngles& m_presetDefaultAngles;

    // Per-line state; outputMode and soundMode carry over, which cannot matter since both tags
    // are mandatory.
    std::map<std::string, std::function<void(const std::string&)>> m_handlers;
    std::map<std::string, bool> m_seen;
    uint32_t m_outputMode = 0;
    uint32_t m_soundMode = 0;
    std::vector<uint32_t> m_subtypes;
    std::string m_volumeSubtypesName;
    std::string m_orientationSubtypesName;
};

}  // namespace TesselFX
