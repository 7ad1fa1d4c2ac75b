#include "config/VolumePolicy.h"

#include <cmath>

#include "log/TesselLog.h"

namespace TesselFX {

double VolumeToDb(double volume) { return 20.0 * std::log10(volume); }

VolumePolicy::VolumePolicy(const VolumeSubtypeTables& subtypes,
                           const std::map<int32_t, int32_t>& priorities)
    : m_subtypesByPreset(subtypes), m_priorities(priorities) {}

VolumePolicy::~VolumePolicy() = default;

SubTypeMask VolumePolicy::GetSubtypeMaskForVolume(const std::string& presetName,
                                                  double volumeDb) const {
    SubTypeMask mask = 0;
    auto table = m_subtypesByPreset.find(presetName);
    if (table != m_subtypesByPreset.end()) {
        for (const auto& entry : table->second) {
            if (entry.first >= volumeDb) {
                mask = entry.second;
                break;
            }
        }
    }
    TESSEL_LOG(1, TESSEL_LOG_FXModule,
               "VolumePolicy::GetSubtypeMaskForVolume vol = %lfdB returning subtype_mask %u",
               volumeDb, mask);
    return mask;
}

double VolumePolicy::SelectVolumeFromTable(const VolumeTable& table) const {
    double bestVolume = 1.0;
    int32_t bestPriority = 0;
    int32_t bestStream = -1;
    for (const auto& entry : table) {
        const int32_t stream = static_cast<int32_t>(entry.first);
        const int32_t priority = MapAt(m_priorities, stream);
        if (priority > bestPriority || (priority == bestPriority && entry.second > bestVolume)) {
            bestVolume = entry.second;
            bestPriority = priority;
            bestStream = stream;
        }
    }
    TESSEL_LOG(1, TESSEL_LOG_FXModule,
               "VolumePolicy::SelectVolumeFromTable vol = %lf selected streamType %d  Priority %d",
               bestVolume, bestStream, bestPriority);
    return bestVolume;
}

float VolumePolicy::GetDefaultVolume() const { return 1.0f; }

}  // namespace TesselFX
