#include "preset/LinkLaws.h"

#include "log/TesselLog.h"

namespace TesselFX {

const std::set<unsigned int>& LinkLaws::MasterParameterIds() {
    static const std::set<unsigned int> ids{2800, 2801, 2802, 2803, 2804};
    return ids;
}

const std::set<unsigned int>& LinkLaws::LinkLawParameterIds() {
    static const std::set<unsigned int> ids{2800, 2801, 2802, 2803, 2804, 2820, 2821};
    return ids;
}

const std::set<unsigned int>& LinkLaws::SourceIds() {
    static const std::set<unsigned int> ids{0, 1, 2, 3, 4};
    return ids;
}

const std::map<unsigned int, unsigned int>& LinkLaws::SourceToMasterParameter() {
    static const std::map<unsigned int, unsigned int> map{
        {0, 2800}, {1, 2801}, {2, 2802}, {3, 2803}, {4, 2804}};
    return map;
}

bool LinkLaws::IsActiveByDefault(const std::map<unsigned int, double>&) const { return false; }

bool LinkLaws::IsSimulationByDefault(const std::map<unsigned int, double>&) const { return false; }

void LinkLaws::StoreEntry(const LinkLawEntry& entry) {
    if (entry.SourceControlId == kLinkLawClearMarkerSource) {
        m_entries.clear();
        return;
    }
    for (LinkLawEntry& stored : m_entries) {
        if (stored.SourceControlId == entry.SourceControlId &&
            stored.MasterControlId == entry.MasterControlId &&
            stored.TargetParamId == entry.TargetParamId) {
            stored = entry;
            return;
        }
    }
    m_entries.push_back(entry);
}

void LinkLaws::EntriesChanged() {
    m_targetValuesValid = false;
    m_sourceMapValid = false;
    NotifyListener();
}

void LinkLaws::NotifyListener() {
    if (m_listener != nullptr) m_listener->OnChanged();
}

bool LinkLaws::SetEntry(const LinkLawEntry& entry) {
    StoreEntry(entry);
    EntriesChanged();
    return true;
}

bool LinkLaws::SetEntries(const std::vector<LinkLawEntry>& entries) {
    for (const LinkLawEntry& entry : entries) StoreEntry(entry);
    EntriesChanged();
    return true;
}

void LinkLaws::ClearEntries() {
    m_entries.clear();
    EntriesChanged();
}

std::vector<LinkLawEntry> LinkLaws::GetEntries() const { return m_entries; }

std::map<unsigned int, unsigned int> LinkLaws::GetSourceToMaster() {
    if (!m_sourceMapValid) {
        m_sourceToMaster.clear();
        for (const LinkLawEntry& entry : m_entries) {
            m_sourceToMaster[entry.SourceControlId] = entry.MasterControlId;
        }
        m_sourceMapValid = true;
    }
    return m_sourceToMaster;
}

std::map<unsigned int, double> LinkLaws::GetMasterValues() const { return m_masterValues; }

std::map<unsigned int, double> LinkLaws::GetTargetValues() {
    if (!m_targetValuesValid) {
        m_targetValues.clear();
        for (const LinkLawEntry& entry : m_entries) {
            float value = 0.0f;
            if (Convert(entry, m_sources, value)) m_targetValues[entry.TargetParamId] = value;
        }
        m_targetValuesValid = true;
    }
    return m_targetValues;
}

bool LinkLaws::SetSourceValue(unsigned int sourceId, double value) {
    if (SourceIds().count(sourceId) == 0) return false;
    m_sources[sourceId] = value;
    m_masterValues[SourceToMasterParameter().at(sourceId)] = value;
    m_targetValuesValid = false;
    NotifyListener();
    return true;
}

bool LinkLaws::SetSourceValues(const std::map<unsigned int, double>& values) {
    bool stored = false;
    for (const auto& source : values) {
        if (SourceIds().count(source.first) == 0) continue;
        m_sources[source.first] = source.second;
        m_masterValues[SourceToMasterParameter().at(source.first)] = source.second;
        stored = true;
    }
    if (!stored) return false;
    m_targetValuesValid = false;
    NotifyListener();
    return true;
}

bool LinkLaws::ClearSource(unsigned int sourceId) {
    if (SourceIds().count(sourceId) == 0) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "%u not a source", sourceId);
        return false;
    }
    m_sources.erase(sourceId);
    m_masterValues.erase(SourceToMasterParameter().at(sourceId));
    m_targetValuesValid = false;
    NotifyListener();
    return true;
}

bool LinkLaws::ClearSources(const std::vector<unsigned int>& sourceIds) {
    bool cleared = false;
    for (unsigned int sourceId : sourceIds) {
        if (SourceIds().count(sourceId) == 0) continue;
        m_sources.erase(sourceId);
        m_masterValues.erase(SourceToMasterParameter().at(sourceId));
        cleared = true;
    }
    if (!cleared) return false;
    m_targetValuesValid = false;
    NotifyListener();
    return true;
}

void LinkLaws::ClearAllSources() {
    m_sources.clear();
    m_masterValues.clear();
    m_targetValuesValid = false;
    NotifyListener();
}

void LinkLaws::ClearAll() {
    m_entries.clear();
    m_sources.clear();
    m_masterValues.clear();
    EntriesChanged();
}

std::map<unsigned int, double> LinkLaws::GetSources() const { return m_sources; }

void LinkLaws::SetListener(ILinkLawsListener* listener) { m_listener = listener; }

bool LinkLaws::Convert(const LinkLawEntry& entry, const std::map<unsigned int, double>& sources,
                       float& out) {
    if (entry.ConversionMethod != "Linear") {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "conversion method %s does not support",
                         entry.ConversionMethod.c_str());
        return false;
    }
    const auto source = sources.find(entry.SourceControlId);
    if (source == sources.end()) {
        TESSEL_LOG(0, TESSEL_LOG_FXModule, "could not find source param %u", entry.SourceControlId);
        return false;
    }
    float x = static_cast<float>(source->second * 10.0);
    const std::vector<float>& masters = entry.masterValues;
    const std::vector<float>& targets = entry.targetValues;
    if (targets.empty() || targets.size() != masters.size()) return false;
    if (targets.size() == 1) {
        out = targets[0];
        return true;
    }
    const float last = masters.back();
    const float first = masters.front();
    x = last > x ? x : last;
    x = first < x ? x : first;
    for (size_t i = 0; i < masters.size(); ++i) {
        if (masters[i] < x) continue;
        if (masters[i] == x || i == 0) {
            // i == 0 is reached only by a point table that does not compare (NaN).
            out = targets[i];
            return true;
        }
        const float m0 = masters[i - 1];
        const float m1 = masters[i];
        const float t0 = targets[i - 1];
        const float t1 = targets[i];
        out = t0 + (x - m0) * (t1 - t0) / (m1 - m0);
        return true;
    }
    out = targets.back();
    return true;
}

}  // namespace TesselFX
