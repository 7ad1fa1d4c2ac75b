#include <gtest/gtest.h>

#include "LogCapture.h"
#include "LogTestHelpers.h"
#include "log/MessageQueue.h"

namespace TesselFX {
namespace {

using TesselInterprocess::Message;
using TesselInterprocess::MessageQueue;
using test::CallMessage;
using test::LogCapture;
using test::WithoutLineNumbers;

std::shared_ptr<Message> NewMessage() {
    return std::make_shared<CallMessage>([] {});
}

TEST(MessageQueue, IdsPerAttemptBoundAndLostBefore) {
    LogCapture capture;
    MessageQueue queue(2);
    auto a = NewMessage(), b = NewMessage(), c = NewMessage(), d = NewMessage();
    auto e = NewMessage(), f = NewMessage(), g = NewMessage(), h = NewMessage();
    EXPECT_TRUE(queue.Enqueue(a));
    EXPECT_TRUE(queue.Enqueue(b));
    EXPECT_FALSE(queue.Enqueue(c));
    EXPECT_FALSE(queue.Enqueue(d));
    EXPECT_EQ(queue.GetSize(), 2u);
    EXPECT_EQ(queue.Dequeue(), a);
    EXPECT_TRUE(queue.Enqueue(e));
    EXPECT_EQ(queue.Dequeue(), b);
    EXPECT_TRUE(queue.Enqueue(f));
    EXPECT_FALSE(queue.Enqueue(nullptr));           // consumes no id
    EXPECT_TRUE(queue.EnqueueWithLimit(g, false));  // over the bound, without the check
    EXPECT_EQ(queue.GetSize(), 3u);
    EXPECT_FALSE(queue.Enqueue(h));

    const std::vector<uint32_t> ids = {a->GetId(), b->GetId(), c->GetId(), d->GetId(),
                                       e->GetId(), f->GetId(), g->GetId(), h->GetId()};
    EXPECT_EQ(ids, (std::vector<uint32_t>{1, 2, 3, 4, 5, 6, 7, 8}));
    for (const auto& message : {a, b, c, d, e, f, g, h}) EXPECT_TRUE(message->IsQueued());
    const std::vector<bool> lost = {a->IsLostBefore(), b->IsLostBefore(), c->IsLostBefore(),
                                    d->IsLostBefore(), e->IsLostBefore(), f->IsLostBefore(),
                                    g->IsLostBefore(), h->IsLostBefore()};
    // Only the first message accepted after a refusal carries the flag.
    EXPECT_EQ(lost, (std::vector<bool>{false, false, false, false, true, false, false, false}));
    EXPECT_EQ(queue.Dequeue(), e);
    EXPECT_EQ(queue.Dequeue(), f);
    EXPECT_EQ(queue.Dequeue(), g);

    EXPECT_EQ(WithoutLineNumbers(capture.Texts()), (std::vector<std::string>{
                                                       "MessageQueue::Enqueue 1",
                                                       "MessageQueue::Enqueue 2",
                                                       "MessageQueue.cpp:N, ",
                                                       "MessageQueue::Enqueue() Message Queue full",
                                                       "MessageQueue.cpp:N, ",
                                                       "MessageQueue::Enqueue() Message Queue full",
                                                       "MessageQueue::Dequeue 1",
                                                       "MessageQueue::Enqueue 5",
                                                       "MessageQueue::Dequeue 2",
                                                       "MessageQueue::Enqueue 6",
                                                       "MessageQueue.cpp:N, ",
                                                       "MessageQueue::Enqueue() NULL pMessage",
                                                       "MessageQueue::Enqueue 7",
                                                       "MessageQueue.cpp:N, ",
                                                       "MessageQueue::Enqueue() Message Queue full",
                                                       "MessageQueue::Dequeue 5",
                                                       "MessageQueue::Dequeue 6",
                                                       "MessageQueue::Dequeue 7",
                                                   }));
    EXPECT_TRUE(capture.Has(1, "MessageQueue::Enqueue 1"));
    EXPECT_TRUE(capture.Has(1, "MessageQueue::Dequeue 1"));
    EXPECT_TRUE(capture.Has(4, "MessageQueue::Enqueue() Message Queue full"));
    EXPECT_TRUE(capture.Has(4, "MessageQueue::Enqueue() NULL pMessage"));
}

TEST(MessageQueue, CapacityIsClippedToOneThousand) {
    LogCapture capture(4);
    MessageQueue large(5000);
    EXPECT_EQ(large.GetMaxSize(), 1000u);
    for (int i = 0; i < 1000; ++i) ASSERT_TRUE(large.Enqueue(NewMessage())) << i;
    EXPECT_FALSE(large.Enqueue(NewMessage()));
    EXPECT_EQ(large.GetSize(), 1000u);

    MessageQueue exact(1000);
    EXPECT_EQ(exact.GetMaxSize(), 1000u);
    MessageQueue none(0);
    EXPECT_FALSE(none.Enqueue(NewMessage()));
    EXPECT_TRUE(none.EnqueueWithLimit(NewMessage(), false));
    EXPECT_EQ(capture.Count("MessageQueue::Enqueue() Message Queue full"), 2u);
}

TEST(MessageQueue, ClearDropsWithoutExecuting) {
    LogCapture capture;
    MessageQueue queue(10);
    bool executed = false;
    auto first = std::make_shared<CallMessage>([&] { executed = true; });
    auto second = NewMessage();
    queue.Enqueue(first);
    queue.Enqueue(second);
    capture.Clear();
    queue.Clear();
    EXPECT_EQ(queue.GetSize(), 0u);
    EXPECT_FALSE(executed);
    EXPECT_EQ(first.use_count(), 1);  // the queue let go of it
    EXPECT_EQ(capture.Texts(),
              (std::vector<std::string>{"Entering function virtual void "
                                        "TesselFX::TesselInterprocess::MessageQueue::Clear()"}));
    // Ids go on after a clear.
    auto third = NewMessage();
    queue.Enqueue(third);
    EXPECT_EQ(third->GetId(), 3u);
    EXPECT_FALSE(third->IsLostBefore());
}

}  // namespace
}  // namespace TesselFX
