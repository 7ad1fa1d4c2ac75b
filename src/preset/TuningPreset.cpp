#include "preset/TuningPreset.h"

#include "log/TesselLog.h"
#include "preset/ParameterMaps.h"

namespace TesselFX {

namespace {

/// Whether count entries are better laid over size ones in one walk than one by one.
bool Many(size_t count, size_t size) { return count > 64 && count * 16 >= size; }

/// Overlays the entries of a map on a list: a few entries each in place, many in one merge.
void OverlayMap(ParameterList& target, const std::map<unsigned int, double>& source) {
    if (!Many(source.size(), target.size())) {
        for (const auto& parameter : source) {
            SetParameterInList(target, parameter.first, parameter.second);
        }
        return;
    }
    OverlayParameterList(target, source);
}

}  // namespace

TuningPreset::TuningPreset(const std::shared_ptr<CLinkLawEntrySerializer>& serializer,
                           const std::shared_ptr<LinkLaws>& linkLaws)
    : m_serializer(serializer), m_linkLaws(linkLaws) {
    // The defaults look at no parameter; there are none yet.
    m_linkLawsActive = m_linkLaws->IsActiveByDefault({});
    m_linkLawsSimulation = m_linkLaws->IsSimulationByDefault({});
    UpdateLinkLawsState();
}

void TuningPreset::InitFromPresetHandle(const std::shared_ptr<IPresetHandle>& handle) {
    if (!handle) {
        return;
    }
    // The view without link laws: the tuning preset computes them itself.
    SetParameterArray(handle->GetPresetParameters());
    std::vector<char> linkLaws;
    if (handle->GetChunk(static_cast<int>(ZBAC_LINKLAWS), linkLaws)) {
        SetChunk(ZBAC_LINKLAWS, linkLaws);
    }
    for (const auto& source : handle->GetLinkLawSources()) {
        SetLinkLawValue(source.first, source.second);
    }
    m_parametersChanged = true;
}

void TuningPreset::SetParameter(unsigned int id, double value) {
    SetParameterArray(std::vector<unsigned int>{id}, std::vector<double>{value});
}

void TuningPreset::SetParameterArray(const std::vector<unsigned int>& ids,
                                     const std::vector<double>& values) {
    std::map<unsigned int, double> parameters;
    for (size_t i = 0; i < ids.size(); ++i) {
        parameters[ids[i]] = values.at(i);
    }
    SetParameterArray(parameters);
}

void TuningPreset::SetParameterArray(const std::map<unsigned int, double>& parameters) {
    UpdateLinkLawsFromParameters(parameters);
    OverlayMap(m_baseParameters, parameters);
    if (!Many(parameters.size(), m_baseParameters.size())) {
        for (const auto& parameter : parameters) RecordChanged(parameter.first);
        if (!m_mergeAll) {
            for (const auto& parameter : parameters) m_writtenIds.push_back(parameter.first);
        }
    } else {
        ChangedAll();
    }
    // Many written values are laid over the base anew rather than one by one.
    if (Many(m_writtenIds.size(), m_baseParameters.size())) {
        m_mergeAll = true;
        m_writtenIds.clear();
    }
    m_parametersChanged = true;
}

void TuningPreset::UpdateLinkLawsFromParameters(const std::map<unsigned int, double>& parameters) {
    const auto active = parameters.find(kLinkLawsActiveParameter);
    if (active != parameters.end()) {
        m_linkLawsActive = active->second != 0.0;
    }
    const auto simulation = parameters.find(kLinkLawsSimulationParameter);
    if (simulation != parameters.end()) {
        m_linkLawsSimulation = simulation->second != 0.0;
    }
    UpdateLinkLawsState();
}

void TuningPreset::UpdateLinkLawsState() {
    if (!m_linkLawsActive) {
        TESSEL_LOG(1, TESSEL_LOG_FXModule, "TuningPreset::UpdateLinkLawsState DISABLED");
        if (m_linkLawsState != DISABLED) {
            DeactivateLinkLaws();
            StoreLinkLawsState(DISABLED);
        }
    } else if (!m_linkLawsSimulation) {
        TESSEL_LOG(1, TESSEL_LOG_FXModule, "TuningPreset::UpdateLinkLawsState ACTIVE");
        // Nothing is folded on the way in: the merged parameters lie over the base.
        StoreLinkLawsState(ACTIVE);
    } else {
        TESSEL_LOG(1, TESSEL_LOG_FXModule, "TuningPreset::UpdateLinkLawsState SIMULATION");
        if (m_linkLawsState != SIMULATION) {
            DeactivateLinkLaws();
            StoreLinkLawsState(SIMULATION);
        }
    }
}

void TuningPreset::SetLinkLawsState(LinkLawsState state) {
    if (state != ACTIVE) {
        DeactivateLinkLaws();
    }
    StoreLinkLawsState(state);
}

void TuningPreset::StoreLinkLawsState(LinkLawsState state) {
    if ((state == ACTIVE) != (m_linkLawsState == ACTIVE)) {
        // Reads move between the base and the merged parameters, which are not kept outside
        // ACTIVE.
        ChangedAll();
    }
    m_linkLawsState = state;
}

TuningPreset::LinkLawsState TuningPreset::GetLinkLawsState() const { return m_linkLawsState; }

void TuningPreset::DeactivateLinkLaws() {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "TuningPreset::DeactivateLinkLaws");
    MergeLinkLawsParamsToBase();
}

void TuningPreset::MergeLinkLawsParamsToBase() {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "TuningPreset::MergeLinkLawsParamsToBase");
    // Also runs between DISABLED and SIMULATION, and then folds whatever the laws compute.
    OverlayMap(m_baseParameters, m_linkLaws->GetMasterValues());
    OverlayMap(m_baseParameters, m_linkLaws->GetTargetValues());
    ChangedAll();
}

bool TuningPreset::IsParametersChanged() const { return m_parametersChanged; }

void TuningPreset::RefreshParameters() {
    if (m_linkLawsState != ACTIVE) {
        // The merged parameters are built anew on the way into ACTIVE.
        m_mergeAll = true;
    } else if (m_mergeAll) {
        // What the laws laid over the base before and lay now may change in value.
        for (const auto& parameter : m_linkLawParameters) RecordChanged(parameter.first);
        m_linkLawParameters = ToParameterList(m_linkLaws->GetMasterValues());
        OverlayMap(m_linkLawParameters, m_linkLaws->GetTargetValues());
        for (const auto& parameter : m_linkLawParameters) RecordChanged(parameter.first);
        m_mergedParameters = m_baseParameters;
        OverlayParameterList(m_mergedParameters, m_linkLawParameters);
        m_mergeAll = false;
    } else {
        // Written values show where the laws lay nothing over them.
        for (unsigned int id : m_writtenIds) {
            if (FindParameter(m_linkLawParameters, id) != m_linkLawParameters.end()) continue;
            const double* base = FindValue(m_baseParameters, id);
            if (base != nullptr) {
                SetParameterInList(m_mergedParameters, id, *base);
            } else {
                EraseParameterFromList(m_mergedParameters, id);
            }
        }
    }
    m_writtenIds.clear();
    m_parametersChanged = false;
}

const ParameterList& TuningPreset::ParametersInForce() {
    if (m_parametersChanged || (m_linkLawsState == ACTIVE && m_mergeAll)) {
        RefreshParameters();
    }
    return m_linkLawsState == ACTIVE ? m_mergedParameters : m_baseParameters;
}

void TuningPreset::LinkLawsChanged() {
    m_mergeAll = true;
    m_parametersChanged = true;
}

void TuningPreset::RecordChanged(unsigned int id) { m_changes.Record(id, m_baseParameters.size()); }

void TuningPreset::ChangedAll() {
    m_mergeAll = true;
    m_changes.RecordAll();
}

const ParameterList* TuningPreset::GetFinalParameterList() { return &ParametersInForce(); }

bool TuningPreset::TakeParameterChanges(std::vector<unsigned int>& ids) {
    ParametersInForce();
    return m_changes.Take(ids);
}

bool TuningPreset::GetParameter(unsigned int id, double& value) {
    const double* found = FindValue(ParametersInForce(), id);
    if (found == nullptr) {
        return false;
    }
    value = *found;
    return true;
}

bool TuningPreset::GetParameterArray(const std::vector<unsigned int>& ids,
                                     std::vector<double>& values, bool mustFindAll) {
    const ParameterLookup lookup = LookUpParameters(ParametersInForce(), ids, values);
    const bool result = mustFindAll ? lookup.foundAll : lookup.foundOne;
    if (!result) {
        TESSEL_LOG_ERROR(
            TESSEL_LOG_FXModule,
            "GetParameterArray mustFindAll %d bFoundAllParameters %d bAtLeastOneFound %d ret False",
            static_cast<int>(mustFindAll), static_cast<int>(lookup.foundAll),
            static_cast<int>(lookup.foundOne));
    }
    return result;
}

bool TuningPreset::GetAllParameters(std::vector<unsigned int>& ids, std::vector<double>& values) {
    SplitParameterMap(ParametersInForce(), ids, values);
    return true;
}

std::map<unsigned int, double> TuningPreset::GetAllParameters() {
    return ToParameterMap(ParametersInForce());
}

void TuningPreset::SetChunk(unsigned int index, const std::vector<char>& data) {
    m_chunks[index] = data;
    if (index != ZBAC_LINKLAWS) {
        return;
    }
    m_linkLawEntries.clear();
    m_serializer->Deserialize(data.data(), static_cast<unsigned int>(data.size()),
                              m_linkLawEntries);
    m_linkLaws->ClearEntries();
    m_linkLaws->SetEntries(m_linkLawEntries);
    LinkLawsChanged();
}

bool TuningPreset::GetChunk(unsigned int index, std::vector<char>& data) {
    const auto found = m_chunks.find(index);
    if (found == m_chunks.end()) {
        return false;
    }
    data = found->second;
    return true;
}

std::map<unsigned int, std::vector<char>> TuningPreset::GetAllChunks() { return m_chunks; }

std::vector<unsigned int> TuningPreset::GetChunkIndices() {
    std::vector<unsigned int> indices;
    indices.reserve(m_chunks.size());
    for (const auto& chunk : m_chunks) {
        indices.push_back(chunk.first);
    }
    return indices;
}

std::vector<LinkLawEntry> TuningPreset::GetLinkLawEntries() { return m_linkLawEntries; }

bool TuningPreset::SetLinkLawValue(unsigned int sourceId, double value) {
    m_linkLaws->SetSourceValue(sourceId, value);
    LinkLawsChanged();
    return true;
}

bool TuningPreset::ClearLinkLawSource(unsigned int sourceId) {
    m_linkLaws->ClearSource(sourceId);
    LinkLawsChanged();
    return true;
}

}  // namespace TesselFX
