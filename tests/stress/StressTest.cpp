// Several host threads and a tuning tool call on two handles at once while the callbacks
// re-enter the library (StressWorkload.h). A watchdog aborts the process when the threads have
// not finished in time, which is how a deadlock shows. Run it under ThreadSanitizer too.

#include <gtest/gtest.h>

#include <chrono>
#include <random>
#include <thread>
#include <vector>

#include "StressWorkload.h"
#include "Watchdog.h"
#include "zbhalcontroller/zb_api.h"

namespace stress_test {
namespace {

constexpr int kThreads = 4;
constexpr int kCallsPerThread = 300;

TEST(StressTest, ThreadsAndReenteringCallbacksOnTwoHandlesNeitherDeadlockNorCorrupt) {
    Host host;
    for (Host::Slot& slot : host.slots) {
        ASSERT_EQ(zb_set_active(slot.handle.load(), kInstance, 1, 2), 1);
    }

    {
        Watchdog watchdog(std::chrono::minutes(5), "two handles under load");
        std::vector<std::thread> threads;
        for (int t = 0; t < kThreads; ++t) {
            threads.emplace_back([&host, t] {
                std::minstd_rand random(1 + t);
                for (int call = 0; call < kCallsPerThread; ++call) {
                    Host::Slot& slot = host.slots[random() % 2];
                    CallOne(host, slot.handle.load(), random(), random);
                }
            });
        }
        threads.emplace_back([&host] {
            std::minstd_rand random(kThreads + 1);
            for (int call = 0; call < kCallsPerThread; ++call) {
                Host::Slot& slot = host.slots[random() % 2];
                TuningCommand(host, slot, random(), random);
            }
        });
        for (std::thread& thread : threads) thread.join();
    }

    EXPECT_GT(host.sends.load(), 0u);
    EXPECT_GT(host.reentries.load(), 0u);
    EXPECT_GT(host.recreations.load(), 0u);
    EXPECT_GT(host.notifications.load(), 0u);
    EXPECT_EQ(CheckDspState(host), std::vector<std::string>());
    // Both handles still work after all that.
    for (Host::Slot& slot : host.slots) {
        char text[16];
        EXPECT_EQ(zb_get_version(slot.handle.load(), kInstance, "halcontroller", text, sizeof(text)),
                  1);
        EXPECT_STREQ(text, "1.553.0.0");
        EXPECT_EQ(zb_set_active(slot.handle.load(), kInstance, 1, 1), 1);
    }
}

}  // namespace
}  // namespace stress_test
