#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "preset/IPreset.h"
#include "preset/IPresetHandle.h"
#include "preset/OmSm.h"

namespace TesselFX {

/// Mode wildcard of the operations that take int modes: every known output or sound mode.
constexpr int kAllModes = -3;

/// Owns every preset of the effect: system presets with a user twin per key, the supported
/// and enabled subtypes per mode pair, and the handles it gave out (held weakly).
/// No locks: callers hold the control manager's lock.
class IPresetSet {
  public:
    virtual ~IPresetSet() = default;

    virtual void SetPresets(const PresetMap& systemPresets, bool isSystemPresetValid,
                            const PresetMap& userPresets, bool isUserPresetValid) = 0;
    virtual void SetEnabledSubtypeMasks(const std::map<OmSm, SubtypeMasks>& masks) = 0;
    virtual ConstPresetPtrSet GetSystemPresets() const = 0;
    virtual PresetPtrSet GetUserPresets() const = 0;
    virtual std::shared_ptr<const IPreset> GetSystemPreset(unsigned int om, unsigned int sm,
                                                           unsigned int subTypeMask) const = 0;
    virtual std::shared_ptr<IPreset> GetUserPreset(unsigned int om, unsigned int sm,
                                                   unsigned int subTypeMask) const = 0;
    virtual bool SetParameter(unsigned int id, double value, int om, int sm, SubtypeMasks masks,
                              bool addNonexistingParamsInSubPresetToBasePreset) = 0;
    virtual bool SetParameterArray(const std::vector<unsigned int>& ids,
                                   const std::vector<double>& values, int om, int sm,
                                   SubtypeMasks masks,
                                   bool addNonexistingParamsInSubPresetToBasePreset) = 0;
    virtual bool SetParameterArray(const std::map<unsigned int, double>& parameters, int om, int sm,
                                   SubtypeMasks masks,
                                   bool addNonexistingParamsInSubPresetToBasePreset) = 0;
    virtual bool SetChunk(unsigned int index, const std::vector<char>& data, int om, int sm,
                          SubtypeMasks masks) = 0;
    virtual std::shared_ptr<IPresetHandle> RequestPresetHandle(unsigned int om,
                                                               unsigned int sm) = 0;
    virtual bool ClearParameter(unsigned int id, int om, int sm, SubtypeMasks masks,
                                bool addNonexistingParamsInSubPresetToBasePreset) = 0;
    virtual bool ClearParameterArray(const std::vector<unsigned int>& ids, int om, int sm,
                                     SubtypeMasks masks,
                                     bool addNonexistingParamsInSubPresetToBasePreset) = 0;
    virtual void ClearUserPresets() = 0;
    virtual bool IsSupported(unsigned int om, unsigned int sm) const = 0;
    virtual bool IsDefaultSoundMode(unsigned int om, unsigned int sm) const = 0;
    virtual bool Validate() = 0;
    virtual void Dump() const = 0;
    virtual void Dump(unsigned int om, unsigned int sm) const = 0;
    virtual SubtypeMasks GetSupportedSubtypeMasks(unsigned int om, unsigned int sm) const = 0;
    virtual std::map<OmSm, SubtypeMasks> GetSupportedSubtypeMasks() const = 0;
    virtual std::map<OmSm, SubtypeMasks> GetEnabledSubtypeMasks() const = 0;
    virtual SubtypeMasks GetEnabledSubtypeMasks(unsigned int om, unsigned int sm) const = 0;
    virtual std::set<unsigned int> GetOutputModes() const = 0;
    virtual std::set<unsigned int> GetSoundModes() const = 0;
    virtual std::set<OmSm> GetOmSms() const = 0;
    virtual bool SetSubtypeMasks(int om, int sm, SubtypeMasks masks) = 0;
    virtual bool SetSubtypeMasksEx(int om, int sm, SubtypeMasks tagDisable,
                                   SubtypeMasks tagEnable) = 0;
    /// Reads system presets alone.
    virtual bool GetDefaultParametersArray(const std::vector<unsigned int>& ids,
                                           std::map<unsigned int, double>& out, unsigned int om,
                                           unsigned int sm, SubtypeMasks subTypeMask,
                                           bool allSupportedSubtypes, bool mustFindAll) const = 0;
    virtual bool IsPresetsLoaded() const = 0;
    virtual void SetTags(const std::map<unsigned int, std::string>& tags) = 0;
    virtual std::map<unsigned int, std::string> GetTags() const = 0;
};

}  // namespace TesselFX
