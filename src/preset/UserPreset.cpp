#include "preset/UserPreset.h"

namespace TesselFX {

LinkLawEntry UserPreset::ClearingMarker() {
    LinkLawEntry marker;
    marker.size = 28;
    marker.version = 1;
    marker.MasterControlId = static_cast<uint32_t>(-1);
    marker.SourceControlId = kLinkLawClearMarkerSource;
    marker.TargetParamId = static_cast<uint32_t>(-1);
    marker.ConversionMethod = "Linear";
    return marker;
}

void UserPreset::SetChunk(unsigned int index, const std::vector<char>& data) {
    Preset::SetChunk(index, data);
    if (index != ZBAC_LINKLAWS) return;
    if (!m_linkLawEntries.empty() &&
        m_linkLawEntries.front().SourceControlId == kLinkLawClearMarkerSource) {
        return;
    }
    m_linkLawEntries.insert(m_linkLawEntries.begin(), ClearingMarker());
    if (!m_linkLawSerializer->Serialize(m_linkLawEntries)) return;
    // The former bytes stay behind the new stream: a later decode repeats the entries, and
    // the repeats collapse in LinkLaws, which replaces equal keys.
    std::vector<char>& chunk = m_chunks[ZBAC_LINKLAWS];
    const char* buffer = m_linkLawSerializer->GetBuffer();
    chunk.insert(chunk.begin(), buffer, buffer + m_linkLawSerializer->GetSize());
}

std::shared_ptr<IPreset> UserPreset::Clone() const {
    auto clone = std::make_shared<UserPreset>(m_outputMode, m_soundMode, m_subtypeMask, m_name,
                                              m_remarks, m_flags, m_priority, m_linkLawSerializer);
    CopyContentTo(*clone);
    return clone;
}

}  // namespace TesselFX
