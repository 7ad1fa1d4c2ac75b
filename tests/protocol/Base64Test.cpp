#include <gtest/gtest.h>

#include <iterator>
#include <string>
#include <vector>

#include "protocol/Base64.h"

namespace TesselFX {
namespace {

std::vector<char> Bytes(const std::string& text) { return {text.begin(), text.end()}; }

TEST(Base64Test, TheRfcVectorsAndEveryBitPatternBothWays) {
    // Bytes, then their text; the last two hold the two characters past the letters and
    // digits, and bytes above 0x7F.
    const std::string vectors[] = {"",
                                   "",
                                   "f",
                                   "Zg==",
                                   "fo",
                                   "Zm8=",
                                   "foo",
                                   "Zm9v",
                                   "foob",
                                   "Zm9vYg==",
                                   "fooba",
                                   "Zm9vYmE=",
                                   "foobar",
                                   "Zm9vYmFy",
                                   "\xFF\xFE\xFD",
                                   "//79",
                                   "\xFB\xFF",
                                   "+/8=",
                                   "The quick brown fox jumps over the lazy dog",
                                   "VGhlIHF1aWNrIGJyb3duIGZveCBqdW1wcyBvdmVyIHRoZSBsYXp5IGRvZw=="};
    for (size_t i = 0; i < std::size(vectors); i += 2) {
        SCOPED_TRACE(vectors[i + 1]);
        EXPECT_EQ(Base64::Encode(Bytes(vectors[i])), vectors[i + 1]);
        EXPECT_EQ(Base64::Decode(vectors[i + 1]), Bytes(vectors[i]));
    }
    EXPECT_EQ(Base64::Encode(std::vector<char>{0, 0, 0, 0}), "AAAAAA==");
    EXPECT_EQ(std::string(Base64::kAlphabet),
              "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/");
    // Without the fill the leftover characters still give the bytes they determine; one
    // leftover character determines no byte.
    EXPECT_EQ(Base64::Decode("Zm9vYg"), Bytes("foob"));
    EXPECT_EQ(Base64::Decode("Zm9vYmE"), Bytes("fooba"));
    EXPECT_TRUE(Base64::Decode("Z").empty());
    EXPECT_EQ(Base64::Decode("Zm9vY"), Bytes("foo"));

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
    // A foreign character after any number of characters of a long text: k characters give
    // the bytes that they determine fully.
    const std::string sentence = "The quick brown fox jumps over the lazy dog";
    const std::string text = "VGhlIHF1aWNrIGJyb3duIGZveCBqdW1wcyBvdmVyIHRoZSBsYXp5IGRvZw";
    for (size_t k = 0; k <= text.size(); ++k) {
        SCOPED_TRACE(k);
        const size_t determined = k / 4 * 3 + (k % 4 == 0 ? 0 : k % 4 - 1);
        EXPECT_EQ(Base64::Decode(text.substr(0, k) + "!" + text.substr(k)),
                  Bytes(sentence.substr(0, determined)));
    }
}

}  // namespace
}  // namespace TesselFX
