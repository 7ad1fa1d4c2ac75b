#include "control/HalControlManagerImpl.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>

#include "log/TesselLog.h"
#include "preset/LinkLawEntry.h"
#include "protocol/Base64.h"
#include "protocol/ChunkMessages.h"
#include "protocol/FullPresetMessages.h"
#include "protocol/MultipleMessageData.h"
#include "protocol/NewSessionId.h"
#include "protocol/ParameterArrayMessages.h"
#include "protocol/ParameterMessages.h"

namespace TesselFX {

namespace {

constexpr const char* kHalControllerVersion = "1.553.0.0";

/// The level-0 entry trace. The name is the method's full signature as written in its
/// declaration, the same text with every compiler.
void Entering(const char* prettyName) {
    TESSEL_LOG(0, TESSEL_LOG_FXModule, "Entering function %s", prettyName);
}

/// The id form of a handler's parameter read; on success every pair found goes into
/// parameters, overwriting.
bool ReadParameters(IControlHandler& handler, const std::vector<unsigned int>& ids,
                    std::map<unsigned int, double>& parameters) {
    std::vector<unsigned int> requested = ids;
    std::vector<unsigned int> foundIds;
    std::vector<double> values;
    if (!handler.GetParametersArray(requested, foundIds, values)) {
        return false;
    }
    for (size_t i = 0; i < foundIds.size() && i < values.size(); ++i) {
        parameters[foundIds[i]] = values[i];
    }
    return true;
}

/// Ids above this one name custom actions of the configuration.
constexpr int kLastReservedDataId = 255;
constexpr int kSetParameterArrayDataId = 8;

/// A fixed data id: the label of its messages and its exact payload size (0: no payload).
struct DataCommand {
    const char* name;
    unsigned int size;
};

/// Indexed by data id. Id 6 carries id 5's label in its messages.
constexpr DataCommand kDataCommands[] = {
    {"SET_VOLUME", 8},          {"SET_ORIENTATION", 4}, {"SET_ACTIVE", 8},
    {"SET_OUTPUT_MODE", 4},     {"SET_SOUND_MODE", 4},  {"SET_ENABLE", 1},
    {"SET_ENABLE", 1},          {"SET_PARAMETER", 16},  {"SET_PARAMETER_ARRAY", 0},
    {"SET_LINKLAWS_VALUE", 24}, {"WAIT_FOR_FLUSH", 0},  {"FLUSH", 0},
    {"ON_DSP_WAKEUP", 0}};

/// A value of the caller's native byte order at offset, from a buffer of any alignment.
template <typename T>
T ReadData(const char* data, size_t offset) {
    T value;
    std::memcpy(&value, data + offset, sizeof(value));
    return value;
}

}  // namespace

HalControlManagerImpl::ControlHandlerVolumeChangedListener::ControlHandlerVolumeChangedListener(
    HalControlManagerImpl* manager, const std::shared_ptr<IControlHandler>& handler)
    : m_manager(manager), m_handler(handler) {}

bool HalControlManagerImpl::ControlHandlerVolumeChangedListener::OnVolumeChanged(
    const double& volumeDb) {
    m_manager->m_linkLawSourceValues[m_handler][0] = volumeDb;
    m_manager->NotifyLinkLawSourceValueChanged(m_handler, 0, volumeDb);
    return true;
}

HalControlManagerImpl::ControlHandlerParametersAndChunksChangedListener::
    ControlHandlerParametersAndChunksChangedListener(
        HalControlManagerImpl* manager, const std::shared_ptr<IControlHandler>& handler)
    : m_manager(manager), m_handler(handler) {}

void HalControlManagerImpl::ControlHandlerParametersAndChunksChangedListener::OnParametersChanged(
    const std::map<unsigned int, double>& parameters) {
    m_manager->NotifyParameterArrayChanged(m_handler, parameters);
}

void HalControlManagerImpl::ControlHandlerParametersAndChunksChangedListener::
    OnParameterListChanged(const ParameterList& parameters) {
    m_manager->NotifyParameterArrayChanged(m_handler, parameters);
}

void HalControlManagerImpl::ControlHandlerParametersAndChunksChangedListener::OnChunksChanged(
    const std::map<unsigned int, std::vector<char>>& chunks) {
    for (const auto& chunk : chunks) {
        m_manager->NotifyChunkChanged(m_handler, chunk.first, chunk.second);
    }
}

HalControlManagerImpl::HalControlManagerImpl() = default;

HalControlManagerImpl::~HalControlManagerImpl() {
    UnregisterVolumeChangedListeners();
    UnregisterParametersAndChunksChangedListeners();
}

void HalControlManagerImpl::UnregisterVolumeChangedListeners() {
    for (const auto& entry : m_controlHandlers) {
        if (entry.second) {
            entry.second->UnregisterVolumeChangedListener();
        }
    }
}

bool HalControlManagerImpl::CheckAudioCalSettings(const zorbaudio_settings_t* settings) {
    if (settings == nullptr || settings->settings == nullptr) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule,
                         "%s: pZorbAudioSettings = NULL, please assign proper value.",
                         "CheckAudioCalSettings");
        return false;
    }
    if (settings->version != kSettingsVersion) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule,
                         "%s: Major API version mismatch. Provided = %u, Supported = %u",
                         "CheckAudioCalSettings", settings->version, kSettingsVersion);
        return false;
    }
    return true;
}

HalControlManagerImpl::HandlerList HalControlManagerImpl::GetControlHandlers(
    const zorbaudio_settings_t* settings) {
    HandlerList handlers;
    if (!CheckAudioCalSettings(settings)) {
        return handlers;
    }
    for (const auto& entry : m_controlHandlers) {
        if (entry.first && entry.second &&
            settings->settings->Matches(entry.first->GetSettings().get())) {
            handlers.push_back(entry.second);
        }
    }
    if (handlers.empty()) {
        TESSEL_LOG(3, TESSEL_LOG_FXModule, "%s: No CoppHandles matched search criteria %s",
                   "GetControlHandlers", settings->settings->ToString().c_str());
    }
    return handlers;
}

bool HalControlManagerImpl::SelectControlHandlers(const zorbaudio_settings_t* settings,
                                                  HandlerList& handlers) {
    handlers = GetControlHandlers(settings);
    if (handlers.empty()) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "no valid ControlHandler");
        return false;
    }
    return true;
}

bool HalControlManagerImpl::RouteAll(const zorbaudio_settings_t* settings,
                                     const HandlerOperation& operation) {
    HandlerList handlers;
    if (!SelectControlHandlers(settings, handlers)) {
        return false;
    }
    bool result = true;
    for (const auto& handler : handlers) {
        result = operation(*handler) && result;
    }
    return result;
}

bool HalControlManagerImpl::RouteFirst(const zorbaudio_settings_t* settings,
                                       const HandlerOperation& operation) {
    HandlerList handlers;
    return SelectControlHandlers(settings, handlers) && operation(*handlers.front());
}

bool HalControlManagerImpl::RouteAny(const zorbaudio_settings_t* settings,
                                     const HandlerOperation& operation,
                                     const std::string& failureText) {
    HandlerList handlers;
    if (!SelectControlHandlers(settings, handlers)) {
        return false;
    }
    for (const auto& handler : handlers) {
        if (operation(*handler)) {
            return true;
        }
    }
    if (!failureText.empty()) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "%s", failureText.c_str());
    }
    return false;
}

bool HalControlManagerImpl::Initialize(
    const ControlHandlerMap& handlers, const std::set<std::string>& supportedFeatures,
    const std::set<unsigned int>& excludedParameters,
    const std::map<int, std::shared_ptr<CustomAction>>& customActions) {
    Entering(
        "virtual bool TesselFX::HalControlManagerImpl::Initialize(const "
        "std::map<std::shared_ptr<IControlDescription>, std::shared_ptr<IControlHandler>> &, "
        "const std::set<std::string> &, const std::set<unsigned int> &, const std::map<int, "
        "std::shared_ptr<CustomAction>> &)");
    if (&handlers != &m_controlHandlers) {
        // Handlers that are replaced must not keep a listener that points back here, and
        // nothing here may keep them: a listener holds its handler, and so do the maps keyed
        // by handler. A notifier is registered again for the new handlers.
        UnregisterVolumeChangedListeners();
        UnregisterParametersAndChunksChangedListeners();
        m_notifiers.clear();
        m_linkLawSourceValues.clear();
        m_controlHandlers = handlers;
    }
    m_handlerDescriptions.clear();
    for (const auto& entry : m_controlHandlers) {
        if (!entry.second) {
            continue;
        }
        entry.second->RegisterVolumeChangedListener(
            std::make_shared<ControlHandlerVolumeChangedListener>(this, entry.second));
        m_handlerDescriptions[entry.second] = entry.first;
    }
    m_supportedFeatures = supportedFeatures;
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "%s: Supported features count = %u", "Initialize",
               static_cast<unsigned int>(m_supportedFeatures.size()));
    for (const auto& feature : m_supportedFeatures) {
        TESSEL_LOG(1, TESSEL_LOG_FXModule, "%s: %s", "Initialize", feature.c_str());
    }
    m_excludedParameters = excludedParameters;
    m_customActions = customActions;
    return true;
}

bool HalControlManagerImpl::SetLrSwap(const zorbaudio_settings_t* settings, bool lrSwap) {
    Entering(
        "virtual bool TesselFX::HalControlManagerImpl::SetLrSwap(const zorbaudio_settings_t *, "
        "bool)");
    return RouteAll(settings, [&](IControlHandler& handler) { return handler.SetLrSwap(lrSwap); });
}

bool HalControlManagerImpl::SetActive(const zorbaudio_settings_t* settings, unsigned int outputMode,
                                      unsigned int soundMode) {
    Entering(
        "virtual bool TesselFX::HalControlManagerImpl::SetActive(const zorbaudio_settings_t *, "
        "unsigned int, unsigned int)");
    return RouteAll(settings, [&](IControlHandler& handler) {
        return handler.SetActive(outputMode, soundMode);
    });
}

bool HalControlManagerImpl::SetSoundMode(const zorbaudio_settings_t* settings,
                                         unsigned int soundMode) {
    Entering(
        "virtual bool TesselFX::HalControlManagerImpl::SetSoundMode(const zorbaudio_settings_t "
        "*, unsigned int)");
    return RouteAll(settings,
                    [&](IControlHandler& handler) { return handler.SetSoundMode(soundMode); });
}

bool HalControlManagerImpl::SetOutputMode(const zorbaudio_settings_t* settings,
                                          unsigned int outputMode) {
    Entering(
        "virtual bool TesselFX::HalControlManagerImpl::SetOutputMode(const zorbaudio_settings_t "
        "*, unsigned int)");
    return RouteAll(settings,
                    [&](IControlHandler& handler) { return handler.SetOutputMode(outputMode); });
}

bool HalControlManagerImpl::SetVolume(const zorbaudio_settings_t* settings, double volume) {
    Entering(
        "virtual bool TesselFX::HalControlManagerImpl::SetVolume(const zorbaudio_settings_t *, "
        "double)");
    // A linear volume: a negative one has no dB value, and NaN or infinity none that a volume
    // table or a link law can order.
    if (!(std::isfinite(volume) && volume >= 0.0)) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "Invalid volume: %f", volume);
        return false;
    }
    return RouteAll(settings, [&](IControlHandler& handler) { return handler.SetVolume(volume); });
}

bool HalControlManagerImpl::SetVolumeTable(const zorbaudio_settings_t* settings, size_t count,
                                           const zorbaudio_stream_volume_t* volumes) {
    Entering(
        "virtual bool TesselFX::HalControlManagerImpl::SetVolumeTable(const zorbaudio_settings_t "
        "*, size_t, const zorbaudio_stream_volume_t *)");
    if (count == 0 || volumes == nullptr || !CheckAudioCalSettings(settings)) {
        return false;
    }
    std::map<unsigned int, double> table;
    for (size_t i = 0; i < count; ++i) {
        if (volumes[i].active != 0) {
            table[static_cast<unsigned int>(i)] = static_cast<double>(volumes[i].volume);
        }
    }
    bool result = true;
    for (const auto& handler : GetControlHandlers(settings)) {
        result = handler->SetVolumeTable(table) && result;
    }
    return result;
}

bool HalControlManagerImpl::SetOrientation(const zorbaudio_settings_t* settings, int orientation) {
    Entering(
        "virtual bool TesselFX::HalControlManagerImpl::SetOrientation(const zorbaudio_settings_t "
        "*, int)");
    return RouteAll(settings,
                    [&](IControlHandler& handler) { return handler.SetOrientation(orientation); });
}

bool HalControlManagerImpl::SetEnable(const zorbaudio_settings_t* settings, bool enable) {
    Entering(
        "virtual bool TesselFX::HalControlManagerImpl::SetEnable(const zorbaudio_settings_t *, "
        "bool)");
    return RouteAll(settings, [&](IControlHandler& handler) { return handler.SetEnable(enable); });
}

bool HalControlManagerImpl::GetEnable(const zorbaudio_settings_t* settings, bool& enable) {
    Entering(
        "virtual bool TesselFX::HalControlManagerImpl::GetEnable(const zorbaudio_settings_t *, "
        "bool &)");
    return RouteFirst(settings, [&](IControlHandler& handler) {
        enable = handler.GetEnable();
        return true;
    });
}

bool HalControlManagerImpl::SetBypass(const zorbaudio_settings_t* settings, bool bypass) {
    Entering(
        "virtual bool TesselFX::HalControlManagerImpl::SetBypass(const zorbaudio_settings_t *, "
        "bool)");
    return RouteAll(settings, [&](IControlHandler& handler) { return handler.SetBypass(bypass); });
}

bool HalControlManagerImpl::GetBypass(const zorbaudio_settings_t* settings, bool& bypass) {
    Entering(
        "virtual bool TesselFX::HalControlManagerImpl::GetBypass(const zorbaudio_settings_t *, "
        "bool &)");
    return RouteFirst(settings, [&](IControlHandler& handler) {
        bypass = handler.GetBypass();
        return true;
    });
}

bool HalControlManagerImpl::StartTuningMode(const zorbaudio_settings_t* settings, bool start) {
    Entering(
        "virtual bool TesselFX::HalControlManagerImpl::StartTuningMode(const "
        "zorbaudio_settings_t *, bool)");
    return RouteAll(settings,
                    [&](IControlHandler& handler) { return handler.StartTuningMode(start); });
}

bool HalControlManagerImpl::IsTuningMode(const zorbaudio_settings_t* settings, bool& tuningMode) {
    Entering(
        "virtual bool TesselFX::HalControlManagerImpl::IsTuningMode(const zorbaudio_settings_t "
        "*, bool &)");
    return RouteFirst(settings, [&](IControlHandler& handler) {
        tuningMode = handler.IsTuningMode();
        return true;
    });
}

bool HalControlManagerImpl::SetParametersArray(const zorbaudio_settings_t* settings,
                                               const std::map<unsigned int, double>& parameters,
                                               bool flag) {
    Entering(
        "virtual bool TesselFX::HalControlManagerImpl::SetParametersArray(const "
        "zorbaudio_settings_t *, const std::map<unsigned int, double> &, bool)");
    return RouteAll(settings, [&](IControlHandler& handler) {
        return handler.SetParametersArray(parameters, flag);
    });
}

bool HalControlManagerImpl::SetParametersArrayFromTuning(
    const zorbaudio_settings_t* settings, const std::map<unsigned int, double>& parameters,
    bool flag) {
    Entering(
        "virtual bool TesselFX::HalControlManagerImpl::SetParametersArrayFromTuning(const "
        "zorbaudio_settings_t *, const std::map<unsigned int, double> &, bool)");
    return RouteAll(settings, [&](IControlHandler& handler) {
        handler.CreateTuningData();
        return handler.SetParametersArrayFromTuning(parameters, flag);
    });
}

bool HalControlManagerImpl::GetParametersArray(const zorbaudio_settings_t* settings,
                                               const std::vector<unsigned int>& ids,
                                               std::map<unsigned int, double>& parameters) {
    Entering(
        "virtual bool TesselFX::HalControlManagerImpl::GetParametersArray(const "
        "zorbaudio_settings_t *, const std::vector<unsigned int> &, std::map<unsigned int, "
        "double> &)");
    HandlerList handlers;
    if (!SelectControlHandlers(settings, handlers)) {
        return false;
    }
    for (const auto& handler : handlers) {
        if (ids.empty()) {
            if (handler->GetParametersArray(parameters)) {
                return true;
            }
            continue;
        }
        if (ReadParameters(*handler, ids, parameters)) {
            return true;
        }
    }
    TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "no parameter is found");
    return false;
}

bool HalControlManagerImpl::SetParameter(const zorbaudio_settings_t* settings, unsigned int index,
                                         double value) {
    Entering(
        "virtual bool TesselFX::HalControlManagerImpl::SetParameter(const zorbaudio_settings_t "
        "*, unsigned int, double)");
    return RouteAll(settings,
                    [&](IControlHandler& handler) { return handler.SetParameter(index, value); });
}

bool HalControlManagerImpl::SetParameterFromTuning(const zorbaudio_settings_t* settings,
                                                   unsigned int index, double value) {
    Entering(
        "virtual bool TesselFX::HalControlManagerImpl::SetParameterFromTuning(const "
        "zorbaudio_settings_t *, unsigned int, double)");
    return RouteAll(settings, [&](IControlHandler& handler) {
        handler.CreateTuningData();
        return handler.SetParameterFromTuning(index, value);
    });
}

bool HalControlManagerImpl::GetParameter(const zorbaudio_settings_t* settings, unsigned int index,
                                         double& value) {
    Entering(
        "virtual bool TesselFX::HalControlManagerImpl::GetParameter(const zorbaudio_settings_t "
        "*, unsigned int, double &)");
    return RouteAny(
        settings, [&](IControlHandler& handler) { return handler.GetParameter(index, value); },
        "parameter " + std::to_string(index) + " is found");
}

bool HalControlManagerImpl::IsFeatureSupported(const char* feature) {
    Entering("virtual bool TesselFX::HalControlManagerImpl::IsFeatureSupported(const char *)");
    if (feature == nullptr) {
        return false;
    }
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "%s: %s", "IsFeatureSupported", feature);
    return m_supportedFeatures.count(feature) != 0;
}

bool HalControlManagerImpl::SetLinkLawsValue(const zorbaudio_settings_t* settings,
                                             unsigned int sourceIndex, double sourceValue,
                                             double masterValue) {
    Entering(
        "virtual bool TesselFX::HalControlManagerImpl::SetLinkLawsValue(const "
        "zorbaudio_settings_t *, unsigned int, double, double)");
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "%s %u %lf %lf", "SetLinkLawsValue", sourceIndex,
               sourceValue, masterValue);
    HandlerList handlers;
    if (!SelectControlHandlers(settings, handlers)) {
        return false;
    }
    // The handler's link laws run on the master value; the source's own value is what the
    // manager remembers and announces.
    bool result = true;
    for (const auto& handler : handlers) {
        if (!handler->SetLinkLawsValue(sourceIndex, masterValue)) {
            result = false;
            continue;
        }
        m_linkLawSourceValues[handler][sourceIndex] = sourceValue;
        NotifyLinkLawSourceValueChanged(handler, sourceIndex, sourceValue);
    }
    return result;
}

bool HalControlManagerImpl::GetLinkLawsSourceValue(const zorbaudio_settings_t* settings,
                                                   unsigned int sourceIndex, double& value) {
    Entering(
        "virtual bool TesselFX::HalControlManagerImpl::GetLinkLawsSourceValue(const "
        "zorbaudio_settings_t *, unsigned int, double &)");
    std::map<unsigned int, double> values;
    GetLinkLawsSourceValues(settings, {sourceIndex}, values);
    const auto found = values.find(sourceIndex);
    if (found == values.end()) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "sourceIndex %u is found", sourceIndex);
        return false;
    }
    value = found->second;
    return true;
}

bool HalControlManagerImpl::GetLinkLawsSourceValues(const zorbaudio_settings_t* settings,
                                                    const std::vector<unsigned int>& ids,
                                                    std::map<unsigned int, double>& values) {
    Entering(
        "virtual bool TesselFX::HalControlManagerImpl::GetLinkLawsSourceValues(const "
        "zorbaudio_settings_t *, const std::vector<unsigned int> &, std::map<unsigned int, "
        "double> &)");
    HandlerList handlers;
    if (!SelectControlHandlers(settings, handlers)) {
        return false;
    }
    values.clear();
    const auto stored = m_linkLawSourceValues.find(handlers.front());
    if (stored == m_linkLawSourceValues.end()) {
        return true;
    }
    for (unsigned int id : ids) {
        const auto found = stored->second.find(id);
        if (found != stored->second.end()) {
            values[id] = found->second;
        }
    }
    return true;
}

bool HalControlManagerImpl::GetLinkLawsParametersArray(const zorbaudio_settings_t* settings,
                                                       std::map<unsigned int, double>& values) {
    Entering(
        "virtual bool TesselFX::HalControlManagerImpl::GetLinkLawsParametersArray(const "
        "zorbaudio_settings_t *, std::map<unsigned int, double> &)");
    HandlerList handlers;
    if (!SelectControlHandlers(settings, handlers)) {
        return false;
    }
    for (const auto& handler : handlers) {
        std::vector<LinkLawEntry> entries;
        if (!handler->GetLinkLawEntries(entries)) {
            continue;
        }
        std::vector<unsigned int> ids;
        for (const LinkLawEntry& entry : entries) {
            ids.push_back(entry.SourceControlId);
            ids.push_back(entry.TargetParamId);
        }
        if (ids.empty()) {
            return true;
        }
        if (ReadParameters(*handler, ids, values)) {
            return true;
        }
    }
    TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "no linklaws is valid");
    return false;
}

bool HalControlManagerImpl::SetChunk(const zorbaudio_settings_t* settings, unsigned int index,
                                     const std::vector<char>& data) {
    Entering(
        "virtual bool TesselFX::HalControlManagerImpl::SetChunk(const zorbaudio_settings_t *, "
        "unsigned int, const std::vector<char> &)");
    return RouteAll(settings,
                    [&](IControlHandler& handler) { return handler.SetChunk(index, data); });
}

bool HalControlManagerImpl::SetChunkFromTuning(const zorbaudio_settings_t* settings,
                                               unsigned int index, const std::vector<char>& data) {
    Entering(
        "virtual bool TesselFX::HalControlManagerImpl::SetChunkFromTuning(const "
        "zorbaudio_settings_t *, unsigned int, const std::vector<char> &)");
    return RouteAll(settings, [&](IControlHandler& handler) {
        handler.CreateTuningData();
        return handler.SetChunkFromTuning(index, data);
    });
}

bool HalControlManagerImpl::GetChunk(const zorbaudio_settings_t* settings, unsigned int index,
                                     std::vector<char>& data) {
    Entering(
        "virtual bool TesselFX::HalControlManagerImpl::GetChunk(const zorbaudio_settings_t *, "
        "unsigned int, std::vector<char> &)");
    return RouteAny(
        settings, [&](IControlHandler& handler) { return handler.GetChunk(index, data); },
        "no chunk for index " + std::to_string(index) + " is found");
}

bool HalControlManagerImpl::GetDspVersion(const zorbaudio_settings_t* settings,
                                          std::string& version) {
    Entering(
        "virtual bool TesselFX::HalControlManagerImpl::GetDspVersion(const zorbaudio_settings_t "
        "*, std::string &)");
    return RouteAny(
        settings, [&](IControlHandler& handler) { return handler.GetDspVersion(version); }, "");
}

bool HalControlManagerImpl::WaitForFlush(const zorbaudio_settings_t* settings) {
    Entering(
        "virtual bool TesselFX::HalControlManagerImpl::WaitForFlush(const zorbaudio_settings_t "
        "*)");
    return RouteAll(settings, [](IControlHandler& handler) { return handler.WaitForFlush(); });
}

bool HalControlManagerImpl::Flush(const zorbaudio_settings_t* settings) {
    Entering("virtual bool TesselFX::HalControlManagerImpl::Flush(const zorbaudio_settings_t *)");
    return RouteAll(settings, [](IControlHandler& handler) { return handler.Flush(); });
}

bool HalControlManagerImpl::GetVersion(const zorbaudio_settings_t* settings,
                                       const std::string& versionType, std::string& version) {
    Entering(
        "virtual bool TesselFX::HalControlManagerImpl::GetVersion(const zorbaudio_settings_t *, "
        "const std::string &, std::string &)");
    if (versionType == "dsp") {
        return GetDspVersion(settings, version);
    }
    if (versionType == "halcontroller") {
        version = kHalControllerVersion;
        return true;
    }
    if (versionType == "dspkit") {
        version = m_dspKitVersion;
        return true;
    }
    TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "not supported version type %s", versionType.c_str());
    return false;
}

bool HalControlManagerImpl::SetData(const zorbaudio_settings_t* settings, int id, const void* pData,
                                    unsigned int size) {
    Entering(
        "virtual bool TesselFX::HalControlManagerImpl::SetData(const zorbaudio_settings_t *, "
        "int, const void *, unsigned int)");
    TESSEL_LOG(0, TESSEL_LOG_FXModule, "Enter function SetData %d", id);
    if (id > kLastReservedDataId) {
        return SetCustomAction(settings, id, pData, size);
    }
    if (id < 0 || id >= static_cast<int>(sizeof(kDataCommands) / sizeof(kDataCommands[0]))) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "id %d is not predefined", id);
        return false;
    }
    const DataCommand& command = kDataCommands[id];
    if (id == kSetParameterArrayDataId) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "%s %s is not supported", "SetData", command.name);
        return false;
    }
    if (command.size == 0) {
        if (size != 0) {
            TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "%s %s size should be 0", "SetData",
                             command.name);
            return false;
        }
    } else if (pData == nullptr || size != command.size) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule,
                         "%s %s size should be %d and pData %p should not be null", "SetData",
                         command.name, static_cast<int>(command.size), pData);
        return false;
    }
    const char* data = static_cast<const char*>(pData);
    switch (id) {
        case 0:
            return SetVolume(settings, ReadData<double>(data, 0));
        case 1:
            return SetOrientation(settings, ReadData<int32_t>(data, 0));
        case 2:
            return SetActive(settings, ReadData<uint32_t>(data, 0), ReadData<uint32_t>(data, 4));
        case 3:
            return SetOutputMode(settings, ReadData<uint32_t>(data, 0));
        case 4:
            return SetSoundMode(settings, ReadData<uint32_t>(data, 0));
        case 5:
            return SetEnable(settings, data[0] != 0);
        case 6:
            return SetBypass(settings, data[0] != 0);
        case 7:
            return SetParameter(settings, ReadData<uint32_t>(data, 0), ReadData<double>(data, 8));
        case 9:
            return SetLinkLawsValue(settings, ReadData<uint32_t>(data, 0),
                                    ReadData<double>(data, 8), ReadData<double>(data, 16));
        case 10:
            return WaitForFlush(settings);
        case 11:
            return Flush(settings);
        default:
            return OnDspWakeUp(settings);
    }
}

bool HalControlManagerImpl::SetCustomAction(const zorbaudio_settings_t* settings, int id,
                                            const void* pData, unsigned int size) {
    const auto found = m_customActions.find(id);
    if (found == m_customActions.end() || !found->second) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "id %d is not defined in the config", id);
        return false;
    }
    if (pData == nullptr) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "invalid input: pData is nullptr");
        return false;
    }
    // Whole numbers only: trailing bytes that make no number are ignored.
    std::vector<int32_t> numbers(size / sizeof(uint32_t));
    if (!numbers.empty()) std::memcpy(numbers.data(), pData, numbers.size() * sizeof(uint32_t));
    const InternalAction action = found->second->GetAction(numbers);
    if (action.id != InternalAction::kPresetSelection) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "not supported internalAction id %d", action.id);
        return false;
    }
    return SetActive(settings, action.outputMode, action.soundMode);
}

bool HalControlManagerImpl::OnDspWakeUp(const zorbaudio_settings_t* settings) {
    Entering(
        "virtual bool TesselFX::HalControlManagerImpl::OnDspWakeUp(const zorbaudio_settings_t "
        "*)");
    return RouteAll(settings, [](IControlHandler& handler) { return handler.OnDspWakeUp(); });
}

void HalControlManagerImpl::SetMessageBufferSize(unsigned int size) {
    Entering("virtual void TesselFX::HalControlManagerImpl::SetMessageBufferSize(unsigned int)");
    m_messageBufferSize = size;
    m_maxNotificationSize = (size / 4) * 3;
    m_maxParametersPerNotification = size / 16;
}

void HalControlManagerImpl::SetDspKitVersion(const std::string& version) {
    Entering("virtual void TesselFX::HalControlManagerImpl::SetDspKitVersion(const std::string &)");
    m_dspKitVersion = version;
}

bool HalControlManagerImpl::GetTuningModeValidation(const zorbaudio_settings_t*, bool& valid) {
    Entering(
        "virtual bool TesselFX::HalControlManagerImpl::GetTuningModeValidation(const "
        "zorbaudio_settings_t *, bool &)");
    valid = true;
    return true;
}

bool HalControlManagerImpl::GetMeters(const zorbaudio_settings_t* settings,
                                      const std::map<uint32_t, CMeterInfo>& infos,
                                      std::map<uint32_t, CMeterValue>& values) {
    Entering(
        "virtual bool TesselFX::HalControlManagerImpl::GetMeters(const zorbaudio_settings_t *, "
        "const std::map<uint32_t, CMeterInfo> &, std::map<uint32_t, CMeterValue> &)");
    return RouteAny(
        settings, [&](IControlHandler& handler) { return handler.GetMeters(infos, values); },
        "fail to get meters");
}

bool HalControlManagerImpl::SetFullPresetFromTuning(const zorbaudio_settings_t* settings,
                                                    const TesselTuning::FullPreset& preset,
                                                    bool notify) {
    Entering(
        "virtual bool TesselFX::HalControlManagerImpl::SetFullPresetFromTuning(const "
        "zorbaudio_settings_t *, const TesselTuning::FullPreset &, bool)");
    HandlerList handlers;
    if (!SelectControlHandlers(settings, handlers)) {
        return false;
    }
    for (const auto& handler : handlers) {
        if (!handler->SetFullPresetFromTuning(preset)) {
            TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "Failed to set fullPreset");
            return false;
        }
    }
    if (notify) {
        NotifyCurrentSystemPreset(handlers.front());
    }
    return true;
}

bool HalControlManagerImpl::GetFullPreset(const zorbaudio_settings_t* settings,
                                          TesselTuning::FullPreset&) {
    Entering(
        "virtual bool TesselFX::HalControlManagerImpl::GetFullPreset(const zorbaudio_settings_t "
        "*, TesselTuning::FullPreset &)");
    HandlerList handlers;
    if (!SelectControlHandlers(settings, handlers)) {
        return false;
    }
    // The answer travels as a notification, not in the argument.
    NotifyCurrentSystemPreset(handlers.front());
    return true;
}

TesselTuning::FullPreset HalControlManagerImpl::MakeFullPreset(
    const std::shared_ptr<IControlHandler>& handler) {
    TesselTuning::FullPreset preset;
    preset.hasParameters = handler->GetParametersArray(preset.parameters);
    preset.hasLlChunk = handler->GetChunk(ZBAC_LINKLAWS, preset.llChunk);
    preset.hasLlSources = true;
    const auto sources = m_linkLawSourceValues.find(handler);
    if (sources != m_linkLawSourceValues.end()) {
        preset.llSources = sources->second;
    }
    return preset;
}

bool HalControlManagerImpl::RegisterNotifier(const zorbaudio_settings_t* settings,
                                             const std::shared_ptr<IHalNotifier>& notifier) {
    Entering(
        "virtual bool TesselFX::HalControlManagerImpl::RegisterNotifier(const "
        "zorbaudio_settings_t *, const std::shared_ptr<IHalNotifier> &)");
    if (!notifier) {
        return EraseNotifier(settings);
    }
    HandlerList handlers;
    if (!SelectControlHandlers(settings, handlers)) {
        return false;
    }
    for (const auto& handler : handlers) {
        m_notifiers[handler] = notifier;
        handler->RegisterParametersAndChunksChangedListener(
            std::make_shared<ControlHandlerParametersAndChunksChangedListener>(this, handler));
    }
    return true;
}

bool HalControlManagerImpl::EraseNotifier(const zorbaudio_settings_t* settings) {
    HandlerList handlers;
    if (!SelectControlHandlers(settings, handlers)) {
        return false;
    }
    for (const auto& handler : handlers) {
        auto found = m_notifiers.find(handler);
        if (found != m_notifiers.end() && found->second) {
            handler->RegisterParametersAndChunksChangedListener(nullptr);
            m_notifiers.erase(found);
        }
    }
    return true;
}

void HalControlManagerImpl::UnregisterParametersAndChunksChangedListeners() {
    for (const auto& entry : m_notifiers) {
        if (entry.first) {
            entry.first->RegisterParametersAndChunksChangedListener(nullptr);
        }
    }
}

std::shared_ptr<IHalNotifier> HalControlManagerImpl::GetNotifier(
    const std::shared_ptr<IControlHandler>& handler) {
    auto found = m_notifiers.find(handler);
    return found == m_notifiers.end() ? nullptr : found->second;
}

void HalControlManagerImpl::NotifyParameterArrayChanged(
    const std::shared_ptr<IControlHandler>& handler,
    const std::map<unsigned int, double>& parameters) {
    NotifyParameters(handler, parameters.begin(), parameters.size());
}

void HalControlManagerImpl::NotifyParameterArrayChanged(
    const std::shared_ptr<IControlHandler>& handler, const ParameterList& parameters) {
    NotifyParameters(handler, parameters.begin(), parameters.size());
}

template <typename Iterator>
void HalControlManagerImpl::NotifyParameters(const std::shared_ptr<IControlHandler>& handler,
                                             Iterator first, size_t count) {
    if (!GetNotifier(handler)) {
        return;
    }
    // Each message is written straight from the parameters, as ReplyParameterArrayMessageData
    // would write it.
    const size_t most =
        m_maxParametersPerNotification == 0 ? count : m_maxParametersPerNotification;
    if (count == 0 && most == 0) {
        NotifyFrame(handler, ReplyParameterArrayMessageData::MakeFrame(
                                 ReplyParameterArrayMessageData::kId, first, 0));
        return;
    }
    for (size_t done = 0; done < count;) {
        const size_t part = std::min(most, count - done);
        NotifyFrame(handler, ReplyParameterArrayMessageData::MakeFrame(
                                 ReplyParameterArrayMessageData::kId, first, part));
        std::advance(first, part);
        done += part;
    }
}

void HalControlManagerImpl::NotifyChunkChanged(const std::shared_ptr<IControlHandler>& handler,
                                               unsigned int index, const std::vector<char>& data) {
    if (!GetNotifier(handler)) {
        return;
    }
    NotifyDataChanged(handler, ReplyChunkMessageData(index, data));
}

void HalControlManagerImpl::NotifyLinkLawSourceValueChanged(
    const std::shared_ptr<IControlHandler>& handler, unsigned int sourceIndex, double value) {
    if (!GetNotifier(handler)) {
        return;
    }
    NotifyDataChanged(handler, UpdateLinkLawsSourceParameterMessageData(sourceIndex, value));
}

void HalControlManagerImpl::NotifyDataChanged(const std::shared_ptr<IControlHandler>& handler,
                                              const MessageData& message) {
    NotifyFrame(handler, message.GetBuffer());
}

void HalControlManagerImpl::NotifyFrame(const std::shared_ptr<IControlHandler>& handler,
                                        const std::vector<char>& frame) {
    std::vector<std::vector<char>> pieces;
    const bool whole = m_maxNotificationSize == 0 || frame.size() <= m_maxNotificationSize;
    if (!whole && !MultipleMessageData::SplitToBuffers(NewSessionId(), m_maxNotificationSize, frame,
                                                       pieces)) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "%s: Failed to split long buffer into small pieces",
                         "NotifyDataChanged");
        return;
    }
    const size_t count = whole ? 1 : pieces.size();
    for (size_t i = 0; i < count; ++i) {
        const std::string text = Base64::Encode(whole ? frame : pieces[i]);
        // Looked up for each piece: a notifier may unregister itself from inside its call.
        const std::shared_ptr<IHalNotifier> notifier = GetNotifier(handler);
        auto description = m_handlerDescriptions.find(handler);
        if (notifier && description != m_handlerDescriptions.end() && description->second) {
            notifier->Notify(description->second->GetSettings(), text.data(),
                             static_cast<unsigned int>(text.size()));
        }
    }
}

void HalControlManagerImpl::NotifyCurrentSystemPreset(
    const std::shared_ptr<IControlHandler>& handler) {
    NotifyDataChanged(handler, ReplyFullPresetMessageData(MakeFullPreset(handler)));
}

}  // namespace TesselFX
