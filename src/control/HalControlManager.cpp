#include "control/HalControlManager.h"

#include "control/HalControlManagerImpl.h"
#include "log/TesselLog.h"

namespace TesselFX {

HalControlManager::HalControlManager(const std::shared_ptr<IHalControlCommandParser>& commandParser)
    : m_commandParser(commandParser), m_impl(std::make_shared<HalControlManagerImpl>()) {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
    pthread_mutex_init(&m_mutex, &attributes);
    pthread_mutexattr_destroy(&attributes);
    if (m_commandParser) {
        m_commandParser->SetHalControlManager(m_impl);
    }
}

HalControlManager::~HalControlManager() {
    {
        Lock lock(m_mutex);
        m_commandParser.reset();
        m_impl.reset();
    }
    pthread_mutex_destroy(&m_mutex);
}

bool HalControlManager::Initialize(
    const ControlHandlerMap& handlers, const std::set<std::string>& supportedFeatures,
    const std::set<unsigned int>& excludedParameters,
    const std::map<int, std::shared_ptr<CustomAction>>& customActions) {
    Lock lock(m_mutex);
    return m_impl->Initialize(handlers, supportedFeatures, excludedParameters, customActions);
}

bool HalControlManager::SetLrSwap(const zorbaudio_settings_t* settings, bool lrSwap) {
    Lock lock(m_mutex);
    return m_impl->SetLrSwap(settings, lrSwap);
}

bool HalControlManager::SetActive(const zorbaudio_settings_t* settings, unsigned int outputMode,
                                  unsigned int soundMode) {
    Lock lock(m_mutex);
    return m_impl->SetActive(settings, outputMode, soundMode);
}

bool HalControlManager::SetSoundMode(const zorbaudio_settings_t* settings, unsigned int soundMode) {
    Lock lock(m_mutex);
    return m_impl->SetSoundMode(settings, soundMode);
}

bool HalControlManager::SetOutputMode(const zorbaudio_settings_t* settings,
                                      unsigned int outputMode) {
    Lock lock(m_mutex);
    return m_impl->SetOutputMode(settings, outputMode);
}

bool HalControlManager::SetVolume(const zorbaudio_settings_t* settings, double volume) {
    Lock lock(m_mutex);
    return m_impl->SetVolume(settings, volume);
}

bool HalControlManager::SetVolumeTable(const zorbaudio_settings_t* settings, size_t count,
                                       const zorbaudio_stream_volume_t* volumes) {
    Lock lock(m_mutex);
    return m_impl->SetVolumeTable(settings, count, volumes);
}

bool HalControlManager::SetOrientation(const zorbaudio_settings_t* settings, int orientation) {
    Lock lock(m_mutex);
    return m_impl->SetOrientation(settings, orientation);
}

bool HalControlManager::SetEnable(const zorbaudio_settings_t* settings, bool enable) {
    Lock lock(m_mutex);
    return m_impl->SetEnable(settings, enable);
}

bool HalControlManager::GetEnable(const zorbaudio_settings_t* settings, bool& enable) {
    Lock lock(m_mutex);
    return m_impl->GetEnable(settings, enable);
}

bool HalControlManager::SetBypass(const zorbaudio_settings_t* settings, bool bypass) {
    Lock lock(m_mutex);
    return m_impl->SetBypass(settings, bypass);
}

bool HalControlManager::GetBypass(const zorbaudio_settings_t* settings, bool& bypass) {
    Lock lock(m_mutex);
    return m_impl->GetBypass(settings, bypass);
}

bool HalControlManager::StartTuningMode(const zorbaudio_settings_t* settings, bool start) {
    Lock lock(m_mutex);
    return m_impl->StartTuningMode(settings, start);
}

bool HalControlManager::IsTuningMode(const zorbaudio_settings_t* settings, bool& tuningMode) {
    Lock lock(m_mutex);
    return m_impl->IsTuningMode(settings, tuningMode);
}

bool HalControlManager::SetParametersArray(const zorbaudio_settings_t* settings,
                                           const std::map<unsigned int, double>& parameters,
                                           bool flag) {
    Lock lock(m_mutex);
    return m_impl->SetParametersArray(settings, parameters, flag);
}

bool HalControlManager::SetParametersArrayFromTuning(
    const zorbaudio_settings_t* settings, const std::map<unsigned int, double>& parameters,
    bool flag) {
    Lock lock(m_mutex);
    return m_impl->SetParametersArrayFromTuning(settings, parameters, flag);
}

bool HalControlManager::GetParametersArray(const zorbaudio_settings_t* settings,
                                           const std::vector<unsigned int>& ids,
                                           std::map<unsigned int, double>& parameters) {
    Lock lock(m_mutex);
    return m_impl->GetParametersArray(settings, ids, parameters);
}

bool HalControlManager::SetParameter(const zorbaudio_settings_t* settings, unsigned int index,
                                     double value) {
    Lock lock(m_mutex);
    return m_impl->SetParameter(settings, index, value);
}

bool HalControlManager::SetParameterFromTuning(const zorbaudio_settings_t* settings,
                                               unsigned int index, double value) {
    Lock lock(m_mutex);
    return m_impl->SetParameterFromTuning(settings, index, value);
}

bool HalControlManager::GetParameter(const zorbaudio_settings_t* settings, unsigned int index,
                                     double& value) {
    Lock lock(m_mutex);
    return m_impl->GetParameter(settings, index, value);
}

bool HalControlManager::IsFeatureSupported(const char* feature) {
    Lock lock(m_mutex);
    return m_impl->IsFeatureSupported(feature);
}

bool HalControlManager::SetLinkLawsValue(const zorbaudio_settings_t* settings,
                                         unsigned int sourceIndex, double sourceValue,
                                         double masterValue) {
    Lock lock(m_mutex);
    return m_impl->SetLinkLawsValue(settings, sourceIndex, sourceValue, masterValue);
}

bool HalControlManager::GetLinkLawsSourceValue(const zorbaudio_settings_t* settings,
                                               unsigned int sourceIndex, double& value) {
    Lock lock(m_mutex);
    return m_impl->GetLinkLawsSourceValue(settings, sourceIndex, value);
}

bool HalControlManager::GetLinkLawsSourceValues(const zorbaudio_settings_t* settings,
                                                const std::vector<unsigned int>& ids,
                                                std::map<unsigned int, double>& values) {
    Lock lock(m_mutex);
    return m_impl->GetLinkLawsSourceValues(settings, ids, values);
}

bool HalControlManager::GetLinkLawsParametersArray(const zorbaudio_settings_t* settings,
                                                   std::map<unsigned int, double>& values) {
    Lock lock(m_mutex);
    return m_impl->GetLinkLawsParametersArray(settings, values);
}

bool HalControlManager::SetChunk(const zorbaudio_settings_t* settings, unsigned int index,
                                 const std::vector<char>& data) {
    Lock lock(m_mutex);
    return m_impl->SetChunk(settings, index, data);
}

bool HalControlManager::SetChunkFromTuning(const zorbaudio_settings_t* settings, unsigned int index,
                                           const std::vector<char>& data) {
    Lock lock(m_mutex);
    return m_impl->SetChunkFromTuning(settings, index, data);
}

bool HalControlManager::GetChunk(const zorbaudio_settings_t* settings, unsigned int index,
                                 std::vector<char>& data) {
    Lock lock(m_mutex);
    return m_impl->GetChunk(settings, index, data);
}

bool HalControlManager::GetDspVersion(const zorbaudio_settings_t* settings, std::string& version) {
    Lock lock(m_mutex);
    return m_impl->GetDspVersion(settings, version);
}

bool HalControlManager::WaitForFlush(const zorbaudio_settings_t* settings) {
    Lock lock(m_mutex);
    return m_impl->WaitForFlush(settings);
}

bool HalControlManager::Flush(const zorbaudio_settings_t* settings) {
    Lock lock(m_mutex);
    return m_impl->Flush(settings);
}

bool HalControlManager::GetVersion(const zorbaudio_settings_t* settings,
                                   const std::string& versionType, std::string& version) {
    Lock lock(m_mutex);
    return m_impl->GetVersion(settings, versionType, version);
}

bool HalControlManager::SetData(const zorbaudio_settings_t* settings, int id, const void* pData,
                                unsigned int size) {
    Lock lock(m_mutex);
    return m_impl->SetData(settings, id, pData, size);
}

bool HalControlManager::OnDspWakeUp(const zorbaudio_settings_t* settings) {
    Lock lock(m_mutex);
    return m_impl->OnDspWakeUp(settings);
}

void HalControlManager::SetMessageBufferSize(unsigned int size) {
    Lock lock(m_mutex);
    m_impl->SetMessageBufferSize(size);
}

void HalControlManager::SetDspKitVersion(const std::string& version) {
    Lock lock(m_mutex);
    m_impl->SetDspKitVersion(version);
}

bool HalControlManager::GetTuningModeValidation(const zorbaudio_settings_t* settings, bool& valid) {
    Lock lock(m_mutex);
    return m_impl->GetTuningModeValidation(settings, valid);
}

bool HalControlManager::GetMeters(const zorbaudio_settings_t* settings,
                                  const std::map<uint32_t, CMeterInfo>& infos,
                                  std::map<uint32_t, CMeterValue>& values) {
    Lock lock(m_mutex);
    return m_impl->GetMeters(settings, infos, values);
}

bool HalControlManager::SetFullPresetFromTuning(const zorbaudio_settings_t* settings,
                                                const TesselTuning::FullPreset& preset,
                                                bool notify) {
    Lock lock(m_mutex);
    return m_impl->SetFullPresetFromTuning(settings, preset, notify);
}

bool HalControlManager::GetFullPreset(const zorbaudio_settings_t* settings,
                                      TesselTuning::FullPreset& preset) {
    Lock lock(m_mutex);
    return m_impl->GetFullPreset(settings, preset);
}

bool HalControlManager::RegisterNotifier(const zorbaudio_settings_t* settings,
                                         const std::shared_ptr<IHalNotifier>& notifier) {
    Lock lock(m_mutex);
    return m_impl->RegisterNotifier(settings, notifier);
}

bool HalControlManager::HasCommandParser(const char* operation) const {
    if (!m_commandParser) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "%s: this control object has no command parser",
                         operation);
        return false;
    }
    return true;
}

bool HalControlManager::SetCommand(const zorbaudio_settings_t* settings, const char* command,
                                   unsigned int length) {
    Lock lock(m_mutex);
    return HasCommandParser("SetCommand") && m_commandParser->SetCommand(settings, command, length);
}

bool HalControlManager::GetCommand(const zorbaudio_settings_t* settings, const char* command,
                                   unsigned int length, char* reply, unsigned int& replySize) {
    Lock lock(m_mutex);
    return HasCommandParser("GetCommand") &&
           m_commandParser->GetCommand(settings, command, length, reply, replySize);
}

}  // namespace TesselFX
