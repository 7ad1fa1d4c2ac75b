#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "LogCapture.h"
#include "control/DspBufferSender.h"

namespace TesselFX {
namespace {

/// What the sender function saw, and what it answers.
struct Call {
    void* handle = nullptr;
    CommonSettings* settings = nullptr;
    std::vector<char> data;
    bool replyGiven = false;
    uint32_t replyRoom = 0;
};

struct FakeHost {
    std::vector<Call> calls;
    int result = 0;
    std::vector<char> answer;
};

FakeHost* g_host = nullptr;

int RecordingSend(void* handle, CommonSettings* settings, const void* data, uint32_t size,
                  void* reply, uint32_t* replySize) {
    Call call;
    call.handle = handle;
    call.settings = settings;
    call.data.assign(static_cast<const char*>(data), static_cast<const char*>(data) + size);
    call.replyGiven = reply != nullptr;
    call.replyRoom = *replySize;
    g_host->calls.push_back(call);
    if (reply != nullptr && g_host->result == 0) {
        if (!g_host->answer.empty()) {
            std::memcpy(reply, g_host->answer.data(), g_host->answer.size());
        }
        *replySize = static_cast<uint32_t>(g_host->answer.size());
    }
    return g_host->result;
}

struct SenderTest : ::testing::Test {
    SenderTest() { g_host = &host; }
    ~SenderTest() override { g_host = nullptr; }
    FakeHost host;
    int object = 0;
    std::shared_ptr<CommonSettings> settings = std::make_shared<CommonSettings>();
};

TEST_F(SenderTest, SendPassesHandleSettingsAndBytesWithoutReplyRoom) {
    DspBufferSender sender(&object, RecordingSend, false);
    const std::vector<char> buffer{1, 0, 0, 0, 4, 0, 0, 0};
    EXPECT_TRUE(sender.Send(settings, buffer));
    host.result = -1;
    EXPECT_FALSE(sender.Send(settings, buffer));
    ASSERT_EQ(host.calls.size(), 2u);
    EXPECT_EQ(host.calls[0].handle, &object);
    EXPECT_EQ(host.calls[0].settings, settings.get());
    EXPECT_EQ(host.calls[0].data, buffer);
    EXPECT_FALSE(host.calls[0].replyGiven);
    EXPECT_EQ(host.calls[0].replyRoom, 0u);

    DspBufferSender withoutFunction(&object, nullptr, false);
    EXPECT_FALSE(withoutFunction.Send(settings, buffer));
}

TEST_F(SenderTest, SendAndReceiveOffers16000BytesAndKeepsWhatTheHostWrote) {
    DspBufferSender sender(&object, RecordingSend, false);
    const std::vector<char> request{5, 0, 0, 0};
    host.answer = {6, 0, 0, 0, 2, 0, 0, 0, 'o', 'k'};
    std::vector<char> reply{'x'};
    ASSERT_TRUE(sender.SendAndReceive(settings, request, reply));
    EXPECT_EQ(reply, host.answer);
    ASSERT_EQ(host.calls.size(), 1u);
    EXPECT_TRUE(host.calls[0].replyGiven);
    EXPECT_EQ(host.calls[0].replyRoom, 16000u);
    EXPECT_EQ(host.calls[0].data, request);

    host.answer.clear();
    ASSERT_TRUE(sender.SendAndReceive(settings, request, reply));
    EXPECT_TRUE(reply.empty());

    host.result = 3;
    EXPECT_FALSE(sender.SendAndReceive(settings, request, reply));
    EXPECT_EQ(reply.size(), 16000u);
}

TEST_F(SenderTest, DumpShowsWholeWordsInHexAtInfoLevel) {
    test::LogCapture capture;
    DspBufferSender sender(&object, RecordingSend, true);
    // Two words and a rest of two bytes, which is not shown.
    const std::vector<char> buffer{
        1, 0, 0, 0, 0x00, static_cast<char>(0xEF), static_cast<char>(0xCD), static_cast<char>(0xAB),
        7, 7};
    ASSERT_TRUE(sender.Send(settings, buffer));
    const std::vector<std::string> expected{"RAW message buffer sent to DSP", "index:0, 1",
                                            "index:1, abcdef00"};
    EXPECT_EQ(capture.Texts(2), expected);
    EXPECT_EQ(host.calls.size(), 1u);

    capture.Clear();
    std::vector<char> reply;
    ASSERT_TRUE(sender.SendAndReceive(settings, {1, 2, 3, 4, 5, 6}, reply));
    const std::vector<std::string> oneWord{"RAW message buffer sent to DSP", "index:0, 4030201"};
    EXPECT_EQ(capture.Texts(2), oneWord);
}

TEST_F(SenderTest, NoDumpWhenTheFeatureIsOffOrTheLevelIsAboveInfo) {
    {
        test::LogCapture capture;
        DspBufferSender sender(&object, RecordingSend, false);
        ASSERT_TRUE(sender.Send(settings, {1, 0, 0, 0}));
        EXPECT_TRUE(capture.Texts().empty());
    }
    {
        test::LogCapture capture(3);
        DspBufferSender sender(&object, RecordingSend, true);
        ASSERT_TRUE(sender.Send(settings, {1, 0, 0, 0}));
        EXPECT_TRUE(capture.Texts().empty());
    }
}

}  // namespace
}  // namespace TesselFX
