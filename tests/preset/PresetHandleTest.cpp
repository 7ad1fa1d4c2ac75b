#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <set>
#include <stdexcept>

#include "LogCapture.h"
#include "PresetTestData.h"
#include "preset/PresetHandle.h"
#include "preset/PresetSet.h"
#include "preset/SuperPreset.h"

namespace TesselFX {
namespace {

using test::AddPreset;
using test::LogCapture;
using test::MakeSet;
using test::RecordingListener;
using test::Value;

// Pair (1,1): base {10:1, 11:1, 2821:1} with the law on target 100 (source 0); sub 1
// (priority 2) {10:2, 12:2}; sub 2 (priority 1) {10:3, 12:3, 13:3}. Pair (1,2): base
// {10:5} with the law on target 200 (source 1). Pair (2,2): a sub preset without a base.
struct Fixture {
    Fixture() {
        PresetMap system;
        AddPreset(system, 1, 1, 0, 0, {{10, 1}, {11, 1}, {2821, 1}}, test::LawOnTarget100());
        AddPreset(system, 1, 1, 1, 2, {{10, 2}, {12, 2}});
        AddPreset(system, 1, 1, 2, 1, {{10, 3}, {12, 3}, {13, 3}});
        AddPreset(system, 1, 2, 0, 0, {{10, 5}}, test::LawOnTarget200());
        AddPreset(system, 2, 2, 1, 0, {{10, 5}});
        set = MakeSet(system);
    }
    std::shared_ptr<PresetSet> set;
};

TEST(PresetHandle, MergesByPresetOrderWithUserTwins) {
    LogCapture capture;
    Fixture f;
    auto handle = f.set->RequestPresetHandle(1, 1);
    EXPECT_TRUE(capture.Has(1, "PresetHandle: om = 1, sm = 1"));
    EXPECT_EQ(handle->GetAllParameters(),
              (std::map<unsigned int, double>{{10, 1}, {11, 1}, {2821, 1}}));
    // A user value of the base loses against a later sub preset's system value.
    ASSERT_TRUE(f.set->SetParameter(12, 9.0, 1, 1, 0, false));
    ASSERT_TRUE(f.set->SetParameter(11, 8.0, 1, 1, 0, false));
    ASSERT_TRUE(f.set->SetParameter(13, 7.0, 1, 1, 2, false));
    EXPECT_TRUE(handle->SetSubtypeMasks(3));
    // Order: base, sub 2 (priority 1), sub 1 (priority 2); user twin right after its system.
    EXPECT_EQ(Value(handle, 10), 2.0);
    EXPECT_EQ(Value(handle, 11), 8.0);
    EXPECT_EQ(Value(handle, 12), 2.0);
    EXPECT_EQ(Value(handle, 13), 7.0);
    const auto both = handle->GetAllParameters();
    // Enabling bit 1 then bit 0 or the reverse gives the same view.
    auto other = f.set->RequestPresetHandle(1, 1);
    other->SetSubtypeMasksEx(0, 2);
    other->SetSubtypeMasksEx(0, 1);
    EXPECT_EQ(other->GetAllParameters(), both);
    // Unsupported bits are dropped; disabling one leaves the other.
    EXPECT_TRUE(handle->SetSubtypeMasksEx(1, 0x10));
    EXPECT_TRUE(capture.Has(
        1, "SetSubtypeMasks om [1] sm [1] tag disable [0x00000001] tag enable [0x00000010]"));
    EXPECT_EQ(handle->GetSubtypeMasks(), 2u);
    EXPECT_EQ(Value(handle, 10), 3.0);
    EXPECT_EQ(handle->GetParameterCount(), 5u);
    EXPECT_TRUE(handle->HasParameter(13));
    EXPECT_FALSE(handle->HasParameter(99));
}

TEST(PresetHandle, ReadsArraysWithTheirLogs) {
    LogCapture capture;
    Fixture f;
    auto handle = f.set->RequestPresetHandle(1, 2);
    std::vector<double> values{4.0, 4.0};
    EXPECT_FALSE(handle->GetParameterArray({10, 99, 98}, values, true));
    EXPECT_EQ(values, (std::vector<double>{5.0, 4.0, 0.0}));
    EXPECT_TRUE(capture.Has(1, "GetParameterArray om 1 sm 2 subTypeMask 0x0"));
    EXPECT_TRUE(capture.Has(3, "GetParameterArray: Could not find parameter 99"));
    EXPECT_TRUE(capture.Has(1, "GetParameterArray ret False"));
    EXPECT_TRUE(handle->GetParameterArray({10, 99}, values, false));
    EXPECT_TRUE(capture.Has(1, "GetParameterArray ret True"));
    EXPECT_FALSE(handle->GetParameterArray({}, values, false));
    EXPECT_TRUE(handle->GetParameterArray({}, values, true));
    EXPECT_TRUE(values.empty());
    std::vector<unsigned int> ids;
    EXPECT_TRUE(handle->GetAllParameters(ids, values));
    EXPECT_EQ(ids, std::vector<unsigned int>{10});
    EXPECT_EQ(values, std::vector<double>{5.0});
    EXPECT_TRUE(capture.Has(1, "GetAllParameters om 1 sm 2 subTypeMask 0x0"));
    capture.Clear();
    handle->Dump();
    EXPECT_EQ(capture.Texts(2),
              std::vector<std::string>{"OutputMode 1 SoundMode 2 SupportedSubTypes 0x0 Curr\x1B"
                                       "ntSubTypes 0x0"});
}

// Active and simulated link laws are checked on the wire by the end-to-end tests.
TEST(PresetHandle, LinkLawStatesAndInactiveLawsKeepSourcesWithoutTelling) {
    LogCapture capture;
    Fixture f;
    auto handle = f.set->RequestPresetHandle(1, 1);
    RecordingListener listener;
    handle->SetListener(&listener);
    EXPECT_EQ(handle->GetLinkLawSourceToMasterMap(),
              (std::map<unsigned int, unsigned int>{{0, 2800}}));

    EXPECT_EQ(Value(handle, 100), -1.0);  // active without a source value
    EXPECT_TRUE(capture.Has(1, "LinkLaws is active"));
    ASSERT_TRUE(f.set->SetParameter(2820, 1.0, 1, 1, 0, false));
    Value(handle, 100);
    EXPECT_TRUE(capture.Has(1, "LinkLaws is simulation"));

    // Inactive: no notification for a source change, but the value is kept.
    ASSERT_TRUE(f.set->SetParameter(2821, 0.0, 1, 1, 0, false));
    EXPECT_EQ(Value(handle, 100), -1.0);
    EXPECT_TRUE(capture.Has(1, "LinkLaws is inactive"));
    const size_t calls = listener.calls.size();
    EXPECT_TRUE(handle->SetLinkLawValue(0, 100.0));
    EXPECT_TRUE(capture.Has(1, "PresetHandle::SetLinkLawValue 0 100.000000"));
    EXPECT_EQ(listener.calls.size(), calls);
    EXPECT_EQ(handle->GetLinkLawSources(), (std::map<unsigned int, double>{{0, 100.0}}));
    EXPECT_TRUE(handle->ClearLinkLawSource(0));
    EXPECT_TRUE(capture.Has(1, "PresetHandle::ClearLinkLawSource 0"));
    EXPECT_EQ(listener.calls.size(), calls + 1);
    EXPECT_TRUE(handle->GetLinkLawSources().empty());

    // Absent 2821: inactive whatever the sources hold.
    auto plain = f.set->RequestPresetHandle(1, 2);
    plain->SetLinkLawValue(1, 3.0);
    EXPECT_EQ(Value(plain, 200), -1.0);
    EXPECT_EQ(Value(plain, 2801), -1.0);
}

TEST(PresetHandle, UserLawsReplaceSystemLawsAndServeChunkOne) {
    LogCapture capture;
    Fixture f;
    auto handle = f.set->RequestPresetHandle(1, 1);
    std::vector<char> chunk{1, 2, 3};
    EXPECT_TRUE(handle->GetChunk(1, chunk));
    EXPECT_EQ(chunk, test::LawOnTarget100());
    EXPECT_FALSE(handle->GetChunk(2, chunk));
    EXPECT_TRUE(capture.Has(4, "support index as ZBAC_LINKLAWS only"));
    // The laws are serialized, with the serializer's lines, only when they changed: a merge
    // that gives the same laws reads the bytes kept.
    ASSERT_TRUE(handle->SetSubtypeMasks(1));
    capture.Clear();
    EXPECT_TRUE(handle->GetChunk(1, chunk));
    EXPECT_EQ(chunk, test::LawOnTarget100());
    EXPECT_FALSE(capture.HasFragment("CLinkLawEntrySerializer"));

    // The user twin's marker wipes the system law of the base.
    ASSERT_TRUE(f.set->SetChunk(1, test::LawOnTarget200(), 1, 1, 0));
    const std::vector<LinkLawEntry> entries = handle->GetLinkLawEntries();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].TargetParamId, 200u);
    capture.Clear();
    EXPECT_TRUE(handle->GetChunk(1, chunk));
    EXPECT_EQ(chunk, test::LawOnTarget200());
    EXPECT_EQ(capture.Texts(3), (std::vector<std::string>{"CLinkLawEntrySerializer::Serialize.",
                                                          "CLinkLawEntrySerializer::Clear."}));
    handle->SetLinkLawValue(1, 1.0);
    EXPECT_EQ(Value(handle, 200), 7.0);
    EXPECT_EQ(Value(handle, 100), -1.0);

    // A pair without laws serves an empty chunk.
    auto plain = f.set->RequestPresetHandle(2, 2);
    EXPECT_TRUE(plain->GetChunk(1, chunk));
    EXPECT_TRUE(chunk.empty());
    EXPECT_TRUE(plain->GetLinkLawEntries().empty());
}

TEST(PresetHandle, SuperPresetLiesOverEveryPair) {
    LogCapture capture;
    Fixture f;
    auto super = std::make_shared<SuperPreset>();
    auto handle = f.set->RequestPresetHandle(1, 1);
    RecordingListener listener;
    handle->SetListener(&listener);
    handle->SetSuperPreset(super);  // empty: no notification
    EXPECT_TRUE(listener.calls.empty());
    EXPECT_EQ(Value(handle, 10), 1.0);

    // A super preset change merges only the super preset stage: a user preset changed
    // behind the set's back is not seen.
    f.set->GetUserPreset(1, 1, 0)->SetParameter(10, 42.0);
    super->SetParameter(11, 9.0);
    ASSERT_EQ(listener.calls.size(), 1u);
    EXPECT_EQ(listener.calls[0], (OmSm{1, 1}));
    EXPECT_EQ(Value(handle, 11), 9.0);
    EXPECT_EQ(Value(handle, 10), 1.0);

    // Its laws replace all below; the mode change keeps them.
    super->SetChunk(1, test::LawOnTarget200());
    EXPECT_EQ(listener.calls.size(), 2u);
    std::vector<char> chunk;
    ASSERT_TRUE(handle->GetChunk(1, chunk));
    EXPECT_EQ(chunk, test::LawOnTarget200());
    ASSERT_EQ(handle->GetLinkLawEntries().size(), 1u);
    handle->SetLinkLawValue(1, 1.0);
    EXPECT_EQ(Value(handle, 200), 7.0);

    handle.reset();  // drops its listener from the super preset
    super->SetParameter(12, 1.0);
    EXPECT_EQ(listener.calls.size(), 3u);
    auto next = f.set->RequestPresetHandle(1, 2);
    RecordingListener nextListener;
    next->SetListener(&nextListener);
    next->SetSuperPreset(super);
    EXPECT_EQ(nextListener.calls.size(), 1u);
    EXPECT_EQ(Value(next, 11), 9.0);
    EXPECT_EQ(Value(next, 10), 5.0);
    EXPECT_EQ(next->GetLinkLawEntries().size(), 1u);
    next->SetSuperPreset(super);
    EXPECT_EQ(nextListener.calls.size(), 1u);
    next->SetSuperPreset(std::make_shared<SuperPreset>());
    super->SetParameter(12, 2.0);
    EXPECT_EQ(nextListener.calls.size(), 1u);
}

// Drops another handle when told of a change.
class DroppingListener : public IPresetHandleListener {
  public:
    void OnPresetHandleChanged(unsigned int, unsigned int) override {
        ++calls;
        other->reset();
    }
    std::shared_ptr<IPresetHandle>* other = nullptr;
    int calls = 0;
};

TEST(PresetHandle, AHandleDroppedWhileTheSuperPresetTellsIsNotTold) {
    Fixture f;
    auto super = std::make_shared<SuperPreset>();
    std::shared_ptr<IPresetHandle> first = f.set->RequestPresetHandle(1, 1);
    std::shared_ptr<IPresetHandle> second = f.set->RequestPresetHandle(1, 2);
    DroppingListener firstListener;
    DroppingListener secondListener;
    firstListener.other = &second;
    secondListener.other = &first;
    first->SetListener(&firstListener);
    second->SetListener(&secondListener);
    first->SetSuperPreset(super);
    second->SetSuperPreset(super);

    // Whichever is told first drops the other, which is then skipped.
    super->SetParameter(11, 9.0);
    EXPECT_EQ(firstListener.calls + secondListener.calls, 1);
    ASSERT_NE(first == nullptr, second == nullptr);
    const std::shared_ptr<IPresetHandle>& kept = first ? first : second;
    EXPECT_EQ(Value(kept, 11), 9.0);
}

TEST(PresetHandle, NotificationsFollowTheEnabledMask) {
    LogCapture capture;
    Fixture f;
    auto handle = f.set->RequestPresetHandle(1, 1);
    RecordingListener listener;
    handle->SetListener(&listener);
    handle->SetSubtypeMasks(1);
    EXPECT_EQ(listener.calls.size(), 1u);
    handle->SetSubtypeMasks(1);  // no change, no call
    EXPECT_EQ(listener.calls.size(), 1u);
    handle->NotifyChanged(2);
    EXPECT_EQ(listener.calls.size(), 1u);
    handle->NotifyChanged(3);
    handle->NotifyChanged(0);
    EXPECT_EQ(listener.calls.size(), 3u);
    EXPECT_TRUE(capture.Has(1, "NotifyChanged m_om 1 m_sm 1 m_subTypeMask 0x1 subTypeMasks 0x2"));
}

TEST(PresetHandle, PresetsMissingFromTheFileAreLeftOutOfTheMerge) {
    // A pair without a base preset made the merge throw std::out_of_range, out through every
    // exported call that reads the handle.
    LogCapture capture;
    Fixture f;
    auto handle = f.set->RequestPresetHandle(2, 2);
    handle->SetSubtypeMasks(1);
    EXPECT_EQ(handle->GetAllParameters(), (std::map<unsigned int, double>{{10, 5}}));
    EXPECT_TRUE(capture.Has(4, "MergePresets om 2 sm 2 subTypeMask 0x0: no preset"));
    EXPECT_FALSE(capture.HasFragment("subTypeMask 0x1: no preset"));
}

/// Equal keys and equal bits of every value (a NaN equals itself here).
bool SameParameters(const std::map<unsigned int, double>& a,
                    const std::map<unsigned int, double>& b) {
    if (a.size() != b.size()) return false;
    for (auto x = a.begin(), y = b.begin(); x != a.end(); ++x, ++y) {
        if (x->first != y->first || std::memcmp(&x->second, &y->second, sizeof(double)) != 0) {
            return false;
        }
    }
    return true;
}

TEST(PresetHandle, ChangesOfTheSuperPresetAndSourcesAgreeWithAFullMerge) {
    // A handle that follows changes one at a time must read as a handle that merges all anew,
    // and the changes it reports must cover every parameter that moved.
    LogCapture capture;
    Fixture f;
    auto super = std::make_shared<SuperPreset>();
    auto handle = f.set->RequestPresetHandle(1, 1);
    handle->SetSuperPreset(super);
    std::vector<unsigned int> ids;
    EXPECT_FALSE(handle->TakeParameterChanges(ids));
    std::map<unsigned int, double> known = handle->GetAllParameters();
    const unsigned int parameterIds[] = {10, 11, 12, 13, 100, 200, 2800, 2801, 2820, 2821, 50};
    const double nan = std::numeric_limits<double>::quiet_NaN();
    uint32_t seed = 11;
    for (int step = 0; step < 400; ++step) {
        seed = seed * 1103515245u + 12345u;
        const unsigned int id = parameterIds[(seed >> 8) % 11];
        const double value = (seed >> 20) % 9 == 0 ? nan : static_cast<double>((seed >> 16) % 3);
        switch ((seed >> 24) % 10) {
            case 0:
            case 1:
            case 2:
                super->SetParameter(id, value);
                break;
            case 3:
                super->ClearParameter(id);
                break;
            case 4:
                handle->SetLinkLawValue((seed >> 12) % 2, value);
                break;
            case 5:
                handle->ClearLinkLawSource((seed >> 12) % 2);
                break;
            case 6:
                handle->SetSubtypeMasks((seed >> 12) % 4);
                break;
            case 7:
                f.set->SetParameter(id, value, 1, 1, (seed >> 12) % 3, false);
                break;
            case 8:
                super->SetChunk(1,
                                (seed >> 12) % 2 ? test::LawOnTarget200() : test::LawOnTarget100());
                break;
            default:
                super->SetParameterArray({{id, value}, {12, 1.0}});
                break;
        }
        auto fresh = f.set->RequestPresetHandle(1, 1);
        fresh->SetSuperPreset(super);
        fresh->SetSubtypeMasks(handle->GetSubtypeMasks());
        for (const auto& source : handle->GetLinkLawSources()) {
            fresh->SetLinkLawValue(source.first, source.second);
        }
        const std::map<unsigned int, double> now = handle->GetAllParameters();
        ASSERT_TRUE(SameParameters(now, fresh->GetAllParameters())) << "step " << step;
        const ParameterList* list = handle->GetFinalParameterList();
        ASSERT_TRUE(SameParameters(now, ToParameterMap(*list))) << "step " << step;
        if (handle->TakeParameterChanges(ids)) {
            std::set<unsigned int> moved;
            for (const auto& parameter : known) moved.insert(parameter.first);
            for (const auto& parameter : now) moved.insert(parameter.first);
            for (unsigned int changed : ids) moved.erase(changed);
            for (unsigned int unchanged : moved) {
                const auto before = known.find(unchanged);
                const auto after = now.find(unchanged);
                ASSERT_TRUE(before != known.end() && after != now.end() &&
                            std::memcmp(&before->second, &after->second, sizeof(double)) == 0)
                    << "step " << step << " parameter " << unchanged;
            }
        }
        known = now;
    }
}

}  // namespace
}  // namespace TesselFX
