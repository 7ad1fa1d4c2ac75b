// The meter messages: maps of meter descriptions and of values, and their size cap.

#include <gtest/gtest.h>

#include "ProtocolTestSupport.h"
#include "protocol/MeterPayload.h"
#include "protocol/RequestMetersMessageData.h"
#include "protocol/UpdateMetersMessageData.h"

namespace TesselFX {
namespace {

using test::Bytes;
using test::ExpectRefused;
using test::Load;
using Infos = std::map<uint32_t, CMeterInfo>;
using Values = std::map<uint32_t, CMeterValue>;

TEST(MeterMessages, InfoMapGoldenBytesAndKeys) {
    const std::vector<char> frame = Bytes({36, 0, 0, 0, 2, 0, 0, 0,                          //
                                           12, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0,  //
                                           16, 0, 0, 0, 5, 0, 0, 0, 2, 0, 0, 0, 2, 0, 0, 0,  //
                                           4,  3, 2, 1});
    const Infos infos = {{1, CMeterInfo(1, 1, 1)},
                         {5, CMeterInfo(5, 2, 2, CMeterValue(0x01020304u))}};
    EXPECT_EQ(RequestMetersMessageData(infos).GetBuffer(), frame);
    RequestMetersMessageData request;
    ASSERT_TRUE(Load(request, frame));
    EXPECT_EQ(request.GetMeterInfos(), infos);

    // Entries go in under their meter index; mode 1 in 16 bytes reads 12 of them.
    ASSERT_TRUE(Load(request, Bytes({36, 0, 0, 0, 1, 0, 0, 0, 16, 0, 0, 0, 9, 0,
                                     0,  0, 1, 0, 0, 0, 1, 0, 0,  0, 4, 3, 2, 1})));
    EXPECT_EQ(request.GetMeterInfos(), (Infos{{9, CMeterInfo(9, 1, 1)}}));
    EXPECT_EQ(request.GetMeterInfos().at(9).GetValueSize(), 4u);

    EXPECT_EQ(RequestMetersMessageData().GetPayload(), Bytes({0, 0, 0, 0}));
    ASSERT_TRUE(Load(request, Bytes({36, 0, 0, 0, 0, 0, 0, 0})));
    EXPECT_TRUE(request.GetMeterInfos().empty());

    ExpectRefused(request, Bytes({1, 0, 0}), "read count fail");
    ExpectRefused(request, Bytes({1, 0, 0, 0, 12, 0, 0, 0, 1, 0, 0, 0}), "read meter fail");
    ExpectRefused(request, Bytes({1, 0, 0, 0, 8, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0}),
                  "CMeterInfo::Deserialize Not enough data for meters");
    ExpectRefused(request, Bytes({1, 0, 0, 0, 12, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 3, 0, 0, 0}),
                  "CMeterInfo::Deserialize Not enough data for meters at for meter with reset "
                  "value");
}

TEST(MeterMessages, ValueMapGoldenBytes) {
    const std::vector<char> frame = Bytes({37, 0, 0, 0, 2, 0, 0, 0,                          //
                                           8,  0, 0, 0, 2, 0, 0, 0, 0,    0,    0x80, 0x3F,  //
                                           8,  0, 0, 0, 7, 0, 0, 0, 0xDD, 0xCC, 0xBB, 0xAA});
    const Values values = {{7, CMeterValue(0xAABBCCDDu)}, {2, CMeterValue(1.0f)}};
    EXPECT_EQ(UpdateMetersMessageData(values).GetBuffer(), frame);
    UpdateMetersMessageData update;
    ASSERT_TRUE(Load(update, frame));
    EXPECT_EQ(update.GetMeterValues(), values);
    EXPECT_EQ(UpdateMetersMessageData().GetPayload(), Bytes({0, 0, 0, 0}));

    ExpectRefused(update, Bytes({}), "read count fail");
    ExpectRefused(update, Bytes({1, 0, 0, 0, 3, 0, 0, 0, 1, 0, 0}), "read meter fail");
    ExpectRefused(update, Bytes({1, 0, 0, 0, 7, 0, 0, 0, 1, 0, 0, 0, 1, 2, 3}),
                  "CMeterValue::SetData nLen 3 is invalid");
    ExpectRefused(update, Bytes({2, 0, 0, 0, 8, 0, 0, 0, 1, 0, 0, 0, 1, 2, 3, 4}),
                  "read meter fail");
}

TEST(MeterMessages, PayloadsStopAtTheCapAndThenFailToRead) {
    Infos infos;
    Values values;
    for (uint32_t i = 0; i < 1000; ++i) {
        infos[i] = CMeterInfo(i, 1, 2, CMeterValue(i));
        values[i] = CMeterValue(i);
    }
    // 1000 meters with reset value need 20004 bytes; the payload stops inside meter 511,
    // after its index, type and mode.
    const std::vector<char> infoPayload = RequestMetersMessageData(infos).GetPayload();
    ASSERT_EQ(infoPayload.size(), kMeterPayloadMaxSize);
    EXPECT_EQ(std::vector<char>(infoPayload.begin(), infoPayload.begin() + 4),
              Bytes({0xE8, 0x03, 0, 0}));
    EXPECT_EQ(std::vector<char>(infoPayload.end() - 16, infoPayload.end()),
              Bytes({16, 0, 0, 0, 0xFF, 0x01, 0, 0, 1, 0, 0, 0, 2, 0, 0, 0}));
    RequestMetersMessageData request;
    ExpectRefused(request, infoPayload, "read meter fail");

    // Values: 12 bytes each, 853 whole ones fill the cap exactly.
    const std::vector<char> valuePayload = UpdateMetersMessageData(values).GetPayload();
    ASSERT_EQ(valuePayload.size(), kMeterPayloadMaxSize);
    EXPECT_EQ(std::vector<char>(valuePayload.end() - 12, valuePayload.end()),
              Bytes({8, 0, 0, 0, 0x54, 0x03, 0, 0, 0x54, 0x03, 0, 0}));
    UpdateMetersMessageData update;
    ExpectRefused(update, valuePayload, "read meter fail");
}

}  // namespace
}  // namespace TesselFX
