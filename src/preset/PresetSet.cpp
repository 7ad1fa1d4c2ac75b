#include "preset/PresetSet.h"

#include "log/TesselLog.h"
#include "preset/PresetOrder.h"

namespace TesselFX {

namespace {

const char* YesNo(bool value) { return value ? "yes" : "no"; }
const char* TrueFalse(bool value) { return value ? "true" : "false"; }

}  // namespace

PresetSet::PresetSet(const PresetMap& systemPresets, const PresetMap& userPresets,
                     const std::shared_ptr<IPresetHandleFactory>& presetHandleFactory,
                     const std::shared_ptr<IPresetFactory>& presetFactory)
    : m_systemPresets(systemPresets),
      m_loadedUserPresets(userPresets),
      m_presetHandleFactory(presetHandleFactory),
      m_presetFactory(presetFactory) {
    InitPresetSet();
}

void PresetSet::InitPresetSet() {
    for (const auto& system : m_systemPresets) {
        const OmSmSubtypeMask& key = system.first;
        const std::shared_ptr<const IPreset>& preset = system.second;
        if (!preset) continue;
        const OmSm omSm{key.om, key.sm};
        std::shared_ptr<IPreset> user;
        const auto loaded = m_loadedUserPresets.find(key);
        if (loaded != m_loadedUserPresets.end() && loaded->second) {
            user = loaded->second->Clone();
        } else {
            user = m_presetFactory->Create(preset->GetOutputMode(), preset->GetSoundMode(),
                                           preset->GetSubtypeMask(), preset->GetName(),
                                           preset->GetRemarks(), preset->GetFlags(),
                                           preset->GetPriority(), true);
        }
        m_userPresets[key] = user;
        m_systemPresetsByOmSm[omSm].insert(preset);
        m_userPresetsByOmSm[omSm].insert(user);
        m_userPresetsByOm[key.om].insert(user);
        m_userPresetsBySm[key.sm].insert(user);
        m_supportedSubtypeMasks[omSm] |= key.subtypeMask;
        m_outputModes.insert(key.om);
        m_soundModes.insert(key.sm);
        m_omSms.insert(omSm);
    }
    m_isPresetsLoaded = !m_systemPresets.empty();
}

std::set<OmSm> PresetSet::ExpandOmSm(int om, int sm) const {
    std::set<OmSm> pairs;
    if (om == kAllModes && sm == kAllModes) {
        pairs = m_omSms;
    } else if (om >= 0 && sm >= 0) {
        pairs.insert(OmSm{static_cast<uint32_t>(om), static_cast<uint32_t>(sm)});
    } else if (om == kAllModes && sm >= 0) {
        for (unsigned int o : m_outputModes) pairs.insert(OmSm{o, static_cast<uint32_t>(sm)});
    } else if (om >= 0 && sm == kAllModes) {
        for (unsigned int s : m_soundModes) pairs.insert(OmSm{static_cast<uint32_t>(om), s});
    }
    return pairs;
}

template <typename Change>
bool PresetSet::ChangePairs(int om, int sm, SubtypeMasks masks, SubtypeMasks notifyMasks,
                            Change change) {
    const std::set<OmSm> pairs = ExpandOmSm(om, sm);
    bool result = false;
    for (const OmSm& pair : pairs) result = change(pair) || result;
    if (!result) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "no valid om %d sm %d subtypeMasks 0x%u", om, sm,
                         masks);
        return false;
    }
    NotifyPresetHandlesChanged(pairs, notifyMasks);
    return true;
}

bool PresetSet::CheckValid(const OmSm& omSm) const {
    if (m_omSms.count(omSm) != 0) return true;
    TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "invalid outputMode %u soundMode %u", omSm.om, omSm.sm);
    return false;
}

PresetPtrSet PresetSet::UserPresetsOf(const OmSm& omSm) const {
    const auto found = m_userPresetsByOmSm.find(omSm);
    return found == m_userPresetsByOmSm.end() ? PresetPtrSet() : found->second;
}

void PresetSet::SetPresets(const PresetMap& systemPresets, bool isSystemPresetValid,
                           const PresetMap& userPresets, bool isUserPresetValid) {
    TESSEL_LOG(1, TESSEL_LOG_FXModule,
               "SetPresets() isSystemPresetValid = %s isUserPresetValid = %s",
               TrueFalse(isSystemPresetValid), TrueFalse(isUserPresetValid));
    if (isSystemPresetValid) {
        ClearAll();
        m_systemPresets = systemPresets;
    }
    if (isUserPresetValid) {
        ClearUserPresetsWithoutNotification();
        m_loadedUserPresets = userPresets;
    }
    InitPresetSet();
    NotifyPresetHandlesChanged(m_omSms, 0);
}

void PresetSet::SetEnabledSubtypeMasks(const std::map<OmSm, SubtypeMasks>& masks) {
    m_enabledSubtypeMasks = masks;
}

ConstPresetPtrSet PresetSet::GetSystemPresets() const {
    ConstPresetPtrSet presets;
    for (const auto& preset : m_systemPresets) presets.insert(preset.second);
    return presets;
}

PresetPtrSet PresetSet::GetUserPresets() const {
    PresetPtrSet presets;
    for (const auto& preset : m_userPresets) presets.insert(preset.second);
    return presets;
}

std::shared_ptr<const IPreset> PresetSet::GetSystemPreset(unsigned int om, unsigned int sm,
                                                          unsigned int subTypeMask) const {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "%s %u %u %u", "GetSystemPreset", om, sm, subTypeMask);
    const auto found = m_systemPresets.find(OmSmSubtypeMask{om, sm, subTypeMask});
    return found == m_systemPresets.end() ? nullptr : found->second;
}

std::shared_ptr<IPreset> PresetSet::GetUserPreset(unsigned int om, unsigned int sm,
                                                  unsigned int subTypeMask) const {
    const auto found = m_userPresets.find(OmSmSubtypeMask{om, sm, subTypeMask});
    return found == m_userPresets.end() ? nullptr : found->second;
}

bool PresetSet::SetParameter(unsigned int id, double value, int om, int sm, SubtypeMasks masks,
                             bool addNonexistingParamsInSubPresetToBasePreset) {
    return SetParameterArray(std::map<unsigned int, double>{{id, value}}, om, sm, masks,
                             addNonexistingParamsInSubPresetToBasePreset);
}

bool PresetSet::SetParameterArray(const std::vector<unsigned int>& ids,
                                  const std::vector<double>& values, int om, int sm,
                                  SubtypeMasks masks,
                                  bool addNonexistingParamsInSubPresetToBasePreset) {
    std::map<unsigned int, double> parameters;
    for (size_t i = 0; i < ids.size() && i < values.size(); ++i) parameters[ids[i]] = values[i];
    return SetParameterArray(parameters, om, sm, masks,
                             addNonexistingParamsInSubPresetToBasePreset);
}

bool PresetSet::SetParameterArray(const std::map<unsigned int, double>& parameters, int om, int sm,
                                  SubtypeMasks masks,
                                  bool addNonexistingParamsInSubPresetToBasePreset) {
    return ChangePairs(om, sm, masks, addNonexistingParamsInSubPresetToBasePreset ? 0 : masks,
                       [&](const OmSm& pair) {
                           return SetParameterArray(parameters, pair, masks,
                                                    addNonexistingParamsInSubPresetToBasePreset);
                       });
}

bool PresetSet::SetParameterArray(const std::map<unsigned int, double>& parameters,
                                  const OmSm& omSm, SubtypeMasks masks,
                                  bool addNonexistingParamsInSubPresetToBasePreset) {
    if (!CheckValid(omSm)) return false;
    if (masks == 0) return SetParameterArrayBasePreset(parameters, omSm);
    return SetParameterArraySubPreset(parameters, omSm, masks,
                                      addNonexistingParamsInSubPresetToBasePreset);
}

bool PresetSet::SetParameterArrayBasePreset(const std::map<unsigned int, double>& parameters,
                                            const OmSm& omSm) {
    // A file may lack the base preset of a pair; then there is nothing to write into.
    const auto base = m_userPresets.find(OmSmSubtypeMask{omSm.om, omSm.sm, 0});
    if (base == m_userPresets.end()) return false;
    base->second->SetParameterArray(parameters);
    return true;
}

bool PresetSet::SetParameterArraySubPreset(const std::map<unsigned int, double>& parameters,
                                           const OmSm& omSm, SubtypeMasks masks,
                                           bool addNonexistingParamsInSubPresetToBasePreset) {
    TESSEL_LOG(1, TESSEL_LOG_FXModule,
               "%s om %u sm %u subTypeMask 0x%x addNonexistingParamsInSubPresetToBasePreset %s",
               "SetParameterArraySubPreset", omSm.om, omSm.sm, masks,
               YesNo(addNonexistingParamsInSubPresetToBasePreset));
    if (!addNonexistingParamsInSubPresetToBasePreset) {
        bool result = false;
        for (const auto& preset : UserPresetsOf(omSm)) {
            if ((preset->GetSubtypeMask() & masks) == 0) continue;
            preset->SetParameterArray(parameters);
            result = true;
        }
        return result;
    }
    std::map<unsigned int, double> remaining = parameters;
    const auto systemSet = m_systemPresetsByOmSm.find(omSm);
    if (systemSet != m_systemPresetsByOmSm.end()) {
        for (const auto& system : systemSet->second) {
            if ((system->GetSubtypeMask() & masks) == 0) continue;
            const auto twin =
                m_userPresets.find(OmSmSubtypeMask{omSm.om, omSm.sm, system->GetSubtypeMask()});
            if (twin == m_userPresets.end()) continue;
            for (const auto& parameter : parameters) {
                if (!system->HasParameter(parameter.first)) continue;
                twin->second->SetParameter(parameter.first, parameter.second);
                remaining.erase(parameter.first);
            }
        }
    }
    if (!remaining.empty()) SetParameterArrayBasePreset(remaining, omSm);
    return true;
}

bool PresetSet::SetChunk(unsigned int index, const std::vector<char>& data, int om, int sm,
                         SubtypeMasks masks) {
    return ChangePairs(om, sm, masks, masks,
                       [&](const OmSm& pair) { return SetChunk(index, data, pair, masks); });
}

bool PresetSet::SetChunk(unsigned int index, const std::vector<char>& data, const OmSm& omSm,
                         SubtypeMasks masks) {
    if (!CheckValid(omSm)) return false;
    bool result = false;
    for (const auto& preset : UserPresetsOf(omSm)) {
        const SubtypeMasks presetMask = preset->GetSubtypeMask();
        if ((presetMask & masks) != 0 || (presetMask == 0 && masks == 0)) {
            preset->SetChunk(index, data);
            result = true;
        }
    }
    return result;
}

bool PresetSet::ClearParameter(unsigned int id, int om, int sm, SubtypeMasks masks,
                               bool addNonexistingParamsInSubPresetToBasePreset) {
    return ClearParameterArray(std::vector<unsigned int>{id}, om, sm, masks,
                               addNonexistingParamsInSubPresetToBasePreset);
}

bool PresetSet::ClearParameterArray(const std::vector<unsigned int>& ids, int om, int sm,
                                    SubtypeMasks masks,
                                    bool addNonexistingParamsInSubPresetToBasePreset) {
    return ChangePairs(om, sm, masks, addNonexistingParamsInSubPresetToBasePreset ? 0 : masks,
                       [&](const OmSm& pair) {
                           return ClearParameterArray(ids, pair, masks,
                                                      addNonexistingParamsInSubPresetToBasePreset);
                       });
}

bool PresetSet::ClearParameterArray(const std::vector<unsigned int>& ids, const OmSm& omSm,
                                    SubtypeMasks masks,
                                    bool addNonexistingParamsInSubPresetToBasePreset) {
    if (!CheckValid(omSm)) return false;
    bool result = false;
    for (const auto& preset : UserPresetsOf(omSm)) {
        const SubtypeMasks presetMask = preset->GetSubtypeMask();
        if ((presetMask & masks) != 0 ||
            ((masks == 0 || addNonexistingParamsInSubPresetToBasePreset) && presetMask == 0)) {
            preset->ClearParameterArray(ids);
            result = true;
        }
    }
    return result;
}

std::shared_ptr<IPresetHandle> PresetSet::RequestPresetHandle(unsigned int om, unsigned int sm) {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "RequestPresetHandle %u %u", om, sm);
    const OmSm pair{om, sm};
    const auto systemSet = m_systemPresetsByOmSm.find(pair);
    if (systemSet == m_systemPresetsByOmSm.end()) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "unsupported om %u sm %u", om, sm);
        return nullptr;
    }
    std::shared_ptr<IPresetHandle> handle = m_presetHandleFactory->Create(
        om, sm, m_supportedSubtypeMasks[pair], systemSet->second, UserPresetsOf(pair));
    if (!handle) return nullptr;
    // A handle's storage lasts as long as a weak pointer to it: without a walk of the pair,
    // every mode change would leave one behind.
    PurgeDeadPresetHandles(pair);
    m_presetHandles[pair].insert(handle);
    m_presetHandlesByOm[om].insert(handle);
    m_presetHandlesBySm[sm].insert(handle);
    handle->SetSubtypeMasks(m_enabledSubtypeMasks[pair]);
    return handle;
}

void PresetSet::PurgeDeadPresetHandles(const OmSm& omSm) {
    ForEachPresetHandle(omSm, [](IPresetHandle&) {});
}

template <typename Action>
void PresetSet::ForEachPresetHandle(const OmSm& omSm, Action action) {
    const auto found = m_presetHandles.find(omSm);
    if (found == m_presetHandles.end()) return;
    // A handle's listener may ask for further handles while it is told; walk a copy.
    const WeakHandleSet handles = found->second;
    for (const std::weak_ptr<IPresetHandle>& weak : handles) {
        if (std::shared_ptr<IPresetHandle> handle = weak.lock()) {
            action(*handle);
            continue;
        }
        m_presetHandlesByOm[omSm.om].erase(weak);
        m_presetHandlesBySm[omSm.sm].erase(weak);
        m_presetHandles[omSm].erase(weak);
    }
}

void PresetSet::SetPresetHandlesSubtypeMasks(const OmSm& omSm) {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, " SetPresetHandlesSubtypeMasks om = %d, sm = %d", omSm.om,
               omSm.sm);
    ForEachPresetHandle(omSm, [this, &omSm](IPresetHandle& handle) {
        handle.SetSubtypeMasks(m_enabledSubtypeMasks[omSm]);
    });
}

void PresetSet::NotifyPresetHandlesChanged(const std::set<OmSm>& omSms, SubtypeMasks masks) {
    for (const OmSm& omSm : omSms) {
        ForEachPresetHandle(omSm, [masks](IPresetHandle& handle) { handle.NotifyChanged(masks); });
    }
}

void PresetSet::ClearUserPresets() {
    ClearUserPresetsWithoutNotification();
    NotifyPresetHandlesChanged(m_omSms, 0);
}

void PresetSet::ClearAll() {
    m_isPresetsLoaded = false;
    ClearSystemPresetsWithoutNotification();
    ClearUserPresetsWithoutNotification();
}

void PresetSet::ClearSystemPresetsWithoutNotification() {
    m_systemPresetsByOmSm.clear();
    m_systemPresets.clear();
    m_supportedSubtypeMasks.clear();
    m_outputModes.clear();
    m_soundModes.clear();
    m_omSms.clear();
}

void PresetSet::ClearUserPresetsWithoutNotification() {
    m_userPresetsByOmSm.clear();
    m_userPresetsByOm.clear();
    m_userPresetsBySm.clear();
    m_userPresets.clear();
    m_enabledSubtypeMasks.clear();
}

bool PresetSet::IsSupported(unsigned int om, unsigned int sm) const {
    return m_omSms.count(OmSm{om, sm}) != 0;
}

bool PresetSet::IsDefaultSoundMode(unsigned int om, unsigned int sm) const {
    const auto found = m_systemPresets.find(OmSmSubtypeMask{om, sm, 0});
    return found != m_systemPresets.end() && found->second->IsDefaultSoundMode();
}

bool PresetSet::Validate() { return true; }

void PresetSet::Dump() const {
    for (const auto& preset : m_systemPresets) preset.second->Dump();
    TESSEL_LOG(2, TESSEL_LOG_Preset, "---------------------------- User modifications:");
    for (const auto& preset : m_userPresets) preset.second->Dump();
}

void PresetSet::Dump(unsigned int om, unsigned int sm) const {
    if (!CheckValid(OmSm{om, sm})) return;
    const auto inPair = [om, sm](const OmSmSubtypeMask& key) {
        return key.om == om && key.sm == sm;
    };
    for (const auto& preset : m_systemPresets) {
        if (inPair(preset.first)) preset.second->Dump();
    }
    TESSEL_LOG(2, TESSEL_LOG_Preset, "---------------------------- User modifications:");
    for (const auto& preset : m_userPresets) {
        if (inPair(preset.first)) preset.second->Dump();
    }
}

SubtypeMasks PresetSet::GetSupportedSubtypeMasks(unsigned int om, unsigned int sm) const {
    const auto found = m_supportedSubtypeMasks.find(OmSm{om, sm});
    return found == m_supportedSubtypeMasks.end() ? 0 : found->second;
}

std::map<OmSm, SubtypeMasks> PresetSet::GetSupportedSubtypeMasks() const {
    return m_supportedSubtypeMasks;
}

std::map<OmSm, SubtypeMasks> PresetSet::GetEnabledSubtypeMasks() const {
    return m_enabledSubtypeMasks;
}

SubtypeMasks PresetSet::GetEnabledSubtypeMasks(unsigned int om, unsigned int sm) const {
    const auto found = m_enabledSubtypeMasks.find(OmSm{om, sm});
    return found == m_enabledSubtypeMasks.end() ? 0 : found->second;
}

std::set<unsigned int> PresetSet::GetOutputModes() const { return m_outputModes; }

std::set<unsigned int> PresetSet::GetSoundModes() const { return m_soundModes; }

std::set<OmSm> PresetSet::GetOmSms() const { return m_omSms; }

bool PresetSet::SetSubtypeMasks(int om, int sm, SubtypeMasks masks) {
    return SetSubtypeMasksEx(om, sm, ~0u, masks);
}

bool PresetSet::SetSubtypeMasksEx(int om, int sm, SubtypeMasks tagDisable, SubtypeMasks tagEnable) {
    TESSEL_LOG(1, TESSEL_LOG_FXModule,
               "SetSubtypeMasksEx om [%d] sm [%d] tag disable [0x%08x] tag enable [0x%08x]", om, sm,
               tagDisable, tagEnable);
    const std::set<OmSm> pairs = ExpandOmSm(om, sm);
    if (pairs.empty()) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "Not support om = %d or sm = %d", om, sm);
        return false;
    }
    for (const OmSm& pair : pairs) {
        m_enabledSubtypeMasks[pair] = GetFinalEnabledSubtypeMasks(
            m_supportedSubtypeMasks[pair], m_enabledSubtypeMasks[pair], tagDisable, tagEnable);
        SetPresetHandlesSubtypeMasks(pair);
    }
    return true;
}

SubtypeMasks PresetSet::GetFinalEnabledSubtypeMasks(SubtypeMasks allowed, SubtypeMasks current,
                                                    SubtypeMasks tagDisable,
                                                    SubtypeMasks tagEnable) {
    const SubtypeMasks finalMask = ((current & ~tagDisable) | tagEnable) & allowed;
    if (tagEnable != 0 && (tagEnable & ~allowed) != 0) {
        TESSEL_LOG(1, TESSEL_LOG_FXModule,
                   "GetFinalEnabledSubtypeMasks trying to set not-supported tag. Final tag "
                   "[0x%08x]",
                   finalMask);
    }
    TESSEL_LOG(1, TESSEL_LOG_FXModule,
               "GetFinalEnabledSubtypeMasks tag disable [0x%08x] tag enable [0x%08x] tag "
               "allowed[0x%08x]. Final tag [0x%08x]",
               tagDisable, tagEnable, allowed, finalMask);
    return finalMask;
}

bool PresetSet::GetDefaultParametersArray(const std::vector<unsigned int>& ids,
                                          std::map<unsigned int, double>& out, unsigned int om,
                                          unsigned int sm, SubtypeMasks subTypeMask,
                                          bool allSupportedSubtypes, bool mustFindAll) const {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "%s om %u sm %u subTypeMask %u", "GetDefaultParametersArray",
               om, sm, subTypeMask);
    if (!IsSupported(om, sm) || ids.empty()) return false;
    // At most 32 single bits and the base: 33 masks.
    std::vector<SubtypeMasks> masks;
    const auto split = [&masks](SubtypeMasks value) {
        for (uint32_t bit = 0; bit < 32; ++bit) {
            if ((value & (1u << bit)) != 0) masks.push_back(1u << bit);
        }
    };
    if (subTypeMask != 0) {
        split(subTypeMask);
    } else if (allSupportedSubtypes) {
        split(GetSupportedSubtypeMasks(om, sm));
        masks.push_back(0);
    } else {
        masks.push_back(0);
    }
    std::vector<std::shared_ptr<const IPreset>> presets;
    for (SubtypeMasks mask : masks) {
        std::shared_ptr<const IPreset> preset = GetSystemPreset(om, sm, mask);
        if (preset) presets.push_back(preset);
    }
    SortByPresetOrder(presets);
    bool foundAll = true;
    bool foundOne = false;
    for (unsigned int id : ids) {
        bool found = false;
        for (const auto& preset : presets) {
            double value = 0.0;
            if (preset->GetParameter(id, value)) {
                out[id] = value;
                found = true;
            }
        }
        if (!found) {
            TESSEL_LOG_ERROR(TESSEL_LOG_FXModule,
                             "Preset_GetParametersArray: Could not find parameter %d", id);
        }
        foundAll = foundAll && found;
        foundOne = foundOne || found;
    }
    return mustFindAll ? foundAll : foundOne;
}

bool PresetSet::IsPresetsLoaded() const {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "%s: %s", "IsPresetsLoaded", TrueFalse(m_isPresetsLoaded));
    return m_isPresetsLoaded;
}

void PresetSet::SetTags(const std::map<unsigned int, std::string>& tags) { m_tags = tags; }

std::map<unsigned int, std::string> PresetSet::GetTags() const { return m_tags; }

}  // namespace TesselFX
