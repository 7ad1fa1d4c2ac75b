#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "config/CIniFile.h"
#include "config/ConfigTypes.h"
#include "config/CustomAction.h"
#include "config/IControlDescription.h"
#include "config/ISingleLineParser.h"
#include "config/PresetDescription.h"

namespace TesselFX {

/// The tables that one configuration INI defines. Built, parsed once and queried for copies
/// during initialisation; not thread safe. ParseConfig lets the standard conversion exceptions
/// of bad entries pass out (std::invalid_argument, std::out_of_range), each also a
/// ConfigLineError that names the line; what was parsed before the failing entry stays in the
/// tables.
class HalControlConfig {
  public:
    static constexpr char kSampleRatesSection[] = "HAL_SUPPORTED_SAMPLE_RATES";
    static constexpr char kVolumeSubtypesSection[] = "HAL_VOLUME_SUBTYPES";
    static constexpr char kOrientationSubtypesSection[] = "HAL_ORIENTATION_SUBTYPES";
    static constexpr char kVolumePrioritySection[] = "HAL_VOLUME_PRIORITY";
    static constexpr char kPresetsSection[] = "HAL_SUPPORTED_PRESETS";
    static constexpr char kControlsSection[] = "HAL_SUPPORTED_CONTROLS";
    static constexpr char kFeaturesSection[] = "HAL_SUPPORTED_FEATURES";
    static constexpr char kCustomActionPrefix[] = "CUSTOM_ACTION_";
    /// The feature that makes the DSP buffer sender dump its buffers.
    static constexpr char kDumpBufferToDspFeature[] = "DumpBufferToDsp";

    HalControlConfig();
    virtual ~HalControlConfig();
    HalControlConfig(const HalControlConfig&) = delete;
    HalControlConfig& operator=(const HalControlConfig&) = delete;

    /// Runs every section's parser in the fixed dependency order; an absent section is skipped.
    /// Values lose all white space before they reach a parser. Does nothing for a null file.
    virtual void ParseConfig(std::shared_ptr<CIniFile> iniFile);
    /// The parsers of the fixed sections, in parsing order.
    virtual LineParsers MakeLineParsers();
    /// Appends a parser for each CUSTOM_ACTION_<id> section, creating the action <id>. A
    /// section named only by the prefix throws std::invalid_argument.
    virtual void AddCustomActionParsers(std::shared_ptr<CIniFile> iniFile, LineParsers& parsers);

    /// parser.Parse(name, value); a std::invalid_argument or std::out_of_range that leaves it
    /// goes on with the line attached (ConfigLineError::RethrowWithLine).
    static void ParseLine(ISingleLineParser& parser, const std::string& section,
                          const std::string& name, const std::string& value);
    /// The <id> of a section named CUSTOM_ACTION_<id>: std::stoi of what follows the prefix,
    /// which throws with the section attached.
    static int32_t CustomActionId(const std::string& section);

    ControlDescriptions GetControls() const { return m_controls; }
    VolumeSubtypeTables GetPresetVolumeSubtypes() const { return m_presetVolumeSubtypes; }
    std::map<int32_t, int32_t> GetVolumePriorities() const { return m_volumePriorities; }
    OrientationSubtypeTables GetPresetOrientationSubtypes() const {
        return m_presetOrientationSubtypes;
    }
    DefaultAngles GetPresetDefaultAngles() const { return m_presetDefaultAngles; }
    std::set<std::string> GetFeatures() const { return m_features; }
    std::map<int32_t, std::shared_ptr<CustomAction>> GetCustomActions() const {
        return m_customActions;
    }

    /// The intermediate tables, by table name.
    std::map<std::string, std::vector<int32_t>> GetSampleRates() const { return m_sampleRates; }
    VolumeSubtypeTables GetVolumeSubtypes() const { return m_volumeSubtypes; }
    OrientationSubtypeTables GetOrientationSubtypes() const { return m_orientationSubtypes; }
    DefaultAngles GetDefaultAngles() const { return m_defaultAngles; }
    PresetDescriptions GetPresets() const { return m_presets; }

  protected:
    ControlDescriptions m_controls;
    std::map<int32_t, int32_t> m_volumePriorities;
    std::set<std::string> m_features;
    std::map<std::string, std::vector<int32_t>> m_sampleRates;
    VolumeSubtypeTables m_volumeSubtypes;
    VolumeSubtypeTables m_presetVolumeSubtypes;
    OrientationSubtypeTables m_orientationSubtypes;
    OrientationSubtypeTables m_presetOrientationSubtypes;
    DefaultAngles m_defaultAngles;
    DefaultAngles m_presetDefaultAngles;
    PresetDescriptions m_presets;
    std::map<int32_t, std::shared_ptr<CustomAction>> m_customActions;
};

}  // namespace TesselFX
