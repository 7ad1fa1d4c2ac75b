#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "preset/IPresetFactory.h"
#include "preset/IPresetHandleFactory.h"
#include "preset/IPresetSet.h"

namespace TesselFX {

/// Pairs each system preset with a user preset of the same key (all changes go into user
/// presets), keeps the supported and enabled subtypes per mode pair, and hands out handles,
/// which it holds weakly and tells of changes; dead handles are purged on the next walk.
/// No locks: callers hold the control manager's lock.
class PresetSet : public IPresetSet {
  public:
    PresetSet(const PresetMap& systemPresets, const PresetMap& userPresets,
              const std::shared_ptr<IPresetHandleFactory>& presetHandleFactory,
              const std::shared_ptr<IPresetFactory>& presetFactory);
    ~PresetSet() override = default;

    void SetPresets(const PresetMap& systemPresets, bool isSystemPresetValid,
                    const PresetMap& userPresets, bool isUserPresetValid) override;
    void SetEnabledSubtypeMasks(const std::map<OmSm, SubtypeMasks>& masks) override;
    ConstPresetPtrSet GetSystemPresets() const override;
    PresetPtrSet GetUserPresets() const override;
    std::shared_ptr<const IPreset> GetSystemPreset(unsigned int om, unsigned int sm,
                                                   unsigned int subTypeMask) const override;
    std::shared_ptr<IPreset> GetUserPreset(unsigned int om, unsigned int sm,
                                           unsigned int subTypeMask) const override;
    bool SetParameter(unsigned int id, double value, int om, int sm, SubtypeMasks masks,
                      bool addNonexistingParamsInSubPresetToBasePreset) override;
    bool SetParameterArray(const std::vector<unsigned int>& ids, const std::vector<double>& values,
                           int om, int sm, SubtypeMasks masks,
                           bool addNonexistingParamsInSubPresetToBasePreset) override;
    bool SetParameterArray(const std::map<unsigned int, double>& parameters, int om, int sm,
                           SubtypeMasks masks,
                           bool addNonexistingParamsInSubPresetToBasePreset) override;
    bool SetChunk(unsigned int index, const std::vector<char>& data, int om, int sm,
                  SubtypeMasks masks) override;
    std::shared_ptr<IPresetHandle> RequestPresetHandle(unsigned int om, unsigned int sm) override;
    bool ClearParameter(unsigned int id, int om, int sm, SubtypeMasks masks,
                        bool addNonexistingParamsInSubPresetToBasePreset) override;
    bool ClearParameterArray(const std::vector<unsigned int>& ids, int om, int sm,
                             SubtypeMasks masks,
                             bool addNonexistingParamsInSubPresetToBasePreset) override;
    void ClearUserPresets() override;
    bool IsSupported(unsigned int om, unsigned int sm) const override;
    bool IsDefaultSoundMode(unsigned int om, unsigned int sm) const override;
    bool Validate() override;
    void Dump() const override;
    void Dump(unsigned int om, unsigned int sm) const override;
    SubtypeMasks GetSupportedSubtypeMasks(unsigned int om, unsigned int sm) const override;
    std::map<OmSm, SubtypeMasks> GetSupportedSubtypeMasks() const override;
    std::map<OmSm, SubtypeMasks> GetEnabledSubtypeMasks() const override;
    SubtypeMasks GetEnabledSubtypeMasks(unsigned int om, unsigned int sm) const override;
    std::set<unsigned int> GetOutputModes() const override;
    std::set<unsigned int> GetSoundModes() const override;
    std::set<OmSm> GetOmSms() const override;
    bool SetSubtypeMasks(int om, int sm, SubtypeMasks masks) override;
    bool SetSubtypeMasksEx(int om, int sm, SubtypeMasks tagDisable,
                           SubtypeMasks tagEnable) override;
    bool GetDefaultParametersArray(const std::vector<unsigned int>& ids,
                                   std::map<unsigned int, double>& out, unsigned int om,
                                   unsigned int sm, SubtypeMasks subTypeMask,
                                   bool allSupportedSubtypes, bool mustFindAll) const override;
    bool IsPresetsLoaded() const override;
    void SetTags(const std::map<unsigned int, std::string>& tags) override;
    std::map<unsigned int, std::string> GetTags() const override;

    /// ((current & ~tagDisable) | tagEnable) & allowed: unsupported bits are dropped.
    static SubtypeMasks GetFinalEnabledSubtypeMasks(SubtypeMasks allowed, SubtypeMasks current,
                                                    SubtypeMasks tagDisable,
                                                    SubtypeMasks tagEnable);
    /// The pairs an operation touches; -3 stands for every known mode.
    std::set<OmSm> ExpandOmSm(int om, int sm) const;

  private:
    using WeakHandleSet =
        std::set<std::weak_ptr<IPresetHandle>, std::owner_less<std::weak_ptr<IPresetHandle>>>;

    void InitPresetSet();
    /// Runs change on each pair of the expansion; with at least one success the handles of
    /// all those pairs are told with notifyMasks, else the failure is logged.
    template <typename Change>
    bool ChangePairs(int om, int sm, SubtypeMasks masks, SubtypeMasks notifyMasks, Change change);
    bool SetParameterArray(const std::map<unsigned int, double>& parameters, const OmSm& omSm,
                           SubtypeMasks masks, bool addNonexistingParamsInSubPresetToBasePreset);
    bool SetParameterArrayBasePreset(const std::map<unsigned int, double>& parameters,
                                     const OmSm& omSm);
    bool SetParameterArraySubPreset(const std::map<unsigned int, double>& parameters,
                                    const OmSm& omSm, SubtypeMasks masks,
                                    bool addNonexistingParamsInSubPresetToBasePreset);
    bool ClearParameterArray(const std::vector<unsigned int>& ids, const OmSm& omSm,
                             SubtypeMasks masks, bool addNonexistingParamsInSubPresetToBasePreset);
    bool SetChunk(unsigned int index, const std::vector<char>& data, const OmSm& omSm,
                  SubtypeMasks masks);
    bool CheckValid(const OmSm& omSm) const;
    PresetPtrSet UserPresetsOf(const OmSm& omSm) const;
    /// Calls action on each live handle of the pair and purges the dead ones.
    template <typename Action>
    void ForEachPresetHandle(const OmSm& omSm, Action action);
    /// Forgets the dead handles of the pair.
    void PurgeDeadPresetHandles(const OmSm& omSm);
    void SetPresetHandlesSubtypeMasks(const OmSm& omSm);
    void NotifyPresetHandlesChanged(const std::set<OmSm>& omSms, SubtypeMasks masks);
    void ClearAll();
    void ClearSystemPresetsWithoutNotification();
    void ClearUserPresetsWithoutNotification();

    std::map<OmSm, ConstPresetPtrSet> m_systemPresetsByOmSm;
    PresetMap m_systemPresets;
    PresetMap m_loadedUserPresets;
    std::map<OmSm, PresetPtrSet> m_userPresetsByOmSm;
    std::map<unsigned int, PresetPtrSet> m_userPresetsByOm;
    std::map<unsigned int, PresetPtrSet> m_userPresetsBySm;
    std::map<OmSmSubtypeMask, std::shared_ptr<IPreset>> m_userPresets;
    std::map<OmSm, SubtypeMasks> m_supportedSubtypeMasks;
    std::map<OmSm, SubtypeMasks> m_enabledSubtypeMasks;
    std::map<OmSm, WeakHandleSet> m_presetHandles;
    std::map<unsigned int, WeakHandleSet> m_presetHandlesByOm;
    std::map<unsigned int, WeakHandleSet> m_presetHandlesBySm;
    std::map<unsigned int, std::string> m_tags;
    std::set<unsigned int> m_outputModes;
    std::set<unsigned int> m_soundModes;
    std::set<OmSm> m_omSms;
    std::shared_ptr<IPresetHandleFactory> m_presetHandleFactory;
    std::shared_ptr<IPresetFactory> m_presetFactory;
    bool m_isPresetsLoaded = false;
};

}  // namespace TesselFX
