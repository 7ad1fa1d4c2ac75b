#pragma once

#include <cstdint>
#include <memory>

#include "log/Message.h"

namespace TesselFX {
namespace TesselInterprocess {

/// A bounded FIFO of shared messages for any number of producers and one consumer.
class IMessageQueue {
  public:
    virtual ~IMessageQueue() = default;

    /// EnqueueWithLimit(message, true).
    virtual bool Enqueue(std::shared_ptr<Message> message) = 0;
    /// Blocks until a message is there and takes it from the front.
    virtual std::shared_ptr<Message> Dequeue() = 0;
    /// Throws away every waiting message without executing it; releases synchronous senders.
    virtual void Clear() = 0;
    virtual uint32_t GetSize() const = 0;
    virtual uint32_t GetMaxSize() const = 0;
    /// Appends the message; with checkFull a full queue refuses it (false). A synchronous
    /// message makes the call return only once it has been executed or cleared.
    virtual bool EnqueueWithLimit(std::shared_ptr<Message> message, bool checkFull) = 0;
};

}  // namespace TesselInterprocess
}  // namespace TesselFX
