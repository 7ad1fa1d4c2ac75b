#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "LogCapture.h"
#include "preset/CLinkLawEntrySerializer.h"
#include "preset/LinkLaws.h"
#include "preset/SystemVolumeToMasterValueConverter.h"

namespace TesselFX {
namespace {

using test::LogCapture;

// Entry 1: version 1, master 2800, source 0, target 100, "Linear", points (0,-10) (1000,0),
// trailing floats 1.5 and 0. 58 bytes.
const std::vector<unsigned char> kEntryV1 = {
    0x3A, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0xF0, 0x0A, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x00, 0x64, 0x00, 0x00, 0x00, 0x06, 0x00, 0x00, 0x00, 'L',  'i',  'n',  'e',  'a',  'r',
    0x02, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x7A, 0x44, 0x00, 0x00, 0x20,
    0xC1, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xC0, 0x3F, 0x00, 0x00, 0x00, 0x00};
// Entry 2: version 0 (no trailing floats), master 2801, source 1, target 101, no method name
// (stays "Linear"), one point (5, 2). 36 bytes.
const std::vector<unsigned char> kEntryV0 = {0x24, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xF1,
                                             0x0A, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x65, 0x00,
                                             0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00,
                                             0x00, 0x00, 0x00, 0xA0, 0x40, 0x00, 0x00, 0x00, 0x40};
// Entry 3: version 2, master 2802, source 2, target 102, "Log", no points, trailing 1 and 2.
const std::vector<unsigned char> kEntryV2 = {
    0x27, 0x00, 0x00, 0x00, 0x02, 0x00, 0x00, 0x00, 0xF2, 0x0A, 0x00, 0x00, 0x02,
    0x00, 0x00, 0x00, 0x66, 0x00, 0x00, 0x00, 0x03, 0x00, 0x00, 0x00, 'L',  'o',
    'g',  0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x80, 0x3F, 0x00, 0x00, 0x00, 0x40};

std::vector<char> Bytes(std::initializer_list<std::vector<unsigned char>> parts) {
    std::vector<char> out;
    for (const auto& part : parts) out.insert(out.end(), part.begin(), part.end());
    return out;
}

LinkLawEntry Law(uint32_t source, uint32_t master, uint32_t target, std::vector<float> masters,
                 std::vector<float> targets) {
    LinkLawEntry entry;
    entry.SourceControlId = source;
    entry.MasterControlId = master;
    entry.TargetParamId = target;
    entry.masterValues = std::move(masters);
    entry.targetValues = std::move(targets);
    return entry;
}

TEST(LinkLawSerializer, WritesGoldenStreamAndReadsAllVersions) {
    LogCapture capture;
    LinkLawEntry first = Law(0, 2800, 100, {0.0f, 1000.0f}, {-10.0f, 0.0f});
    first.extraValue0 = 1.5f;
    first.size = 7;  // whatever the entry says, the written size is the real one
    CLinkLawEntrySerializer serializer;
    ASSERT_TRUE(serializer.Serialize({first}));
    EXPECT_EQ(
        std::vector<char>(serializer.GetBuffer(), serializer.GetBuffer() + serializer.GetSize()),
        Bytes({kEntryV1}));
    EXPECT_TRUE(capture.Has(3, "CLinkLawEntrySerializer::Serialize."));
    EXPECT_TRUE(capture.Has(3, "CLinkLawEntrySerializer::Clear."));
    EXPECT_EQ(capture.Lines().front().tag, "CLinkLawEntrySerializer");

    const std::vector<char> stream = Bytes({kEntryV1, kEntryV0, kEntryV2});
    std::vector<LinkLawEntry> entries;
    ASSERT_TRUE(serializer.Deserialize(stream.data(), stream.size(), entries));
    EXPECT_TRUE(capture.Has(3, "CLinkLawEntrySerializer::Deserialize."));
    first.size = 58;
    LinkLawEntry second = Law(1, 2801, 101, {5.0f}, {2.0f});
    second.size = 36;
    second.version = 0;
    LinkLawEntry third = Law(2, 2802, 102, {}, {});  // read back as version 1
    third.size = 39;
    third.ConversionMethod = "Log";
    third.extraValue0 = 1.0f;
    third.extraValue1 = 2.0f;
    EXPECT_EQ(entries, (std::vector<LinkLawEntry>{first, second, third}));
    EXPECT_EQ(serializer.GetSize(), stream.size());

    // Every entry is written with its method name and trailing floats.
    ASSERT_TRUE(serializer.Serialize({entries[1]}));
    EXPECT_EQ(serializer.GetSize(), 50u);
    EXPECT_FALSE(serializer.Serialize({}));
    EXPECT_EQ(serializer.GetBuffer(), nullptr);
    EXPECT_FALSE(serializer.Deserialize(stream.data(), 0, entries));
}

TEST(LinkLawSerializer, WalksByDeclaredSizeAndSurvivesEveryCutAndFlip) {
    LogCapture capture(4);
    CLinkLawEntrySerializer serializer;
    // A declared size larger than the entry skips the bytes behind it.
    std::vector<char> padded = Bytes({kEntryV0, {0xEE, 0xEE, 0xEE, 0xEE}, kEntryV1});
    padded[0] = 0x28;
    std::vector<LinkLawEntry> entries;
    ASSERT_TRUE(serializer.Deserialize(padded.data(), padded.size(), entries));
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[1].TargetParamId, 100u);

    // A declared size of 0 stops the walk instead of looping.
    std::vector<char> zero = Bytes({kEntryV0});
    zero[0] = 0;
    entries.clear();
    EXPECT_FALSE(serializer.Deserialize(zero.data(), zero.size(), entries));
    EXPECT_EQ(entries.size(), 1u);

    const std::vector<char> stream = Bytes({kEntryV1, kEntryV0, kEntryV2});
    for (size_t cut = 1; cut <= stream.size(); ++cut) {
        entries.clear();
        const bool ok = serializer.Deserialize(stream.data(), cut, entries);
        const size_t complete = cut >= 133 ? 3 : cut >= 94 ? 2 : cut >= 58 ? 1 : 0;
        EXPECT_EQ(entries.size(), complete) << cut;
        EXPECT_EQ(ok, cut == 58 || cut == 94 || cut == 133) << cut;
    }
    for (size_t i = 0; i < stream.size(); ++i) {
        for (unsigned char flip : {0x01, 0x80, 0xFF}) {
            std::vector<char> bad = stream;
            bad[i] = static_cast<char>(bad[i] ^ flip);
            entries.clear();
            serializer.Deserialize(bad.data(), bad.size(), entries);
        }
    }
}

// Entries that declare 28 bytes but hold 100 points each overlap: together they would decode
// far more points than the stream has bytes.
TEST(LinkLawSerializer, OverlappingEntriesDecodeNoMoreThanTheStreamHolds) {
    const size_t kEntries = 64;
    const uint32_t kPoints = 100;
    std::vector<char> stream;
    const auto put = [&stream](uint32_t value) {
        for (int shift = 0; shift < 32; shift += 8)
            stream.push_back(static_cast<char>(value >> shift));
    };
    for (size_t i = 0; i < kEntries; ++i) {
        for (uint32_t word : {28u, 0u, 2800u, 0u, 100u, 0u, kPoints}) put(word);
    }
    stream.resize(stream.size() + 8 * kPoints);  // the points of the last entry
    ASSERT_EQ(stream.size(), 2592u);

    LogCapture capture;
    CLinkLawEntrySerializer serializer;
    std::vector<LinkLawEntry> entries;
    EXPECT_TRUE(serializer.Deserialize(stream.data(), stream.size(), entries));
    // Each entry takes 828 bytes: three fit in 2592, the fourth is refused with the rest.
    ASSERT_EQ(entries.size(), 3u);
    size_t points = 0;
    for (const LinkLawEntry& entry : entries) points += entry.masterValues.size();
    EXPECT_LE(8 * points, stream.size());
    EXPECT_TRUE(capture.Has(4,
                            "CLinkLawEntrySerializer::Deserialize entry at 84 takes more than the "
                            "108 bytes left of 2592; the rest is refused"));
    EXPECT_EQ(capture.Texts(4).size(), 2u);  // with its source position
}

TEST(LinkLaws, ConvertInterpolatesInFloatAndClamps) {
    LogCapture capture;
    const LinkLawEntry steps = Law(0, 2800, 7, {0, 500, 1000}, {-10, -4, 0});
    struct Case {
        LinkLawEntry law;
        double source;
        float out;
    };
    const Case cases[] = {
        {Law(0, 2800, 7, {0, 10}, {2, 4}), 0.5, 3.0f},
        // 0.1 * 10 is 1; 1 * 7 / 3 in float, the product before the quotient.
        {Law(0, 2800, 7, {0, 3}, {0, 7}), 0.1, 2.3333332538604736f},
        // Clamps: above the last point, below the first, exactly on a point, between two.
        {steps, 150.0, 0.0f},
        {steps, -3.0, -10.0f},
        {steps, 50.0, -4.0f},
        {steps, 75.0, -2.0f},
        {Law(0, 2800, 7, {3}, {9}), 75.0, 9.0f},  // one point: its target, whatever the source
        {Law(0, 2800, 7, {10, 0}, {1, 2}), 0.5, 1.0f},  // decreasing: the first value
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.source);
        float out = -1.0f;
        EXPECT_TRUE(LinkLaws::Convert(c.law, {{0, c.source}}, out));
        EXPECT_EQ(out, c.out);
    }
    // No law without a valid table; no source, no value; no method but "Linear".
    LinkLawEntry log = Law(0, 2800, 7, {1, 2}, {1, 2});
    log.ConversionMethod = "Log";
    for (const LinkLawEntry& bad : {Law(0, 2800, 7, {}, {}), Law(0, 2800, 7, {1, 2}, {1}),
                                    Law(3, 2803, 7, {1, 2}, {1, 2}), log}) {
        float out = -1.0f;
        EXPECT_FALSE(LinkLaws::Convert(bad, {{0, 0.5}}, out));
        EXPECT_EQ(out, -1.0f);
    }
    EXPECT_TRUE(capture.Has(0, "could not find source param 3"));
    EXPECT_TRUE(capture.Has(4, "conversion method Log does not support"));
}

class CountingListener : public ILinkLawsListener {
  public:
    void OnChanged() override { ++count; }
    int count = 0;
};

TEST(LinkLaws, EntriesSourcesAndCaches) {
    LogCapture capture;
    LinkLaws laws;
    CountingListener listener;
    laws.SetListener(&listener);
    LinkLawEntry marker;
    marker.SourceControlId = kLinkLawClearMarkerSource;
    LinkLawEntry log = Law(1, 2801, 12, {0, 10}, {0, 1});
    log.ConversionMethod = "Log";
    EXPECT_TRUE(laws.SetEntries({Law(0, 2800, 10, {0, 1000}, {0, 100}), marker,
                                 Law(0, 2800, 11, {0, 1000}, {0, 10}), log,
                                 Law(0, 2800, 11, {0, 1000}, {0, 20})}));
    EXPECT_EQ(listener.count, 1);
    const std::vector<LinkLawEntry> entries = laws.GetEntries();
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].TargetParamId, 11u);
    EXPECT_EQ(entries[0].targetValues[1], 20.0f);
    EXPECT_EQ(laws.GetSourceToMaster(),
              (std::map<unsigned int, unsigned int>{{0, 2800}, {1, 2801}}));

    EXPECT_TRUE(laws.GetTargetValues().empty());
    EXPECT_TRUE(laws.SetSourceValue(0, 50.0));
    EXPECT_TRUE(laws.SetSourceValue(1, 2.0));
    EXPECT_FALSE(laws.SetSourceValue(5, 1.0));
    EXPECT_EQ(listener.count, 3);
    EXPECT_EQ(laws.GetMasterValues(), (std::map<unsigned int, double>{{2800, 50.0}, {2801, 2.0}}));
    EXPECT_EQ(laws.GetTargetValues(), (std::map<unsigned int, double>{{11, 10.0}}));
    EXPECT_TRUE(capture.Has(4, "conversion method Log does not support"));

    // ClearEntries keeps the sources; a new law sees them at once.
    laws.ClearEntries();
    EXPECT_TRUE(laws.GetTargetValues().empty());
    laws.SetEntry(Law(0, 2800, 13, {0, 1000}, {0, 4}));
    EXPECT_EQ(laws.GetTargetValues(), (std::map<unsigned int, double>{{13, 2.0}}));
    EXPECT_EQ(laws.GetSourceToMaster(), (std::map<unsigned int, unsigned int>{{0, 2800}}));

    EXPECT_FALSE(laws.ClearSource(7));
    EXPECT_TRUE(capture.Has(4, "7 not a source"));
    EXPECT_TRUE(laws.ClearSource(0));
    EXPECT_TRUE(laws.GetTargetValues().empty());
    EXPECT_EQ(laws.GetSources(), (std::map<unsigned int, double>{{1, 2.0}}));
    EXPECT_FALSE(laws.SetSourceValues({{9, 1.0}}));
    EXPECT_TRUE(laws.SetSourceValues({{9, 1.0}, {0, 100.0}}));
    EXPECT_EQ(laws.GetTargetValues(), (std::map<unsigned int, double>{{13, 4.0}}));
    EXPECT_FALSE(laws.ClearSources({8, 9}));
    EXPECT_TRUE(laws.ClearSources({8, 0}));
    EXPECT_EQ(laws.GetMasterValues(), (std::map<unsigned int, double>{{2801, 2.0}}));
    laws.ClearAllSources();
    EXPECT_TRUE(laws.GetSources().empty());
    laws.ClearAll();
    EXPECT_TRUE(laws.GetEntries().empty());
    EXPECT_FALSE(laws.IsActiveByDefault({{2821, 1.0}}));
    EXPECT_FALSE(laws.IsSimulationByDefault({{2820, 1.0}}));
}

TEST(SystemVolumeToMasterValueConverter, SnapsToTenthsInFloat) {
    SystemVolumeToMasterValueConverter converter;
    // -30 dB: 68.75 -> (68.75 + 0.05) / 0.1 is exactly 688 in float.
    const std::pair<float, float> cases[] = {{-96.0f, 0.0f},
                                             {0.0f, 100.0f},
                                             {-48.0f, 50.0f},
                                             {-30.0f, 68.80000305175781f},
                                             {-10.0f, 89.5999984741211f},
                                             {-95.95f, 0.10000000149011612f}};
    for (const auto& c : cases) {
        float master = -1.0f;
        EXPECT_TRUE(converter.Convert(c.first, master)) << c.first;
        EXPECT_EQ(master, c.second) << c.first;
    }
    float master = -1.0f;
    for (float refused : {0.1f, -96.1f, std::numeric_limits<float>::quiet_NaN()}) {
        EXPECT_FALSE(converter.Convert(refused, master)) << refused;
    }
    EXPECT_EQ(master, -1.0f);
    EXPECT_EQ(SnapToStep(0.24f, 0.5f), 0.0f);
    EXPECT_EQ(SnapToStep(0.25f, 0.5f), 0.5f);
    EXPECT_EQ(SnapToStep(1e30f, 0.1f), 1e30f);
}

}  // namespace
}  // namespace TesselFX
