#include <gtest/gtest.h>

#include <cstring>

#include "Bytes.h"
#include "LogCapture.h"
#include "dsp/CMeterInfo.h"

namespace TesselFX {
namespace {

using test::Bytes;
using test::LogCapture;

TEST(CMeterValue, HoldsFourBytesReadEitherWay) {
    CMeterValue value(1.0f);
    EXPECT_EQ(value.GetUInt32(), 0x3F800000u);
    const unsigned char bytes[4] = {0x78, 0x56, 0x34, 0x12};
    EXPECT_TRUE(value.SetData(bytes, 4));
    EXPECT_EQ(value.GetUInt32(), 0x12345678u);
    EXPECT_EQ(std::memcmp(value.GetData(), bytes, 4), 0);

    LogCapture capture;
    EXPECT_FALSE(value.SetData("\x01\x02\x03", 3));
    EXPECT_FALSE(value.SetData("\x01\x02\x03\x04\x05", 5));
    EXPECT_EQ(value.GetUInt32(), 0x12345678u);
    EXPECT_TRUE(capture.Has(4, "CMeterValue::SetData nLen 3 is invalid"));
    EXPECT_TRUE(capture.Has(4, "CMeterValue::SetData nLen 5 is invalid"));
}

TEST(CMeterInfo, ByteFormCarriesTheResetValueOnlyInModesTwoAndThree) {
    // Written through a bounded cursor: the fields that fit, then false at the first that
    // does not.
    const auto serialize = [](const CMeterInfo& info, size_t room, bool expected) {
        std::vector<char> out(room, 0x55);
        char* cursor = out.data();
        EXPECT_EQ(info.Serialize(cursor, out.data() + room), expected) << room;
        out.resize(static_cast<size_t>(cursor - out.data()));
        return out;
    };
    const CMeterInfo noReset(0x0102, 2, 1, CMeterValue(0xAABBCCDDu));
    EXPECT_EQ(serialize(noReset, 12, true), Bytes({0x02, 0x01, 0, 0, 2, 0, 0, 0, 1, 0, 0, 0}));
    const CMeterInfo withReset(7, 1, 3, CMeterValue(0xAABBCCDDu));
    EXPECT_EQ(serialize(withReset, 16, true),
              Bytes({7, 0, 0, 0, 1, 0, 0, 0, 3, 0, 0, 0, 0xDD, 0xCC, 0xBB, 0xAA}));
    EXPECT_EQ(serialize(withReset, 15, false), Bytes({7, 0, 0, 0, 1, 0, 0, 0, 3, 0, 0, 0}));
    EXPECT_EQ(serialize(withReset, 7, false), Bytes({7, 0, 0, 0}));
    EXPECT_EQ(CMeterInfo(7, 1, 2).GetSerializedSize(), 16u);
    EXPECT_EQ(CMeterInfo(7, 1, 4).GetSerializedSize(), 12u);
}

TEST(CMeterInfo, DeserializeChecksTheBytesEachModeNeeds) {
    LogCapture capture;
    const std::vector<char> withReset =
        Bytes({9, 0, 0, 0, 2, 0, 0, 0, 2, 0, 0, 0, 0x01, 0x02, 0x03, 0x04});
    CMeterInfo info;
    size_t consumed = 0;
    ASSERT_TRUE(info.Deserialize(withReset.data(), withReset.size(), consumed));
    EXPECT_EQ(consumed, 16u);
    EXPECT_EQ(info, CMeterInfo(9, 2, 2, CMeterValue(0x04030201u)));

    // Every truncation is refused with the line of what is missing, the info kept.
    for (size_t size = 0; size < withReset.size(); ++size) {
        capture.Clear();
        CMeterInfo kept(1, 1, 1);
        consumed = 99;
        EXPECT_FALSE(kept.Deserialize(withReset.data(), size, consumed)) << size;
        EXPECT_EQ(kept, CMeterInfo(1, 1, 1));
        EXPECT_EQ(consumed, 99u);
        EXPECT_TRUE(capture.Has(4, size < 12 ? "CMeterInfo::Deserialize Not enough data for meters"
                                             : "CMeterInfo::Deserialize Not enough data for meters "
                                               "at for meter with reset value"))
            << size;
    }

    // Mode 1 in 16 bytes: 12 consumed, no reset value.
    std::vector<char> modeOne = withReset;
    modeOne[8] = 1;
    ASSERT_TRUE(info.Deserialize(modeOne.data(), modeOne.size(), consumed));
    EXPECT_EQ(consumed, 12u);
    EXPECT_EQ(info, CMeterInfo(9, 2, 1));
    EXPECT_EQ(info.GetValueSize(), 4u);
}

}  // namespace
}  // namespace TesselFX
