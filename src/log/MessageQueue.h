#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>

#include "log/MessageQueueBase.h"

namespace TesselFX {
namespace TesselInterprocess {

/// The bounded FIFO. Every enqueue attempt consumes an id, accepted or not; the first
/// message accepted after a refusal carries lostBefore. Thread safe. Its own log lines
/// (enqueue, dequeue, full) are written after the lock is released, so a log output that
/// posts into this very queue does not stop on it.
class MessageQueue : public MessageQueueBase {
  public:
    explicit MessageQueue(uint32_t maxSize);

    bool EnqueueWithLimit(std::shared_ptr<Message> message, bool checkFull) override;
    std::shared_ptr<Message> Dequeue() override;
    void Clear() override;
    uint32_t GetSize() const override;

  private:
    mutable std::mutex m_mutex;
    std::condition_variable m_condition;
    std::deque<std::shared_ptr<Message>> m_messages;
    uint32_t m_nextId = 0;
    uint32_t m_lastAcceptedId = 0;
};

}  // namespace TesselInterprocess
}  // namespace TesselFX
