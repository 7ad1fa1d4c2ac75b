#pragma once

#include <memory>

#include "config/IVolumeTableHelper.h"

namespace TesselFX {

/// One per control handler; the caller's thread only. The listener is not owned.
class VolumeTableHelper : public IVolumeTableHelper {
  public:
    explicit VolumeTableHelper(std::shared_ptr<IVolumePolicy> policy);
    ~VolumeTableHelper() override;

    void SetListener(VolumeChangedListener* listener) override;
    void ClearListener() override;
    bool SetVolumeTable(const VolumeTable& table) override;
    ChangeMap CompareTables(const VolumeTable& oldTable,
                            const VolumeTable& newTable) const override;

    /// Whether a new table may move the selected volume. The first table always does; after
    /// that, streams that only go to or appear at volume 0.0 do not.
    bool NeedToUpdate(const VolumeTable& table);

  private:
    std::shared_ptr<IVolumePolicy> m_policy;
    VolumeChangedListener* m_listener = nullptr;
    VolumeTable m_table;
    bool m_initialised = false;
};

}  // namespace TesselFX
