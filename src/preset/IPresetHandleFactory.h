#pragma once

#include <cstdint>
#include <memory>

#include "preset/IPreset.h"
#include "preset/IPresetHandle.h"

namespace TesselFX {

/// Makes preset handles; only the preset set asks for them.
class IPresetHandleFactory {
  public:
    virtual ~IPresetHandleFactory() = default;
    virtual std::shared_ptr<IPresetHandle> Create(uint32_t om, uint32_t sm,
                                                  SubtypeMasks supportedSubtypeMasks,
                                                  const ConstPresetPtrSet& systemPresets,
                                                  const PresetPtrSet& userPresets) = 0;
};

}  // namespace TesselFX
