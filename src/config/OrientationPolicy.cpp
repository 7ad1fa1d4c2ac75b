#include "config/OrientationPolicy.h"

#include "log/TesselLog.h"

namespace TesselFX {

OrientationPolicy::OrientationPolicy(
    const std::map<std::string, std::map<OrientationAngle, SubTypeMask>>& subtypes,
    const std::map<std::string, OrientationAngle>& defaultAngles)
    : m_subtypesByPreset(subtypes), m_defaultAngles(defaultAngles) {
    if (!TESSEL_LOG_ON(0, TESSEL_LOG_FXModule)) return;
    TESSEL_LOG_ENTERING(TESSEL_LOG_FXModule);
    for (const auto& preset : m_subtypesByPreset) {
        TESSEL_LOG(0, TESSEL_LOG_FXModule, "%s", preset.first.c_str());
        for (const auto& entry : preset.second) {
            TESSEL_LOG(0, TESSEL_LOG_FXModule, "%d %d", entry.first,
                       static_cast<int>(entry.second));
        }
    }
}

OrientationPolicy::~OrientationPolicy() = default;

SubTypeMask OrientationPolicy::GetSubtypeMaskForOrientation(const std::string& presetName,
                                                            OrientationAngle angle) const {
    SubTypeMask mask = 0;
    auto table = m_subtypesByPreset.find(presetName);
    if (table != m_subtypesByPreset.end()) {
        auto entry = table->second.find(angle);
        if (entry != table->second.end()) mask = entry->second;
    }
    TESSEL_LOG(1, TESSEL_LOG_FXModule,
               "OrientationPolicy::GetSubtypeMaskForOrientation angle degree = %d degree "
               "returning subtype_mask %u",
               angle, mask);
    return mask;
}

OrientationAngle OrientationPolicy::GetDefaultOrientationAngle(
    const std::string& presetName) const {
    auto found = m_defaultAngles.find(presetName);
    const OrientationAngle angle = found == m_defaultAngles.end() ? 0 : found->second;
    TESSEL_LOG(1, TESSEL_LOG_FXModule,
               "OrientationPolicy::GetDefaultOrientationAngle  default orientation angle = %d ",
               angle);
    return angle;
}

}  // namespace TesselFX
