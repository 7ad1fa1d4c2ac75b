#include <gtest/gtest.h>

#include "LogCapture.h"
#include "PresetTestData.h"
#include "preset/PresetFactory.h"
#include "preset/PresetHandle.h"
#include "preset/PresetHandleFactory.h"
#include "preset/PresetSet.h"
#include "preset/PresetSetFactory.h"
#include "preset/UserPreset.h"

namespace TesselFX {
namespace {

using test::AddPreset;
using test::LogCapture;
using test::RecordingListener;

// Pair (1,1): base {10:1, 11:1}, sub 1 (priority 1) {11:2, 12:2}, sub 4 (priority 0)
// {10:4, 13:4}. Pairs (1,2), (2,1) and (2,5) have a base only; sound mode 5 exists under
// output mode 2 alone.
PresetMap SystemPresets() {
    PresetMap map;
    AddPreset(map, 1, 1, 0, 0, {{10, 1.0}, {11, 1.0}}, {}, false, 1);
    AddPreset(map, 1, 1, 1, 1, {{11, 2.0}, {12, 2.0}});
    AddPreset(map, 1, 1, 4, 0, {{10, 4.0}, {13, 4.0}});
    AddPreset(map, 1, 2, 0, 0, {{10, 5.0}});
    AddPreset(map, 2, 1, 0, 0, {{10, 6.0}});
    AddPreset(map, 2, 5, 0, 0, {{10, 7.0}});
    return map;
}

std::shared_ptr<PresetSet> MakeSet(const PresetMap& user = {}) {
    return test::MakeSet(SystemPresets(), user);
}

double UserValue(const std::shared_ptr<PresetSet>& set, uint32_t om, uint32_t sm, uint32_t mask,
                 unsigned int id) {
    return test::Value(set->GetUserPreset(om, sm, mask), id);
}

TEST(PresetSet, PairsEverySystemPresetWithAUserTwin) {
    LogCapture capture;
    PresetMap user;
    auto stored = AddPreset(user, 1, 1, 1, 1, {{11, 9.0}}, {}, true);
    AddPreset(user, 7, 7, 0, 0, {{1, 1.0}}, {}, true);  // no system twin: dropped
    auto set = MakeSet(user);
    EXPECT_EQ(set->GetUserPresets().size(), 6u);
    EXPECT_EQ(set->GetUserPreset(7, 7, 0), nullptr);
    auto twin = set->GetUserPreset(1, 1, 1);
    ASSERT_NE(twin, nullptr);
    EXPECT_NE(twin, stored);
    EXPECT_EQ(UserValue(set, 1, 1, 1, 11), 9.0);
    twin->SetParameter(11, 3.0);
    double value = 0.0;
    EXPECT_TRUE(stored->GetParameter(11, value));
    EXPECT_EQ(value, 9.0);
    // A twin made from nothing is an empty user preset with the system identity.
    auto made = set->GetUserPreset(1, 1, 4);
    EXPECT_NE(dynamic_cast<UserPreset*>(made.get()), nullptr);
    EXPECT_TRUE(made->IsEmpty());
    EXPECT_EQ(made->GetName(), "P11");
    EXPECT_EQ(made->GetPriority(), 0);

    EXPECT_EQ(set->GetSupportedSubtypeMasks(1, 1), 5u);
    EXPECT_EQ(set->GetSupportedSubtypeMasks(9, 9), 0u);
    EXPECT_EQ(set->GetOutputModes(), (std::set<unsigned int>{1, 2}));
    EXPECT_EQ(set->GetSoundModes(), (std::set<unsigned int>{1, 2, 5}));
    EXPECT_EQ(set->GetOmSms(), (std::set<OmSm>{{1, 1}, {1, 2}, {2, 1}, {2, 5}}));
    EXPECT_TRUE(set->IsSupported(2, 5));
    EXPECT_FALSE(set->IsSupported(1, 5));
    EXPECT_TRUE(set->IsDefaultSoundMode(1, 1));
    EXPECT_FALSE(set->IsDefaultSoundMode(1, 2));
    EXPECT_FALSE(set->IsDefaultSoundMode(9, 9));
    EXPECT_TRUE(set->IsPresetsLoaded());
    EXPECT_TRUE(capture.Has(1, "IsPresetsLoaded: true"));
    EXPECT_NE(set->GetSystemPreset(1, 1, 4), nullptr);
    EXPECT_TRUE(capture.Has(1, "GetSystemPreset 1 1 4"));
    EXPECT_EQ(set->GetSystemPresets().size(), 6u);

    EXPECT_FALSE(test::MakeSet({})->IsPresetsLoaded());
    EXPECT_TRUE(capture.Has(1, "IsPresetsLoaded: false"));
}

TEST(PresetSet, ExpandsWildcards) {
    auto set = MakeSet();
    EXPECT_EQ(set->ExpandOmSm(-3, -3), set->GetOmSms());
    EXPECT_EQ(set->ExpandOmSm(9, 8), (std::set<OmSm>{{9, 8}}));
    EXPECT_EQ(set->ExpandOmSm(-3, 5), (std::set<OmSm>{{1, 5}, {2, 5}}));
    EXPECT_EQ(set->ExpandOmSm(1, -3), (std::set<OmSm>{{1, 1}, {1, 2}, {1, 5}}));
    EXPECT_TRUE(set->ExpandOmSm(-1, 1).empty());
    EXPECT_TRUE(set->ExpandOmSm(-3, -2).empty());
}

TEST(PresetSet, WritesParametersByPairAndMask) {
    LogCapture capture;
    auto set = MakeSet();
    // Wildcard over output modes: (1,5) is no pair, (2,5) takes the value.
    EXPECT_TRUE(set->SetParameter(20, 2.5, -3, 5, 0, false));
    EXPECT_TRUE(capture.Has(4, "invalid outputMode 1 soundMode 5"));
    EXPECT_EQ(UserValue(set, 2, 5, 0, 20), 2.5);
    // Over every pair.
    EXPECT_TRUE(set->SetParameterArray({21, 22}, {1.0, 2.0}, -3, -3, 0, false));
    for (const OmSm& pair : set->GetOmSms())
        EXPECT_EQ(UserValue(set, pair.om, pair.sm, 0, 22), 2.0);
    // No pair at all.
    capture.Clear();
    EXPECT_FALSE(set->SetParameter(20, 1.0, 9, 9, 0, false));
    EXPECT_EQ(capture.Texts(4).back(), "no valid om 9 sm 9 subtypeMasks 0x0");
    EXPECT_FALSE(set->SetParameter(20, 1.0, -1, 1, 2, false));
    EXPECT_EQ(capture.Texts(4).back(), "no valid om -1 sm 1 subtypeMasks 0x2");
    // Masks 3 on a pair of masks 1 and 4 reach mask 1 only.
    EXPECT_TRUE(set->SetParameter(30, 3.0, 1, 1, 3, false));
    EXPECT_TRUE(capture.Has(1,
                            "SetParameterArraySubPreset om 1 sm 1 subTypeMask 0x3 "
                            "addNonexistingParamsInSubPresetToBasePreset no"));
    EXPECT_EQ(UserValue(set, 1, 1, 1, 30), 3.0);
    EXPECT_EQ(UserValue(set, 1, 1, 4, 30), -1.0);
    EXPECT_EQ(UserValue(set, 1, 1, 0, 30), -1.0);
    // A sub preset mask on a pair without sub presets fails.
    EXPECT_FALSE(set->SetParameter(30, 3.0, 1, 2, 1, false));
    // With the flag: known ids go to the sub presets whose system preset has them, the rest
    // to the base.
    EXPECT_TRUE(set->SetParameterArray(
        std::map<unsigned int, double>{{12, 8.0}, {13, 9.0}, {40, 1.0}}, 1, 1, 5, true));
    EXPECT_EQ(UserValue(set, 1, 1, 1, 12), 8.0);
    EXPECT_EQ(UserValue(set, 1, 1, 4, 13), 9.0);
    EXPECT_EQ(UserValue(set, 1, 1, 4, 12), -1.0);
    EXPECT_EQ(UserValue(set, 1, 1, 0, 40), 1.0);
    EXPECT_EQ(UserValue(set, 1, 1, 0, 12), -1.0);
    // System presets never change.
    double value = 0.0;
    EXPECT_FALSE(set->GetSystemPreset(1, 1, 1)->GetParameter(30, value));
}

TEST(PresetSet, ClearsParametersAndSetsChunksByMask) {
    LogCapture capture;
    auto set = MakeSet();
    ASSERT_TRUE(set->SetParameter(50, 1.0, 1, 1, 0, false));
    ASSERT_TRUE(set->SetParameter(50, 1.0, 1, 1, 5, false));
    // Masks 1: the sub preset of mask 1 only.
    EXPECT_TRUE(set->ClearParameter(50, 1, 1, 1, false));
    EXPECT_EQ(UserValue(set, 1, 1, 1, 50), -1.0);
    EXPECT_EQ(UserValue(set, 1, 1, 4, 50), 1.0);
    EXPECT_EQ(UserValue(set, 1, 1, 0, 50), 1.0);
    // With the flag the base goes too.
    EXPECT_TRUE(set->ClearParameter(50, 1, 1, 4, true));
    EXPECT_EQ(UserValue(set, 1, 1, 4, 50), -1.0);
    EXPECT_EQ(UserValue(set, 1, 1, 0, 50), -1.0);
    // Masks 2 touch nothing on (1,1).
    EXPECT_FALSE(set->ClearParameterArray({50}, 1, 1, 2, false));
    EXPECT_EQ(capture.Texts(4).back(), "no valid om 1 sm 1 subtypeMasks 0x2");

    const std::vector<char> law = test::LawOnTarget100();
    EXPECT_TRUE(set->SetChunk(1, law, 1, -3, 0));
    std::vector<char> chunk;
    EXPECT_TRUE(set->GetUserPreset(1, 2, 0)->GetChunk(1, chunk));
    EXPECT_EQ(chunk, test::Concat(test::Concat(test::ClearingMarker(), law), law));
    EXPECT_FALSE(set->GetUserPreset(1, 1, 1)->GetChunk(1, chunk));
    EXPECT_TRUE(set->SetChunk(2, {5}, 1, 1, 4));
    EXPECT_TRUE(set->GetUserPreset(1, 1, 4)->GetChunk(2, chunk));
    EXPECT_FALSE(set->GetUserPreset(1, 1, 0)->GetChunk(2, chunk));
    EXPECT_FALSE(set->SetChunk(2, {5}, 1, 2, 4));
    EXPECT_FALSE(set->SetChunk(2, {5}, 3, 3, 0));
    EXPECT_TRUE(capture.Has(4, "invalid outputMode 3 soundMode 3"));
}

TEST(PresetSet, EnablesSubtypesAndTellsHandles) {
    LogCapture capture;
    auto set = MakeSet();
    EXPECT_TRUE(set->SetSubtypeMasksEx(1, 1, 0, 0x7));
    EXPECT_EQ(set->GetEnabledSubtypeMasks(1, 1), 5u);
    EXPECT_TRUE(capture.Has(1,
                            "GetFinalEnabledSubtypeMasks trying to set not-supported tag. Final "
                            "tag [0x00000005]"));
    EXPECT_TRUE(capture.Has(1,
                            "GetFinalEnabledSubtypeMasks tag disable [0x00000000] tag enable "
                            "[0x00000007] tag allowed[0x00000005]. Final tag [0x00000005]"));
    EXPECT_TRUE(capture.Has(1, " SetPresetHandlesSubtypeMasks om = 1, sm = 1"));
    EXPECT_TRUE(set->SetSubtypeMasksEx(1, 1, 1, 0));
    EXPECT_EQ(set->GetEnabledSubtypeMasks(1, 1), 4u);
    EXPECT_EQ(PresetSet::GetFinalEnabledSubtypeMasks(0xF, 0x3, 0x1, 0x8), 0xAu);
    EXPECT_FALSE(set->SetSubtypeMasks(-2, 1, 1));
    EXPECT_TRUE(capture.Has(4, "Not support om = -2 or sm = 1"));
    // An unknown pair gains an entry of 0.
    EXPECT_TRUE(set->SetSubtypeMasks(9, 9, 1));
    EXPECT_EQ(set->GetEnabledSubtypeMasks().count(OmSm{9, 9}), 1u);
    EXPECT_EQ(set->GetEnabledSubtypeMasks(9, 9), 0u);

    // A new handle starts with the enabled masks of its pair; every change reaches all live
    // handles of the pair.
    EXPECT_EQ(set->RequestPresetHandle(3, 3), nullptr);
    EXPECT_TRUE(capture.Has(4, "unsupported om 3 sm 3"));
    auto first = set->RequestPresetHandle(1, 1);
    auto second = set->RequestPresetHandle(1, 1);
    ASSERT_NE(first, nullptr);
    EXPECT_NE(first, second);
    EXPECT_TRUE(capture.Has(1, "RequestPresetHandle 1 1"));
    EXPECT_EQ(first->GetSubtypeMasks(), 4u);
    EXPECT_EQ(first->GetSupportedSubtypeMasks(), 5u);
    RecordingListener firstListener, secondListener;
    first->SetListener(&firstListener);
    second->SetListener(&secondListener);
    first->GetAllParameters();
    second->GetAllParameters();

    capture.Clear();
    EXPECT_TRUE(set->SetParameter(11, 7.0, 1, 1, 1, true));
    EXPECT_EQ(capture.Count("NotifyChanged m_om 1 m_sm 1 m_subTypeMask 0x4 subTypeMasks 0x0"), 2u);
    EXPECT_EQ(firstListener.calls.size(), 1u);
    EXPECT_EQ(secondListener.calls.size(), 1u);
    // Without the flag the masks travel; a disabled sub preset stays silent.
    capture.Clear();
    EXPECT_TRUE(set->SetParameter(11, 7.0, 1, 1, 1, false));
    EXPECT_EQ(capture.Count("NotifyChanged m_om 1 m_sm 1 m_subTypeMask 0x4 subTypeMasks 0x1"), 2u);
    EXPECT_EQ(firstListener.calls.size(), 1u);
    EXPECT_TRUE(set->SetSubtypeMasks(1, 1, 1));
    EXPECT_EQ(first->GetSubtypeMasks(), 1u);
    EXPECT_EQ(second->GetSubtypeMasks(), 1u);
    EXPECT_EQ(firstListener.calls.size(), 2u);
    double value = 0.0;
    EXPECT_TRUE(first->GetParameter(11, value));
    EXPECT_EQ(value, 7.0);

    // A dropped handle is purged on the next walk; the live one is still told.
    second.reset();
    capture.Clear();
    EXPECT_TRUE(set->SetParameter(10, 1.5, 1, 1, 0, false));
    EXPECT_EQ(capture.Count("NotifyChanged m_om 1 m_sm 1 m_subTypeMask 0x1 subTypeMasks 0x0"), 1u);
    EXPECT_TRUE(set->SetSubtypeMasks(1, 1, 5));
    EXPECT_EQ(first->GetSubtypeMasks(), 5u);
    EXPECT_EQ(firstListener.calls.size(), 4u);
    EXPECT_EQ(secondListener.calls.size(), 2u);
    first.reset();
    EXPECT_TRUE(set->SetParameter(10, 1.5, -3, -3, 0, false));
}

/// Counts the blocks it holds in live; a handle made with it keeps its block while any weak
/// pointer to it lasts.
template <typename T>
struct CountingAllocator {
    using value_type = T;
    explicit CountingAllocator(int* count) : live(count) {}
    template <typename U>
    CountingAllocator(const CountingAllocator<U>& other) : live(other.live) {}
    T* allocate(size_t n) {
        ++*live;
        return std::allocator<T>().allocate(n);
    }
    void deallocate(T* p, size_t n) {
        --*live;
        std::allocator<T>().deallocate(p, n);
    }
    bool operator==(const CountingAllocator& other) const { return live == other.live; }
    bool operator!=(const CountingAllocator& other) const { return live != other.live; }
    int* live;
};

struct CountingHandleFactory : IPresetHandleFactory {
    std::shared_ptr<IPresetHandle> Create(uint32_t om, uint32_t sm, SubtypeMasks supported,
                                          const ConstPresetPtrSet& system,
                                          const PresetPtrSet& user) override {
        return std::allocate_shared<PresetHandle>(
            CountingAllocator<PresetHandle>(&live), om, sm, supported, system, user,
            std::make_shared<CLinkLawEntrySerializer>(), std::make_shared<LinkLaws>());
    }
    int live = 0;
};

TEST(PresetSet, ForgetsDroppedHandlesWithoutAWalk) {
    auto factory = std::make_shared<CountingHandleFactory>();
    PresetSet set(SystemPresets(), {}, factory, std::make_shared<PresetFactory>());
    // Mode changes of a host: each takes a handle and drops the one before.
    for (int i = 0; i < 50; ++i) set.RequestPresetHandle(1 + i % 2, 1);
    EXPECT_LE(factory->live, 2);
}

TEST(PresetSet, ReplacesAndClearsPresets) {
    LogCapture capture;
    auto set = MakeSet();
    ASSERT_TRUE(set->SetSubtypeMasks(1, 1, 1));
    ASSERT_TRUE(set->SetParameter(60, 6.0, 1, 1, 0, false));
    auto handle = set->RequestPresetHandle(1, 1);
    RecordingListener listener;
    handle->SetListener(&listener);

    // Clearing user presets: changes fail until the next SetPresets; the live handle keeps
    // the user presets it holds.
    set->ClearUserPresets();
    EXPECT_EQ(listener.calls.size(), 1u);
    EXPECT_TRUE(set->GetUserPresets().empty());
    EXPECT_EQ(set->GetEnabledSubtypeMasks(1, 1), 0u);
    EXPECT_FALSE(set->SetParameter(60, 1.0, 1, 1, 0, false));
    double value = 0.0;
    EXPECT_TRUE(handle->GetParameter(60, value));
    EXPECT_EQ(value, 6.0);

    // New user presets only: twins come from them, system presets stay.
    PresetMap user;
    AddPreset(user, 1, 2, 0, 0, {{61, 1.0}}, {}, true);
    set->SetPresets({}, false, user, true);
    EXPECT_TRUE(
        capture.Has(1, "SetPresets() isSystemPresetValid = false isUserPresetValid = true"));
    EXPECT_EQ(listener.calls.size(), 2u);
    EXPECT_EQ(set->GetUserPresets().size(), 6u);
    EXPECT_EQ(UserValue(set, 1, 2, 0, 61), 1.0);

    // New system presets: everything is rebuilt from them and the last loaded user presets.
    PresetMap system;
    AddPreset(system, 1, 2, 0, 0, {{10, 5.0}});
    AddPreset(system, 3, 3, 0, 0, {{10, 5.0}});
    set->SetPresets(system, true, {}, false);
    EXPECT_EQ(set->GetOmSms(), (std::set<OmSm>{{1, 2}, {3, 3}}));
    EXPECT_EQ(UserValue(set, 1, 2, 0, 61), 1.0);
    EXPECT_EQ(set->GetSupportedSubtypeMasks(1, 1), 0u);
    EXPECT_EQ(listener.calls.size(), 2u);  // (1,1) is gone, nobody to tell
    set->SetPresets({}, true, {}, true);
    EXPECT_FALSE(set->IsPresetsLoaded());
    EXPECT_TRUE(set->GetOmSms().empty());
}

TEST(PresetSet, ReadsDefaultsFromSystemPresetsInMergeOrder) {
    LogCapture capture;
    auto set = MakeSet();
    ASSERT_TRUE(set->SetParameter(10, 99.0, 1, 1, 0, false));  // user values are not read
    std::map<unsigned int, double> out;
    EXPECT_TRUE(set->GetDefaultParametersArray({10, 11, 12, 13}, out, 1, 1, 0, true, true));
    EXPECT_TRUE(capture.Has(1, "GetDefaultParametersArray om 1 sm 1 subTypeMask 0"));
    // Order: base, sub 4 (priority 0), sub 1 (priority 1).
    EXPECT_EQ(out, (std::map<unsigned int, double>{{10, 4.0}, {11, 2.0}, {12, 2.0}, {13, 4.0}}));
    out.clear();
    EXPECT_TRUE(set->GetDefaultParametersArray({10, 11}, out, 1, 1, 0, false, true));
    EXPECT_EQ(out, (std::map<unsigned int, double>{{10, 1.0}, {11, 1.0}}));
    out.clear();
    EXPECT_FALSE(set->GetDefaultParametersArray({11, 99}, out, 1, 1, 1, false, true));
    EXPECT_TRUE(capture.Has(4, "Preset_GetParametersArray: Could not find parameter 99"));
    EXPECT_EQ(out, (std::map<unsigned int, double>{{11, 2.0}}));
    EXPECT_TRUE(set->GetDefaultParametersArray({11, 99}, out, 1, 1, 1, false, false));
    EXPECT_FALSE(set->GetDefaultParametersArray({}, out, 1, 1, 0, false, false));
    EXPECT_FALSE(set->GetDefaultParametersArray({10}, out, 1, 5, 0, false, false));
}

TEST(PresetSet, DumpsSystemThenUserPresets) {
    auto set = MakeSet();
    LogCapture capture(2);
    set->Dump(1, 2);
    const std::vector<std::string> texts = capture.Texts(2);
    ASSERT_EQ(texts.size(), 13u);
    EXPECT_EQ(texts[1], "Showing preset [P12] for OM [1] and SM[2]");
    EXPECT_EQ(texts[6], "---------------------------- User modifications:");
    EXPECT_EQ(capture.Lines()[6].tag, "TESSEL_LOG_Preset");
    capture.Clear();
    set->Dump(4, 4);
    EXPECT_TRUE(capture.Has(4, "invalid outputMode 4 soundMode 4"));
    capture.Clear();
    set->Dump();
    EXPECT_EQ(capture.Count("---------------------Preset::Dump---------------------"), 12u);
    EXPECT_TRUE(std::make_shared<PresetSetFactory>()
                    ->Create(SystemPresets(), {}, std::make_shared<PresetHandleFactory>())
                    ->Validate());
}

}  // namespace
}  // namespace TesselFX
