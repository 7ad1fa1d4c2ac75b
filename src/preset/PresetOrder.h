#pragma once

#include <algorithm>
#include <vector>

namespace TesselFX {

/// Sorts presets into merge order: lower priority first, then lower subtype mask.
template <typename PresetPtr>
void SortByPresetOrder(std::vector<PresetPtr>& presets) {
    std::sort(presets.begin(), presets.end(), [](const PresetPtr& a, const PresetPtr& b) {
        if (a->GetPriority() != b->GetPriority()) return a->GetPriority() < b->GetPriority();
        return a->GetSubtypeMask() < b->GetSubtypeMask();
    });
}

}  // namespace TesselFX
