#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "protocol/Base64.h"

namespace TesselFX {
namespace {

std::vector<char> Bytes(const std::string& text) { return {text.begin(), text.end()}; }

TEST(Base64Test, EncodesTheRfcVectorsAndEveryBitPattern) {
    EXPECT_EQ(Base64::Encode(Bytes("")), "");
    EXPECT_EQ(Base64::Encode(Bytes("f")), "Zg==");
    EXPECT_EQ(Base64::Encode(Bytes("fo")), "Zm8=");
    EXPECT_EQ(Base64::Encode(Bytes("foo")), "Zm9v");
    EXPECT_EQ(Base64::Encode(Bytes("foob")), "Zm9vYg==");
    EXPECT_EQ(Base64::Encode(Bytes("fooba")), "Zm9vYmE=");
    EXPECT_EQ(Base64::Encode(Bytes("foobar")), "Zm9vYmFy");
    // The two characters past the letters and digits, and bytes above 0x7F.
    EXPECT_EQ(Base64::Encode(Bytes("\xFF\xFE\xFD")), "//79");
    EXPECT_EQ(Base64::Encode(Bytes("\xFB\xFF")), "+/8=");
    EXPECT_EQ(Base64::Encode(std::vector<char>{0, 0, 0, 0}), "AAAAAA==");
    EXPECT_EQ(std::string(Base64::kAlphabet),
              "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/");
}

TEST(Base64Test, DecodesTheRfcVectorsWithAndWithoutFill) {
    EXPECT_EQ(Base64::Decode("Zg=="), Bytes("f"));
    EXPECT_EQ(Base64::Decode("Zm8="), Bytes("fo"));
    EXPECT_EQ(Base64::Decode("Zm9v"), Bytes("foo"));
    EXPECT_EQ(Base64::Decode("Zm9vYg=="), Bytes("foob"));
    EXPECT_EQ(Base64::Decode("Zm9vYmE="), Bytes("fooba"));
    EXPECT_EQ(Base64::Decode("Zm9vYmFy"), Bytes("foobar"));
    EXPECT_EQ(Base64::Decode("//79"), Bytes("\xFF\xFE\xFD"));
    EXPECT_EQ(Base64::Decode("+/8="), Bytes("\xFB\xFF"));
    // Without the fill the leftover characters still give the bytes they determine.
    EXPECT_EQ(Base64::Decode("Zm9vYg"), Bytes("foob"));
    EXPECT_EQ(Base64::Decode("Zm9vYmE"), Bytes("fooba"));
    // One leftover character determines no byte.
    EXPECT_TRUE(Base64::Decode("Z").empty());
    EXPECT_EQ(Base64::Decode("Zm9vY"), Bytes("foo"));
    EXPECT_TRUE(Base64::Decode("").empty());

    std::vector<char> all;
    for (int i = 0; i < 256; ++i) all.push_back(static_cast<char>(i));
    EXPECT_EQ(Base64::Decode(Base64::Encode(all)), all);
}

TEST(Base64Test, DecodingStopsAtTheFirstFillOrForeignCharacter) {
    EXPECT_EQ(Base64::Decode("Zm9v!Zm9v"), Bytes("foo"));
    EXPECT_EQ(Base64::Decode("Zm9v=Zm9v"), Bytes("foo"));
    EXPECT_EQ(Base64::Decode("Zm=9v"), Bytes("f"));
    EXPECT_EQ(Base64::Decode("Zm9v\nYmFy"), Bytes("foo"));
    EXPECT_EQ(Base64::Decode("Zm9v YmFy"), Bytes("foo"));
    EXPECT_EQ(Base64::Decode("Zm9v-_"), Bytes("foo"));
    EXPECT_EQ(Base64::Decode("Zm9v\xC3\xA9YmFy"), Bytes("foo"));
    EXPECT_EQ(Base64::Decode(std::string("Zm9v\0YmFy", 9)), Bytes("foo"));
    EXPECT_TRUE(Base64::Decode("=Zm9v").empty());
    // Only the given length is read.
    EXPECT_EQ(Base64::Decode("Zm9vYmFy", 4), Bytes("foo"));
    EXPECT_EQ(Base64::Decode("Zm9vYmFy", 6), Bytes("foob"));
}

}  // namespace
}  // namespace TesselFX
