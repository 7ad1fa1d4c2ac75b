#include "log/MessageQueueBase.h"

#include <algorithm>

namespace TesselFX {
namespace TesselInterprocess {

MessageQueueBase::MessageQueueBase(uint32_t maxSize)
    : m_maxSize(std::min(maxSize, kMaxQueueSize)) {}

bool MessageQueueBase::Enqueue(std::shared_ptr<Message> message) {
    return EnqueueWithLimit(std::move(message), true);
}

}  // namespace TesselInterprocess
}  // namespace TesselFX
