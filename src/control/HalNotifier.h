#pragma once

#include "control/IHalNotifier.h"

namespace TesselFX {

/// Passes notifications to a notify function together with the handle of the control object
/// that it was made for. Holds no lock: it runs under the locks of the call that notifies.
class HalNotifier : public IHalNotifier {
  public:
    /// handle is opaque here and handed back to notifyFunction unchanged.
    HalNotifier(void* handle, HalNotifyFunction notifyFunction);

    bool Notify(const std::shared_ptr<CommonSettings>& settings,
                const std::vector<char>& data) override;
    /// True when the notify function returned 0; false without a function.
    bool Notify(const std::shared_ptr<CommonSettings>& settings, const void* data,
                unsigned int size) override;

  private:
    void* m_manager;
    HalNotifyFunction m_notifyFunction;
};

}  // namespace TesselFX
