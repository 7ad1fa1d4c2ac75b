#include "preset/SuperPreset.h"

#include "preset/UserPreset.h"

namespace TesselFX {

SuperPreset::SuperPreset(uint32_t outputMode, uint32_t soundMode)
    : m_preset(std::make_shared<UserPreset>(outputMode, soundMode, 0, "", "", 0, 0,
                                            std::make_shared<CLinkLawEntrySerializer>())) {}

SuperPreset::~SuperPreset() = default;

template <typename Notification>
void SuperPreset::Notify(Notification notification) {
    // A listener may add or remove listeners, itself or others, while it is told. The walk
    // goes over the listeners as they stood, holds each while it is called, and skips one
    // that was removed meanwhile: its owner may be gone.
    const std::vector<std::shared_ptr<IPresetChangeListener>> listeners(m_listeners.begin(),
                                                                        m_listeners.end());
    for (const std::shared_ptr<IPresetChangeListener>& listener : listeners) {
        if (m_listeners.count(listener) == 0) continue;
        ((*listener).*notification)();
    }
}

void SuperPreset::SetParameter(unsigned int id, double value) {
    m_preset->SetParameter(id, value);
    Notify(&IPresetChangeListener::OnParametersChanged);
}

void SuperPreset::SetParameterArray(const std::vector<unsigned int>& ids,
                                    const std::vector<double>& values) {
    m_preset->SetParameterArray(ids, values);
    Notify(&IPresetChangeListener::OnParametersChanged);
}

void SuperPreset::SetParameterArray(const std::map<unsigned int, double>& parameters) {
    m_preset->SetParameterArray(parameters);
    Notify(&IPresetChangeListener::OnParametersChanged);
}

bool SuperPreset::GetParameter(unsigned int id, double& value) const {
    return m_preset->GetParameter(id, value);
}

bool SuperPreset::GetParameterArray(const std::vector<unsigned int>& ids,
                                    std::vector<double>& values) const {
    return m_preset->GetParameterArray(ids, values);
}

bool SuperPreset::GetAllParameters(std::vector<unsigned int>& ids,
                                   std::vector<double>& values) const {
    return m_preset->GetAllParameters(ids, values);
}

std::map<unsigned int, double> SuperPreset::GetAllParameters() const {
    return m_preset->GetAllParameters();
}

bool SuperPreset::HasParameter(unsigned int id) const { return m_preset->HasParameter(id); }

void SuperPreset::ClearParameter(unsigned int id) {
    m_preset->ClearParameter(id);
    Notify(&IPresetChangeListener::OnParametersChanged);
}

void SuperPreset::ClearParameterArray(const std::vector<unsigned int>& ids) {
    m_preset->ClearParameterArray(ids);
    Notify(&IPresetChangeListener::OnParametersChanged);
}

void SuperPreset::ClearAllParameters() {
    m_preset->ClearAllParameters();
    Notify(&IPresetChangeListener::OnParametersChanged);
}

void SuperPreset::SetChunk(unsigned int index, const std::vector<char>& data) {
    m_preset->SetChunk(index, data);
    Notify(&IPresetChangeListener::OnChunksChanged);
}

bool SuperPreset::GetChunk(unsigned int index, std::vector<char>& data) const {
    return m_preset->GetChunk(index, data);
}

std::vector<unsigned int> SuperPreset::GetChunkIndices() const {
    return m_preset->GetChunkIndices();
}

uint32_t SuperPreset::GetChunkCount() const { return m_preset->GetChunkCount(); }

std::map<unsigned int, std::vector<char>> SuperPreset::GetAllChunks() const {
    return m_preset->GetAllChunks();
}

void SuperPreset::ClearChunk(unsigned int index) {
    m_preset->ClearChunk(index);
    Notify(&IPresetChangeListener::OnChunksChanged);
}

void SuperPreset::ClearAllChunks() {
    m_preset->ClearAllChunks();
    Notify(&IPresetChangeListener::OnChunksChanged);
}

void SuperPreset::ClearAll() {
    m_preset->ClearAll();
    Notify(&IPresetChangeListener::OnAllChanged);
}

uint32_t SuperPreset::GetParameterCount() const { return m_preset->GetParameterCount(); }

bool SuperPreset::IsEmpty() const { return m_preset->IsEmpty(); }

void SuperPreset::Dump() const { m_preset->Dump(); }

const IPreset* SuperPreset::AsConst() const { return m_preset->AsConst(); }

std::vector<LinkLawEntry> SuperPreset::GetLinkLawEntries() const {
    return m_preset->GetLinkLawEntries();
}

void SuperPreset::AddListener(const std::shared_ptr<IPresetChangeListener>& listener) {
    if (listener) m_listeners.insert(listener);
}

void SuperPreset::RemoveListener(const std::shared_ptr<IPresetChangeListener>& listener) {
    m_listeners.erase(listener);
}

}  // namespace TesselFX
