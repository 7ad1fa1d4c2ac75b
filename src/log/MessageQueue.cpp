#include "log/MessageQueue.h"

#include "log/SynchronousMessage.h"
#include "log/TesselLog.h"

namespace TesselFX {
namespace TesselInterprocess {

MessageQueue::MessageQueue(uint32_t maxSize) : MessageQueueBase(maxSize) {}

bool MessageQueue::EnqueueWithLimit(std::shared_ptr<Message> message, bool checkFull) {
    if (!message) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "MessageQueue::Enqueue() NULL pMessage");
        return false;
    }
    uint32_t id = 0;
    bool accepted = false;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        id = ++m_nextId;
        message->MarkQueued(id);
        if (!checkFull || m_messages.size() < GetMaxSize()) {
            if (m_lastAcceptedId != id - 1) message->SetLostBefore();
            m_lastAcceptedId = id;
            m_messages.push_back(message);
            m_condition.notify_one();
            accepted = true;
        }
    }
    if (!accepted) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "MessageQueue::Enqueue() Message Queue full");
        return false;
    }
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "MessageQueue::Enqueue %d", static_cast<int>(id));
    if (message->GetKind() == MessageKind::kSynchronous) {
        static_cast<SynchronousMessage&>(*message).Wait();
    }
    return true;
}

std::shared_ptr<Message> MessageQueue::Dequeue() {
    std::shared_ptr<Message> message;
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_condition.wait(lock, [this] { return !m_messages.empty(); });
        message = std::move(m_messages.front());
        m_messages.pop_front();
    }
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "MessageQueue::Dequeue %d",
               static_cast<int>(message->GetId()));
    return message;
}

void MessageQueue::Clear() {
    TESSEL_LOG_ENTERING(TESSEL_LOG_FXModule);
    std::deque<std::shared_ptr<Message>> dropped;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        dropped.swap(m_messages);
    }
    // Senders are released (and the messages destroyed) outside the queue's lock, so that
    // the queue mutex is never held while a message's handshake mutex is taken.
    for (const auto& message : dropped) {
        if (message->GetKind() == MessageKind::kSynchronous) {
            static_cast<SynchronousMessage&>(*message).Notify();
        }
    }
}

uint32_t MessageQueue::GetSize() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return static_cast<uint32_t>(m_messages.size());
}

}  // namespace TesselInterprocess
}  // namespace TesselFX
