#pragma once

#include <map>
#include <memory>
#include <vector>

#include "preset/CLinkLawEntrySerializer.h"
#include "preset/IPreset.h"
#include "preset/IPresetChangeListener.h"
#include "preset/IPresetHandle.h"
#include "preset/LinkLaws.h"
#include "preset/ParameterChangeRecord.h"

namespace TesselFX {

/// The merged view of one mode pair. The final parameters are computed on the first read
/// after a change, in three stages: the presets (system, then user twin, for the base and
/// each enabled subtype in preset order), the super preset over them, the link laws over all.
/// A change of the presets or the subtypes merges everything anew; a change of the super
/// preset's parameters or of a link-law source updates only the parameters it touches, and
/// those are recorded for TakeParameterChanges. No locks; notifications to the listener run
/// inside the changing call. A base or enabled subtype without a preset (a malformed file) is
/// left out of the merge with an error line.
class PresetHandle : public IPresetHandle {
  public:
    PresetHandle(uint32_t om, uint32_t sm, SubtypeMasks supportedSubtypeMasks,
                 const ConstPresetPtrSet& systemPresets, const PresetPtrSet& userPresets,
                 const std::shared_ptr<CLinkLawEntrySerializer>& serializer,
                 const std::shared_ptr<LinkLaws>& linkLaws);
    ~PresetHandle() override;
    PresetHandle(const PresetHandle&) = delete;
    PresetHandle& operator=(const PresetHandle&) = delete;

    uint32_t GetOutputMode() const override;
    uint32_t GetSoundMode() const override;
    bool GetParameter(unsigned int id, double& value) override;
    bool GetParameterArray(const std::vector<unsigned int>& ids, std::vector<double>& values,
                           bool mustFindAll) override;
    bool GetAllParameters(std::vector<unsigned int>& ids, std::vector<double>& values) override;
    std::map<unsigned int, double> GetAllParameters() override;
    std::map<unsigned int, double> GetPresetParameters() override;
    uint32_t GetParameterCount() override;
    bool HasParameter(unsigned int id) override;
    bool SetSubtypeMasks(SubtypeMasks masks) override;
    bool SetSubtypeMasksEx(SubtypeMasks tagDisable, SubtypeMasks tagEnable) override;
    SubtypeMasks GetSubtypeMasks() const override;
    SubtypeMasks GetSupportedSubtypeMasks() const override;
    bool GetChunk(int index, std::vector<char>& data) override;
    void Dump() override;
    void NotifyChanged(SubtypeMasks subTypeMasks) override;
    void SetListener(IPresetHandleListener* listener) override;
    std::map<unsigned int, unsigned int> GetLinkLawSourceToMasterMap() override;
    bool SetLinkLawValue(unsigned int sourceId, double value) override;
    bool ClearLinkLawSource(unsigned int sourceId) override;
    std::map<unsigned int, double> GetLinkLawSources() override;
    bool IsLinkLawSimulation() override;
    std::vector<LinkLawEntry> GetLinkLawEntries() override;
    void SetSuperPreset(const std::shared_ptr<SuperPreset>& superPreset) override;
    const ParameterList* GetFinalParameterList() override;
    bool TakeParameterChanges(std::vector<unsigned int>& ids) override;

  private:
    /// Marks the super preset stage stale and tells the handle's listener. Any change but one
    /// of the parameters alone also merges the super preset's link laws anew.
    class SuperPresetChangeListener : public IPresetChangeListener {
      public:
        explicit SuperPresetChangeListener(PresetHandle* handle) : m_handle(handle) {}
        void OnAllChanged() override { Changed(true); }
        void OnParametersChanged() override { Changed(false); }
        void OnIdentityChanged() override { Changed(true); }
        void OnChunksChanged() override { Changed(true); }
        void OnLinkLawsChanged() override { Changed(true); }

      private:
        void Changed(bool linkLaws);
        PresetHandle* m_handle;
    };

    void RefreshIfChanged();
    void Refresh();
    void MergePresets();
    /// Lays the super preset over the presets: all of it after a merge (full), else only the
    /// parameters that differ from the last merged ones, recorded in changed. True when the
    /// link-law entries were merged anew.
    bool MergeSuperPreset(bool full, std::vector<unsigned int>& changed);
    /// Lays the link-law results over the preset parameters into the final ones: all of them
    /// after a merge (full), else the parameters in presetChanged and those the results touch.
    void ApplyLinkLaws(bool full, bool entriesMerged,
                       const std::vector<unsigned int>& presetChanged);
    /// The masters and targets that the link laws lay over the parameters, or nothing when
    /// they are inactive or in simulation.
    ParameterList ComputeLinkLawParameters(bool apply);
    /// The final value of one parameter from the preset stage and the link-law results.
    void UpdateFinalParameter(unsigned int id);
    void RecordChanged(unsigned int id);
    void NotifyListenerChanged();
    /// The parameters of the presets and the super preset: the merged ones while the super
    /// preset gave none since the merge.
    const ParameterList& PresetParameters() const {
        return m_presetIsMerged ? m_mergedParameters : m_presetParameters;
    }
    bool IsLinkLawsActive(const ParameterList& parameters) const;
    bool IsSimulation(const ParameterList& parameters) const;

    const uint32_t m_om;
    const uint32_t m_sm;
    const SubtypeMasks m_supportedSubtypeMasks;
    std::map<OmSmSubtypeMask, std::shared_ptr<const IPreset>> m_systemPresets;
    std::map<OmSmSubtypeMask, std::shared_ptr<IPreset>> m_userPresets;
    std::shared_ptr<CLinkLawEntrySerializer> m_serializer;
    std::shared_ptr<LinkLaws> m_linkLaws;
    SubtypeMasks m_subTypeMask = 0;
    IPresetHandleListener* m_listener = nullptr;
    bool m_presetsChanged = true;
    bool m_superPresetChanged = false;
    bool m_linkLawsChanged = false;
    ParameterList m_mergedParameters;
    std::vector<LinkLawEntry> m_mergedLinkLawEntries;
    ParameterList m_presetParameters;
    /// m_presetParameters is not kept: it would equal m_mergedParameters.
    bool m_presetIsMerged = false;
    std::vector<LinkLawEntry> m_presetLinkLawEntries;
    ParameterList m_finalParameters;
    std::shared_ptr<SuperPreset> m_superPreset;
    std::shared_ptr<SuperPresetChangeListener> m_superPresetListener;
    /// The super preset's parameters as last laid over the presets.
    ParameterList m_superParameters;
    /// The super preset's link laws changed since the last merge of the entries.
    bool m_superLinkLawsChanged = false;
    /// What the link laws laid over the preset parameters at the last refresh.
    ParameterList m_linkLawParameters;
    bool m_linkLawsApplied = false;
    /// Evaluating the entries logs (an unknown method or a source without a value), so they
    /// are evaluated on every refresh, as a full recomputation would.
    bool m_linkLawEvaluationLogs = false;
    /// The entries as last serialized, and their bytes: chunk 1 while the entries stay so.
    std::vector<LinkLawEntry> m_serializedLinkLawEntries;
    std::vector<char> m_linkLawChunk;
    /// Changes of the final parameters since the last TakeParameterChanges.
    ParameterChangeRecord m_changes;
};

}  // namespace TesselFX
