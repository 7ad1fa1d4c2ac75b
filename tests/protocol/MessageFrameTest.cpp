// Frames and the catalogue's value types: golden bytes, ids and every size rule.

#include <gtest/gtest.h>

#include "ProtocolTestSupport.h"
#include "protocol/BoolMessages.h"
#include "protocol/CharArrayMessages.h"
#include "protocol/ChunkMessages.h"
#include "protocol/IdMessages.h"
#include "protocol/MultipleMessageData.h"
#include "protocol/ParameterArrayMessages.h"
#include "protocol/ParameterMessages.h"
#include "protocol/RequestMultipleMessageData.h"
#include "protocol/SetLinkLawsValueMessageData.h"
#include "protocol/UintArrayMessages.h"
#include "protocol/UintMessages.h"

namespace TesselFX {
namespace {

using test::Bytes;
using test::ExpectRefused;
using test::Join;
using test::Load;
using test::LogCapture;

// Little-endian doubles.
const std::vector<char> kMinusThree = Bytes({0, 0, 0, 0, 0, 0, 0x08, 0xC0});
const std::vector<char> kHalf = Bytes({0, 0, 0, 0, 0, 0, 0xE0, 0x3F});
const std::vector<char> kTwo = Bytes({0, 0, 0, 0, 0, 0, 0, 0x40});

TEST(MessageFrame, GetMessageIdChecksSizeAndRange) {
    LogCapture capture;
    EXPECT_EQ(MessageData::GetMessageId(Bytes({1, 0, 0}).data(), 3), -1);
    EXPECT_TRUE(capture.Has(4, "size is wrong"));
    EXPECT_EQ(MessageData::GetMessageId(nullptr, 0), -1);
    EXPECT_EQ(MessageData::GetMessageId(std::string("\0\0\0\0", 4)), -1);
    EXPECT_TRUE(capture.Has(4, "invalid id 0"));
    EXPECT_EQ(MessageData::GetMessageId(std::string("\x36\0\0\0", 4)), -1);
    EXPECT_TRUE(capture.Has(4, "invalid id 54"));
    EXPECT_EQ(MessageData::GetMessageId(std::string("\xFF\xFF\xFF\xFF", 4)), -1);
    EXPECT_TRUE(capture.Has(4, "invalid id -1"));

    capture.Clear();
    // Ids without a class are still valid frames; bytes after the id are not looked at.
    EXPECT_EQ(MessageData::GetMessageId(std::string("\x08\0\0\0", 4)), 8);
    EXPECT_EQ(MessageData::GetMessageId(std::string("\x01\0\0\0\xFF", 5)), 1);
    EXPECT_EQ(MessageData::GetMessageId(std::string("\x35\0\0\0", 4)), 53);
    EXPECT_TRUE(capture.Texts(4).empty());

    // SetBuffer refuses what GetMessageId refuses, and takes any valid id.
    SetEnableMessageData enable;
    EXPECT_FALSE(Load(enable, Bytes({0, 0, 0, 0, 1, 0, 0, 0})));
    EXPECT_FALSE(Load(enable, Bytes({41, 0, 0})));
    ASSERT_TRUE(Load(enable, Bytes({44, 0, 0, 0, 1, 0, 0, 0})));
    EXPECT_TRUE(enable.GetValue());
}

TEST(MessageFrame, GoldenBytesOfEachBase) {
    // Parameter: id, f64.
    EXPECT_EQ(SetParameterMessageData(131, -3.0).GetBuffer(),
              Join({Bytes({1, 0, 0, 0, 131, 0, 0, 0}), kMinusThree}));
    ReplyParameterMessageData parameter;
    ASSERT_TRUE(Load(parameter, Join({Bytes({2, 0, 0, 0, 0x04, 0x03, 0x02, 0x01}), kHalf})));
    EXPECT_EQ(parameter.GetParameterId(), 0x01020304u);
    EXPECT_EQ(parameter.GetParameterValue(), 0.5);
    EXPECT_EQ(UpdateLinkLawsSourceParameterMessageData(2801, 2.0).GetSourceParameterId(), 2801u);

    // Parameter array: count, then pairs in ascending id; parallel vectors build the same.
    const std::vector<char> array =
        Join({Bytes({4, 0, 0, 0, 2, 0, 0, 0, 2, 0, 0, 0}), kTwo, Bytes({7, 0, 0, 0}), kHalf});
    EXPECT_EQ(ReplyParameterArrayMessageData(std::map<unsigned int, double>{{7, 0.5}, {2, 2.0}})
                  .GetBuffer(),
              array);
    EXPECT_EQ(ReplyParameterArrayMessageData({7, 2, 9}, {0.5, 2.0}).GetBuffer(), array);
    SetParameterArrayMessageData parameters;
    ASSERT_TRUE(Load(parameters, array));
    EXPECT_EQ(parameters.GetParameters(), (std::map<unsigned int, double>{{2, 2.0}, {7, 0.5}}));
    // An id given twice keeps its last value.
    ASSERT_TRUE(Load(parameters, Join({Bytes({3, 0, 0, 0, 2, 0, 0, 0, 5, 0, 0, 0}), kTwo,
                                       Bytes({5, 0, 0, 0}), kHalf})));
    EXPECT_EQ(parameters.GetParameters(), (std::map<unsigned int, double>{{5, 0.5}}));
    // Count 0 in four bytes is an empty map.
    ASSERT_TRUE(Load(parameters, Bytes({3, 0, 0, 0, 0, 0, 0, 0})));
    EXPECT_TRUE(parameters.GetParameters().empty());

    // Chunk: index, size, bytes; an empty chunk is 8 bytes of payload.
    EXPECT_EQ(SetChunkMessageData(1, {'a', 'b'}).GetBuffer(),
              Bytes({5, 0, 0, 0, 1, 0, 0, 0, 2, 0, 0, 0, 'a', 'b'}));
    const std::vector<char> emptyChunk = ReplyChunkMessageData(3, {}).GetBuffer();
    EXPECT_EQ(emptyChunk, Bytes({6, 0, 0, 0, 3, 0, 0, 0, 0, 0, 0, 0}));
    SetChunkMessageData chunk(9, {'z'});
    ASSERT_TRUE(Load(chunk, emptyChunk));
    EXPECT_EQ(chunk.GetIndex(), 3u);
    EXPECT_TRUE(chunk.GetData().empty());

    // Uint: four bytes; more are ignored.
    EXPECT_EQ(GetChunkMessageData(1).GetBuffer(), Bytes({6, 0, 0, 0, 1, 0, 0, 0}));
    SetSoundModeMessageData soundMode;
    ASSERT_TRUE(Load(soundMode, Bytes({12, 0, 0, 0, 0x78, 0x56, 0x34, 0x12, 0xFF, 0xFF, 0, 0})));
    EXPECT_EQ(soundMode.GetUintValue(), 0x12345678u);

    // Bool: written as 1 or 0, read as true only for exactly 1.
    EXPECT_EQ(UpdateEnableMessageData(true).GetBuffer(), Bytes({40, 0, 0, 0, 1, 0, 0, 0}));
    EXPECT_EQ(UpdateBypassMessageData(false).GetBuffer(), Bytes({43, 0, 0, 0, 0, 0, 0, 0}));
    SetBypassMessageData bypass;
    ASSERT_TRUE(Load(bypass, Bytes({44, 0, 0, 0, 2, 0, 0, 0})));
    EXPECT_FALSE(bypass.GetValue());
    ASSERT_TRUE(Load(bypass, Bytes({44, 0, 0, 0, 1, 0, 0, 0})));
    EXPECT_TRUE(bypass.GetValue());
    EXPECT_TRUE(ReplyTuningModeValidationMessageData(true).GetTuningModeValidation());

    // Uint array: count, then the values; a count and a pointer build the same.
    const uint32_t ids[] = {3, 0x01020304};
    const std::vector<char> idFrame =
        Bytes({11, 0, 0, 0, 2, 0, 0, 0, 3, 0, 0, 0, 0x04, 0x03, 0x02, 0x01});
    EXPECT_EQ(GetParameterArrayMessageData(2, ids).GetBuffer(), idFrame);
    EXPECT_EQ(GetParameterArrayMessageData(std::vector<uint32_t>{3, 0x01020304}).GetBuffer(),
              idFrame);
    RequestLinkLawsSourceParameterArrayMessageData sources;
    ASSERT_TRUE(Load(sources, idFrame));
    EXPECT_EQ(sources.GetValues(), (std::vector<uint32_t>{3, 0x01020304}));

    // Char array: size, then the bytes without a terminator.
    EXPECT_EQ(UpdateVersionMessageData(std::string("abc")).GetBuffer(),
              Bytes({38, 0, 0, 0, 3, 0, 0, 0, 'a', 'b', 'c'}));
    GetVersionMessageData version;
    ASSERT_TRUE(Load(version, Bytes({7, 0, 0, 0, 3, 0, 0, 0, 'd', 's', 'p'})));
    EXPECT_EQ(version.GetText(), "dsp");
    UpdateVersionMessageData update;
    ASSERT_TRUE(Load(update, Bytes({38, 0, 0, 0, 0, 0, 0, 0})));
    EXPECT_EQ(update.GetVersion(), "");
}

TEST(MessageFrame, SpecialIds) {
    // Empty payloads: the id alone, and any payload is taken.
    EXPECT_EQ(GetLinkLawParameterArrayMessageData().GetBuffer(), Bytes({29, 0, 0, 0}));
    EXPECT_EQ(FlushMessageData().GetBuffer(), Bytes({45, 0, 0, 0}));
    EXPECT_EQ(WaitForFlushMessageData().GetBuffer(), Bytes({46, 0, 0, 0}));
    GetTuningModeValidationMessageData validation;
    EXPECT_EQ(validation.GetBuffer(), Bytes({48, 0, 0, 0}));
    EXPECT_TRUE(Load(validation, Bytes({48, 0, 0, 0, 9, 9, 9})));
    EXPECT_TRUE(Load(validation, Bytes({48, 0, 0, 0})));

    // 35: id, two doubles, 20 bytes exactly.
    const std::vector<char> linkLaws =
        Join({Bytes({35, 0, 0, 0, 0xF0, 0x0A, 0, 0}), kHalf, kMinusThree});
    EXPECT_EQ(SetLinkLawsValueMessageData(2800, 0.5, -3.0).GetBuffer(), linkLaws);
    SetLinkLawsValueMessageData value;
    ASSERT_TRUE(Load(value, linkLaws));
    EXPECT_EQ(value.GetParameterId(), 2800u);
    EXPECT_EQ(value.GetFirstValue(), 0.5);
    EXPECT_EQ(value.GetSecondValue(), -3.0);

    // 49: the answer carries the state in 8 bytes.
    EXPECT_EQ(ReplyTuningModeMessageData(true).GetBuffer(), Bytes({49, 0, 0, 0, 1, 0, 0, 0}));
    EXPECT_FALSE(ReplyTuningModeMessageData(false).GetTuningMode());

    // 52: counter, total, session, size, data.
    const std::vector<char> piece =
        Bytes({52, 0, 0, 0, 1, 0, 0, 0, 3, 0, 0, 0, 0x44, 0x33, 0x22, 0x11, 2, 0, 0, 0, 'x', 'y'});
    EXPECT_EQ(MultipleMessageData(1, 3, 0x11223344, {'x', 'y'}).GetBuffer(), piece);
    MultipleMessageData multiple;
    ASSERT_TRUE(Load(multiple, piece));
    EXPECT_EQ(multiple.GetCurrentMsgCounter(), 1u);
    EXPECT_EQ(multiple.GetTotalMsgCount(), 3u);
    EXPECT_EQ(multiple.GetSessionId(), 0x11223344u);
    EXPECT_EQ(multiple.GetData(), Bytes({'x', 'y'}));

    // 53: counter, total, session; bytes after the twelfth are ignored.
    EXPECT_EQ(RequestMultipleMessageData(2, 3, 7).GetBuffer(),
              Bytes({53, 0, 0, 0, 2, 0, 0, 0, 3, 0, 0, 0, 7, 0, 0, 0}));
    RequestMultipleMessageData request;
    ASSERT_TRUE(Load(request, Bytes({53, 0, 0, 0, 2, 0, 0, 0, 3, 0, 0, 0, 7, 0, 0, 0, 1})));
    EXPECT_EQ(request.GetCurrentMsgCounter(), 2u);
    EXPECT_EQ(request.GetTotalMsgCount(), 3u);
    EXPECT_EQ(request.GetSessionId(), 7u);
}

TEST(MessageFrame, EverySizeRuleHasItsText) {
    SetParameterMessageData parameter;
    ExpectRefused(parameter, std::vector<char>(11), "expected size 12 is wrong, actual size 11");
    ExpectRefused(parameter, std::vector<char>(13), "expected size 12 is wrong, actual size 13");
    SetLinkLawsValueMessageData linkLaws;
    ExpectRefused(linkLaws, std::vector<char>(12), "expected size 20 is wrong, actual size 12");

    SetParameterArrayMessageData parameters;
    ExpectRefused(parameters, Bytes({1, 0, 0}), "read count fail");
    ExpectRefused(parameters, Bytes({1, 0, 0, 0}),
                  "expected size 16 from count 1 is wrong, actual size 4");
    // A count whose product wraps to the size passes the check and fails on the entries.
    ExpectRefused(parameters, Bytes({0, 0, 0, 0x40}), "read param fail");

    GetParameterArrayMessageData ids;
    ExpectRefused(ids, Bytes({}), "read count fail");
    ExpectRefused(ids, Bytes({2, 0, 0, 0, 1, 0, 0, 0}),
                  "expected size 12 from count 2 is wrong, actual size 8");
    ExpectRefused(ids, Bytes({0, 0, 0, 0x40}), "read value fail");

    SetChunkMessageData chunk;
    ExpectRefused(chunk, Bytes({1, 0, 0}), "read index fail");
    ExpectRefused(chunk, Bytes({1, 0, 0, 0, 5, 0}), "read count fail");
    ExpectRefused(chunk, Bytes({1, 0, 0, 0, 5, 0, 0, 0, 'a', 'b'}),
                  "expected size 13 from count 5 is wrong, actual size 10");

    GetVersionMessageData text;
    ExpectRefused(text, Bytes({3, 0}), "read size fail");
    ExpectRefused(text, Bytes({3, 0, 0, 0, 'a'}),
                  "expected total size 7 from size 3 is wrong, actual size 5");

    // Requests of one u32 fail alike, whether or not their handler reads the value.
    GetEnableMessageData getEnable;
    ExpectRefused(getEnable, Bytes({}), "get zbIndex fail");
    GetParameterMessageData getParameter;
    ExpectRefused(getParameter, Bytes({1, 0, 0}), "get zbIndex fail");

    MultipleMessageData piece;
    ExpectRefused(piece, Bytes({0, 0, 0}), "read current msg counter fail");
    ExpectRefused(piece, Bytes({0, 0, 0, 0, 1, 0, 0}), "read total msg count fail");
    ExpectRefused(piece, Bytes({0, 0, 0, 0, 1, 0, 0, 0, 7}), "read current session id fail");
    ExpectRefused(piece, Bytes({0, 0, 0, 0, 1, 0, 0, 0, 7, 0, 0, 0}), "read size fail");
    ExpectRefused(piece, Bytes({0, 0, 0, 0, 1, 0, 0, 0, 7, 0, 0, 0, 3, 0, 0, 0, 'a', 'b'}),
                  "expected total size 19 from size 3 is wrong, actual size 18");
    RequestMultipleMessageData request;
    ExpectRefused(request, Bytes({}), "read current msg counter fail");
    ExpectRefused(request, Bytes({0, 0, 0, 0}), "read total msg count fail");
    ExpectRefused(request, Bytes({0, 0, 0, 0, 1, 0, 0, 0, 7, 0, 0}),
                  "read current session id fail");
}

}  // namespace
}  // namespace TesselFX
