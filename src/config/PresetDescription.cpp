#include "config/PresetDescription.h"

namespace TesselFX {

PresetDescription::PresetDescription(const std::string& name, uint32_t outputMode,
                                     uint32_t soundMode, SubTypeMask subtypeMask,
                                     const std::string& volumeSubtypesName,
                                     const std::string& orientationSubtypesName)
    : m_name(name),
      m_outputMode(outputMode),
      m_soundMode(soundMode),
      m_subtypeMask(subtypeMask),
      m_volumeSubtypesName(volumeSubtypesName),
      m_orientationSubtypesName(orientationSubtypesName) {}

PresetDescription::~PresetDescription() = default;

}  // namespace TesselFX
