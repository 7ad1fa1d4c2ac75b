#include "config/VolumeTableHelper.h"

#include "log/TesselLog.h"

namespace TesselFX {

namespace {

/// Whether any of the streams has a volume other than 0.0 in table.
bool AnyAudible(const std::set<uint32_t>& streams, const VolumeTable& table) {
    for (uint32_t stream : streams) {
        auto found = table.find(stream);
        if (found != table.end() && found->second != 0.0) return true;
    }
    return false;
}

}  // namespace

VolumeTableHelper::VolumeTableHelper(std::shared_ptr<IVolumePolicy> policy)
    : m_policy(std::move(policy)) {}

VolumeTableHelper::~VolumeTableHelper() = default;

void VolumeTableHelper::SetListener(VolumeChangedListener* listener) { m_listener = listener; }

void VolumeTableHelper::ClearListener() { m_listener = nullptr; }

bool VolumeTableHelper::SetVolumeTable(const VolumeTable& table) {
    if (m_listener == nullptr || !m_policy) return false;
    if (!NeedToUpdate(table)) {
        TESSEL_LOG(1, TESSEL_LOG_FXModule,
                   "VolumeTableHelper::SetVolumeTable: No need to update volume.");
        return true;
    }
    if (&table != &m_table) m_table = table;
    const VolumeTable copy = table;
    const double volume = m_policy->SelectVolumeFromTable(copy);
    return m_listener->OnVolumeChanged(volume);
}

bool VolumeTableHelper::NeedToUpdate(const VolumeTable& table) {
    if (!m_initialised) {
        m_initialised = true;
        return true;
    }
    const ChangeMap changes = CompareTables(m_table, table);
    if (changes.empty()) return false;
    if (changes.size() > 1) return true;
    const auto& only = *changes.begin();
    switch (only.first) {
        case kChanged:
        case kAdded:
            return AnyAudible(only.second, table);
        default:
            return true;
    }
}

IVolumeTableHelper::ChangeMap VolumeTableHelper::CompareTables(const VolumeTable& oldTable,
                                                               const VolumeTable& newTable) const {
    ChangeMap changes;
    VolumeTable remaining = newTable;
    for (const auto& entry : oldTable) {
        auto found = remaining.find(entry.first);
        if (found == remaining.end()) {
            changes[kRemoved].insert(entry.first);
            continue;
        }
        if (found->second != entry.second) changes[kChanged].insert(entry.first);
        remaining.erase(found);
    }
    for (const auto& entry : remaining) changes[kAdded].insert(entry.first);
    return changes;
}

}  // namespace TesselFX
