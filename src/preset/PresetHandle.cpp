#include "preset/PresetHandle.h"

#include <stdexcept>

#include "log/TesselLog.h"
#include "preset/IPresetHandleListener.h"
#include "preset/ParameterMaps.h"
#include "preset/PresetOrder.h"
#include "preset/PresetSet.h"
#include "preset/SuperPreset.h"

namespace TesselFX {

namespace {

template <typename Map>
const typename Map::mapped_type& At(const Map& map, const typename Map::key_type& key) {
    const auto found = map.find(key);
    if (found == map.end()) throw std::out_of_range("map::at:  key not found");
    return found->second;
}

}  // namespace

void PresetHandle::SuperPresetChangeListener::Changed() {
    m_handle->m_superPresetChanged = true;
    m_handle->NotifyListenerChanged();
}

PresetHandle::PresetHandle(uint32_t om, uint32_t sm, SubtypeMasks supportedSubtypeMasks,
                           const ConstPresetPtrSet& systemPresets, const PresetPtrSet& userPresets,
                           const std::shared_ptr<CLinkLawEntrySerializer>& serializer,
                           const std::shared_ptr<LinkLaws>& linkLaws)
    : m_om(om),
      m_sm(sm),
      m_supportedSubtypeMasks(supportedSubtypeMasks),
      m_serializer(serializer),
      m_linkLaws(linkLaws),
      m_superPresetListener(std::make_shared<SuperPresetChangeListener>(this)) {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "%s: om = %d, sm = %d", "PresetHandle", om, sm);
    for (const auto& preset : systemPresets) {
        m_systemPresets[{preset->GetOutputMode(), preset->GetSoundMode(),
                         preset->GetSubtypeMask()}] = preset;
    }
    for (const auto& preset : userPresets) {
        m_userPresets[{preset->GetOutputMode(), preset->GetSoundMode(), preset->GetSubtypeMask()}] =
            preset;
    }
}

PresetHandle::~PresetHandle() {
    if (m_superPreset) m_superPreset->RemoveListener(m_superPresetListener);
}

uint32_t PresetHandle::GetOutputMode() const { return m_om; }

uint32_t PresetHandle::GetSoundMode() const { return m_sm; }

void PresetHandle::RefreshIfChanged() {
    if (m_presetsChanged || m_superPresetChanged || m_linkLawsChanged) Refresh();
}

void PresetHandle::Refresh() {
    if (m_presetsChanged) MergePresets();
    if (m_presetsChanged || m_superPresetChanged) {
        m_presetParameters = m_mergedParameters;
        m_presetLinkLawEntries = m_mergedLinkLawEntries;
        if (m_superPreset) MergeSuperPreset();
    }
    ApplyLinkLaws();
    m_presetsChanged = false;
    m_superPresetChanged = false;
    m_linkLawsChanged = false;
}

void PresetHandle::MergePresets() {
    std::vector<std::shared_ptr<const IPreset>> systemList;
    std::vector<std::shared_ptr<IPreset>> userList;
    systemList.push_back(At(m_systemPresets, OmSmSubtypeMask{m_om, m_sm, 0}));
    userList.push_back(At(m_userPresets, OmSmSubtypeMask{m_om, m_sm, 0}));
    for (uint32_t bit = 0; bit < 32; ++bit) {
        const SubtypeMasks mask = 1u << bit;
        if ((m_subTypeMask & mask) == 0) continue;
        systemList.push_back(At(m_systemPresets, OmSmSubtypeMask{m_om, m_sm, mask}));
        userList.push_back(At(m_userPresets, OmSmSubtypeMask{m_om, m_sm, mask}));
    }
    SortByPresetOrder(systemList);
    SortByPresetOrder(userList);

    m_mergedParameters.clear();
    for (size_t i = 0; i < systemList.size(); ++i) {
        MergeParameterMap(m_mergedParameters, systemList[i]->GetAllParameters());
        MergeParameterMap(m_mergedParameters, userList[i]->GetAllParameters());
    }
    m_linkLaws->ClearEntries();
    for (size_t i = 0; i < systemList.size(); ++i) {
        m_linkLaws->SetEntries(systemList[i]->GetLinkLawEntries());
        m_linkLaws->SetEntries(userList[i]->GetLinkLawEntries());
    }
    m_mergedLinkLawEntries = m_linkLaws->GetEntries();
}

void PresetHandle::MergeSuperPreset() {
    TESSEL_LOG_ENTERING(TESSEL_LOG_FXModule);
    MergeParameterMap(m_presetParameters, m_superPreset->GetAllParameters());
    m_linkLaws->ClearEntries();
    m_linkLaws->SetEntries(m_mergedLinkLawEntries);
    m_linkLaws->SetEntries(m_superPreset->GetLinkLawEntries());
    m_presetLinkLawEntries = m_linkLaws->GetEntries();
}

bool PresetHandle::IsLinkLawsActive(const std::map<unsigned int, double>& parameters) const {
    const auto found = parameters.find(kLinkLawsActiveParameter);
    if (found == parameters.end()) return m_linkLaws->IsActiveByDefault(parameters);
    return found->second != 0.0;
}

bool PresetHandle::IsSimulation(const std::map<unsigned int, double>& parameters) const {
    const auto found = parameters.find(kLinkLawsSimulationParameter);
    if (found == parameters.end()) return m_linkLaws->IsSimulationByDefault(parameters);
    return found->second != 0.0;
}

void PresetHandle::ApplyLinkLaws() {
    m_finalParameters = m_presetParameters;
    if (!IsLinkLawsActive(m_presetParameters)) {
        TESSEL_LOG(1, TESSEL_LOG_FXModule, "LinkLaws is inactive");
        return;
    }
    if (IsSimulation(m_presetParameters)) {
        TESSEL_LOG(1, TESSEL_LOG_FXModule, "LinkLaws is simulation");
        return;
    }
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "LinkLaws is active");
    MergeParameterMap(m_finalParameters, m_linkLaws->GetMasterValues());
    MergeParameterMap(m_finalParameters, m_linkLaws->GetTargetValues());
}

bool PresetHandle::GetParameter(unsigned int id, double& value) {
    RefreshIfChanged();
    const auto found = m_finalParameters.find(id);
    if (found == m_finalParameters.end()) return false;
    value = found->second;
    return true;
}

bool PresetHandle::GetParameterArray(const std::vector<unsigned int>& ids,
                                     std::vector<double>& values, bool mustFindAll) {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "%s om %u sm %u subTypeMask 0x%x", "GetParameterArray", m_om,
               m_sm, m_subTypeMask);
    RefreshIfChanged();
    const ParameterLookup lookup = LookUpParameters(m_finalParameters, ids, values);
    const bool result =
        ids.empty() ? mustFindAll : (mustFindAll ? lookup.foundAll : lookup.foundOne);
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "GetParameterArray ret %s", result ? "True" : "False");
    return result;
}

bool PresetHandle::GetAllParameters(std::vector<unsigned int>& ids, std::vector<double>& values) {
    SplitParameterMap(GetAllParameters(), ids, values);
    return true;
}

std::map<unsigned int, double> PresetHandle::GetAllParameters() {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "%s om %u sm %u subTypeMask 0x%x", "GetAllParameters", m_om,
               m_sm, m_subTypeMask);
    RefreshIfChanged();
    return m_finalParameters;
}

std::map<unsigned int, double> PresetHandle::GetPresetParameters() {
    if (m_presetsChanged) Refresh();
    return m_presetParameters;
}

uint32_t PresetHandle::GetParameterCount() {
    RefreshIfChanged();
    return static_cast<uint32_t>(m_finalParameters.size());
}

bool PresetHandle::HasParameter(unsigned int id) {
    RefreshIfChanged();
    return m_finalParameters.count(id) != 0;
}

bool PresetHandle::SetSubtypeMasks(SubtypeMasks masks) { return SetSubtypeMasksEx(~0u, masks); }

bool PresetHandle::SetSubtypeMasksEx(SubtypeMasks tagDisable, SubtypeMasks tagEnable) {
    TESSEL_LOG(1, TESSEL_LOG_FXModule,
               "SetSubtypeMasks om [%d] sm [%d] tag disable [0x%08x] tag enable [0x%08x]", m_om,
               m_sm, tagDisable, tagEnable);
    const SubtypeMasks masks = PresetSet::GetFinalEnabledSubtypeMasks(
        m_supportedSubtypeMasks, m_subTypeMask, tagDisable, tagEnable);
    if (masks != m_subTypeMask) {
        m_subTypeMask = masks;
        m_presetsChanged = true;
        NotifyListenerChanged();
    }
    return true;
}

SubtypeMasks PresetHandle::GetSubtypeMasks() const { return m_subTypeMask; }

SubtypeMasks PresetHandle::GetSupportedSubtypeMasks() const { return m_supportedSubtypeMasks; }

bool PresetHandle::GetChunk(int index, std::vector<char>& data) {
    if (index != static_cast<int>(ZBAC_LINKLAWS)) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "support index as ZBAC_LINKLAWS only");
        return false;
    }
    if (m_presetsChanged || m_superPresetChanged) Refresh();
    if (m_presetLinkLawEntries.empty()) {
        data.clear();
        return true;
    }
    if (!m_serializer->Serialize(m_presetLinkLawEntries)) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "serialize LinkLaws fail");
        return false;
    }
    data.assign(m_serializer->GetBuffer(), m_serializer->GetBuffer() + m_serializer->GetSize());
    return true;
}

void PresetHandle::Dump() {
    TESSEL_LOG(2, TESSEL_LOG_FXModule,
               "OutputMode %u SoundMode %u SupportedSubTypes 0x%x Curr\x1B"
               "ntSubTypes 0x%x",
               m_om, m_sm, m_supportedSubtypeMasks, m_subTypeMask);
}

void PresetHandle::NotifyChanged(SubtypeMasks subTypeMasks) {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "%s m_om %u m_sm %u m_subTypeMask 0x%x subTypeMasks 0x%x",
               "NotifyChanged", m_om, m_sm, m_subTypeMask, subTypeMasks);
    if (subTypeMasks == 0 || (subTypeMasks & m_subTypeMask) != 0) {
        m_presetsChanged = true;
        NotifyListenerChanged();
    }
}

void PresetHandle::NotifyListenerChanged() {
    TESSEL_LOG_ENTERING(TESSEL_LOG_FXModule);
    if (m_listener != nullptr) m_listener->OnPresetHandleChanged(m_om, m_sm);
}

void PresetHandle::SetListener(IPresetHandleListener* listener) { m_listener = listener; }

std::map<unsigned int, unsigned int> PresetHandle::GetLinkLawSourceToMasterMap() {
    RefreshIfChanged();
    return m_linkLaws->GetSourceToMaster();
}

bool PresetHandle::SetLinkLawValue(unsigned int sourceId, double value) {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "PresetHandle::SetLinkLawValue %u %lf", sourceId, value);
    m_linkLaws->SetSourceValue(sourceId, value);
    m_linkLawsChanged = true;
    if (IsLinkLawsActive(m_presetParameters)) NotifyListenerChanged();
    return true;
}

bool PresetHandle::ClearLinkLawSource(unsigned int sourceId) {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "PresetHandle::ClearLinkLawSource %u", sourceId);
    m_linkLaws->ClearSource(sourceId);
    m_linkLawsChanged = true;
    NotifyListenerChanged();
    return true;
}

std::map<unsigned int, double> PresetHandle::GetLinkLawSources() {
    return m_linkLaws->GetSources();
}

bool PresetHandle::IsLinkLawSimulation() {
    RefreshIfChanged();
    return IsSimulation(m_presetParameters);
}

std::vector<LinkLawEntry> PresetHandle::GetLinkLawEntries() {
    RefreshIfChanged();
    return m_linkLaws->GetEntries();
}

void PresetHandle::SetSuperPreset(const std::shared_ptr<SuperPreset>& superPreset) {
    if (superPreset == m_superPreset) return;
    if (m_superPreset) m_superPreset->RemoveListener(m_superPresetListener);
    m_superPreset = superPreset;
    if (!m_superPreset) return;
    m_superPreset->AddListener(m_superPresetListener);
    if (!m_superPreset->IsEmpty()) {
        m_superPresetChanged = true;
        NotifyListenerChanged();
    }
}

}  // namespace TesselFX
