#pragma once

#include <cstdint>
#include <map>
#include <set>

#include "config/IVolumePolicy.h"

namespace TesselFX {

/// Keeps the last volume table, decides whether a new one is worth acting on and tells its
/// listener the selected volume. The listener is not owned; clear it before it goes away.
class IVolumeTableHelper {
  public:
    class VolumeChangedListener {
      public:
        virtual ~VolumeChangedListener() = default;
        virtual bool OnVolumeChanged(const double& volume) = 0;
    };

    /// Kinds of the change map.
    static constexpr int kAdded = 0;
    static constexpr int kRemoved = 1;
    static constexpr int kChanged = 2;
    /// Change kind -> stream numbers.
    using ChangeMap = std::map<int, std::set<uint32_t>>;

    virtual ~IVolumeTableHelper() = default;
    virtual void SetListener(VolumeChangedListener* listener) = 0;
    virtual void ClearListener() = 0;
    /// False without a listener; true when nothing worth acting on changed; otherwise what the
    /// listener returns for the newly selected volume.
    virtual bool SetVolumeTable(const VolumeTable& table) = 0;
    virtual ChangeMap CompareTables(const VolumeTable& oldTable,
                                    const VolumeTable& newTable) const = 0;
};

}  // namespace TesselFX
