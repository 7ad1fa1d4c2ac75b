#pragma once

#include "preset/IPresetFactory.h"

namespace TesselFX {

/// Makes a UserPreset or a Preset, each with a link-law serializer of its own.
class PresetFactory : public IPresetFactory {
  public:
    std::shared_ptr<IPreset> Create(uint32_t outputMode, uint32_t soundMode, uint32_t subtypeMask,
                                    const std::string& name, const std::string& remarks,
                                    uint16_t flags, uint8_t priority, bool isUser) override;
};

}  // namespace TesselFX
