// The wrapper against the stand-in library libDspKit_HiFi3z.so built from tools/dspkit-sim.

#include <gtest/gtest.h>

#include <cstring>

#include "AndroidLogFake.h"
#include "DspKitSim.h"
#include "FailingEntryPoints.h"
#include "dsp/Hifi3ControlBufferGenerator.h"
#include "dsp/ZorbEffectCoefsConverter.h"
#include "dsp/ZorbEffectWrapper.h"

namespace TesselFX {
namespace {

using test::AndroidLogCapture;
using test::FailingEntryPoints;
using Strings = std::vector<std::string>;

std::shared_ptr<IZorbEffectWrapper> Load(int flags = ZorbEffectWrapper::kHelperLoadFlags) {
    return ZorbEffectWrapper::Create(DSPKIT_SIM_PATH, flags);
}

std::shared_ptr<IZorbEffectWrapper> LoadInitialized(unsigned channels = 2) {
    auto effect = Load();
    if (!effect || !effect->Initialize(48000, channels, 4)) return nullptr;
    return effect;
}

struct Block {
    uint32_t id;
    std::vector<float> values;
};

Block ReadBlock(IZorbEffectWrapper& effect, int id) {
    unsigned maxSize = 0;
    EXPECT_TRUE(effect.Control_Coefficient_GetBufferMaxSize(&maxSize));
    std::vector<char> buffer(maxSize);
    unsigned size = 0;
    EXPECT_TRUE(effect.Control_Coefficient_Get(id, buffer.data(), &size));
    Block block = {0, {}};
    if (size < 8) return block;
    uint32_t count = 0;
    std::memcpy(&block.id, buffer.data(), 4);
    std::memcpy(&count, buffer.data() + 4, 4);
    EXPECT_EQ(size, 8 + 4 * count);
    block.values.resize(count);
    std::memcpy(block.values.data(), buffer.data() + 8, 4 * count);
    return block;
}

std::vector<int> Update(IZorbEffectWrapper& effect) {
    unsigned max = 0;
    EXPECT_TRUE(effect.Control_Deferred_GetMaxNumCoefIDs(&max));
    std::vector<int> ids(max);
    unsigned count = 0;
    EXPECT_TRUE(effect.Control_Deferred_Update(ids.data(), &count));
    ids.resize(count);
    return ids;
}

TEST(ZorbEffectWrapper, MissingLibraryGivesBothLinesAndNoWrapper) {
    AndroidLogCapture log;
    EXPECT_EQ(ZorbEffectWrapper::Create("/nonexistent/libDspKit_HiFi3z.so"), nullptr);
    const auto lines = log.Lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].text, "Failed to open library: /nonexistent/libDspKit_HiFi3z.so");
    EXPECT_EQ(lines[1].text, "ZorbEffectWrapper: /nonexistent/libDspKit_HiFi3z.so load error");
    for (const auto& line : lines) {
        EXPECT_EQ(line.priority, 6);
        EXPECT_EQ(line.tag, "TESSEL_LOG_TAG");
    }
}

TEST(ZorbEffectWrapper, InitializesWithBothFlagFormsAndReadsTheRevision) {
    AndroidLogCapture log;
    for (int flags : {ZorbEffectWrapper::kDefaultLoadFlags, ZorbEffectWrapper::kHelperLoadFlags}) {
        auto effect = Load(flags);
        ASSERT_NE(effect, nullptr);
        EXPECT_FALSE(effect->IsInitialized());
        EXPECT_TRUE(effect->Initialize(48000, 2, 4));
        EXPECT_TRUE(effect->IsInitialized());
        // A second initialisation replaces the effect buffer.
        EXPECT_TRUE(effect->Initialize(44100, 1, 4));
        unsigned meters = 0;
        EXPECT_TRUE(effect->Meters_GetBufferSize(&meters));
        EXPECT_EQ(meters, 2u);

        const char* text = nullptr;
        unsigned size = 0;
        ASSERT_TRUE(effect->Revision_Get(&text, &size));
        EXPECT_EQ(std::string(text, size), "DspKitSim 1.00 stand-in");
        unsigned code = 0;
        EXPECT_TRUE(effect->GetRevisionCode(&code));
        EXPECT_EQ(code, 0x30302E31u);  // "1.00" little-endian
    }
    EXPECT_TRUE(log.Texts().empty());
}

TEST(ZorbEffectWrapper, EntryPointFailuresAreLoggedWithTheirResult) {
    AndroidLogCapture log;
    auto effect = Load();
    ASSERT_NE(effect, nullptr);

    // ZorbScenario_Initialize is never resolved, whatever the library holds.
    std::vector<char> scenario(64);
    EXPECT_FALSE(effect->Initialize(scenario.data()));
    unsigned size = 0;
    EXPECT_TRUE(effect->GetScenarioSize(&size));

    {
        FailingEntryPoints fail("ZorbEffect_GetEffectSize");
        EXPECT_FALSE(effect->Initialize(48000, 2, 4));
        EXPECT_FALSE(effect->IsInitialized());
    }
    {
        FailingEntryPoints fail("ZorbEffect_Reset,ZorbEffect_Initialize");
        EXPECT_FALSE(effect->Initialize(48000, 2, 4));
        EXPECT_FALSE(effect->IsInitialized());
    }
    EXPECT_TRUE(effect->Initialize(48000, 2, 4));
    EXPECT_TRUE(effect->IsInitialized());
    {
        FailingEntryPoints fail("ZorbEffect_Initialize");
        EXPECT_FALSE(effect->Initialize(48000, 2, 4));
        EXPECT_FALSE(effect->IsInitialized());
    }
    // The library's own refusal: the channel count is out of its range.
    EXPECT_FALSE(effect->Initialize(48000, 9, 4));
    {
        FailingEntryPoints fail("ZorbEffect_Revision_Get");
        unsigned code = 0;
        EXPECT_FALSE(effect->GetRevisionCode(&code));
    }

    EXPECT_EQ(
        log.Texts(),
        (Strings{"Error: Function ZorbScenario_Initialize not found.",
                 "Error: Function ZorbEffect_GetEffectSize failed to execute. Returned "
                 "value: -77",
                 "ZorbEffectWrapper::PrepareEffectBuffer failed",
                 "Error: Function ZorbEffect_Initialize failed to execute. Returned value: -77",
                 "Error: Function ZorbEffect_Initialize failed to execute. Returned value: -77",
                 "Error: Function ZorbEffect_Initialize failed to execute. Returned value: -22",
                 "Error: Function ZorbEffect_Revision_Get failed to execute. Returned value: "
                 "-77"}));
}

TEST(ZorbEffectWrapper, EveryEntryPointIsResolved) {
    auto effect = LoadInitialized();
    ASSERT_NE(effect, nullptr);
    AndroidLogCapture log;
    unsigned a = 0, b = 0;
    int rpc = 0;
    auto callback = [](void*, unsigned*, unsigned) { return 0; };
    std::vector<char> scenario(64);
    EXPECT_TRUE(effect->GetEffectSize(&a));
    EXPECT_TRUE(effect->GetEffectSizeFromScenario(scenario.data(), &a));
    EXPECT_TRUE(effect->RPC_SetRequestTx(&rpc, nullptr));
    EXPECT_TRUE(effect->RPC_SetResponseTx(&rpc, nullptr));
    EXPECT_TRUE(effect->RPC_GetSelfRx(&rpc));
    EXPECT_TRUE(effect->RPC_Register_cb_Command(&rpc, callback, nullptr));
    EXPECT_TRUE(effect->RPC_Register_cb_GetCoefficient(&rpc, callback, nullptr));
    EXPECT_TRUE(effect->RPC_Register_cb_GetMeters(&rpc, callback, nullptr));
    EXPECT_TRUE(effect->RPC_Register_cb_GetParametersArray(&rpc, callback, nullptr));
    EXPECT_TRUE(effect->RPC_Register_cb_GetRevision(&rpc, callback, nullptr));
    EXPECT_TRUE(effect->Reset());
    EXPECT_TRUE(effect->GetMessageMaxSize(&a, &b));
    EXPECT_EQ(a, 16000u);

    EXPECT_TRUE(effect->Control_Parameter_Set(111, 6.0f));
    float value = 0;
    EXPECT_TRUE(effect->Control_Parameter_Get(111, &value));
    EXPECT_EQ(value, 6.0f);
    const int ids[] = {110, 111, 200, 3000};
    float values[4] = {};
    EXPECT_TRUE(effect->Control_ParametersArray_Get(ids, values, 4));
    EXPECT_EQ(std::vector<float>(values, values + 4), (std::vector<float>{1000, 6, 0, 0}));
    const int* fixed = nullptr;
    int count = 0;
    EXPECT_TRUE(effect->Control_Parameter_IDs_Get(&fixed, &count));
    ASSERT_EQ(count, 13);
    EXPECT_EQ(fixed[0], 100);
    EXPECT_EQ(fixed[12], 200);
    std::vector<int> all(600);
    unsigned listed = 600;
    EXPECT_TRUE(effect->Control_Deferred_ListAllCoefIDs(all.data(), &listed));
    all.resize(listed);
    EXPECT_EQ(all, (std::vector<int>{1, 2, 3, 4, 10}));
    // A block of the host side applied through the library's own entry point.
    std::vector<char> block(72);
    unsigned size = 0;
    EXPECT_TRUE(effect->Control_Coefficient_Get(2, block.data(), &size));
    unsigned used = 0;
    EXPECT_TRUE(effect->Control_Coefficient_Set(block.data(), size, &used));
    EXPECT_EQ(used, 28u);

    // Meter buffer round trip: count 4, then value and flag per meter, all zero so far.
    std::vector<char> meters(100);
    size = 100;
    EXPECT_TRUE(effect->Meters_GetBuffer(meters.data(), &size));
    ASSERT_EQ(size, 36u);
    EXPECT_EQ(meters[0], 4);
    EXPECT_TRUE(effect->Meters_SetBuffer(meters.data(), size));
    float meterValues[4];
    int meterFlags[4];
    EXPECT_TRUE(effect->Meters_Readout(meterValues, meterFlags, 4));
    EXPECT_EQ(meterFlags[3], 0);

    // The stand-in's scenario is two u32: sample rate and channels.
    const uint32_t mono[2] = {16000, 1};
    std::memcpy(scenario.data(), mono, sizeof(mono));
    EXPECT_TRUE(effect->InitializeFromScenario(scenario.data(), nullptr, 0, nullptr, 0));
    EXPECT_TRUE(effect->Meters_GetBufferSize(&a));
    EXPECT_EQ(a, 2u);
    EXPECT_TRUE(log.Texts().empty());
}

TEST(ZorbEffectWrapper, UpdateReportsExactlyTheBlocksWhoseInputsChanged) {
    auto effect = LoadInitialized();
    ASSERT_NE(effect, nullptr);
    EXPECT_TRUE(Update(*effect).empty());

    // First set of an input counts, even at its default.
    EXPECT_TRUE(effect->Control_Deferred_Set(200, 0.0f));
    EXPECT_TRUE(effect->Control_Deferred_Set(130, 12000.0f));
    // 2820 and 2821 share the generic block 4096 + 2820/16; 105 is no band field.
    EXPECT_TRUE(effect->Control_Deferred_Set(2821, 1.0f));
    EXPECT_TRUE(effect->Control_Deferred_Set(2820, 0.0f));
    EXPECT_TRUE(effect->Control_Deferred_Set(105, 3.0f));
    EXPECT_EQ(Update(*effect), (std::vector<int>{4, 10, 4102, 4272}));

    // The same values again change nothing; one changed value changes one block.
    EXPECT_TRUE(effect->Control_Deferred_Set(200, 0.0f));
    EXPECT_TRUE(effect->Control_Deferred_Set(2821, 1.0f));
    EXPECT_TRUE(Update(*effect).empty());
    EXPECT_TRUE(effect->Control_Deferred_Set(2821, 2.0f));
    EXPECT_EQ(Update(*effect), std::vector<int>{4272});

    const Block generic = ReadBlock(*effect, 4272);
    ASSERT_EQ(generic.values.size(), 16u);
    EXPECT_EQ(generic.values[4], 0.0f);  // 2820 = 16 * 176 + 4
    EXPECT_EQ(generic.values[5], 2.0f);
    const Block gain = ReadBlock(*effect, 10);
    EXPECT_EQ(gain.values, std::vector<float>{1.0f});

    // Negative ids are refused by the library.
    AndroidLogCapture log;
    EXPECT_FALSE(effect->Control_Deferred_Set(-1, 0.0f));
    EXPECT_EQ(log.Texts(), Strings{"Error: Function ZorbEffect_Control_Deferred_Set failed to "
                                   "execute. Returned value: -22"});
}

/// Processes one frame block on a second instance that stands for the DSP.
std::vector<float> ProcessOnDsp(IZorbEffectWrapper& dsp, std::vector<float> samples) {
    ZorbStream_t stream = {samples.data(), static_cast<uint32_t>(samples.size() / 2)};
    ZorbStream_t* const streams[] = {&stream};
    EXPECT_TRUE(dsp.Process(streams, streams));
    return samples;
}

TEST(ZorbEffectWrapper, HostBlocksDriveTheDspSideThroughFrames) {
    auto host = LoadInitialized();
    auto dsp = LoadInitialized();
    ASSERT_NE(host, nullptr);
    ASSERT_NE(dsp, nullptr);

    // Untouched, the DSP side passes audio unchanged.
    EXPECT_EQ(ProcessOnDsp(*dsp, {0.25f, -0.5f}), (std::vector<float>{0.25f, -0.5f}));

    auto converter = std::make_shared<ZorbEffectCoefsConverter>(host);
    ASSERT_TRUE(converter->InitCheck());
    Hifi3ControlBufferGenerator generator(converter);
    std::vector<std::vector<char>> frames;
    ASSERT_EQ(generator.MakeSetParameterArrayBufferV2(
                  frames, {{110, 1000}, {111, 6}, {112, 1}, {200, -6.020599913279624}}, true),
              0);
    ASSERT_EQ(frames.size(), 1u);
    // Band block of 8 + 20 bytes, gain block of 8 + 4 bytes.
    EXPECT_EQ(frames[0].size(), 8u + 28 + 12);
    for (const auto& frame : frames) {
        unsigned size = 0;
        EXPECT_TRUE(
            dsp->Message(frame.data(), static_cast<unsigned>(frame.size()), nullptr, &size));
    }

    // Impulse response of band 1 (the cookbook peaking biquad of 1 kHz, +6 dB, Q 1 at 48 kHz:
    // b0 = 1.043953086990) times the gain of 0.5, left channel; right stays silent.
    const std::vector<float> out = ProcessOnDsp(*dsp, {1, 0, 0, 0, 0, 0});
    EXPECT_NEAR(out[0], 0.5 * 1.043953086990, 1e-6);
    EXPECT_NEAR(out[2], 0.5 * 0.083305196654, 1e-6);
    EXPECT_NEAR(out[4], 0.5 * 0.073866031718, 1e-6);
    EXPECT_EQ(out[1], 0.0f);
}

}  // namespace
}  // namespace TesselFX
