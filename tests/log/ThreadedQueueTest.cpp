#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
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

// Posts a message that holds the consumer until the returned gate opens, and waits until the
// consumer is inside it.
std::shared_ptr<Gate> HoldConsumer(ThreadedQueue& threaded, std::atomic<bool>& finished) {
    auto release = std::make_shared<Gate>();
    auto running = std::make_shared<Gate>();
    threaded.Post(std::make_shared<CallMessage>([release, running, &finished] {
        running->Open();
        release->Wait();
        finished = true;
    }));
    running->Wait();
    return release;
}

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
    auto queue = std::make_shared<HookedQueue>(5000);
    std::atomic<bool> heldFinished{false};
    std::atomic<int> executed{0};
    ThreadedQueue threaded(queue);
    auto release = HoldConsumer(threaded, heldFinished);
    for (int i = 0; i < 1000; ++i) {
        ASSERT_TRUE(threaded.Post(std::make_shared<CallMessage>([&] { ++executed; }))) << i;
    }
    EXPECT_FALSE(threaded.Post(std::make_shared<CallMessage>([&] { ++executed; })));
    EXPECT_EQ(capture.Count("MessageQueue::Enqueue() Message Queue full"), 1u);
    // The stop message goes in although the queue is full; only then is the consumer let go.
    queue->afterBypassEnqueue = [&] {
        EXPECT_EQ(queue->GetSize(), 1001u);
        release->Open();
    };
    threaded.Stop();
    EXPECT_TRUE(heldFinished);
    EXPECT_EQ(executed, 1000);
    EXPECT_EQ(queue->GetSize(), 0u);
    EXPECT_FALSE(capture.HasFragment("Failed enqueue"));
}

TEST(ThreadedQueue, AbortDiscardsAllButTheRunningMessage) {
    LogCapture capture(1);
    auto queue = std::make_shared<HookedQueue>(1000);
    std::atomic<bool> heldFinished{false};
    std::atomic<int> executed{0};
    {
        ThreadedQueue threaded(queue, true);
        auto release = HoldConsumer(threaded, heldFinished);
        for (int i = 0; i < 1000; ++i) {
            threaded.Post(std::make_shared<CallMessage>([&] { ++executed; }));
        }
        // The running message may finish only once the waiting ones are gone.
        queue->afterClear = [release] { release->Open(); };
        capture.Clear();
    }  // aborts
    EXPECT_TRUE(heldFinished);
    EXPECT_EQ(executed, 0);
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
    auto queue = std::make_shared<HookedQueue>(10);
    std::atomic<bool> heldFinished{false};
    std::atomic<int> executed{0};
    ThreadedQueue threaded(queue);
    auto release = HoldConsumer(threaded, heldFinished);
    for (int i = 0; i < 3; ++i) threaded.Post(std::make_shared<CallMessage>([&] { ++executed; }));
    queue->afterClear = [release] { release->Open(); };
    threaded.FlushQueue();
    EXPECT_TRUE(heldFinished);  // returned only after the running message ended
    EXPECT_EQ(executed, 0);
    queue->afterClear = nullptr;
    EXPECT_TRUE(threaded.Post(std::make_shared<CallMessage>([&] { ++executed; })));
    threaded.Stop();
    EXPECT_EQ(executed, 1);
}

TEST(ThreadedQueue, ClearReleasesTheSenderOfADroppedSynchronousMessage) {
    LogCapture capture(2);
    auto queue = std::make_shared<MessageQueue>(10);
    std::atomic<bool> heldFinished{false};
    std::atomic<bool> executed{false};
    std::atomic<bool> posted{false};
    ThreadedQueue threaded(queue);
    auto release = HoldConsumer(threaded, heldFinished);
    std::thread sender([&] {
        posted = threaded.Post(std::make_shared<SynchronousCall>([&] { executed = true; }));
    });
    while (queue->GetSize() == 0) std::this_thread::yield();
    threaded.Clear();
    sender.join();  // would hang if the sender were not released
    EXPECT_TRUE(posted);
    EXPECT_FALSE(executed);
    release->Open();
    threaded.Stop();
    EXPECT_FALSE(executed);
}

}  // namespace
}  // namespace TesselFX
