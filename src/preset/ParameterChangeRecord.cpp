#include "preset/ParameterChangeRecord.h"

namespace TesselFX {

void ParameterChangeRecord::Record(unsigned int id, size_t listSize) {
    if (m_all) return;
    if (m_ids.size() > listSize + 64) {
        RecordAll();
        return;
    }
    m_ids.push_back(id);
}

void ParameterChangeRecord::RecordAll() {
    m_all = true;
    m_ids.clear();
}

bool ParameterChangeRecord::Take(std::vector<unsigned int>& ids) {
    ids.clear();
    const bool tracked = !m_all;
    if (tracked) ids.swap(m_ids);
    m_all = false;
    m_ids.clear();
    return tracked;
}

}  // namespace TesselFX
