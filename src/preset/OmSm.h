#pragma once

#include <cstdint>
#include <tuple>

namespace TesselFX {

/// One bit per subtype (a volume step, an orientation, ...); 0 means the base preset.
using SubtypeMasks = uint32_t;

/// An output mode and a sound mode, ordered by output mode, then sound mode.
struct OmSm {
    uint32_t om = 0;
    uint32_t sm = 0;

    bool operator<(const OmSm& other) const {
        return std::tie(om, sm) < std::tie(other.om, other.sm);
    }
    bool operator==(const OmSm& other) const { return om == other.om && sm == other.sm; }
    bool operator!=(const OmSm& other) const { return !(*this == other); }
};

/// The key of every preset map: a mode pair and a subtype mask (0 for the base preset,
/// one bit for a sub preset).
struct OmSmSubtypeMask {
    uint32_t om = 0;
    uint32_t sm = 0;
    SubtypeMasks subtypeMask = 0;

    bool operator<(const OmSmSubtypeMask& other) const {
        return std::tie(om, sm, subtypeMask) < std::tie(other.om, other.sm, other.subtypeMask);
    }
    bool operator==(const OmSmSubtypeMask& other) const {
        return om == other.om && sm == other.sm && subtypeMask == other.subtypeMask;
    }
    bool operator!=(const OmSmSubtypeMask& other) const { return !(*this == other); }
};

}  // namespace TesselFX
