#include "log/ThreadedQueue.h"

#include "log/SynchronousMessage.h"
#include "log/TesselLog.h"
#include "log/ThreadStart.h"

namespace TesselFX {
namespace TesselInterprocess {

namespace {
// The queue whose consumer loop runs on this thread, if any.
thread_local const ThreadedQueue* t_runningQueue = nullptr;
}  // namespace

ThreadedQueue::ThreadedQueue(std::shared_ptr<IMessageQueue> queue, bool abortOnDestruction)
    : m_queue(std::move(queue)), m_abortOnDestruction(abortOnDestruction) {
    if (m_queue) m_thread = StartThread([this] { Run(); });
}

ThreadedQueue::~ThreadedQueue() {
    if (m_abortOnDestruction) {
        Abort();
    } else {
        Stop();
    }
}

bool ThreadedQueue::Post(std::shared_ptr<Message> message) {
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    if (m_stopped || !m_queue) return false;
    return m_queue->Enqueue(std::move(message));
}

void ThreadedQueue::Stop() {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "ThreadedQueue::Stop --->");
    {
        std::lock_guard<std::recursive_mutex> lock(m_mutex);
        if (!m_stopped) {
            // The stop message bypasses the bound: a full queue cannot refuse it.
            if (!m_queue || !m_queue->EnqueueWithLimit(std::make_shared<StopMessage>(), false)) {
                TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "Failed enqueue StopMessage");
            }
            m_stopped = true;
            if (m_thread.joinable()) m_thread.join();
        }
    }
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "ThreadedQueue::Stop <---");
}

void ThreadedQueue::Abort() {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "ThreadedQueue::Abort --->");
    {
        std::lock_guard<std::recursive_mutex> lock(m_mutex);
        if (!m_stopped) {
            FlushQueue();
            Stop();
        }
    }
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "ThreadedQueue::Abort <---");
}

void ThreadedQueue::FlushQueue() {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "ThreadedQueue::FlushQueue");
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    if (m_stopped || !m_queue) return;
    Clear();
    if (!m_queue->EnqueueWithLimit(std::make_shared<FlushMessage>(), false)) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "Failed enqueue FlushMessage");
    }
}

void ThreadedQueue::Clear() {
    TESSEL_LOG_ENTERING(TESSEL_LOG_FXModule);
    if (m_queue) m_queue->Clear();
}

bool ThreadedQueue::IsStopped() const {
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    return m_stopped;
}

bool ThreadedQueue::IsQueueThread() const { return t_runningQueue == this; }

void ThreadedQueue::Run() {
    t_runningQueue = this;
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "ThreadedQueue::Run --->");
    for (;;) {
        const std::shared_ptr<Message> message = m_queue->Dequeue();
        if (!message) continue;
        message->Execute();
        if (message->GetKind() == MessageKind::kSynchronous) {
            static_cast<SynchronousMessage&>(*message).Notify();
        }
        if (message->GetKind() == MessageKind::kStop) break;
    }
    Clear();
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "ThreadedQueue::Run <---");
    t_runningQueue = nullptr;
}

}  // namespace TesselInterprocess
}  // namespace TesselFX
