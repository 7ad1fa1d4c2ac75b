#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "LogCapture.h"
#include "protocol/ZbAocTuningProtocol.h"

namespace TesselFX {
namespace {

using test::LogCapture;

std::string Text(const std::vector<char>& bytes) { return std::string(bytes.begin(), bytes.end()); }
std::vector<char> Bytes(const std::string& text) { return {text.begin(), text.end()}; }

TEST(EnvelopeHeaderTest, HeaderNamesTheInstanceAndSizeFitsTheWidestOne) {
    EXPECT_EQ(Text(ZbAocTuningProtocol::BuildHeader(7)), "dsp_instance=7;tessel_data=");
    EXPECT_EQ(Text(ZbAocTuningProtocol::BuildHeader(4294967295u)),
              "dsp_instance=4294967295;tessel_data=");
    EXPECT_EQ(ZbAocTuningProtocol::HeaderSize(), 36u);
}

TEST(EnvelopeHeaderTest, WrapsRawBytesAndBase64Text) {
    EXPECT_EQ(Text(ZbAocTuningProtocol::WrapRaw(7, Bytes(std::string("a\0\xFF", 3)))),
              std::string("dsp_instance=7;tessel_data=a\0\xFF", 30));
    EXPECT_EQ(Text(ZbAocTuningProtocol::WrapRaw(0, {})), "dsp_instance=0;tessel_data=");
    EXPECT_EQ(Text(ZbAocTuningProtocol::WrapBase64(12, Bytes("foob"))),
              "dsp_instance=12;tessel_data=Zm9vYg==");

    std::vector<char> out = Bytes("old");
    EXPECT_TRUE(
        ZbAocTuningProtocol::UnwrapBase64(Bytes("dsp_instance=12;tessel_data=Zm9vYg=="), out));
    EXPECT_EQ(out, Bytes("foob"));
    EXPECT_TRUE(ZbAocTuningProtocol::UnwrapBase64(Bytes("tessel_data=Zm9v!!;dsp_instance=1"), out));
    EXPECT_EQ(out, Bytes("foo"));

    LogCapture capture;
    out = Bytes("old");
    EXPECT_FALSE(ZbAocTuningProtocol::UnwrapBase64(Bytes("dsp_instance=12;data=Zm9v"), out));
    EXPECT_EQ(out, Bytes("old"));
    EXPECT_EQ(capture.ErrorTexts(),
              std::vector<std::string>{"fail to get tessel_data from buffer"});
}

TEST(EnvelopeHeaderTest, ExtractDataCutsByTheKeyLengthFromThePartStart) {
    LogCapture capture;
    std::string value;
    EXPECT_TRUE(ZbAocTuningProtocol::ExtractData("dsp_instance=3;tessel_data=abcd", value));
    EXPECT_EQ(value, "abcd");
    EXPECT_TRUE(capture.Has(0, "TESSEL_DATA = abcd"));
    // A key one character into its part: the value keeps the "=".
    EXPECT_TRUE(ZbAocTuningProtocol::ExtractData("dsp_instance=3;xtessel_data=abcd", value));
    EXPECT_EQ(value, "=abcd");
    EXPECT_TRUE(ZbAocTuningProtocol::ExtractData("abctessel_data=12345", value));
    EXPECT_EQ(value, "ta=12345");
    // The first part with the key wins; the value ends at the next ";".
    EXPECT_TRUE(ZbAocTuningProtocol::ExtractData("tessel_data=AAAA;tessel_data=BBBB", value));
    EXPECT_EQ(value, "AAAA");
    // A part that holds the key and no more gives an empty value.
    EXPECT_TRUE(ZbAocTuningProtocol::ExtractData("dsp_instance=3;tessel_data", value));
    EXPECT_EQ(value, "");
    EXPECT_TRUE(ZbAocTuningProtocol::ExtractData("tessel_data=", value));
    EXPECT_EQ(value, "");
    EXPECT_TRUE(capture.ErrorTexts().empty());

    value = "kept";
    EXPECT_FALSE(ZbAocTuningProtocol::ExtractData("dsp_instance=3;tessel_dat=abcd", value));
    EXPECT_FALSE(ZbAocTuningProtocol::ExtractData("", value));
    EXPECT_EQ(value, "kept");
    EXPECT_EQ(capture.ErrorTexts(),
              (std::vector<std::string>{"fail to get tessel_data from buffer",
                                        "fail to get tessel_data from buffer"}));
}

TEST(EnvelopeHeaderTest, SizeLimits) {
    EXPECT_EQ(ZbAocTuningProtocol::MaxBufferSize(), 16000u);
    EXPECT_EQ(ZbAocTuningProtocol::MaxDecodedSize(), 12000u);
    EXPECT_EQ(ZbAocTuningProtocol::DecodedSize(0), 0u);
    EXPECT_EQ(ZbAocTuningProtocol::DecodedSize(3), 0u);
    EXPECT_EQ(ZbAocTuningProtocol::DecodedSize(7), 3u);
    EXPECT_EQ(ZbAocTuningProtocol::DecodedSize(8), 6u);
    EXPECT_EQ(ZbAocTuningProtocol::DecodedSize(16000), 12000u);
}

}  // namespace
}  // namespace TesselFX
