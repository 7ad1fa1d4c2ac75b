#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <optional>
#include <thread>

#include "LogCapture.h"
#include "LogTestHelpers.h"
#include "log/MessageQueue.h"
#include "log/SynchronousMessage.h"
#include "log/ThreadedQueue.h"

namespace TesselFX {
namespace {

using TesselInterprocess::MessageQueue;
using TesselInterprocess::SynchronousMessage;
using TesselInterprocess::ThreadedQueue;
using test::CallMessage;
using test::Gate;
using test::HookedQueue;
using test::LogCapture;

class SynchronousCall : public SynchronousMessage {
  public:
    explicit SynchronousCall(std::function<void()> call) : m_call(std::move(call)) {}
    void Execute() override { m_call(); }

  private:
    std::function<void()> m_call;
};

size_t IndexOf(const std::vector<std::string>& texts, const std::string& text) {
    return static_cast<size_t>(std::find(texts.begin(), texts.end(), text) - texts.begin());
}

// A threaded queue whose consumer is held inside a first message until `release` opens.
struct HeldQueue {
    explicit HeldQueue(uint32_t capacity, bool abortOnDestruction = false)
        : queue(std::make_shared<HookedQueue>(capacity)) {
        threaded.emplace(queue, abortOnDestruction);
        auto running = std::make_shared<Gate>();
        threaded->Post(std::make_shared<CallMessage>([this, running] {
            running->Open();
            release.Wait();
            heldFinished = true;
        }));
        running->Wait();
    }
    bool PostCounted() {
        return threaded->Post(std::make_shared<CallMessage>([this] { ++executed; }));
    }

    std::shared_ptr<HookedQueue> queue;
    Gate release;
    std::atomic<bool> heldFinished{false};
    std::atomic<int> executed{0};
    std::optional<ThreadedQueue> threaded;  // declared last: stopped before the rest goes
};

TEST(ThreadedQueue, ExecutesInOrderSynchronousPostWaitsSecondStopDoesNothing) {
    LogCapture capture;
    auto queue = std::make_shared<MessageQueue>(10);
    std::vector<int> order;  // touched by the consumer only until the synchronous post returns
    {
        ThreadedQueue threaded(queue);
        for (int i = 0; i < 5; ++i) {
            EXPECT_TRUE(
                threaded.Post(std::make_shared<CallMessage>([&order, i] { order.push_back(i); })));
        }
        EXPECT_TRUE(threaded.Post(std::make_shared<SynchronousCall>([&] { order.push_back(99); })));
        EXPECT_EQ(order, (std::vector<int>{0, 1, 2, 3, 4, 99}));
        EXPECT_EQ(queue->GetSize(), 0u);

        threaded.Stop();
        EXPECT_TRUE(threaded.IsStopped());
        const size_t linesAfterStop = capture.Lines().size();
        EXPECT_FALSE(threaded.Post(std::make_shared<CallMessage>([&] { order.push_back(7); })));
        EXPECT_EQ(capture.Lines().size(), linesAfterStop);  // no line for a refused post
        threaded.Stop();
    }  // the destructor stops a third time
    EXPECT_EQ(order, (std::vector<int>{0, 1, 2, 3, 4, 99}));

    const auto texts = capture.Texts();
    // Ids 1 to 6 were the posts, 7 the one stop message; the later stops enqueue nothing.
    EXPECT_EQ(capture.Count("MessageQueue::Enqueue 7"), 1u);
    EXPECT_FALSE(capture.HasFragment("MessageQueue::Enqueue 8"));
    EXPECT_EQ(capture.Count("ThreadedQueue::Stop --->"), 3u);
    EXPECT_EQ(capture.Count("ThreadedQueue::Stop <---"), 3u);
    EXPECT_EQ(capture.Count("ThreadedQueue::Run --->"), 1u);
    EXPECT_TRUE(capture.Has(1, "ThreadedQueue::Run --->"));
    // The consumer's end, in order, all before the first Stop returns.
    const std::vector<size_t> positions = {
        IndexOf(texts, "ThreadedQueue::Run --->"),
        IndexOf(texts, "MessageQueue::Dequeue 7"),
        IndexOf(texts,
                "Entering function void TesselFX::TesselInterprocess::ThreadedQueue::Clear()"),
        IndexOf(texts,
                "Entering function virtual void "
                "TesselFX::TesselInterprocess::MessageQueue::Clear()"),
        IndexOf(texts, "ThreadedQueue::Run <---"),
        IndexOf(texts, "ThreadedQueue::Stop <---"),
    };
    EXPECT_TRUE(std::is_sorted(positions.begin(), positions.end()));
    EXPECT_LT(positions.back(), texts.size());
}

TEST(ThreadedQueue, StopOnAFullQueueExecutesEverythingFirst) {
    LogCapture capture(2);
    HeldQueue held(5000);
    for (int i = 0; i < 1000; ++i) ASSERT_TRUE(held.PostCounted()) << i;
    EXPECT_FALSE(held.PostCounted());
    EXPECT_EQ(capture.Count("MessageQueue::Enqueue() Message Queue full"), 1u);
    // The stop message goes in although the queue is full; only then is the consumer let go.
    held.queue->afterBypassEnqueue = [&] {
        EXPECT_EQ(held.queue->GetSize(), 1001u);
        held.release.Open();
    };
    held.threaded->Stop();
    EXPECT_TRUE(held.heldFinished);
    EXPECT_EQ(held.executed, 1000);
    EXPECT_EQ(held.queue->GetSize(), 0u);
    EXPECT_FALSE(capture.HasFragment("Failed enqueue"));
}

TEST(ThreadedQueue, AbortDiscardsAllButTheRunningMessage) {
    LogCapture capture(1);
    HeldQueue held(1000, true);
    for (int i = 0; i < 1000; ++i) held.PostCounted();
    // The running message may finish only once the waiting ones are gone.
    held.queue->afterClear = [&held] { held.release.Open(); };
    capture.Clear();
    held.threaded.reset();  // aborts
    EXPECT_TRUE(held.heldFinished);
    EXPECT_EQ(held.executed, 0);
    std::vector<std::string> controlLines;
    for (const auto& text : capture.Texts()) {
        if (text.rfind("ThreadedQueue::Abort", 0) == 0 ||
            text.rfind("ThreadedQueue::Stop", 0) == 0 ||
            text.rfind("ThreadedQueue::Flush", 0) == 0) {
            controlLines.push_back(text);
        }
    }
    EXPECT_EQ(controlLines,
              (std::vector<std::string>{"ThreadedQueue::Abort --->", "ThreadedQueue::FlushQueue",
                                        "ThreadedQueue::Stop --->", "ThreadedQueue::Stop <---",
                                        "ThreadedQueue::Abort <---"}));
}

TEST(ThreadedQueue, FlushQueueDropsWaitingMessagesAndKeepsRunning) {
    LogCapture capture(2);
    HeldQueue held(10);
    for (int i = 0; i < 3; ++i) held.PostCounted();
    held.queue->afterClear = [&held] { held.release.Open(); };
    held.threaded->FlushQueue();
    EXPECT_TRUE(held.heldFinished);  // returned only after the running message ended
    EXPECT_EQ(held.executed, 0);
    held.queue->afterClear = nullptr;
    EXPECT_TRUE(held.PostCounted());
    held.threaded->Stop();
    EXPECT_EQ(held.executed, 1);
}

TEST(ThreadedQueue, ClearReleasesTheSenderOfADroppedSynchronousMessage) {
    LogCapture capture(2);
    HeldQueue held(10);
    std::atomic<bool> executed{false};
    std::atomic<bool> posted{false};
    std::thread sender([&] {
        posted = held.threaded->Post(std::make_shared<SynchronousCall>([&] { executed = true; }));
    });
    while (held.queue->GetSize() == 0) std::this_thread::yield();
    held.threaded->Clear();
    sender.join();  // would hang if the sender were not released
    EXPECT_TRUE(posted);
    EXPECT_FALSE(executed);
    held.release.Open();
    held.threaded->Stop();
    EXPECT_FALSE(executed);
}

}  // namespace
}  // namespace TesselFX
