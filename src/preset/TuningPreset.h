#pragma once

#include <map>
#include <memory>
#include <vector>

#include "preset/CLinkLawEntrySerializer.h"
#include "preset/ITuningPreset.h"
#include "preset/LinkLaws.h"
#include "preset/ParameterChangeRecord.h"

namespace TesselFX {

/// The tuning tool's scratch copy of a handle's view. Parameters written to it form the base
/// map; link laws lie over the base only in state ACTIVE (parameter 2821 on, 2820 off), and a
/// read then sees base, master values and target values. Leaving ACTIVE, or moving between
/// DISABLED and SIMULATION, folds what the link laws compute at that moment into the base, so
/// that what was heard last stays. The merged parameters are refreshed lazily on the first read
/// after a change: anew after a change of the link laws or the state, else for the parameters
/// written, which are also recorded for TakeParameterChanges. Parameters are kept in flat
/// storage. No locks: the control manager's lock covers every call.
class TuningPreset : public ITuningPreset {
  public:
    enum LinkLawsState { DISABLED = 0, ACTIVE = 1, SIMULATION = 2 };

    /// Takes the switches' defaults from linkLaws. Neither pointer may be null; the serializer
    /// decodes chunk ZBAC_LINKLAWS, the link laws compute the targets.
    TuningPreset(const std::shared_ptr<CLinkLawEntrySerializer>& serializer,
                 const std::shared_ptr<LinkLaws>& linkLaws);
    TuningPreset(const TuningPreset&) = delete;
    TuningPreset& operator=(const TuningPreset&) = delete;

    void InitFromPresetHandle(const std::shared_ptr<IPresetHandle>& handle) override;
    void SetParameter(unsigned int id, double value) override;
    void SetParameterArray(const std::vector<unsigned int>& ids,
                           const std::vector<double>& values) override;
    void SetParameterArray(const std::map<unsigned int, double>& parameters) override;
    bool GetParameter(unsigned int id, double& value) override;
    bool GetParameterArray(const std::vector<unsigned int>& ids, std::vector<double>& values,
                           bool mustFindAll) override;
    bool GetAllParameters(std::vector<unsigned int>& ids, std::vector<double>& values) override;
    std::map<unsigned int, double> GetAllParameters() override;
    void SetChunk(unsigned int index, const std::vector<char>& data) override;
    bool GetChunk(unsigned int index, std::vector<char>& data) override;
    std::map<unsigned int, std::vector<char>> GetAllChunks() override;
    std::vector<unsigned int> GetChunkIndices() override;
    std::vector<LinkLawEntry> GetLinkLawEntries() override;
    bool SetLinkLawValue(unsigned int sourceId, double value) override;
    bool ClearLinkLawSource(unsigned int sourceId) override;
    const ParameterList* GetFinalParameterList() override;
    bool TakeParameterChanges(std::vector<unsigned int>& ids) override;

    /// Whether the next read refreshes the merged parameters.
    bool IsParametersChanged() const;
    /// Refreshes the merged parameters now (in state ACTIVE only) and clears the changed flag.
    void RefreshParameters();
    /// Forces a state; any state but ACTIVE folds the link-law results into the base first.
    void SetLinkLawsState(LinkLawsState state);
    LinkLawsState GetLinkLawsState() const;
    /// Takes the two switches from parameters, when present, and moves the state; stores no
    /// value.
    void UpdateLinkLawsFromParameters(const std::map<unsigned int, double>& parameters);

  private:
    void UpdateLinkLawsState();
    /// Stores a state; leaving or entering ACTIVE changes what reads see.
    void StoreLinkLawsState(LinkLawsState state);
    void DeactivateLinkLaws();
    void MergeLinkLawsParamsToBase();
    /// The list that reads answer from, refreshed first when something changed.
    const ParameterList& ParametersInForce();
    /// The link laws' results changed: the next refresh lays them anew over the base.
    void LinkLawsChanged();
    /// Records that the value in force of id may have changed.
    void RecordChanged(unsigned int id);
    /// Any value in force may have changed: the next refresh lays the link laws anew over the
    /// base, and the record counts everything as changed.
    void ChangedAll();

    std::shared_ptr<CLinkLawEntrySerializer> m_serializer;
    std::shared_ptr<LinkLaws> m_linkLaws;
    bool m_parametersChanged = false;
    ParameterList m_baseParameters;
    /// Base plus link-law results; kept in state ACTIVE only.
    ParameterList m_mergedParameters;
    std::map<unsigned int, std::vector<char>> m_chunks;
    std::vector<LinkLawEntry> m_linkLawEntries;
    bool m_linkLawsActive = false;
    bool m_linkLawsSimulation = false;
    LinkLawsState m_linkLawsState = DISABLED;
    /// The master and target values laid over the base in m_mergedParameters.
    ParameterList m_linkLawParameters;
    /// The next refresh builds m_mergedParameters anew rather than for m_writtenIds alone.
    bool m_mergeAll = true;
    /// Ids written since the last refresh.
    std::vector<unsigned int> m_writtenIds;
    /// Changes of the values in force since the last TakeParameterChanges.
    ParameterChangeRecord m_changes;
};

}  // namespace TesselFX
