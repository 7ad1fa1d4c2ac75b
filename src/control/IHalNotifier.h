#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "config/CommonSettings.h"

namespace TesselFX {

/// The function through which notifications leave the library: handle of the control object,
/// settings of the notifying handler's control description, the text. Returns 0 for success.
using HalNotifyFunction = int (*)(void* handle, CommonSettings* settings, const void* data,
                                  uint32_t size);

/// Hands change notifications of a tuning tool's concern to the host. settings are those of
/// the notifying handler's control description.
class IHalNotifier {
  public:
    virtual ~IHalNotifier() = default;
    /// Same as the other form with the vector's bytes.
    virtual bool Notify(const std::shared_ptr<CommonSettings>& settings,
                        const std::vector<char>& data) = 0;
    /// True when the host took the data.
    virtual bool Notify(const std::shared_ptr<CommonSettings>& settings, const void* data,
                        unsigned int size) = 0;
};

}  // namespace TesselFX
