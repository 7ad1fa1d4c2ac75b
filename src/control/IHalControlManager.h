#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "config/ZorbAudioSettings.h"
#include "dsp/CMeterInfo.h"
#include "dsp/CMeterValue.h"
#include "preset/FullPreset.h"
#include "zbhalcontroller/zb_api.h"

namespace TesselFX {

class CustomAction;
class IControlDescription;
class IControlHandler;
class IHalNotifier;

using ControlHandlerMap =
    std::map<std::shared_ptr<IControlDescription>, std::shared_ptr<IControlHandler>>;

/// The operations of one control object. Every operation that takes settings works on the
/// control handlers whose description matches the settings' search record; settings must be
/// of version 2. Results are reduced to one bool and the cause of a failure is logged.
/// Not thread safe by itself: reach it through the locking HalControlManager.
class IHalControlManager {
  public:
    virtual ~IHalControlManager() = default;

    virtual bool Initialize(const ControlHandlerMap& handlers,
                            const std::set<std::string>& supportedFeatures,
                            const std::set<unsigned int>& excludedParameters,
                            const std::map<int, std::shared_ptr<CustomAction>>& customActions) = 0;
    virtual bool SetLrSwap(const zorbaudio_settings_t* settings, bool lrSwap) = 0;
    virtual bool SetActive(const zorbaudio_settings_t* settings, unsigned int outputMode,
                           unsigned int soundMode) = 0;
    virtual bool SetSoundMode(const zorbaudio_settings_t* settings, unsigned int soundMode) = 0;
    virtual bool SetOutputMode(const zorbaudio_settings_t* settings, unsigned int outputMode) = 0;
    /// A linear volume; one that is negative, NaN or infinite is refused with a log line.
    virtual bool SetVolume(const zorbaudio_settings_t* settings, double volume) = 0;
    virtual bool SetVolumeTable(const zorbaudio_settings_t* settings, size_t count,
                                const zorbaudio_stream_volume_t* volumes) = 0;
    virtual bool SetOrientation(const zorbaudio_settings_t* settings, int orientation) = 0;
    virtual bool SetEnable(const zorbaudio_settings_t* settings, bool enable) = 0;
    virtual bool GetEnable(const zorbaudio_settings_t* settings, bool& enable) = 0;
    virtual bool SetBypass(const zorbaudio_settings_t* settings, bool bypass) = 0;
    virtual bool GetBypass(const zorbaudio_settings_t* settings, bool& bypass) = 0;
    virtual bool StartTuningMode(const zorbaudio_settings_t* settings, bool start) = 0;
    virtual bool IsTuningMode(const zorbaudio_settings_t* settings, bool& tuningMode) = 0;
    virtual bool SetParametersArray(const zorbaudio_settings_t* settings,
                                    const std::map<unsigned int, double>& parameters,
                                    bool flag) = 0;
    virtual bool SetParametersArrayFromTuning(const zorbaudio_settings_t* settings,
                                              const std::map<unsigned int, double>& parameters,
                                              bool flag) = 0;
    /// With an empty id list every parameter of the first handler that has any.
    virtual bool GetParametersArray(const zorbaudio_settings_t* settings,
                                    const std::vector<unsigned int>& ids,
                                    std::map<unsigned int, double>& parameters) = 0;
    virtual bool SetParameter(const zorbaudio_settings_t* settings, unsigned int index,
                              double value) = 0;
    virtual bool SetParameterFromTuning(const zorbaudio_settings_t* settings, unsigned int index,
                                        double value) = 0;
    virtual bool GetParameter(const zorbaudio_settings_t* settings, unsigned int index,
                              double& value) = 0;
    virtual bool IsFeatureSupported(const char* feature) = 0;
    virtual bool SetLinkLawsValue(const zorbaudio_settings_t* settings, unsigned int sourceIndex,
                                  double sourceValue, double masterValue) = 0;
    virtual bool GetLinkLawsSourceValue(const zorbaudio_settings_t* settings,
                                        unsigned int sourceIndex, double& value) = 0;
    virtual bool GetLinkLawsSourceValues(const zorbaudio_settings_t* settings,
                                         const std::vector<unsigned int>& ids,
                                         std::map<unsigned int, double>& values) = 0;
    virtual bool GetLinkLawsParametersArray(const zorbaudio_settings_t* settings,
                                            std::map<unsigned int, double>& values) = 0;
    virtual bool SetChunk(const zorbaudio_settings_t* settings, unsigned int index,
                          const std::vector<char>& data) = 0;
    virtual bool SetChunkFromTuning(const zorbaudio_settings_t* settings, unsigned int index,
                                    const std::vector<char>& data) = 0;
    virtual bool GetChunk(const zorbaudio_settings_t* settings, unsigned int index,
                          std::vector<char>& data) = 0;
    virtual bool GetDspVersion(const zorbaudio_settings_t* settings, std::string& version) = 0;
    virtual bool WaitForFlush(const zorbaudio_settings_t* settings) = 0;
    virtual bool Flush(const zorbaudio_settings_t* settings) = 0;
    /// versionType "dsp", "halcontroller" or "dspkit", compared exactly.
    virtual bool GetVersion(const zorbaudio_settings_t* settings, const std::string& versionType,
                            std::string& version) = 0;
    virtual bool SetData(const zorbaudio_settings_t* settings, int id, const void* pData,
                         unsigned int size) = 0;
    virtual bool OnDspWakeUp(const zorbaudio_settings_t* settings) = 0;
    virtual void SetMessageBufferSize(unsigned int size) = 0;
    virtual void SetDspKitVersion(const std::string& version) = 0;
    virtual bool GetTuningModeValidation(const zorbaudio_settings_t* settings, bool& valid) = 0;
    virtual bool GetMeters(const zorbaudio_settings_t* settings,
                           const std::map<uint32_t, CMeterInfo>& infos,
                           std::map<uint32_t, CMeterValue>& values) = 0;
    virtual bool SetFullPresetFromTuning(const zorbaudio_settings_t* settings,
                                         const TesselTuning::FullPreset& preset, bool notify) = 0;
    virtual bool GetFullPreset(const zorbaudio_settings_t* settings,
                               TesselTuning::FullPreset& preset) = 0;
    /// An empty notifier removes the registration.
    virtual bool RegisterNotifier(const zorbaudio_settings_t* settings,
                                  const std::shared_ptr<IHalNotifier>& notifier) = 0;
};

}  // namespace TesselFX
