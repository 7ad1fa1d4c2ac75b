#include "preset/TuningPreset.h"

#include "log/TesselLog.h"
#include "preset/ParameterMaps.h"

namespace TesselFX {

TuningPreset::TuningPreset(const std::shared_ptr<CLinkLawEntrySerializer>& serializer,
                           const std::shared_ptr<LinkLaws>& linkLaws)
    : m_serializer(serializer), m_linkLaws(linkLaws) {
    m_linkLawsActive = m_linkLaws->IsActiveByDefault(m_baseParameters);
    m_linkLawsSimulation = m_linkLaws->IsSimulationByDefault(m_baseParameters);
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
    MergeParameterMap(m_baseParameters, parameters);
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
            m_linkLawsState = DISABLED;
        }
    } else if (!m_linkLawsSimulation) {
        TESSEL_LOG(1, TESSEL_LOG_FXModule, "TuningPreset::UpdateLinkLawsState ACTIVE");
        // Nothing is folded on the way in: the merged map lies over the base.
        m_linkLawsState = ACTIVE;
    } else {
        TESSEL_LOG(1, TESSEL_LOG_FXModule, "TuningPreset::UpdateLinkLawsState SIMULATION");
        if (m_linkLawsState != SIMULATION) {
            DeactivateLinkLaws();
            m_linkLawsState = SIMULATION;
        }
    }
}

void TuningPreset::SetLinkLawsState(LinkLawsState state) {
    if (state != ACTIVE) {
        DeactivateLinkLaws();
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
    MergeParameterMap(m_baseParameters, m_linkLaws->GetMasterValues());
    MergeParameterMap(m_baseParameters, m_linkLaws->GetTargetValues());
}

bool TuningPreset::IsParametersChanged() const { return m_parametersChanged; }

void TuningPreset::RefreshParameters() {
    if (m_linkLawsState == ACTIVE) {
        m_mergedParameters = m_baseParameters;
        MergeParameterMap(m_mergedParameters, m_linkLaws->GetMasterValues());
        MergeParameterMap(m_mergedParameters, m_linkLaws->GetTargetValues());
    }
    m_parametersChanged = false;
}

const std::map<unsigned int, double>& TuningPreset::ParametersInForce() {
    if (m_parametersChanged) {
        RefreshParameters();
    }
    return m_linkLawsState == ACTIVE ? m_mergedParameters : m_baseParameters;
}

bool TuningPreset::GetParameter(unsigned int id, double& value) {
    const auto& parameters = ParametersInForce();
    const auto found = parameters.find(id);
    if (found == parameters.end()) {
        return false;
    }
    value = found->second;
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

std::map<unsigned int, double> TuningPreset::GetAllParameters() { return ParametersInForce(); }

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
    m_parametersChanged = true;
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
    m_parametersChanged = true;
    return true;
}

bool TuningPreset::ClearLinkLawSource(unsigned int sourceId) {
    m_linkLaws->ClearSource(sourceId);
    m_parametersChanged = true;
    return true;
}

}  // namespace TesselFX
