#include "control/HalNotifier.h"

namespace TesselFX {

HalNotifier::HalNotifier(void* handle, HalNotifyFunction notifyFunction)
    : m_manager(handle), m_notifyFunction(notifyFunction) {}

bool HalNotifier::Notify(const std::shared_ptr<CommonSettings>& settings,
                         const std::vector<char>& data) {
    return Notify(settings, data.data(), static_cast<unsigned int>(data.size()));
}

bool HalNotifier::Notify(const std::shared_ptr<CommonSettings>& settings, const void* data,
                         unsigned int size) {
    return m_notifyFunction != nullptr &&
           m_notifyFunction(m_manager, settings.get(), data, size) == 0;
}

}  // namespace TesselFX
