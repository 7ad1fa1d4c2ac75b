#pragma once

#include <cstdint>

namespace TesselFX {

/// The answer of a custom action. id 0: nothing matched; id 1: select the mode pair.
struct InternalAction {
    static constexpr int32_t kNone = 0;
    static constexpr int32_t kPresetSelection = 1;

    int32_t id = kNone;
    uint32_t outputMode = 0;
    uint32_t soundMode = 0;
};

}  // namespace TesselFX
