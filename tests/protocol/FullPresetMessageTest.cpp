// The full preset message: its bytes, and how it reads short and odd payloads.

#include <gtest/gtest.h>

#include "ProtocolTestSupport.h"
#include "protocol/FullPresetMessages.h"

namespace TesselFX {
namespace {

using TesselTuning::FullPreset;
using test::Bytes;
using test::ExpectRefused;
using test::Join;
using test::Load;
using test::LogCapture;
using Map = std::map<unsigned int, double>;

const std::vector<char> kHalf = Bytes({0, 0, 0, 0, 0, 0, 0xE0, 0x3F});
const std::vector<char> kTwo = Bytes({0, 0, 0, 0, 0, 0, 0, 0x40});

// Flag 1, parameters (valid): {3: 0.5, 9: 2.0}, chunk (invalid): "LL", sources (valid): {2800: 2}.
const std::vector<char> kFrame = Join({
    Bytes({50, 0, 0, 0}),
    Bytes({1, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0}),
    Bytes({2, 0, 0, 0, 3, 0, 0, 0}),
    kHalf,
    Bytes({9, 0, 0, 0}),
    kTwo,
    Bytes({2, 0, 0, 0, 'L', 'L'}),
    Bytes({1, 0, 0, 0, 0xF0, 0x0A, 0, 0}),
    kTwo,
});

FullPreset Example() {
    FullPreset preset;
    preset.hasParameters = true;
    preset.parameters = {{9, 2.0}, {3, 0.5}};
    preset.llChunk = {'L', 'L'};
    preset.hasLlSources = true;
    preset.llSources = {{2800, 2.0}};
    return preset;
}

TEST(FullPresetMessage, GoldenBytesBothWays) {
    EXPECT_EQ(SetFullPresetMessageData(Example(), true).GetBuffer(), kFrame);
    // The reply passes false as its flag; the three parts go out whatever their flags say.
    FullPreset cleared = Example();
    cleared.hasParameters = false;
    std::vector<char> reply = kFrame;
    reply[0] = 51;
    reply[4] = 0;
    reply[8] = 0;
    EXPECT_EQ(ReplyFullPresetMessageData(cleared).GetBuffer(), reply);

    // A request of id 51 carries the same payload and reads the same way.
    GetFullPresetMessageData request;
    ASSERT_TRUE(Load(request, kFrame));
    const FullPreset read = request.GetFullPreset();
    EXPECT_TRUE(request.GetMessageFlag());
    EXPECT_TRUE(read.hasParameters);
    EXPECT_FALSE(read.hasLlChunk);
    EXPECT_TRUE(read.hasLlSources);
    EXPECT_EQ(read.parameters, (Map{{3, 0.5}, {9, 2.0}}));
    EXPECT_EQ(read.llChunk, Bytes({'L', 'L'}));
    EXPECT_EQ(read.llSources, (Map{{2800, 2.0}}));

    // Any non-zero flag word reads as true and is written back as 1; bytes after the last
    // field are ignored; a repeated id keeps its last value.
    std::vector<char> odd = Join({Bytes({50, 0, 0, 0, 0, 0, 0, 0, 2, 0, 0, 0, 0, 0, 0, 0}),
                                  Bytes({0, 1, 0, 0, 2, 0, 0, 0, 3, 0, 0, 0}), kHalf,
                                  Bytes({3, 0, 0, 0}), kTwo, Bytes({0, 0, 0, 0, 0, 0, 0, 0, 7})});
    SetFullPresetMessageData set;
    ASSERT_TRUE(Load(set, odd));
    EXPECT_FALSE(set.GetMessageFlag());
    EXPECT_TRUE(set.GetFullPreset().hasParameters);
    EXPECT_TRUE(set.GetFullPreset().hasLlSources);
    EXPECT_EQ(set.GetFullPreset().parameters, (Map{{3, 2.0}}));
    const std::vector<char> written = set.GetBuffer();
    EXPECT_EQ(std::vector<char>(written.begin() + 4, written.begin() + 20),
              Bytes({0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0}));
}

TEST(FullPresetMessage, ShortPayloadsFailWithTheTextOfTheirField) {
    // 28 zero bytes: an empty preset, all flags false.
    SetFullPresetMessageData message(Example(), true);
    ASSERT_TRUE(message.SetPayload(std::vector<char>(28).data(), 28));
    EXPECT_FALSE(message.GetMessageFlag());
    EXPECT_FALSE(message.GetFullPreset().hasParameters);
    EXPECT_TRUE(message.GetFullPreset().parameters.empty());

    const std::vector<char> payload(kFrame.begin() + 4, kFrame.end());
    const auto cut = [&payload](size_t size) {
        return std::vector<char>(payload.begin(), payload.begin() + size);
    };
    ExpectRefused(message, cut(15), "read index fail");
    ExpectRefused(message, cut(19), "read count fail");
    ExpectRefused(message, cut(20 + 12 + 11), "read param fail");
    ExpectRefused(message, cut(44 + 3), "read count fail");
    ExpectRefused(message, cut(48 + 1), "read chunk fail");
    ExpectRefused(message, cut(50 + 3), "read count fail");
    // What was read before the failing field stays.
    EXPECT_EQ(message.GetFullPreset().parameters, (Map{{3, 0.5}, {9, 2.0}}));
    EXPECT_EQ(message.GetFullPreset().llChunk, Bytes({'L', 'L'}));
    ExpectRefused(message, cut(payload.size() - 1), "read LlSource fail");

    // 27 zero bytes: the sources' count is missing.
    ExpectRefused(message, std::vector<char>(27), "read count fail");
    // A count larger than the data fails at the first missing entry.
    std::vector<char> large = payload;
    large[16] = static_cast<char>(0xFF);
    ExpectRefused(message, large, "read param fail");
}

}  // namespace
}  // namespace TesselFX
