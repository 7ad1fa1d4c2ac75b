#include "preset/PresetFactory.h"

#include "preset/UserPreset.h"

namespace TesselFX {

std::shared_ptr<IPreset> PresetFactory::Create(uint32_t outputMode, uint32_t soundMode,
                                               uint32_t subtypeMask, const std::string& name,
                                               const std::string& remarks, uint16_t flags,
                                               uint8_t priority, bool isUser) {
    auto serializer = std::make_shared<CLinkLawEntrySerializer>();
    if (isUser) {
        return std::make_shared<UserPreset>(outputMode, soundMode, subtypeMask, name, remarks,
                                            flags, priority, serializer);
    }
    return std::make_shared<Preset>(outputMode, soundMode, subtypeMask, name, remarks, flags,
                                    priority, serializer);
}

}  // namespace TesselFX
