// Several host threads call every exported function on two handles at once, while buffer_sender
// and notifier re-enter the library: calls on their own handle and on the other one, the other
// handle's re-initialisation, destruction and re-creation, and the notifier's own removal. A
// watchdog aborts the process when the threads have not finished in time, which is how a deadlock
// shows. Run it under ThreadSanitizer too.

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "ThreeModeFiles.h"
#include "Watchdog.h"
#include "zbhalcontroller/zb_api.h"

namespace bringup_test {
namespace {

constexpr int kThreads = 4;
constexpr int kCallsPerThread = 300;
constexpr uint32_t kInstance = 1;
constexpr int kCustomAction = 300;

const char kVersionReply[] = "\x06\0\0\0\x05\0\0\0stand";

/// The two handles every thread uses and what the callbacks count. A handle slot is swapped
/// atomically: whoever takes a handle out destroys it and puts the new one in; a thread that
/// reads an empty or stale slot calls with an invalid handle, which the library refuses.
struct Host {
    struct Slot {
        Host* host;
        int index;
        std::atomic<void*> handle{nullptr};
    };
    TempDir dir;
    std::string presetPath;
    std::string configPath;
    Slot slots[2] = {{this, 0}, {this, 1}};
    std::atomic<unsigned> sends{0};
    std::atomic<unsigned> reentries{0};
    std::atomic<unsigned> recreations{0};
    std::atomic<unsigned> notifications{0};
};

int ReenteringSender(void* handle, uint32_t instance, const void* data, uint32_t size, void* reply,
                     uint32_t* replySize, void* context);

/// A handle of slot's host, initialised with the re-entering sender.
void* NewHandle(Host::Slot& slot) {
    void* handle = nullptr;
    zb_create(&handle, &slot);
    zb_initialize(handle, slot.host->presetPath.c_str(), "", slot.host->configPath.c_str(),
                  ReenteringSender);
    return handle;
}

void Recreate(Host::Slot& slot) {
    void* old = slot.handle.exchange(nullptr);
    if (old == nullptr) return;
    zb_destroy(&old);
    slot.handle.store(NewHandle(slot));
    slot.host->recreations++;
}

/// Callbacks re-enter only from a call made by a host thread, never from a nested one: a
/// callback must not destroy a handle whose call is still on its own stack.
thread_local int t_callbackDepth = 0;

int ReenteringSender(void* handle, uint32_t instance, const void* data, uint32_t size, void* reply,
                     uint32_t* replySize, void* context) {
    Host::Slot& slot = *static_cast<Host::Slot*>(context);
    Host& host = *slot.host;
    const unsigned send = host.sends++;
    if (data == nullptr || size < 8) return -1;
    if (reply != nullptr) {
        if (replySize == nullptr || *replySize < sizeof(kVersionReply) - 1) return -1;
        std::memcpy(reply, kVersionReply, sizeof(kVersionReply) - 1);
        *replySize = sizeof(kVersionReply) - 1;
    }
    if (t_callbackDepth > 0) return 0;
    ++t_callbackDepth;
    host.reentries++;
    Host::Slot& other = host.slots[1 - slot.index];
    char text[32];
    switch (send % 8) {
        case 0:
            zb_set_parameter(other.handle.load(), instance, 1054, send % 7);
            break;
        case 1:
            zb_get_version(handle, instance, "dsp", text, sizeof(text));
            break;
        case 2:
            zb_set_volume(handle, instance, (send % 10) / 10.0);
            break;
        case 3:
            zb_is_feature_supported(other.handle.load(), "HeadTracking");
            break;
        case 4:
            if (send % 32 == 4) {
                zb_initialize(other.handle.load(), host.presetPath.c_str(), "",
                              host.configPath.c_str(), ReenteringSender);
            }
            break;
        case 5:
            if (send % 64 == 5) Recreate(other);
            break;
        case 6:
            zb_on_dsp_wakeup(other.handle.load(), instance);
            break;
        default:
            zb_set_active(other.handle.load(), instance, 1 + send % 2, 1 + send / 2 % 2);
            break;
    }
    --t_callbackDepth;
    return 0;
}

/// Re-enters as the sender does: a host change on its own handle (which notifies again), a
/// command on the other handle, and its own removal from inside its call.
int ReenteringNotifier(void* handle, const void* data, uint32_t size, void* context) {
    Host::Slot& slot = *static_cast<Host::Slot*>(context);
    Host& host = *slot.host;
    const unsigned notification = host.notifications++;
    if (data == nullptr || size == 0 || t_callbackDepth > 0) return 0;
    ++t_callbackDepth;
    Host::Slot& other = host.slots[1 - slot.index];
    char reply[256];
    switch (notification % 4) {
        case 0:
            zb_set_parameter(handle, kInstance, 1022, notification % 5);
            break;
        case 1:
            zb_get_command(other.handle.load(), kInstance, "AQAAAAAAAAA=", reply, sizeof(reply));
            break;
        case 2:
            zb_register_notifier(handle, kInstance, nullptr);
            break;
        default:
            zb_set_volume(other.handle.load(), kInstance, (notification % 10) / 10.0);
            break;
    }
    --t_callbackDepth;
    return notification % 8 == 7 ? -1 : 0;
}

/// One call of one of the exported functions on handle, chosen by choice.
void CallOne(Host& host, void* handle, unsigned choice, std::minstd_rand& random) {
    const uint32_t value = random() % 4;
    switch (choice % 21) {
        case 0:
            zb_set_enable(handle, kInstance, value & 1);
            break;
        case 1:
            zb_set_bypass(handle, kInstance, value & 1);
            break;
        case 2:
            zb_set_active(handle, kInstance, 1 + value % 2, 1 + value / 2);
            break;
        case 3:
            zb_set_sound_mode(handle, kInstance, 1 + value % 2);
            break;
        case 4:
            zb_set_output_mode(handle, kInstance, 1 + value % 2);
            break;
        case 5:
            zb_set_volume(handle, kInstance, value / 4.0);
            break;
        case 6:
            zb_set_orientation(handle, kInstance, value % 2 == 0 ? 0 : 90);
            break;
        case 7:
            zb_set_parameter(handle, kInstance, 1006 + 16 * value, value);
            break;
        case 8: {
            const uint32_t ids[] = {1006, 1022, 1054};
            const double values[] = {value * 1.0, value * 2.0, value * 3.0};
            zb_set_parameters_array(handle, kInstance, 3, ids, values);
            break;
        }
        case 9: {
            char command[] = "AQAAAAAAAAA=";
            zb_set_command(handle, kInstance, command);
            break;
        }
        case 10: {
            char reply[256];
            zb_get_command(handle, kInstance, "AQAAAAAAAAA=", reply, sizeof(reply));
            break;
        }
        case 11:
            zb_set_linklaws_value(handle, kInstance, 0, value / 4.0, value * 25.0);
            break;
        case 12:
            zb_wait_for_flush(handle, kInstance);
            break;
        case 13:
            zb_flush(handle, kInstance);
            break;
        case 14:
            zb_register_notifier(handle, kInstance, value == 3 ? nullptr : ReenteringNotifier);
            break;
        case 15: {
            alignas(double) unsigned char payload[24] = {};
            const double volume = value / 4.0;
            std::memcpy(payload, &volume, sizeof(volume));
            uint32_t numbers[] = {7};
            if (value % 2 == 0) {
                zb_set_data(handle, kInstance, 0, payload, sizeof(volume));
            } else {
                zb_set_data(handle, kInstance, kCustomAction, numbers, sizeof(numbers));
            }
            break;
        }
        case 16: {
            char text[32];
            zb_get_version(handle, kInstance, value % 2 == 0 ? "dsp" : "halcontroller", text,
                           sizeof(text));
            break;
        }
        case 17:
            zb_on_dsp_wakeup(handle, kInstance);
            break;
        case 18:
            zb_is_feature_supported(handle, "HeadTracking");
            break;
        case 19: {
            // A private handle of this thread, made and dropped while the others work.
            void* own = nullptr;
            zb_create(&own, &host.slots[0]);
            zb_initialize(own, host.presetPath.c_str(), "", host.configPath.c_str(),
                          ReenteringSender);
            zb_set_active(own, kInstance, 1, 2);
            zb_destroy(&own);
            break;
        }
        default:
            if (value == 0) Recreate(host.slots[random() % 2]);
            break;
    }
}

TEST(StressTest, ThreadsAndReenteringCallbacksOnTwoHandlesNeitherDeadlockNorCorrupt) {
    Host host;
    host.presetPath = host.dir.Write("system.zps", ThreeModePresets());
    host.configPath = host.dir.Write(
        "hal.ini", ThreeModeConfig("[HAL_SUPPORTED_FEATURES]\nHeadTracking=1\n"
                                   "[CUSTOM_ACTION_300]\nmovie=PRIORITY:1,NUMBERS:7,PRESET:Movie\n"
                                   "music=PRIORITY:2,PRESET:Music\n"));
    for (Host::Slot& slot : host.slots) {
        slot.handle.store(NewHandle(slot));
        ASSERT_EQ(zb_set_active(slot.handle.load(), kInstance, 1, 2), 1);
    }

    {
        stress_test::Watchdog watchdog(std::chrono::minutes(5), "two handles under load");
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
        for (std::thread& thread : threads) thread.join();
    }

    EXPECT_GT(host.sends.load(), 0u);
    EXPECT_GT(host.reentries.load(), 0u);
    EXPECT_GT(host.recreations.load(), 0u);
    EXPECT_GT(host.notifications.load(), 0u);
    // Both handles still work after all that, and go away cleanly.
    for (Host::Slot& slot : host.slots) {
        void* handle = slot.handle.exchange(nullptr);
        char text[16];
        EXPECT_EQ(zb_get_version(handle, kInstance, "halcontroller", text, sizeof(text)), 1);
        EXPECT_STREQ(text, "1.553.0.0");
        EXPECT_EQ(zb_set_active(handle, kInstance, 1, 1), 1);
        zb_destroy(&handle);
    }
}

}  // namespace
}  // namespace bringup_test
