#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "../e2e/ToolFrames.h"
#include "ControlMocks.h"
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

int RecordingFunction(void* handle, CommonSettings* settings, const void* data, uint32_t size) {
    g_calls.push_back({handle, settings, std::string(static_cast<const char*>(data), size)});
    return 0;
}

/// One handler, of instance 2, under an initialised manager.
struct Fixture {
    Fixture() {
        auto description = MakeDescription();
        description->GetSettings()->AddString("INSTANCE", "2");
        manager.Initialize({{description, handler}}, {}, {}, {});
    }
    std::shared_ptr<Handler> handler = std::make_shared<Handler>();
    HalControlManagerImpl manager;
};

using bringup_test::F64;
using bringup_test::FromText;
using bringup_test::ToText;
using bringup_test::U32;

/// A parameter map frame, id 4.
std::string Parameters(unsigned first, unsigned count) {
    std::string out = U32(4) + U32(count);
    for (unsigned id = first; id < first + count; ++id) out += U32(id) + F64(id / 2.0);
    return out;
}

// Registration by instance, erasure and the notifications' texts are shown end to end in
// tests/e2e/NotifyE2eTest.cpp, the refusal's log line in tests/api/ZbApiTest.cpp.
TEST(HalNotifierTest, LongMapsAndLongMessagesAreCutAndTheManagerTakesItsListenerBack) {
    Fixture f;
    ListenerPtr listener;
    EXPECT_CALL(*f.handler, RegisterParametersAndChunksChangedListener(_))
        .WillOnce(SaveArg<0>(&listener));
    // The manager erases the listener when it goes.
    EXPECT_CALL(*f.handler, RegisterParametersAndChunksChangedListener(ListenerPtr()));
    auto settings = std::make_unique<ZorbAudioSettings>();
    settings->AddUint("INSTANCE", 2);
    ASSERT_TRUE(f.manager.RegisterNotifier(settings->GetSettings(),
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
        frames.push_back(FromText(call.text));
        EXPECT_EQ(ToText(frames.back()), call.text);
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
    EXPECT_EQ(g_calls[0].text, ToText(U32(6) + U32(1) + U32(2) + "ab"));
    EXPECT_EQ(g_calls[1].text, ToText(U32(6) + U32(7) + U32(0)));

    // Without a size nothing is cut.
    g_calls.clear();
    f.manager.SetMessageBufferSize(0);
    listener->OnParametersChanged(parameters);
    ASSERT_EQ(g_calls.size(), 1u);
    EXPECT_EQ(g_calls[0].text, ToText(Parameters(10, 13)));
}

}  // namespace
}  // namespace test
}  // namespace TesselFX
