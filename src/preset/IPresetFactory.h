#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "preset/IPreset.h"

namespace TesselFX {

/// Makes presets; other objects do not construct them.
class IPresetFactory {
  public:
    virtual ~IPresetFactory() = default;
    /// A user preset when isUser, else a system preset.
    virtual std::shared_ptr<IPreset> Create(uint32_t outputMode, uint32_t soundMode,
                                            uint32_t subtypeMask, const std::string& name,
                                            const std::string& remarks, uint16_t flags,
                                            uint8_t priority, bool isUser) = 0;
};

}  // namespace TesselFX
