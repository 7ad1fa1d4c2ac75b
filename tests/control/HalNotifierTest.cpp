#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ControlMocks.h"
#include "ErrorTexts.h"
#include "LogCapture.h"
#include "config/ZorbAudioSettings.h"
#include "control/HalControlManagerImpl.h"
#include "control/HalNotifier.h"

namespace TesselFX {
namespace test {
namespace {

using ::testing::_;
using ::testing::NiceMock;
using ::testing::SaveArg;
using Handler = NiceMock<MockControlHandler>;
using ListenerPtr = std::shared_ptr<IParametersAndChunksChangedListener>;

struct Call {
    void* handle;
    CommonSettings* settings;
    std::string text;
};
std::vector<Call> g_calls;
int g_result = 0;

int RecordingFunction(void* handle, CommonSettings* settings, const void* data, uint32_t size) {
    g_calls.push_back({handle, settings, std::string(static_cast<const char*>(data), size)});
    return g_result;
}

TEST(HalNotifierTest, PassesHandleSettingsAndBytesAndSucceedsOnZero) {
    g_calls.clear();
    int object = 0;
    HalNotifier notifier(&object, RecordingFunction);
    auto settings = std::make_shared<CommonSettings>();
    g_result = 0;
    EXPECT_TRUE(notifier.Notify(settings, std::vector<char>{'a', '\0', 'b'}));
    g_result = -1;
    EXPECT_FALSE(notifier.Notify(settings, "xy", 2));
    ASSERT_EQ(g_calls.size(), 2u);
    EXPECT_EQ(g_calls[0].handle, &object);
    EXPECT_EQ(g_calls[0].settings, settings.get());
    EXPECT_EQ(g_calls[0].text, std::string("a\0b", 3));
    EXPECT_EQ(g_calls[1].text, "xy");
    EXPECT_FALSE(HalNotifier(&object, nullptr).Notify(settings, "xy", 2));
}

/// Two handlers of instance 1 and one of instance 2, in map order.
struct Fixture {
    Fixture() {
        for (const char* instance : {"1", "1", "2"}) {
            auto description = MakeDescription();
            description->GetSettings()->AddString("INSTANCE", instance);
            auto handler = std::make_shared<Handler>();
            map[description] = handler;
            instances[handler.get()] = instance;
        }
        manager.Initialize(map, {}, {}, {});
    }
    /// The handlers of one instance, in map order.
    std::vector<std::shared_ptr<Handler>> Of(const std::string& instance) {
        std::vector<std::shared_ptr<Handler>> out;
        for (const auto& entry : map) {
            if (instances[entry.second.get()] == instance) {
                out.push_back(std::static_pointer_cast<Handler>(entry.second));
            }
        }
        return out;
    }
    ControlHandlerMap map;
    std::map<IControlHandler*, std::string> instances;
    HalControlManagerImpl manager;
};

std::unique_ptr<ZorbAudioSettings> Search(uint32_t instance) {
    auto settings = std::make_unique<ZorbAudioSettings>();
    settings->AddUint("INSTANCE", instance);
    return settings;
}

TEST(HalNotifierTest, RegisterGivesSelectedHandlersAListenerAndEraseTakesItBack) {
    Fixture f;
    auto one = f.Of("1");
    auto two = f.Of("2");
    auto notifier = std::make_shared<HalNotifier>(nullptr, RecordingFunction);
    ListenerPtr listeners[2];
    EXPECT_CALL(*one[0], RegisterParametersAndChunksChangedListener(_))
        .WillOnce(SaveArg<0>(&listeners[0]));
    EXPECT_CALL(*one[1], RegisterParametersAndChunksChangedListener(_))
        .WillOnce(SaveArg<0>(&listeners[1]));
    EXPECT_CALL(*two[0], RegisterParametersAndChunksChangedListener(_)).Times(0);
    EXPECT_TRUE(f.manager.RegisterNotifier(Search(1)->GetSettings(), notifier));
    ASSERT_TRUE(listeners[0] && listeners[1]);
    EXPECT_NE(listeners[0], listeners[1]);

    // Erasing passes over handlers without a notifier and succeeds.
    EXPECT_TRUE(f.manager.RegisterNotifier(Search(2)->GetSettings(), nullptr));
    EXPECT_CALL(*one[0], RegisterParametersAndChunksChangedListener(ListenerPtr()));
    EXPECT_CALL(*one[1], RegisterParametersAndChunksChangedListener(ListenerPtr()));
    EXPECT_TRUE(f.manager.RegisterNotifier(Search(1)->GetSettings(), nullptr));
    EXPECT_TRUE(f.manager.RegisterNotifier(Search(1)->GetSettings(), nullptr));

    LogCapture capture;
    EXPECT_FALSE(f.manager.RegisterNotifier(Search(3)->GetSettings(), notifier));
    EXPECT_FALSE(f.manager.RegisterNotifier(Search(3)->GetSettings(), nullptr));
    EXPECT_EQ(ErrorTexts(capture),
              (std::vector<std::string>{"no valid ControlHandler", "no valid ControlHandler"}));
}

TEST(HalNotifierTest, TheManagerTakesBackItsListenersWhenItGoes) {
    auto manager = std::make_unique<HalControlManagerImpl>();
    ControlHandlerMap map;
    auto description = MakeDescription();
    description->GetSettings()->AddString("INSTANCE", "1");
    auto handler = std::make_shared<Handler>();
    map[description] = handler;
    manager->Initialize(map, {}, {}, {});
    EXPECT_CALL(*handler, RegisterParametersAndChunksChangedListener(_));
    EXPECT_TRUE(manager->RegisterNotifier(
        Search(1)->GetSettings(), std::make_shared<HalNotifier>(nullptr, RecordingFunction)));
    EXPECT_CALL(*handler, RegisterParametersAndChunksChangedListener(ListenerPtr()));
    manager.reset();
}

}  // namespace
}  // namespace test
}  // namespace TesselFX
