#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <functional>

#include "LogCapture.h"
#include "api/ZbApiCallbacks.h"
#include "config/CommonSettings.h"
#include "zbhalcontroller/zb_api.h"

namespace TesselFX {
namespace test {
namespace {

const char* const kNoHandler = "no valid ControlHandler";

std::string Pointer(const void* pointer) {
    char text[32];
    std::snprintf(text, sizeof(text), "%p", pointer);
    return text;
}

/// A control object for the length of a test.
struct Handle {
    explicit Handle(void* context = nullptr) { EXPECT_EQ(zb_create(&value, context), 1); }
    ~Handle() { zb_destroy(&value); }
    void* value = nullptr;
};

/// What the last buffer_sender call received.
struct SenderCall {
    int calls = 0;
    void* handle = nullptr;
    uint32_t instance = 0;
    std::string data;
    void* reply = nullptr;
    uint32_t* replySize = nullptr;
    void* context = nullptr;
    int result = 0;
    /// Called inside the sender, with the handle, to test re-entry.
    void (*reenter)(void* handle) = nullptr;
};

int RecordingSender(void* handle, uint32_t instance, const void* data, uint32_t size, void* reply,
                    uint32_t* replySize, void* context) {
    auto* call = static_cast<SenderCall*>(context);
    ++call->calls;
    call->handle = handle;
    call->instance = instance;
    call->data.assign(static_cast<const char*>(data), size);
    call->reply = reply;
    call->replySize = replySize;
    call->context = context;
    if (call->reenter != nullptr) {
        call->reenter(handle);
    }
    return call->result;
}

int NullNotifier(void*, const void*, uint32_t, void*) { return 0; }

TEST(ZbApiTest, UnknownHandlesAreRefusedByEveryFunction) {
    void* unknown = reinterpret_cast<void*>(0x1234);
    const std::string invalid = "handle " + Pointer(unknown) + " is invalid";
    LogCapture capture;
    char text[16] = {};
    uint32_t index = 1;
    double value = 1.0;
    char command[] = "AQ==";
    EXPECT_EQ(zb_initialize(unknown, "a", "b", "c", RecordingSender), 0);
    EXPECT_EQ(zb_set_enable(unknown, 0, 1), 0);
    EXPECT_EQ(zb_set_bypass(unknown, 0, 1), 0);
    EXPECT_EQ(zb_set_active(unknown, 0, 1, 2), 0);
    EXPECT_EQ(zb_set_sound_mode(unknown, 0, 1), 0);
    EXPECT_EQ(zb_set_output_mode(unknown, 0, 1), 0);
    EXPECT_EQ(zb_set_volume(unknown, 0, 0.5), 0);
    EXPECT_EQ(zb_set_orientation(unknown, 0, 90), 0);
    EXPECT_EQ(zb_set_parameter(unknown, 0, 1, 1.0), 0);
    EXPECT_EQ(zb_set_parameters_array(unknown, 0, 1, &index, &value), 0);
    EXPECT_EQ(zb_set_command(unknown, 0, command), 0);
    EXPECT_EQ(zb_get_command(unknown, 0, command, text, sizeof(text)), 0);
    EXPECT_EQ(zb_set_linklaws_value(unknown, 0, 0, 1.0, 0.5), 0);
    EXPECT_EQ(zb_wait_for_flush(unknown, 0), 0);
    EXPECT_EQ(zb_flush(unknown, 0), 0);
    EXPECT_EQ(zb_register_notifier(unknown, 0, NullNotifier), 0);
    EXPECT_EQ(zb_set_data(unknown, 0, 10, nullptr, 0), 0);
    EXPECT_EQ(zb_get_version(unknown, 0, "halcontroller", text, sizeof(text)), 0);
    EXPECT_EQ(zb_on_dsp_wakeup(unknown, 0), 0);
    EXPECT_EQ(zb_is_feature_supported(unknown, "DumpBufferToDsp"), 0);
    zb_destroy(&unknown);
    EXPECT_EQ(capture.ErrorTexts(), std::vector<std::string>(21, invalid));
    EXPECT_EQ(capture.Texts(4).size(), 42u);
    EXPECT_EQ(unknown, reinterpret_cast<void*>(0x1234));
    EXPECT_STREQ(text, "");

    capture.Clear();
    zb_destroy(nullptr);
    EXPECT_EQ(capture.ErrorTexts(),
              std::vector<std::string>{"handle " + Pointer(nullptr) + " is invalid"});
}

TEST(ZbApiTest, DestroyRemovesTheEntryAndLeavesTheCallersVariable) {
    void* first = nullptr;
    void* second = nullptr;
    ASSERT_EQ(zb_create(&first, nullptr), 1);
    ASSERT_EQ(zb_create(&second, nullptr), 1);
    EXPECT_NE(first, nullptr);
    EXPECT_NE(first, second);

    void* copy = first;
    zb_destroy(&copy);
    EXPECT_EQ(copy, first);
    LogCapture capture;
    EXPECT_EQ(zb_set_enable(first, 0, 1), 0);
    zb_destroy(&copy);
    const std::string invalid = "handle " + Pointer(first) + " is invalid";
    EXPECT_EQ(capture.ErrorTexts(), (std::vector<std::string>{invalid, invalid}));

    // The other object is untouched.
    capture.Clear();
    EXPECT_EQ(zb_set_enable(second, 0, 1), 0);
    EXPECT_EQ(capture.ErrorTexts(), std::vector<std::string>{kNoHandler});
    zb_destroy(&second);
}

TEST(ZbApiTest, BeforeInitializationEveryCallFailsWithItsLine) {
    Handle handle;
    void* const h = handle.value;
    char command[] = "AQAAAA==";
    char reply[64];
    struct Row {
        std::function<int()> call;
        std::vector<std::string> errors;
        const char* logged;  // a line of level 3 or below, or nullptr
        uint32_t level = 0;
    };
    const std::vector<std::string> none{kNoHandler};
    // clang-format off
    const Row rows[] = {
        {[=] { return zb_set_enable(h, 0, 1); }, none, nullptr},
        {[=] { return zb_set_active(h, 0, 1, 2); }, none, nullptr},
        {[=] { return zb_set_volume(h, 3, 0.5); }, none,
         "GetControlHandlers: No CoppHandles matched search criteria INSTANCE=3;", 3},
        {[=] { return zb_flush(h, 0); }, none, nullptr},
        {[=] { return zb_on_dsp_wakeup(h, 0); }, none, nullptr},
        {[=] { return zb_set_linklaws_value(h, 0, 0, -20.0, 0.5); }, none, nullptr},
        {[=] { return zb_set_data(h, 0, 10, nullptr, 0); }, none, nullptr},
        {[=] { return zb_register_notifier(h, 0, NullNotifier); }, none, nullptr},
        {[=] { return zb_register_notifier(h, 0, nullptr); }, none, nullptr},
        {[=] { return zb_is_feature_supported(h, "DumpBufferToDsp"); }, {},
         "IsFeatureSupported: DumpBufferToDsp", 1},
        {[=] { return zb_set_parameters_array(h, 0, 0, nullptr, nullptr); }, none,
         "Entering function virtual bool TesselFX::HalControlManagerImpl::SetParametersArray("
         "const zorbaudio_settings_t *, const std::map<unsigned int, double> &, bool)", 0},
        {[=] { return zb_set_parameters_array(h, 0, 2, nullptr, nullptr); },
         {"zb_set_parameters_array: indices or values is null"}, nullptr},
        {[&] { return zb_set_command(h, 0, command); },
         {"expected size 12 is wrong, actual size 0"}, nullptr},
        {[&] { return zb_get_command(h, 0, command, reply, sizeof(reply)); },
         {"do not support id 1"}, nullptr},
        {[=] { return zb_set_command(h, 0, nullptr); }, {"zb_set_command: command is null"},
         nullptr},
        {[=] { return zb_initialize(h, "system.zps", "user.zps", "hal.ini", nullptr); },
         {"open file (system.zps) failed! 2, No such file or directory",
          "load preset system.zps user.zps fail"}, nullptr},
    };
    // clang-format on
    for (const Row& row : rows) {
        LogCapture capture;
        EXPECT_EQ(row.call(), 0);
        EXPECT_EQ(capture.ErrorTexts(), row.errors);
        if (row.logged != nullptr) {
            EXPECT_TRUE(capture.Has(row.level, row.logged)) << row.logged;
        }
    }
}

TEST(ZbApiTest, GetVersionNeedsRoomForTheTerminator) {
    Handle handle;
    char text[16];
    std::memset(text, 'x', sizeof(text));
    LogCapture capture;
    // "1.553.0.0" has 9 characters.
    EXPECT_EQ(zb_get_version(handle.value, 0, "halcontroller", text, 9), 0);
    EXPECT_EQ(capture.ErrorTexts(),
              std::vector<std::string>{
                  "zorbaudio_get_version versionStringSize 9 is not enough, actual size 9"});
    EXPECT_EQ(text[0], 'x');

    EXPECT_EQ(zb_get_version(handle.value, 0, "halcontroller", text, 10), 1);
    EXPECT_STREQ(text, "1.553.0.0");
    EXPECT_EQ(zb_get_version(handle.value, 0, "dspkit", text, 1), 1);
    EXPECT_STREQ(text, "");

    capture.Clear();
    EXPECT_EQ(zb_get_version(handle.value, 0, "HalController", text, sizeof(text)), 0);
    EXPECT_EQ(zb_get_version(handle.value, 0, "halcontroller", nullptr, 16), 0);
    EXPECT_EQ(capture.ErrorTexts(),
              (std::vector<std::string>{
                  "not supported version type HalController",
                  "zorbaudio_get_version versionStringSize 16 is not enough, actual size 9"}));
}

TEST(ZbApiTest, SenderTrampolineCallsTheCallersSenderWithTheInstance) {
    SenderCall call;
    Handle handle(&call);
    CommonSettings settings;
    settings.AddInt("DEV", 3);
    settings.AddUint("INSTANCE", 7);
    const char data[] = {1, 0, 0, 0, 8};
    char reply[8];
    uint32_t replySize = sizeof(reply);

    LogCapture capture;
    EXPECT_EQ(SendBufferTrampoline(handle.value, &settings, data, 5, reply, &replySize), -1);
    EXPECT_EQ(capture.ErrorTexts(), std::vector<std::string>{"buffer_sender is invalid"});
    EXPECT_EQ(call.calls, 0);

    // zb_initialize keeps the sender although the bring-up itself is not there.
    EXPECT_EQ(zb_initialize(handle.value, "s", "u", "c", RecordingSender), 0);
    call.result = 5;
    EXPECT_EQ(SendBufferTrampoline(handle.value, &settings, data, 5, reply, &replySize), 5);
    EXPECT_EQ(call.calls, 1);
    EXPECT_EQ(call.handle, handle.value);
    EXPECT_EQ(call.instance, 7u);
    EXPECT_EQ(call.data, std::string(data, 5));
    EXPECT_EQ(call.reply, reply);
    EXPECT_EQ(call.replySize, &replySize);
    EXPECT_EQ(call.context, &call);

    // The instance may be held as text; its leading decimal number counts.
    settings.AddString("INSTANCE", "12abc");
    call.result = 0;
    EXPECT_EQ(SendBufferTrampoline(handle.value, &settings, data, 5, nullptr, nullptr), 0);
    EXPECT_EQ(call.instance, 12u);
    EXPECT_EQ(call.reply, nullptr);

    capture.Clear();
    settings.AddString("INSTANCE", "abc");
    EXPECT_EQ(SendBufferTrampoline(handle.value, &settings, data, 5, nullptr, nullptr), -1);
    settings.Remove("INSTANCE");
    EXPECT_EQ(SendBufferTrampoline(handle.value, &settings, data, 5, nullptr, nullptr), -1);
    CommonSettings empty;
    EXPECT_EQ(SendBufferTrampoline(handle.value, &empty, data, 5, nullptr, nullptr), -1);
    EXPECT_EQ(SendBufferTrampoline(handle.value, nullptr, data, 5, nullptr, nullptr), -1);
    void* unknown = reinterpret_cast<void*>(0x40);
    EXPECT_EQ(SendBufferTrampoline(unknown, &settings, data, 5, nullptr, nullptr), -1);
    EXPECT_EQ(capture.ErrorTexts(),
              (std::vector<std::string>{"INSTANCE not found", "INSTANCE not found",
                                        "INSTANCE not found", "INSTANCE not found",
                                        "handle " + Pointer(unknown) + " not found"}));
    EXPECT_EQ(call.calls, 2);
}

TEST(ZbApiTest, ACallbackMayCallBackIntoTheLibrary) {
    SenderCall call;
    Handle handle(&call);
    ASSERT_EQ(zb_initialize(handle.value, "s", "u", "c", RecordingSender), 0);
    CommonSettings settings;
    settings.AddUint("INSTANCE", 1);

    call.reenter = [](void* h) { EXPECT_EQ(zb_is_feature_supported(h, "x"), 0); };
    EXPECT_EQ(SendBufferTrampoline(handle.value, &settings, "", 0, nullptr, nullptr), 0);

    // Even destroying the object from inside its own callback is safe.
    call.reenter = [](void* h) { zb_destroy(&h); };
    EXPECT_EQ(SendBufferTrampoline(handle.value, &settings, "", 0, nullptr, nullptr), 0);
    LogCapture capture;
    EXPECT_EQ(zb_set_enable(handle.value, 1, 1), 0);
    EXPECT_TRUE(capture.HasFragment(" is invalid"));
}

TEST(ZbApiTest, NotifyTrampolineNeedsARegisteredNotifier) {
    Handle handle;
    CommonSettings settings;
    settings.AddUint("INSTANCE", 1);
    LogCapture capture;
    EXPECT_EQ(NotifyTrampoline(handle.value, &settings, "x", 1), -1);
    EXPECT_EQ(NotifyTrampoline(handle.value, nullptr, "x", 1), -1);
    EXPECT_EQ(capture.ErrorTexts(),
              (std::vector<std::string>{"notifier is invalid", "INSTANCE not found"}));
}

}  // namespace
}  // namespace test
}  // namespace TesselFX
