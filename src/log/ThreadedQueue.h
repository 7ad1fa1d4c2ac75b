#pragma once

#include <memory>
#include <mutex>
#include <thread>

#include "log/IMessageQueue.h"

namespace TesselFX {
namespace TesselInterprocess {

/// One consumer thread that executes the messages of a queue in order; started by the
/// constructor, ended for good by Stop or Abort (the destructor calls one of them, so the
/// thread is always joined). Any number of threads may Post. Code run by a message must not
/// call Post, Stop, Abort or FlushQueue of its own queue.
class ThreadedQueue {
  public:
    explicit ThreadedQueue(std::shared_ptr<IMessageQueue> queue, bool abortOnDestruction = false);
    ~ThreadedQueue();
    ThreadedQueue(const ThreadedQueue&) = delete;
    ThreadedQueue& operator=(const ThreadedQueue&) = delete;

    /// Enqueues within the queue's bound; false once stopped or when the queue refuses.
    /// A synchronous message blocks the caller, and other producers, until executed.
    bool Post(std::shared_ptr<Message> message);
    /// Lets the consumer execute everything queued so far, then joins it. Later calls do
    /// nothing.
    void Stop();
    /// Throws away what waits, lets the running message finish, then stops.
    void Abort();
    /// Throws away what waits and returns once the running message, if any, has finished.
    void FlushQueue();
    /// Throws away what waits.
    void Clear();

    bool IsStopped() const;
    /// True on this queue's own consumer thread.
    bool IsQueueThread() const;

  private:
    void Run();

    std::thread m_thread;
    std::shared_ptr<IMessageQueue> m_queue;
    mutable std::recursive_mutex m_mutex;
    bool m_stopped = false;
    bool m_abortOnDestruction;
};

}  // namespace TesselInterprocess
}  // namespace TesselFX
