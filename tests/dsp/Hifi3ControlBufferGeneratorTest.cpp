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

TEST(Hifi3ControlBufferGenerator, FramesCarryBlocksInAscendingIdWithOpcodeAndLength) {
    Hifi3ControlBufferGenerator generator(nullptr);
    Frames out = {Bytes({0x55})};  // out is appended to, not cleared
    generator.PackCoefficientBuffers(
        out, {{7, Bytes({0xAA, 0xBB})}, {3, Bytes({0x01})}, {5, {}}, {0x100, Bytes({0x7F})}});
    ASSERT_EQ(out.size(), 2u);
    EXPECT_EQ(out[0], Bytes({0x55}));
    EXPECT_EQ(out[1], Bytes({0x01, 0x00, 0x00, 0x00, 0x04, 0x00, 0x00, 0x00,  //
                             0x01, 0xAA, 0xBB, 0x7F}));

    Frames none;
    generator.PackCoefficientBuffers(none, {});
    EXPECT_TRUE(none.empty());
}

TEST(Hifi3ControlBufferGenerator, GroupingNeverCutsABlockAndStartsANewFrameBeforeOverflow) {
    Hifi3ControlBufferGenerator generator(nullptr);

    // 8000 + 8000 exceeds 15992, 8000 + 1 does not.
    Frames out;
    generator.PackCoefficientBuffers(out, {{1, std::vector<char>(8000, 'a')},
                                           {2, std::vector<char>(8000, 'b')},
                                           {3, std::vector<char>(1, 'c')}});
    ASSERT_EQ(out.size(), 2u);
    EXPECT_EQ(Header(out[0]), Bytes({1, 0, 0, 0, 0x40, 0x1F, 0, 0}));
    EXPECT_EQ(out[0].size(), 8008u);
    EXPECT_EQ(out[0][8], 'a');
    EXPECT_EQ(out[0].back(), 'a');
    EXPECT_EQ(Header(out[1]), Bytes({1, 0, 0, 0, 0x41, 0x1F, 0, 0}));
    EXPECT_EQ(out[1].size(), 8009u);
    EXPECT_EQ(out[1][8], 'b');
    EXPECT_EQ(out[1].back(), 'c');

    // Exactly 15992 bytes share one frame of 16000 bytes; one byte more opens a second.
    out.clear();
    generator.PackCoefficientBuffers(
        out, {{1, std::vector<char>(10000, 'a')}, {2, std::vector<char>(5992, 'b')}});
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(out[0].size(), 16000u);
    EXPECT_EQ(Header(out[0]), Bytes({1, 0, 0, 0, 0x78, 0x3E, 0, 0}));
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

    // Many small blocks: every frame but the last is as full as whole blocks allow.
    Blocks many;
    for (uint32_t id = 0; id < 1000; ++id) many[id] = std::vector<char>(72, static_cast<char>(id));
    out.clear();
    generator.PackCoefficientBuffers(out, many);
    ASSERT_EQ(out.size(), 5u);  // 222 blocks of 72 bytes fit in 15992
    for (size_t i = 0; i + 1 < out.size(); ++i) EXPECT_EQ(out[i].size(), 8u + 222 * 72);
    EXPECT_EQ(out[4].size(), 8u + (1000 - 4 * 222) * 72);
    EXPECT_EQ(out[1][8], static_cast<char>(222));
}

TEST(Hifi3ControlBufferGenerator, OnlyChangedParametersAreConvertedAndSent) {
    auto converter = std::make_shared<FakeConverter>();
    Hifi3ControlBufferGenerator generator(converter);
    Frames out;

    // Empty caches: nothing to convert and nothing known.
    EXPECT_EQ(generator.MakeSetParameterArrayBufferV2(out, {}, false), 0);
    EXPECT_TRUE(out.empty());
    EXPECT_TRUE(converter->calls.empty());

    // First call converts everything.
    EXPECT_EQ(generator.MakeSetParameterArrayBufferV2(out, {{2, 20}, {1, 10}}, true), 0);
    ASSERT_EQ(converter->calls.size(), 1u);
    EXPECT_EQ(converter->calls[0], (Parameters{{1, 10}, {2, 20}}));
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(out[0], Bytes({1, 0, 0, 0, 4, 0, 0, 0, 1, 10, 2, 20}));

    // Same values: nothing converted; onlyChanged gives no frames, otherwise all blocks.
    out.clear();
    EXPECT_EQ(generator.MakeSetParameterArrayBufferV2(out, {{1, 10}, {2, 20}}, true), 0);
    EXPECT_TRUE(out.empty());
    EXPECT_EQ(generator.MakeSetParameterArrayBufferV2(out, {{1, 10}, {2, 20}}, false), 0);
    EXPECT_EQ(converter->calls.size(), 1u);
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(out[0], Bytes({1, 0, 0, 0, 4, 0, 0, 0, 1, 10, 2, 20}));

    // One change, one new id; ids only in the cache are ignored.
    out.clear();
    EXPECT_EQ(generator.MakeSetParameterArrayBufferV2(out, {{2, 21}, {3, 30}}, true), 0);
    EXPECT_EQ(converter->calls.back(), (Parameters{{2, 21}, {3, 30}}));
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(out[0], Bytes({1, 0, 0, 0, 4, 0, 0, 0, 2, 21, 3, 30}));

    // onlyChanged false with a change re-sends every known block, the new bytes merged in.
    out.clear();
    EXPECT_EQ(generator.MakeSetParameterArrayBufferV2(out, {{1, 11}}, false), 0);
    EXPECT_EQ(converter->calls.back(), (Parameters{{1, 11}}));
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(out[0], Bytes({1, 0, 0, 0, 6, 0, 0, 0, 1, 11, 2, 21, 3, 30}));

    // A value changed back to an earlier one is a change against the latest.
    out.clear();
    EXPECT_EQ(generator.MakeSetParameterArrayBufferV2(out, {{1, 10}}, true), 0);
    EXPECT_EQ(converter->calls.back(), (Parameters{{1, 10}}));
    EXPECT_EQ(out.size(), 1u);
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
