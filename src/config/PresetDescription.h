#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "config/ConfigTypes.h"

namespace TesselFX {

/// One line of HAL_SUPPORTED_PRESETS: the mode pair and subtypes a control may use, and the
/// names of its volume and orientation subtype tables. Immutable; shared by controls and actions.
class PresetDescription {
  public:
    PresetDescription(const std::string& name, uint32_t outputMode, uint32_t soundMode,
                      SubTypeMask subtypeMask, const std::string& volumeSubtypesName,
                      const std::string& orientationSubtypesName);
    virtual ~PresetDescription();

    const std::string& GetName() const { return m_name; }
    uint32_t GetOutputMode() const { return m_outputMode; }
    uint32_t GetSoundMode() const { return m_soundMode; }
    SubTypeMask GetSubtypeMask() const { return m_subtypeMask; }
    const std::string& GetVolumeSubtypesName() const { return m_volumeSubtypesName; }
    const std::string& GetOrientationSubtypesName() const { return m_orientationSubtypesName; }

  private:
    std::string m_name;
    uint32_t m_outputMode;
    uint32_t m_soundMode;
    SubTypeMask m_subtypeMask;
    std::string m_volumeSubtypesName;
    std::string m_orientationSubtypesName;
};

/// Preset descriptions by preset name.
using PresetDescriptions = std::map<std::string, std::shared_ptr<PresetDescription>>;

}  // namespace TesselFX
