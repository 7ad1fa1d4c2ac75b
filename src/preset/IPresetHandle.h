#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "preset/IPresetHandleListener.h"
#include "preset/LinkLawEntry.h"
#include "preset/OmSm.h"
#include "preset/ParameterMaps.h"

namespace TesselFX {

class SuperPreset;

/// The merged view of one mode pair: system and user presets of the base and the enabled
/// subtypes, a super preset and the link laws. Reads recompute lazily after a change.
/// No locks: the caller's lock covers every call; notifications run inside the changing call.
class IPresetHandle {
  public:
    virtual ~IPresetHandle() = default;

    virtual uint32_t GetOutputMode() const = 0;
    virtual uint32_t GetSoundMode() const = 0;
    virtual bool GetParameter(unsigned int id, double& value) = 0;
    virtual bool GetParameterArray(const std::vector<unsigned int>& ids,
                                   std::vector<double>& values, bool mustFindAll) = 0;
    virtual bool GetAllParameters(std::vector<unsigned int>& ids, std::vector<double>& values) = 0;
    virtual std::map<unsigned int, double> GetAllParameters() = 0;
    /// The parameters without link-law results.
    virtual std::map<unsigned int, double> GetPresetParameters() = 0;
    virtual uint32_t GetParameterCount() = 0;
    virtual bool HasParameter(unsigned int id) = 0;
    virtual bool SetSubtypeMasks(SubtypeMasks masks) = 0;
    virtual bool SetSubtypeMasksEx(SubtypeMasks tagDisable, SubtypeMasks tagEnable) = 0;
    virtual SubtypeMasks GetSubtypeMasks() const = 0;
    virtual SubtypeMasks GetSupportedSubtypeMasks() const = 0;
    /// Only index ZBAC_LINKLAWS is served.
    virtual bool GetChunk(int index, std::vector<char>& data) = 0;
    virtual void Dump() = 0;
    /// A preset of the pair changed; masks 0 concerns every handle.
    virtual void NotifyChanged(SubtypeMasks subTypeMasks) = 0;
    /// Not owned; may be null.
    virtual void SetListener(IPresetHandleListener* listener) = 0;
    virtual std::map<unsigned int, unsigned int> GetLinkLawSourceToMasterMap() = 0;
    virtual bool SetLinkLawValue(unsigned int sourceId, double value) = 0;
    virtual bool ClearLinkLawSource(unsigned int sourceId) = 0;
    virtual std::map<unsigned int, double> GetLinkLawSources() = 0;
    virtual bool IsLinkLawSimulation() = 0;
    virtual std::vector<LinkLawEntry> GetLinkLawEntries() = 0;
    /// Must not be called with an empty pointer.
    virtual void SetSuperPreset(const std::shared_ptr<SuperPreset>& superPreset) = 0;

    /// The final parameters in ascending id, refreshed first; the same read as the map form of
    /// GetAllParameters without its copy. The list belongs to the handle and stays valid until
    /// the next call on the handle. Null from a handle that keeps no such list.
    virtual const ParameterList* GetFinalParameterList() { return nullptr; }
    /// Refreshes, then moves into ids every parameter whose final value or presence may have
    /// changed since the previous call (in no order, possibly repeated). False when any
    /// parameter may have changed: at the first call, after a merge of the presets, or from a
    /// handle that does not track changes; ids is then empty.
    virtual bool TakeParameterChanges(std::vector<unsigned int>& ids) {
        ids.clear();
        return false;
    }
};

}  // namespace TesselFX
