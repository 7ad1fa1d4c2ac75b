#pragma once

#include <map>
#include <set>
#include <vector>

#include "preset/ILinkLawsListener.h"
#include "preset/LinkLawEntry.h"

namespace TesselFX {

/// Keeps link-law entries and source values and computes the target values. The source to
/// master map and the target values are cached until the next change.
/// No locks: the owner's caller holds the lock.
class LinkLaws {
  public:
    LinkLaws() = default;
    virtual ~LinkLaws() = default;

    virtual bool IsActiveByDefault(const std::map<unsigned int, double>& parameters) const;
    virtual bool IsSimulationByDefault(const std::map<unsigned int, double>& parameters) const;
    /// A marker entry (source -3) empties the list; an entry with the source, master and
    /// target of a stored one replaces it; any other is appended.
    virtual bool SetEntry(const LinkLawEntry& entry);
    virtual bool SetEntries(const std::vector<LinkLawEntry>& entries);
    /// Empties the entries; the source values stay.
    virtual void ClearEntries();
    virtual std::vector<LinkLawEntry> GetEntries() const;
    virtual std::map<unsigned int, unsigned int> GetSourceToMaster();
    virtual std::map<unsigned int, double> GetMasterValues() const;
    virtual std::map<unsigned int, double> GetTargetValues();
    virtual bool SetSourceValue(unsigned int sourceId, double value);
    virtual bool SetSourceValues(const std::map<unsigned int, double>& values);
    virtual bool ClearSource(unsigned int sourceId);
    virtual bool ClearSources(const std::vector<unsigned int>& sourceIds);
    virtual void ClearAllSources();
    virtual void ClearAll();
    virtual std::map<unsigned int, double> GetSources() const;
    /// Not owned; may be null.
    virtual void SetListener(ILinkLawsListener* listener);

    /// Evaluates one law at the source values. False for an unknown method, a missing
    /// source or a law without a valid point table.
    static bool Convert(const LinkLawEntry& entry, const std::map<unsigned int, double>& sources,
                        float& out);

    /// Parameters 2800 to 2804, which mirror the sources.
    static const std::set<unsigned int>& MasterParameterIds();
    /// The master parameters and the two switches 2820 and 2821.
    static const std::set<unsigned int>& LinkLawParameterIds();
    /// Sources 0 to 4.
    static const std::set<unsigned int>& SourceIds();
    /// Source n to parameter 2800 + n.
    static const std::map<unsigned int, unsigned int>& SourceToMasterParameter();

  private:
    void StoreEntry(const LinkLawEntry& entry);
    void EntriesChanged();
    void NotifyListener();

    ILinkLawsListener* m_listener = nullptr;
    std::vector<LinkLawEntry> m_entries;
    std::map<unsigned int, double> m_sources;
    std::map<unsigned int, double> m_masterValues;
    bool m_targetValuesValid = false;
    std::map<unsigned int, double> m_targetValues;
    bool m_sourceMapValid = false;
    std::map<unsigned int, unsigned int> m_sourceToMaster;
};

}  // namespace TesselFX
