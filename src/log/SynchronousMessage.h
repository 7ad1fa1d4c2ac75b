#pragma once

#include <condition_variable>
#include <mutex>

#include "log/Message.h"

namespace TesselFX {
namespace TesselInterprocess {

/// A message whose sender waits until the consumer has executed it, or until a Clear of the
/// queue has thrown it away. The constructor locks the handshake mutex on the creating thread,
/// which keeps it until Wait, so the wake-up cannot be lost. Contract: created, sent and waited
/// for by one thread, exactly once; the queue calls Wait after it released its own lock.
class SynchronousMessage : public Message {
  public:
    SynchronousMessage();
    ~SynchronousMessage() override = default;

    /// Sender side: blocks until Notify, then releases the handshake mutex. Does nothing when
    /// called a second time.
    void Wait();
    /// Consumer or Clear side: releases the sender.
    void Notify();

  private:
    std::mutex m_mutex;
    std::condition_variable m_condition;
    bool m_notified = false;
    // Declared last so that it unlocks (when a refused message is destroyed unsent) before
    // the mutex goes away.
    std::unique_lock<std::mutex> m_senderLock;
};

/// A synchronous message that does nothing: its sender learns that everything ahead of it
/// has been executed.
class FlushMessage : public SynchronousMessage {
  public:
    void Execute() override {}
};

}  // namespace TesselInterprocess
}  // namespace TesselFX
