#pragma once

#include <cstdint>

namespace TesselFX {
namespace TesselInterprocess {

/// What the consumer does with a message besides executing it.
enum class MessageKind : uint32_t {
    kPlain = 0,        ///< executed, nothing else
    kSynchronous = 1,  ///< its sender waits until it has been executed (or cleared)
    kStop = 2,         ///< ends the consumer loop after it
};

/// A unit of work for a queue thread, shared between its sender and the queue.
/// A message is sent once. The queue sets id, queued and lostBefore while it holds its lock;
/// the consumer reads them after dequeuing, so no further synchronisation is needed.
class Message {
  public:
    virtual ~Message() = default;
    virtual void Execute() = 0;

    uint32_t GetId() const { return m_id; }
    bool IsQueued() const { return m_queued; }
    /// True when at least one message offered to the queue before this one was refused.
    bool IsLostBefore() const { return m_lostBefore; }
    MessageKind GetKind() const { return m_kind; }

    /// Called by the queue on every enqueue attempt, accepted or not.
    void MarkQueued(uint32_t id) {
        m_id = id;
        m_queued = true;
    }
    /// Called by the queue when it accepts this message after refusing an earlier one.
    void SetLostBefore() { m_lostBefore = true; }

  protected:
    Message() = default;

  private:
    friend class SynchronousMessage;
    friend class StopMessage;
    explicit Message(MessageKind kind) : m_kind(kind) {}

    uint32_t m_id = 0;
    bool m_queued = false;
    bool m_lostBefore = false;
    MessageKind m_kind = MessageKind::kPlain;
};

/// Ends the consumer loop of a ThreadedQueue; executing it does nothing.
class StopMessage : public Message {
  public:
    StopMessage() : Message(MessageKind::kStop) {}
    void Execute() override {}
};

}  // namespace TesselInterprocess
}  // namespace TesselFX
