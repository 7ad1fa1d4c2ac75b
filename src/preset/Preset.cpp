#include "preset/Preset.h"

#include "log/TesselLog.h"
#include "preset/ParameterMaps.h"

namespace TesselFX {

Preset::Preset(uint32_t outputMode, uint32_t soundMode, uint32_t subtypeMask,
               const std::string& name, const std::string& remarks, uint16_t flags,
               uint8_t priority, const std::shared_ptr<CLinkLawEntrySerializer>& linkLawSerializer)
    : m_outputMode(outputMode),
      m_soundMode(soundMode),
      m_subtypeMask(subtypeMask),
      m_name(name),
      m_remarks(remarks),
      m_flags(flags),
      m_priority(priority),
      m_linkLawSerializer(linkLawSerializer) {}

void Preset::SetParameter(unsigned int id, double value) {
    SetParameterInList(m_parameters, id, value);
}

void Preset::SetParameterArray(const std::vector<unsigned int>& ids,
                               const std::vector<double>& values) {
    OverlayParameterPairs(m_parameters, ids, values);
}

void Preset::SetParameterArray(const std::map<unsigned int, double>& parameters) {
    OverlayParameterList(m_parameters, parameters);
}

bool Preset::GetParameter(unsigned int id, double& value) const {
    const auto found = FindParameter(m_parameters, id);
    if (found == m_parameters.end()) return false;
    value = found->second;
    return true;
}

bool Preset::GetParameterArray(const std::vector<unsigned int>& ids,
                               std::vector<double>& values) const {
    values.resize(ids.size(), 0.0);
    bool foundAll = true;
    for (size_t i = 0; i < ids.size(); ++i) {
        if (!GetParameter(ids[i], values[i])) foundAll = false;
    }
    return foundAll;
}

bool Preset::GetAllParameters(std::vector<unsigned int>& ids, std::vector<double>& values) const {
    SplitParameterMap(m_parameters, ids, values);
    return true;
}

std::map<unsigned int, double> Preset::GetAllParameters() const {
    return ToParameterMap(m_parameters);
}

bool Preset::HasParameter(unsigned int id) const {
    return FindParameter(m_parameters, id) != m_parameters.end();
}

void Preset::ClearParameter(unsigned int id) { EraseParameterFromList(m_parameters, id); }

void Preset::ClearParameterArray(const std::vector<unsigned int>& ids) {
    for (unsigned int id : ids) EraseParameterFromList(m_parameters, id);
    if (TESSEL_LOG_ON(1, TESSEL_LOG_Preset)) {
        for (const auto& parameter : m_parameters) {
            TESSEL_LOG(1, TESSEL_LOG_Preset, "%u %lf", parameter.first, parameter.second);
        }
    }
}

void Preset::ClearAllParameters() { m_parameters.clear(); }

void Preset::SetChunk(unsigned int index, const std::vector<char>& data) {
    m_chunks[index] = data;
    if (index != ZBAC_LINKLAWS) return;
    m_linkLawEntries.clear();
    m_linkLawSerializer->Deserialize(data.data(), static_cast<unsigned int>(data.size()),
                                     m_linkLawEntries);
}

bool Preset::GetChunk(unsigned int index, std::vector<char>& data) const {
    const auto found = m_chunks.find(index);
    if (found == m_chunks.end()) return false;
    data = found->second;
    return true;
}

std::map<unsigned int, std::vector<char>> Preset::GetAllChunks() const { return m_chunks; }

std::vector<unsigned int> Preset::GetChunkIndices() const {
    std::vector<unsigned int> indices;
    indices.reserve(m_chunks.size());
    for (const auto& chunk : m_chunks) indices.push_back(chunk.first);
    return indices;
}

uint32_t Preset::GetChunkCount() const { return static_cast<uint32_t>(m_chunks.size()); }

void Preset::ClearChunk(unsigned int index) {
    m_chunks.erase(index);
    if (index == ZBAC_LINKLAWS) m_linkLawEntries.clear();
}

void Preset::ClearAllChunks() { m_chunks.clear(); }

void Preset::ClearAll() {
    m_parameters.clear();
    m_chunks.clear();
}

bool Preset::IsDefaultSoundMode() const { return (m_flags & 1u) != 0; }

std::string Preset::GetName() const { return m_name; }

std::string Preset::GetRemarks() const { return m_remarks; }

uint32_t Preset::GetOutputMode() const { return m_outputMode; }

uint32_t Preset::GetSoundMode() const { return m_soundMode; }

uint32_t Preset::GetSubtypeMask() const { return m_subtypeMask; }

uint8_t Preset::GetPriority() const { return m_priority; }

uint16_t Preset::GetFlags() const { return m_flags; }

uint32_t Preset::GetParameterCount() const { return static_cast<uint32_t>(m_parameters.size()); }

bool Preset::IsEmpty() const { return m_parameters.empty() && m_chunks.empty(); }

void Preset::Dump() const {
    TESSEL_LOG(2, TESSEL_LOG_Preset, "---------------------Preset::Dump---------------------");
    TESSEL_LOG(2, TESSEL_LOG_Preset, "Showing preset [%s] for OM [%u] and SM[%u]", m_name.c_str(),
               m_outputMode, m_soundMode);
    TESSEL_LOG(2, TESSEL_LOG_Preset, "Remarks [%s]", m_remarks.c_str());
    TESSEL_LOG(2, TESSEL_LOG_Preset, "Flags [%d], SubTypeMask [0x%x], this [%p]", m_flags,
               m_subtypeMask, static_cast<const void*>(this));
    TESSEL_LOG(2, TESSEL_LOG_Preset, "Parameters, size %zd", m_parameters.size());
    DumpLinkLaws();
}

const IPreset* Preset::AsConst() const { return this; }

IPreset* Preset::AsMutable() { return this; }

void Preset::CopyContentTo(IPreset& clone) const {
    std::vector<unsigned int> ids;
    std::vector<double> values;
    SplitParameterMap(m_parameters, ids, values);
    clone.SetParameterArray(ids, values);
    for (const auto& chunk : m_chunks) clone.SetChunk(chunk.first, chunk.second);
}

std::shared_ptr<IPreset> Preset::Clone() const {
    auto clone = std::make_shared<Preset>(m_outputMode, m_soundMode, m_subtypeMask, m_name,
                                          m_remarks, m_flags, m_priority, m_linkLawSerializer);
    CopyContentTo(*clone);
    return clone;
}

std::vector<LinkLawEntry> Preset::GetLinkLawEntries() const { return m_linkLawEntries; }

void Preset::DumpLinkLaws() const {
    if (!TESSEL_LOG_ON(2, TESSEL_LOG_Preset)) return;
    TESSEL_LOG(2, TESSEL_LOG_Preset, "LinkLawEntries, size %zd", m_linkLawEntries.size());
    for (const LinkLawEntry& entry : m_linkLawEntries) {
        TESSEL_LOG(2, TESSEL_LOG_Preset,
                   "SourceControlId %u MasterControlId %u TargetParamId %u ConversionMethod %s",
                   entry.SourceControlId, entry.MasterControlId, entry.TargetParamId,
                   entry.ConversionMethod.c_str());
        TESSEL_LOG(2, TESSEL_LOG_Preset, "masterValue targetValues");
        for (size_t i = 0; i < entry.masterValues.size() && i < entry.targetValues.size(); ++i) {
            TESSEL_LOG(2, TESSEL_LOG_Preset, "%lf %lf", static_cast<double>(entry.masterValues[i]),
                       static_cast<double>(entry.targetValues[i]));
        }
    }
}

}  // namespace TesselFX
