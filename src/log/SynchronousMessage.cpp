#include "log/SynchronousMessage.h"

namespace TesselFX {
namespace TesselInterprocess {

SynchronousMessage::SynchronousMessage()
    : Message(MessageKind::kSynchronous), m_senderLock(m_mutex) {}

void SynchronousMessage::Wait() {
    if (!m_senderLock.owns_lock()) return;
    // The flag guards against spurious wake-ups; Notify sets it under the same mutex.
    m_condition.wait(m_senderLock, [this] { return m_notified; });
    m_senderLock.unlock();
}

void SynchronousMessage::Notify() {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_notified = true;
    m_condition.notify_all();
}

}  // namespace TesselInterprocess
}  // namespace TesselFX
