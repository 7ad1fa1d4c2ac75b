#pragma once

#include <map>
#include <memory>
#include <vector>

#include "preset/IPresetHandle.h"
#include "preset/LinkLawEntry.h"

namespace TesselFX {

/// A scratch copy of a handle's view that a tuning tool writes to while tuning mode lasts.
/// It answers the reads of a handle and keeps its own link-law state. No locks.
class ITuningPreset {
  public:
    virtual ~ITuningPreset() = default;

    virtual void InitFromPresetHandle(const std::shared_ptr<IPresetHandle>& handle) = 0;
    virtual void SetParameter(unsigned int id, double value) = 0;
    /// Throws std::out_of_range when values is shorter than ids.
    virtual void SetParameterArray(const std::vector<unsigned int>& ids,
                                   const std::vector<double>& values) = 0;
    virtual void SetParameterArray(const std::map<unsigned int, double>& parameters) = 0;
    virtual bool GetParameter(unsigned int id, double& value) = 0;
    virtual bool GetParameterArray(const std::vector<unsigned int>& ids,
                                   std::vector<double>& values, bool mustFindAll) = 0;
    virtual bool GetAllParameters(std::vector<unsigned int>& ids, std::vector<double>& values) = 0;
    virtual std::map<unsigned int, double> GetAllParameters() = 0;
    virtual void SetChunk(unsigned int index, const std::vector<char>& data) = 0;
    virtual bool GetChunk(unsigned int index, std::vector<char>& data) = 0;
    virtual std::map<unsigned int, std::vector<char>> GetAllChunks() = 0;
    virtual std::vector<unsigned int> GetChunkIndices() = 0;
    virtual std::vector<LinkLawEntry> GetLinkLawEntries() = 0;
    virtual bool SetLinkLawValue(unsigned int sourceId, double value) = 0;
    virtual bool ClearLinkLawSource(unsigned int sourceId) = 0;

    /// The parameters in force in ascending id, refreshed first; the same read as the map form
    /// of GetAllParameters without its copy. The list belongs to the tuning preset and stays
    /// valid until the next call on it. Null from one that keeps no such list.
    virtual const ParameterList* GetFinalParameterList() { return nullptr; }
    /// Refreshes, then moves into ids every parameter whose value in force or presence may have
    /// changed since the previous call (in no order, possibly repeated). False when any may
    /// have changed: at the first call, or from a tuning preset that does not track changes;
    /// ids is then empty.
    virtual bool TakeParameterChanges(std::vector<unsigned int>& ids) {
        ids.clear();
        return false;
    }
};

}  // namespace TesselFX
