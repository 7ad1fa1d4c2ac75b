#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>

#include "Bytes.h"
#include "dsp/Hifi3ControlBufferGenerator.h"

namespace TesselFX {
namespace {

using test::Bytes;

using Blocks = std::map<uint32_t, std::vector<char>>;
using Parameters = std::map<unsigned int, double>;
using Frames = std::vector<std::vector<char>>;

/// Records every parameter set it is asked to convert and answers with blocks computed by
/// a test-supplied function.
class FakeConverter : public ICoefsConverter {
  public:
    bool InitCheck() override { return true; }
    bool Convert(const Parameters& parameters, Blocks& coefficients) override {
        calls.push_back(parameters);
        if (fail) return false;
        coefficients = answer(parameters);
        return true;
    }
    bool ConvertToBuffer(const Parameters&, std::vector<char>&) override { return false; }

    std::vector<Parameters> calls;
    bool fail = false;
    /// Default: one block per parameter, id = parameter id, bytes = {id, value}.
    std::function<Blocks(const Parameters&)> answer = [](const Parameters& parameters) {
        Blocks blocks;
        for (const auto& p : parameters) {
            blocks[p.first] = {static_cast<char>(p.first),
                               static_cast<char>(std::isnan(p.second) ? 0.0 : p.second)};
        }
        return blocks;
    };
};

std::vector<char> Header(const std::vector<char>& frame) {
    return std::vector<char>(frame.begin(), frame.begin() + std::min<size_t>(8, frame.size()));
}

TEST(Hifi3ControlBufferGenerator, GroupingNeverCutsABlockAndStartsANewFrameBeforeOverflow) {
    Hifi3ControlBufferGenerator generator(nullptr);
    // Exactly 15992 bytes share one frame of 16000 bytes; one byte more opens a second.
    Frames out = {Bytes({0x55})};  // out is appended to, not cleared
    generator.PackCoefficientBuffers(
        out, {{1, std::vector<char>(10000, 'a')}, {2, std::vector<char>(5992, 'b')}});
    ASSERT_EQ(out.size(), 2u);
    EXPECT_EQ(out[1].size(), 16000u);
    EXPECT_EQ(Header(out[1]), Bytes({1, 0, 0, 0, 0x78, 0x3E, 0, 0}));
    out.clear();
    generator.PackCoefficientBuffers(
        out, {{1, std::vector<char>(10000, 'a')}, {2, std::vector<char>(5993, 'b')}});
    ASSERT_EQ(out.size(), 2u);
    EXPECT_EQ(out[0].size(), 10008u);
    EXPECT_EQ(out[1].size(), 6001u);

    // An oversized first block is not cut: an empty frame comes first.
    out.clear();
    generator.PackCoefficientBuffers(
        out, {{9, std::vector<char>(16000, 'x')}, {10, std::vector<char>(2, 'y')}});
    ASSERT_EQ(out.size(), 3u);
    EXPECT_EQ(out[0], Bytes({1, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(Header(out[1]), Bytes({1, 0, 0, 0, 0x80, 0x3E, 0, 0}));
    EXPECT_EQ(out[1].size(), 16008u);
    EXPECT_EQ(out[2], Bytes({1, 0, 0, 0, 2, 0, 0, 0, 'y', 'y'}));
}

TEST(Hifi3ControlBufferGenerator, ConverterFailureKeepsBothCaches) {
    auto converter = std::make_shared<FakeConverter>();
    Hifi3ControlBufferGenerator generator(converter);
    Frames out;
    ASSERT_EQ(generator.MakeSetParameterArrayBufferV2(out, {{1, 10}}, true), 0);

    converter->fail = true;
    out.clear();
    EXPECT_EQ(generator.MakeSetParameterArrayBufferV2(out, {{1, 12}, {4, 40}}, false), -22);
    EXPECT_TRUE(out.empty());

    converter->fail = false;
    EXPECT_EQ(generator.MakeSetParameterArrayBufferV2(out, {{1, 12}, {4, 40}}, true), 0);
    EXPECT_EQ(converter->calls.back(), (Parameters{{1, 12}, {4, 40}}));
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(out[0], Bytes({1, 0, 0, 0, 4, 0, 0, 0, 1, 12, 4, 40}));
}

TEST(Hifi3ControlBufferGenerator, EmptyConversionStillUpdatesTheParameterCache) {
    auto converter = std::make_shared<FakeConverter>();
    converter->answer = [](const Parameters&) { return Blocks(); };
    Hifi3ControlBufferGenerator generator(converter);
    Frames out;
    EXPECT_EQ(generator.MakeSetParameterArrayBufferV2(out, {{5, 1.5}}, true), 0);
    EXPECT_TRUE(out.empty());
    EXPECT_EQ(generator.MakeSetParameterArrayBufferV2(out, {{5, 1.5}}, true), 0);
    EXPECT_EQ(converter->calls.size(), 1u);
}

TEST(Hifi3ControlBufferGenerator, NaNIsConvertedEveryTimeAndExactDoublesCount) {
    auto converter = std::make_shared<FakeConverter>();
    Hifi3ControlBufferGenerator generator(converter);
    Frames out;
    const double nan = std::numeric_limits<double>::quiet_NaN();
    generator.MakeSetParameterArrayBufferV2(out, {{1, nan}, {2, 0.1}}, true);
    generator.MakeSetParameterArrayBufferV2(out, {{1, nan}, {2, 0.1}}, true);
    ASSERT_EQ(converter->calls.size(), 2u);
    EXPECT_EQ(converter->calls[1].size(), 1u);
    EXPECT_TRUE(std::isnan(converter->calls[1].at(1)));
    // A difference below float precision is still a change of the double.
    generator.MakeSetParameterArrayBufferV2(out, {{2, std::nextafter(0.1, 1.0)}}, true);
    ASSERT_EQ(converter->calls.size(), 3u);
    EXPECT_EQ(converter->calls[2], (Parameters{{2, std::nextafter(0.1, 1.0)}}));
}

TEST(Hifi3ControlBufferGenerator, AChangeListGivesWhatTheFullSetGives) {
    // Two generators see the same parameter sets, one whole as a map, the other only the
    // entries that differ from the set before, and the NaN ones; over large and small sets
    // (a linear walk and single look-ups) they convert and frame alike.
    auto wholeConverter = std::make_shared<FakeConverter>();
    auto listConverter = std::make_shared<FakeConverter>();
    Hifi3ControlBufferGenerator whole(wholeConverter);
    Hifi3ControlBufferGenerator list(listConverter);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    Parameters current;
    for (unsigned int id = 0; id < 100; ++id) current[id * 3] = id;
    Parameters previous;
    uint32_t seed = 7;
    for (int step = 0; step < 60; ++step) {
        seed = seed * 1103515245u + 12345u;
        const unsigned int id = (seed >> 8) % 320;
        const double value = (seed >> 20) % 5 == 0 ? nan : static_cast<double>((seed >> 16) % 4);
        if ((seed >> 24) % 6 == 0) {
            current.erase(id);
        } else {
            current[id] = value;
        }
        ParameterList changed;
        for (const auto& parameter : current) {
            const auto before = previous.find(parameter.first);
            if (before == previous.end() || !(before->second == parameter.second)) {
                changed.push_back(parameter);
            }
        }
        const bool onlyChanged = step % 7 != 0;
        wholeConverter->fail = listConverter->fail = step % 11 == 5;
        Frames wholeOut;
        Frames listOut;
        const ParameterList all(current.begin(), current.end());
        const status_t wholeStatus =
            whole.MakeSetParameterArrayBufferV2(wholeOut, current, onlyChanged);
        const status_t listStatus =
            list.MakeSetParameterListBuffer(listOut, step % 13 == 0 ? all : changed, onlyChanged);
        ASSERT_EQ(listStatus, wholeStatus) << step;
        ASSERT_EQ(listOut, wholeOut) << step;
        ASSERT_EQ(listConverter->calls.back().size(), wholeConverter->calls.back().size());
        if (wholeStatus == 0) previous = current;
    }
}

}  // namespace
}  // namespace TesselFX
