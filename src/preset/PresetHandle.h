#pragma once

#include <map>
#include <memory>
#include <vector>

#include "preset/CLinkLawEntrySerializer.h"
#include "preset/IPreset.h"
#include "preset/IPresetChangeListener.h"
#include "preset/IPresetHandle.h"
#include "preset/LinkLaws.h"

namespace TesselFX {

/// The merged view of one mode pair. The final map is computed on the first read after a
/// change, in three stages: the presets (system, then user twin, for the base and each
/// enabled subtype in preset order), the super preset over them, the link laws over all.
/// No locks; notifications to the listener run inside the changing call. A base or enabled
/// subtype without a preset (a malformed file) is left out of the merge with an error line.
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

  private:
    /// Marks the super preset stage stale and tells the handle's listener.
    class SuperPresetChangeListener : public IPresetChangeListener {
      public:
        explicit SuperPresetChangeListener(PresetHandle* handle) : m_handle(handle) {}
        void OnAllChanged() override { Changed(); }
        void OnParametersChanged() override { Changed(); }
        void OnIdentityChanged() override { Changed(); }
        void OnChunksChanged() override { Changed(); }
        void OnLinkLawsChanged() override { Changed(); }

      private:
        void Changed();
        PresetHandle* m_handle;
    };

    void RefreshIfChanged();
    void Refresh();
    void MergePresets();
    void MergeSuperPreset();
    void ApplyLinkLaws();
    void NotifyListenerChanged();
    bool IsLinkLawsActive(const std::map<unsigned int, double>& parameters) const;
    bool IsSimulation(const std::map<unsigned int, double>& parameters) const;

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
    std::map<unsigned int, double> m_mergedParameters;
    std::vector<LinkLawEntry> m_mergedLinkLawEntries;
    std::map<unsigned int, double> m_presetParameters;
    std::vector<LinkLawEntry> m_presetLinkLawEntries;
    std::map<unsigned int, double> m_finalParameters;
    std::shared_ptr<SuperPreset> m_superPreset;
    std::shared_ptr<SuperPresetChangeListener> m_superPresetListener;
};

}  // namespace TesselFX
