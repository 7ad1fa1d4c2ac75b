#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "Bytes.h"
#include "LogCapture.h"
#include "MockZorbEffectWrapper.h"
#include "dsp/Hifi3ReplyBufferParser.h"

namespace TesselFX {
namespace {

using test::Bytes;

using test::LogCapture;
using test::MockZorbEffectWrapper;
using ::testing::_;
using ::testing::AnyNumber;
using ::testing::DoAll;
using ::testing::NiceMock;
using ::testing::Return;
using ::testing::SetArgPointee;
using Values = std::map<uint32_t, CMeterValue>;
using Infos = std::map<uint32_t, CMeterInfo>;

/// A host copy with four meters whose readout gives the values and flags set here.
struct Fixture {
    Fixture() {
        ON_CALL(*effect, Meters_GetBufferSize(_))
            .WillByDefault(DoAll(SetArgPointee<0>(4u), Return(true)));
        ON_CALL(*effect, IsInitialized()).WillByDefault(Return(true));
        ON_CALL(*effect, Meters_SetBuffer(_, _)).WillByDefault(Return(true));
        ON_CALL(*effect, Meters_Readout(_, _, 4u))
            .WillByDefault([this](float* v, int* f, unsigned count) {
                std::copy(values, values + count, v);
                std::copy(flags, flags + count, f);
                return true;
            });
        // Later expectations of a test override these; retired ones fall back to them.
        EXPECT_CALL(*effect, Meters_GetBufferSize(_)).Times(AnyNumber());
        EXPECT_CALL(*effect, IsInitialized()).Times(AnyNumber());
        EXPECT_CALL(*effect, Meters_SetBuffer(_, _)).Times(AnyNumber());
        EXPECT_CALL(*effect, Meters_Readout(_, _, _)).Times(AnyNumber());
    }
    std::shared_ptr<NiceMock<MockZorbEffectWrapper>> effect =
        std::make_shared<NiceMock<MockZorbEffectWrapper>>();
    float values[4] = {0.5f, -3.7f, 3e9f, std::numeric_limits<float>::quiet_NaN()};
    int flags[4] = {1, 1, 1, 1};
};

// Meter reply: id 3, S = 4, four bytes of meter buffer.
const std::vector<char> kMetersReply = Bytes({3, 0, 0, 0, 4, 0, 0, 0, 0xDE, 0xAD, 0xBE, 0xEF});
// Version reply: id 6, N = 5, "1.2.3".
const std::vector<char> kVersionReply = Bytes({6, 0, 0, 0, 5, 0, 0, 0, '1', '.', '2', '.', '3'});

TEST(Hifi3ReplyBufferParser, SizesTheMeterArraysFromTheLibrary) {
    LogCapture capture;
    Fixture fixture;
    Hifi3ReplyBufferParser parser(fixture.effect);
    EXPECT_TRUE(capture.Has(1, "Hifi3ReplyBufferParser::Hifi3ReplyBufferParser got buffer size 4"));
    EXPECT_FALSE(parser.FlagTestAndClear(3));  // no readout yet
    EXPECT_FALSE(parser.FlagTestAndClear(4));
    EXPECT_TRUE(capture.Has(4, "Hifi3ReplyBufferParser::FlagTestAndClear index out of range 4"));

    capture.Clear();
    EXPECT_CALL(*fixture.effect, Meters_GetBufferSize(_))
        .WillOnce(Return(false))
        .RetiresOnSaturation();
    Hifi3ReplyBufferParser failed(fixture.effect);
    EXPECT_TRUE(capture.Has(
        4, "Hifi3ReplyBufferParser::Hifi3ReplyBufferParser failed to prepare meter buffer"));
    EXPECT_FALSE(failed.FlagTestAndClear(0));

    Hifi3ReplyBufferParser none(nullptr);
    std::string version;
    EXPECT_EQ(none.ParseReplyVersionBuffer(kVersionReply, version), 0);
    EXPECT_EQ(version, "1.2.3");
}

TEST(Hifi3ReplyBufferParser, VersionReplyAndItsFailures) {
    LogCapture capture;
    Hifi3ReplyBufferParser parser(nullptr);
    std::string version = "old";
    EXPECT_EQ(parser.ParseReplyVersionBuffer(Bytes({6, 0, 0, 0, 0, 0, 0, 0}), version), 0);
    EXPECT_EQ(version, "");

    version = "old";
    EXPECT_EQ(parser.ParseReplyVersionBuffer(Bytes({3, 0, 0, 0, 5, 0, 0, 0, 'x'}), version), -22);
    EXPECT_TRUE(capture.Has(4, "wrong id 3"));
    EXPECT_EQ(parser.ParseReplyVersionBuffer(Bytes({0xFF, 0xFF, 0xFF, 0xFF}), version), -22);
    EXPECT_TRUE(capture.Has(4, "wrong id -1"));
    EXPECT_EQ(version, "old");

    // Every truncation fails without reading past the end.
    for (size_t size = 0; size < kVersionReply.size(); ++size) {
        std::vector<char> cut(kVersionReply.begin(), kVersionReply.begin() + size);
        EXPECT_EQ(parser.ParseReplyVersionBuffer(cut, version), -22) << size;
        EXPECT_EQ(version, "old");
    }
    // A declared length beyond the reply is refused, not read.
    capture.Clear();
    EXPECT_EQ(parser.ParseReplyVersionBuffer(Bytes({6, 0, 0, 0, 5, 0, 0, 0, 'v', '2', '.', '1'}),
                                             version),
              -22);
    EXPECT_TRUE(capture.Has(4,
                            "Hifi3ReplyBufferParser::ParseReplyVersionBuffer text of 5 bytes "
                            "exceeds the reply of 12 bytes"));
    EXPECT_EQ(version, "old");
    // Extra bytes after the text are not part of it.
    std::vector<char> longer = kVersionReply;
    longer.resize(16000, 'z');
    EXPECT_EQ(parser.ParseReplyVersionBuffer(longer, version), 0);
    EXPECT_EQ(version, "1.2.3");
    // Corrupting any byte either fails or gives a text within the reply.
    for (size_t i = 0; i < kVersionReply.size(); ++i) {
        std::vector<char> corrupt = kVersionReply;
        corrupt[i] = static_cast<char>(corrupt[i] ^ 0xA5);
        version = "old";
        const status_t status = parser.ParseReplyVersionBuffer(corrupt, version);
        if (i < 8) {
            EXPECT_EQ(status, -22) << i;
        } else {
            EXPECT_EQ(status, 0) << i;
            EXPECT_EQ(version.size(), 5u);
        }
    }
}

TEST(Hifi3ReplyBufferParser, MeterValuesByTypeFlagAndResetValue) {
    Fixture fixture;
    Hifi3ReplyBufferParser parser(fixture.effect);
    EXPECT_CALL(*fixture.effect, Meters_SetBuffer(_, 4u))
        .WillOnce([](const void* data, unsigned) {
            EXPECT_EQ(std::memcmp(data, "\xDE\xAD\xBE\xEF", 4), 0);
            return true;
        })
        .RetiresOnSaturation();
    fixture.flags[3] = 0;
    const CMeterValue reset(0x12345678u);
    Values values = {{99, CMeterValue(7u)}, {1, CMeterValue(7u)}};
    LogCapture capture;
    ASSERT_EQ(parser.ParseReplyMetersBuffer(kMetersReply,
                                            {{1, CMeterInfo(0, 1, 2, reset)},
                                             {2, CMeterInfo(1, 2, 1)},
                                             {3, CMeterInfo(2, 2, 1)},
                                             {4, CMeterInfo(3, 1, 3, reset)},
                                             {5, CMeterInfo(0, 1, 2, reset)},
                                             {6, CMeterInfo(9, 2, 2, reset)}},
                                            values),
              0);
    EXPECT_EQ(values[1].GetFloat(), 0.5f);
    EXPECT_EQ(values[2].GetUInt32(), static_cast<uint32_t>(-3));  // truncated to zero
    EXPECT_EQ(values[3].GetUInt32(), 0x7FFFFFFFu);                // saturated
    EXPECT_EQ(values[4], reset);                                  // flag not raised
    EXPECT_EQ(values[5], reset);                                  // index 0 already taken
    EXPECT_EQ(values[6], reset);                                  // out of range
    EXPECT_EQ(values[99].GetUInt32(), 7u);                        // not cleared
    EXPECT_TRUE(capture.Has(4, "Hifi3ReplyBufferParser::FlagTestAndClear index out of range 9"));

    // Integer reading of NaN and of large negatives; type 3 gets no entry but takes the flag.
    fixture.values[0] = -3e9f;
    fixture.flags[3] = 1;
    values.clear();
    ASSERT_EQ(
        parser.ParseReplyMetersBuffer(
            kMetersReply,
            {{1, CMeterInfo(0, 2, 1)}, {2, CMeterInfo(3, 2, 1)}, {3, CMeterInfo(1, 3, 1)}}, values),
        0);
    EXPECT_EQ(values[1].GetUInt32(), 0x80000000u);
    EXPECT_EQ(values[2].GetUInt32(), 0u);
    EXPECT_EQ(values.count(3), 0u);
    EXPECT_FALSE(parser.FlagTestAndClear(1));

    // An empty selection still reads out and leaves values alone.
    EXPECT_CALL(*fixture.effect, Meters_Readout(_, _, 4u)).Times(1);
    EXPECT_EQ(parser.ParseReplyMetersBuffer(kMetersReply, {}, values), 0);
    EXPECT_EQ(values.size(), 2u);
}

TEST(Hifi3ReplyBufferParser, MeterReplyFailures) {
    Fixture fixture;
    Hifi3ReplyBufferParser parser(fixture.effect);
    const Infos infos = {{1, CMeterInfo(0, 1, 1)}};
    Values values = {{5, CMeterValue(5u)}};
    const Values before = values;
    LogCapture capture;

    EXPECT_EQ(parser.ParseReplyMetersBuffer(Bytes({6, 0, 0, 0, 0, 0, 0, 0}), infos, values), -22);
    EXPECT_TRUE(capture.Has(4, "Hifi3ReplyBufferParser::ParseReplyMetersBuffer invalid id 6"));

    std::vector<char> wrongSize = kMetersReply;
    wrongSize.pop_back();
    EXPECT_EQ(parser.ParseReplyMetersBuffer(wrongSize, infos, values), INT32_MIN);
    EXPECT_TRUE(capture.Has(
        4, "Hifi3ReplyBufferParser::ParseReplyMetersBuffer buffer size error. 11 != 4 + 4 + 4"));

    EXPECT_CALL(*fixture.effect, Meters_SetBuffer(_, _))
        .WillOnce(Return(false))
        .RetiresOnSaturation();
    EXPECT_EQ(parser.ParseReplyMetersBuffer(kMetersReply, infos, values), INT32_MIN);
    EXPECT_TRUE(capture.Has(4,
                            "Hifi3ReplyBufferParser::ParseReplyMetersBuffer ZorbEffect failed to "
                            "deserialize meter buffer"));

    EXPECT_CALL(*fixture.effect, Meters_Readout(_, _, _))
        .WillOnce(Return(false))
        .RetiresOnSaturation();
    EXPECT_EQ(parser.ParseReplyMetersBuffer(kMetersReply, infos, values), INT32_MIN);
    EXPECT_TRUE(capture.Has(4,
                            "Hifi3ReplyBufferParser::ParseReplyMetersBuffer failed to read meters "
                            "from ZorbEffect"));

    EXPECT_CALL(*fixture.effect, IsInitialized()).WillOnce(Return(false)).RetiresOnSaturation();
    EXPECT_EQ(parser.ParseReplyMetersBuffer(kMetersReply, infos, values), INT32_MIN);
    EXPECT_TRUE(capture.Has(
        4, "Hifi3ReplyBufferParser::ParseReplyMetersBuffer ZorbEffect not initialized"));
    EXPECT_EQ(values, before);

    Hifi3ReplyBufferParser none(nullptr);
    EXPECT_EQ(none.ParseReplyMetersBuffer(kMetersReply, infos, values), INT32_MIN);

    // An empty meter buffer is still handed to the library.
    EXPECT_CALL(*fixture.effect, Meters_SetBuffer(_, 0u)).WillOnce(Return(true));
    EXPECT_EQ(parser.ParseReplyMetersBuffer(Bytes({3, 0, 0, 0, 0, 0, 0, 0}), {}, values), 0);

    // Every truncation and every corrupted byte fails cleanly or reads within the reply.
    for (size_t size = 0; size < kMetersReply.size(); ++size) {
        std::vector<char> cut(kMetersReply.begin(), kMetersReply.begin() + size);
        const status_t status = parser.ParseReplyMetersBuffer(cut, infos, values);
        EXPECT_TRUE(status == -22 || status == INT32_MIN) << size;
    }
    for (size_t i = 0; i < 8; ++i) {
        std::vector<char> corrupt = kMetersReply;
        corrupt[i] = static_cast<char>(corrupt[i] ^ 0x5A);
        const status_t status = parser.ParseReplyMetersBuffer(corrupt, infos, values);
        EXPECT_EQ(status, i < 4 ? -22 : INT32_MIN) << i;
    }
    EXPECT_EQ(values, before);
}

}  // namespace
}  // namespace TesselFX
