#include "preset/PresetHandle.h"

#include <cstring>

#include "log/TesselLog.h"
#include "preset/IPresetHandleListener.h"
#include "preset/ParameterMaps.h"
#include "preset/Preset.h"
#include "preset/PresetOrder.h"
#include "preset/PresetSet.h"
#include "preset/SuperPreset.h"

namespace TesselFX {

namespace {

/// Overlays the parameters of a preset on target; those of a Preset without a copy.
void OverlayPresetParameters(ParameterList& target, const IPreset& preset) {
    if (const auto* flat = dynamic_cast<const Preset*>(&preset)) {
        OverlayParameterList(target, flat->GetParameterList());
        return;
    }
    std::vector<unsigned int> ids;
    std::vector<double> values;
    preset.GetAllParameters(ids, values);
    OverlayParameterPairs(target, ids, values);
}

/// Equal bits: a NaN equals itself here, unlike in a comparison of doubles.
bool SameValue(double a, double b) { return std::memcmp(&a, &b, sizeof(a)) == 0; }

}  // namespace

void PresetHandle::SuperPresetChangeListener::Changed(bool linkLaws) {
    m_handle->m_superPresetChanged = true;
    if (linkLaws) m_handle->m_superLinkLawsChanged = true;
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
    const bool merge = m_presetsChanged;
    std::vector<unsigned int> presetChanged;
    bool entriesMerged = merge;
    if (merge) MergePresets();
    if (merge || m_superPresetChanged) {
        if (merge) {
            // Until the super preset gives a parameter the merged ones serve unchanged.
            ParameterList().swap(m_presetParameters);
            m_presetIsMerged = true;
            m_presetLinkLawEntries = m_mergedLinkLawEntries;
            m_superParameters.clear();
        }
        if (m_superPreset) entriesMerged = MergeSuperPreset(merge, presetChanged) || merge;
    }
    ApplyLinkLaws(merge, entriesMerged, presetChanged);
    m_presetsChanged = false;
    m_superPresetChanged = false;
    m_linkLawsChanged = false;
}

void PresetHandle::MergePresets() {
    std::vector<std::shared_ptr<const IPreset>> systemList;
    std::vector<std::shared_ptr<IPreset>> userList;
    // A file may lack a preset that the masks name: a pair without a base preset, or a bit
    // that only a mask of several bits carries. Such a key is left out of the merge.
    const auto addPair = [&](SubtypeMasks mask) {
        const OmSmSubtypeMask key{m_om, m_sm, mask};
        const auto system = m_systemPresets.find(key);
        const auto user = m_userPresets.find(key);
        if (system == m_systemPresets.end() || user == m_userPresets.end()) {
            TESSEL_LOG_ERROR(TESSEL_LOG_FXModule,
                             "MergePresets om %u sm %u subTypeMask 0x%x: no preset", m_om, m_sm,
                             mask);
            return;
        }
        systemList.push_back(system->second);
        userList.push_back(user->second);
    };
    addPair(0);
    for (uint32_t bit = 0; bit < 32; ++bit) {
        const SubtypeMasks mask = 1u << bit;
        if ((m_subTypeMask & mask) != 0) addPair(mask);
    }
    SortByPresetOrder(systemList);
    SortByPresetOrder(userList);

    m_mergedParameters.clear();
    for (size_t i = 0; i < systemList.size(); ++i) {
        OverlayPresetParameters(m_mergedParameters, *systemList[i]);
        OverlayPresetParameters(m_mergedParameters, *userList[i]);
    }
    m_linkLaws->ClearEntries();
    for (size_t i = 0; i < systemList.size(); ++i) {
        m_linkLaws->SetEntries(systemList[i]->GetLinkLawEntries());
        m_linkLaws->SetEntries(userList[i]->GetLinkLawEntries());
    }
    m_mergedLinkLawEntries = m_linkLaws->GetEntries();
}

bool PresetHandle::MergeSuperPreset(bool full, std::vector<unsigned int>& changed) {
    TESSEL_LOG_ENTERING(TESSEL_LOG_FXModule);
    ParameterList super;
    OverlayPresetParameters(super, *m_superPreset->AsConst());
    if (m_presetIsMerged && !super.empty()) {
        m_presetParameters = m_mergedParameters;
        m_presetIsMerged = false;
    }
    if (m_presetIsMerged) {
        // Nothing to lay over, and nothing was laid over before.
    } else if (full) {
        OverlayParameterList(m_presetParameters, super);
    } else {
        // Walk the last merged and the current super parameters together; an id that left the
        // super preset falls back to the presets' value.
        auto last = m_superParameters.begin();
        auto now = super.begin();
        while (last != m_superParameters.end() || now != super.end()) {
            if (now == super.end() ||
                (last != m_superParameters.end() && last->first < now->first)) {
                const auto merged = FindParameter(m_mergedParameters, last->first);
                if (merged != m_mergedParameters.end()) {
                    SetParameterInList(m_presetParameters, merged->first, merged->second);
                } else {
                    EraseParameterFromList(m_presetParameters, last->first);
                }
                changed.push_back(last->first);
                ++last;
                continue;
            }
            const bool known = last != m_superParameters.end() && last->first == now->first;
            if (!known || !SameValue(last->second, now->second)) {
                SetParameterInList(m_presetParameters, now->first, now->second);
                changed.push_back(now->first);
            }
            if (known) ++last;
            ++now;
        }
    }
    m_superParameters.swap(super);
    const bool mergeEntries = full || m_superLinkLawsChanged;
    m_superLinkLawsChanged = false;
    if (mergeEntries) {
        m_linkLaws->ClearEntries();
        m_linkLaws->SetEntries(m_mergedLinkLawEntries);
        m_linkLaws->SetEntries(m_superPreset->GetLinkLawEntries());
        m_presetLinkLawEntries = m_linkLaws->GetEntries();
    }
    return mergeEntries;
}

bool PresetHandle::IsLinkLawsActive(const ParameterList& parameters) const {
    const auto found = FindParameter(parameters, kLinkLawsActiveParameter);
    // The default answers of the link laws look at no parameter.
    if (found == parameters.end()) return m_linkLaws->IsActiveByDefault({});
    return found->second != 0.0;
}

bool PresetHandle::IsSimulation(const ParameterList& parameters) const {
    const auto found = FindParameter(parameters, kLinkLawsSimulationParameter);
    if (found == parameters.end()) return m_linkLaws->IsSimulationByDefault({});
    return found->second != 0.0;
}

ParameterList PresetHandle::ComputeLinkLawParameters(bool apply) {
    m_linkLawEvaluationLogs = false;
    if (!apply) return {};
    ParameterList parameters = ToParameterList(m_linkLaws->GetMasterValues());
    OverlayParameterList(parameters, m_linkLaws->GetTargetValues());
    const std::map<unsigned int, double> sources = m_linkLaws->GetSources();
    for (const LinkLawEntry& entry : m_presetLinkLawEntries) {
        if (entry.ConversionMethod != "Linear" || sources.count(entry.SourceControlId) == 0) {
            m_linkLawEvaluationLogs = true;
        }
    }
    return parameters;
}

void PresetHandle::ApplyLinkLaws(bool full, bool entriesMerged,
                                 const std::vector<unsigned int>& presetChanged) {
    bool apply = false;
    if (!IsLinkLawsActive(PresetParameters())) {
        TESSEL_LOG(1, TESSEL_LOG_FXModule, "LinkLaws is inactive");
    } else if (IsSimulation(PresetParameters())) {
        TESSEL_LOG(1, TESSEL_LOG_FXModule, "LinkLaws is simulation");
    } else {
        TESSEL_LOG(1, TESSEL_LOG_FXModule, "LinkLaws is active");
        apply = true;
    }
    if (apply && m_linkLawEvaluationLogs && !entriesMerged && !m_linkLawsChanged) {
        // A full recomputation evaluates the laws on every refresh, and with them their logs.
        m_linkLaws->SetEntries({});
        entriesMerged = true;
    }
    const bool recompute = full || entriesMerged || m_linkLawsChanged || apply != m_linkLawsApplied;
    if (full) {
        m_linkLawParameters = ComputeLinkLawParameters(apply);
        m_linkLawsApplied = apply;
        m_finalParameters = PresetParameters();
        OverlayParameterList(m_finalParameters, m_linkLawParameters);
        m_changes.RecordAll();
        return;
    }
    for (unsigned int id : presetChanged) UpdateFinalParameter(id);
    if (!recompute) return;
    ParameterList previous = ComputeLinkLawParameters(apply);
    previous.swap(m_linkLawParameters);
    m_linkLawsApplied = apply;
    for (const auto& parameter : previous) UpdateFinalParameter(parameter.first);
    for (const auto& parameter : m_linkLawParameters) UpdateFinalParameter(parameter.first);
}

void PresetHandle::UpdateFinalParameter(unsigned int id) {
    auto source = FindParameter(m_linkLawParameters, id);
    if (source == m_linkLawParameters.end()) {
        const ParameterList& preset = PresetParameters();
        source = FindParameter(preset, id);
        if (source == preset.end()) {
            if (EraseParameterFromList(m_finalParameters, id)) RecordChanged(id);
            return;
        }
    }
    SetParameterInList(m_finalParameters, id, source->second);
    RecordChanged(id);
}

void PresetHandle::RecordChanged(unsigned int id) {
    m_changes.Record(id, m_finalParameters.size());
}

const ParameterList* PresetHandle::GetFinalParameterList() {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "%s om %u sm %u subTypeMask 0x%x", "GetAllParameters", m_om,
               m_sm, m_subTypeMask);
    RefreshIfChanged();
    return &m_finalParameters;
}

bool PresetHandle::TakeParameterChanges(std::vector<unsigned int>& ids) {
    RefreshIfChanged();
    return m_changes.Take(ids);
}

bool PresetHandle::GetParameter(unsigned int id, double& value) {
    RefreshIfChanged();
    const auto found = FindParameter(m_finalParameters, id);
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
    SplitParameterMap(*GetFinalParameterList(), ids, values);
    return true;
}

std::map<unsigned int, double> PresetHandle::GetAllParameters() {
    return ToParameterMap(*GetFinalParameterList());
}

std::map<unsigned int, double> PresetHandle::GetPresetParameters() {
    if (m_presetsChanged) Refresh();
    return ToParameterMap(PresetParameters());
}

uint32_t PresetHandle::GetParameterCount() {
    RefreshIfChanged();
    return static_cast<uint32_t>(m_finalParameters.size());
}

bool PresetHandle::HasParameter(unsigned int id) {
    RefreshIfChanged();
    return FindParameter(m_finalParameters, id) != m_finalParameters.end();
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
    // The serializer runs, and logs, only when the entries differ from those it last wrote.
    if (m_serializedLinkLawEntries != m_presetLinkLawEntries) {
        if (!m_serializer->Serialize(m_presetLinkLawEntries)) {
            TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "serialize LinkLaws fail");
            return false;
        }
        m_linkLawChunk.assign(m_serializer->GetBuffer(),
                              m_serializer->GetBuffer() + m_serializer->GetSize());
        m_serializedLinkLawEntries = m_presetLinkLawEntries;
    }
    data = m_linkLawChunk;
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
    if (IsLinkLawsActive(PresetParameters())) NotifyListenerChanged();
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
    return IsSimulation(PresetParameters());
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
        m_superLinkLawsChanged = true;
        NotifyListenerChanged();
    }
}

}  // namespace TesselFX
