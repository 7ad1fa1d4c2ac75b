#include "preset/PresetSetFactory.h"

#include "preset/PresetFactory.h"
#include "preset/PresetSet.h"

namespace TesselFX {

std::shared_ptr<IPresetSet> PresetSetFactory::Create(
    const PresetMap& systemPresets, const PresetMap& userPresets,
    const std::shared_ptr<IPresetHandleFactory>& presetHandleFactory) {
    return std::make_shared<PresetSet>(systemPresets, userPresets, presetHandleFactory,
                                       std::make_shared<PresetFactory>());
}

}  // namespace TesselFX
