#include "log/SynchronousMessage.h"

namespace TesselFX {
namespace TesselInterprocess {

void SynchronousMessage::Wait() {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_condition.wait(lock, [this] { return m_notified; });
}

void SynchronousMessage::Notify() {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_notified = true;
    m_condition.notify_all();
}

}  // namespace TesselInterprocess
}  // namespace TesselFX
