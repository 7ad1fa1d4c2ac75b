#pragma once

#include <memory>

#include "preset/IPreset.h"
#include "preset/IPresetHandleFactory.h"
#include "preset/IPresetSet.h"

namespace TesselFX {

/// Makes preset sets; the reader asks for one when it has parsed the files.
class IPresetSetFactory {
  public:
    virtual ~IPresetSetFactory() = default;
    virtual std::shared_ptr<IPresetSet> Create(
        const PresetMap& systemPresets, const PresetMap& userPresets,
        const std::shared_ptr<IPresetHandleFactory>& presetHandleFactory) = 0;
};

}  // namespace TesselFX
