#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

#include "ControlMocks.h"
#include "LogCapture.h"
#include "config/ZorbAudioSettings.h"
#include "control/HalControlManagerImpl.h"
#include "control/HalNotifier.h"
#include "protocol/Base64.h"

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

int RecordingFunction(void* handle, CommonSettings* settings, const void* data, uint32_t size) {
    g_calls.push_back({handle, settings, std::string(static_cast<const char*>(data), size)});
    return 0;
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
    EXPECT_EQ(capture.ErrorTexts(),
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

std::string U32(uint32_t value) {
    std::string out;
    for (int i = 0; i < 4; ++i) out.push_back(static_cast<char>((value >> (8 * i)) & 0xFF));
    return out;
}
std::string F64(double value) {
    uint64_t bits;
    std::memcpy(&bits, &value, sizeof(bits));
    return U32(static_cast<uint32_t>(bits)) + U32(static_cast<uint32_t>(bits >> 32));
}
std::string Text(const std::string& bytes) { return Base64::Encode(bytes.data(), bytes.size()); }
/// A parameter map frame, id 4.
std::string Parameters(unsigned first, unsigned count) {
    std::string out = U32(4) + U32(count);
    for (unsigned id = first; id < first + count; ++id) out += U32(id) + F64(id / 2.0);
    return out;
}

TEST(HalNotifierTest, LongMapsAndLongMessagesAreCut) {
    Fixture f;
    auto handler = f.Of("2").front();
    ListenerPtr listener;
    EXPECT_CALL(*handler, RegisterParametersAndChunksChangedListener(_))
        .WillOnce(SaveArg<0>(&listener));
    EXPECT_CALL(*handler, RegisterParametersAndChunksChangedListener(ListenerPtr()));
    ASSERT_TRUE(f.manager.RegisterNotifier(Search(2)->GetSettings(),
                                           std::make_shared<HalNotifier>(&f, RecordingFunction)));
    ASSERT_TRUE(listener);
    g_calls.clear();

    // Size 100: at most 6 parameters a message and 75 bytes a notification.
    f.manager.SetMessageBufferSize(100);
    std::map<unsigned int, double> parameters;
    for (unsigned id = 10; id < 23; ++id) parameters[id] = id / 2.0;
    listener->OnParametersChanged(parameters);
    ASSERT_EQ(g_calls.size(), 5u);
    std::vector<std::string> frames;
    for (const Call& call : g_calls) {
        EXPECT_EQ(call.handle, &f);
        EXPECT_EQ(call.settings->ToString(), "INSTANCE=2;");
        const std::vector<char> bytes = Base64::Decode(call.text);
        EXPECT_EQ(Base64::Encode(bytes), call.text);
        frames.emplace_back(bytes.begin(), bytes.end());
    }
    // Messages of 6, 6 and 1 parameters; the two of 80 bytes go in two pieces each.
    const std::string first = Parameters(10, 6);
    const std::string second = Parameters(16, 6);
    ASSERT_EQ(first.size(), 80u);
    auto piece = [](uint32_t counter, const std::string& frame, const std::string& data) {
        return U32(52) + U32(counter) + U32(2) + frame.substr(12, 4) +
               U32(static_cast<uint32_t>(data.size())) + data;
    };
    EXPECT_EQ(frames[0], piece(0, frames[0], first.substr(0, 55)));
    EXPECT_EQ(frames[1], piece(1, frames[0], first.substr(55)));
    EXPECT_EQ(frames[2], piece(0, frames[2], second.substr(0, 55)));
    EXPECT_EQ(frames[3], piece(1, frames[2], second.substr(55)));
    EXPECT_EQ(frames[4], Parameters(22, 1));

    // Chunks one message each, in index order.
    g_calls.clear();
    listener->OnChunksChanged({{7, {}}, {1, {'a', 'b'}}});
    ASSERT_EQ(g_calls.size(), 2u);
    EXPECT_EQ(g_calls[0].text, Text(U32(6) + U32(1) + U32(2) + "ab"));
    EXPECT_EQ(g_calls[1].text, Text(U32(6) + U32(7) + U32(0)));

    // Without a size nothing is cut.
    g_calls.clear();
    f.manager.SetMessageBufferSize(0);
    listener->OnParametersChanged(parameters);
    ASSERT_EQ(g_calls.size(), 1u);
    EXPECT_EQ(g_calls[0].text, Text(Parameters(10, 13)));
}

}  // namespace
}  // namespace test
}  // namespace TesselFX
