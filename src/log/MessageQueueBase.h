#pragma once

#include "log/IMessageQueue.h"

namespace TesselFX {
namespace TesselInterprocess {

/// The capacity rule shared by all queues: at most kMaxQueueSize messages wait.
class MessageQueueBase : public IMessageQueue {
  public:
    static constexpr uint32_t kMaxQueueSize = 1000;

    /// maxSize is clipped to kMaxQueueSize.
    explicit MessageQueueBase(uint32_t maxSize);

    bool Enqueue(std::shared_ptr<Message> message) override;
    uint32_t GetMaxSize() const override { return m_maxSize; }

  private:
    uint32_t m_maxSize;
};

}  // namespace TesselInterprocess
}  // namespace TesselFX
