#include "preset/PresetHandleFactory.h"

#include "preset/PresetHandle.h"

namespace TesselFX {

std::shared_ptr<IPresetHandle> PresetHandleFactory::Create(uint32_t om, uint32_t sm,
                                                           SubtypeMasks supportedSubtypeMasks,
                                                           const ConstPresetPtrSet& systemPresets,
                                                           const PresetPtrSet& userPresets) {
    return std::make_shared<PresetHandle>(om, sm, supportedSubtypeMasks, systemPresets, userPresets,
                                          std::make_shared<CLinkLawEntrySerializer>(),
                                          std::make_shared<LinkLaws>());
}

}  // namespace TesselFX
