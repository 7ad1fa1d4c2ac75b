#pragma once

#include <condition_variable>
#include <mutex>

#include "log/Message.h"

namespace TesselFX {
namespace TesselInterprocess {

/// A message whose sender waits until the consumer has executed it, or until a Clear of the
/// queue has thrown it away. The release is a flag set under the handshake mutex, so it cannot
/// be lost whether Notify comes before or after Wait. Thread safe; one sender waits.
class SynchronousMessage : public Message {
  public:
    SynchronousMessage() : Message(MessageKind::kSynchronous) {}

    /// Sender side: blocks until Notify has been called.
    void Wait();
    /// Consumer or Clear side: releases the sender.
    void Notify();

  private:
    std::mutex m_mutex;
    std::condition_variable m_condition;
    bool m_notified = false;
};

/// A synchronous message that does nothing: its sender learns that everything ahead of it
/// has been executed.
class FlushMessage : public SynchronousMessage {
  public:
    void Execute() override {}
};

}  // namespace TesselInterprocess
}  // namespace TesselFX
