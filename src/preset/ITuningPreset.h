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
};

}  // namespace TesselFX
