#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "preset/LinkLawEntry.h"
#include "preset/OmSm.h"

namespace TesselFX {

/// A named bag of parameter values and data chunks for one output mode, sound mode and
/// subtype mask. Presets have no locks: the caller's lock guards them. They are shared by
/// shared pointer; a change through one owner shows in all.
class IPreset {
  public:
    virtual ~IPreset() = default;

    virtual void SetParameter(unsigned int id, double value) = 0;
    /// Pairs by position over the length of ids.
    virtual void SetParameterArray(const std::vector<unsigned int>& ids,
                                   const std::vector<double>& values) = 0;
    virtual void SetParameterArray(const std::map<unsigned int, double>& parameters) = 0;
    virtual bool GetParameter(unsigned int id, double& value) const = 0;
    virtual bool GetParameterArray(const std::vector<unsigned int>& ids,
                                   std::vector<double>& values) const = 0;
    virtual bool GetAllParameters(std::vector<unsigned int>& ids,
                                  std::vector<double>& values) const = 0;
    virtual std::map<unsigned int, double> GetAllParameters() const = 0;
    virtual bool HasParameter(unsigned int id) const = 0;
    virtual void ClearParameter(unsigned int id) = 0;
    virtual void ClearParameterArray(const std::vector<unsigned int>& ids) = 0;
    virtual void ClearAllParameters() = 0;
    /// Index ZBAC_LINKLAWS also decodes the link-law entries.
    virtual void SetChunk(unsigned int index, const std::vector<char>& data) = 0;
    virtual bool GetChunk(unsigned int index, std::vector<char>& data) const = 0;
    virtual std::map<unsigned int, std::vector<char>> GetAllChunks() const = 0;
    virtual std::vector<unsigned int> GetChunkIndices() const = 0;
    virtual uint32_t GetChunkCount() const = 0;
    virtual void ClearChunk(unsigned int index) = 0;
    virtual void ClearAllChunks() = 0;
    virtual void ClearAll() = 0;
    virtual bool IsDefaultSoundMode() const = 0;
    virtual std::string GetName() const = 0;
    virtual std::string GetRemarks() const = 0;
    virtual uint32_t GetOutputMode() const = 0;
    virtual uint32_t GetSoundMode() const = 0;
    virtual uint32_t GetSubtypeMask() const = 0;
    virtual uint8_t GetPriority() const = 0;
    virtual uint16_t GetFlags() const = 0;
    virtual uint32_t GetParameterCount() const = 0;
    virtual bool IsEmpty() const = 0;
    virtual void Dump() const = 0;
    virtual const IPreset* AsConst() const = 0;
    virtual IPreset* AsMutable() = 0;
    /// A deep copy of the concrete class.
    virtual std::shared_ptr<IPreset> Clone() const = 0;
    virtual std::vector<LinkLawEntry> GetLinkLawEntries() const = 0;
    virtual void DumpLinkLaws() const = 0;
};

/// Presets by key, as the reader delivers them.
using PresetMap = std::map<OmSmSubtypeMask, std::shared_ptr<const IPreset>>;
/// The base and sub presets of one mode pair, ordered by pointer value.
using ConstPresetPtrSet = std::set<std::shared_ptr<const IPreset>>;
using PresetPtrSet = std::set<std::shared_ptr<IPreset>>;

}  // namespace TesselFX
