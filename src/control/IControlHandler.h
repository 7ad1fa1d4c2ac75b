#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "config/IVolumeTableHelper.h"
#include "control/IParametersAndChunksChangedListener.h"
#include "dsp/CMeterInfo.h"
#include "dsp/CMeterValue.h"
#include "preset/FullPreset.h"
#include "preset/LinkLawEntry.h"
#include "preset/OmSm.h"

namespace TesselFX {

/// The live state of one effect instance on the DSP: modes, enable, bypass, swap, volume,
/// orientation and the preset of the current mode pair, turned into control buffers.
/// No lock: every call comes under the control manager's lock.
class IControlHandler {
  public:
    virtual ~IControlHandler() = default;

    virtual bool SetLrSwap(bool lrSwap) = 0;
    virtual bool GetLrSwap() = 0;
    /// 0xFFFFFFFF in either mode stands for the current value.
    virtual bool SetActive(unsigned int outputMode, unsigned int soundMode) = 0;
    virtual bool SetSoundMode(unsigned int soundMode) = 0;
    virtual bool SetOutputMode(unsigned int outputMode) = 0;
    /// Linear volume.
    virtual bool SetVolume(double volume) = 0;
    /// Stream type -> linear volume of the active streams.
    virtual bool SetVolumeTable(const std::map<unsigned int, double>& volumes) = 0;
    virtual bool OnVolumeChanged(const double& volume) = 0;
    virtual double GetVolume() = 0;
    virtual bool SetOrientation(int orientation) = 0;
    virtual bool SetEnable(bool enable) = 0;
    virtual bool GetEnable() = 0;
    virtual bool SetBypass(bool bypass) = 0;
    virtual bool GetBypass() = 0;
    virtual bool SetParametersArray(const std::map<unsigned int, double>& parameters,
                                    bool flag) = 0;
    virtual bool SetParametersArrayFromTuning(const std::map<unsigned int, double>& parameters,
                                              bool flag) = 0;
    virtual bool SetParameter(unsigned int index, double value) = 0;
    virtual bool SetParameterFromTuning(unsigned int index, double value) = 0;
    virtual bool GetParameter(unsigned int index, double& value) = 0;
    /// The requested ids that exist, in the order of the request, with their values.
    virtual bool GetParametersArray(const std::vector<unsigned int>& ids,
                                    std::vector<unsigned int>& foundIds,
                                    std::vector<double>& values) = 0;
    /// Every parameter of the current view.
    virtual bool GetParametersArray(std::map<unsigned int, double>& parameters) = 0;
    virtual bool GetMeters(const std::map<uint32_t, CMeterInfo>& infos,
                           std::map<uint32_t, CMeterValue>& values) = 0;
    virtual bool SetChunk(unsigned int index, const std::vector<char>& data) = 0;
    virtual bool SetChunkFromTuning(unsigned int index, const std::vector<char>& data) = 0;
    virtual bool SetChunkFromTuningNoResponse(unsigned int index,
                                              const std::vector<char>& data) = 0;
    virtual bool GetChunk(unsigned int index, std::vector<char>& data) = 0;
    virtual bool SetFullPresetFromTuning(const TesselTuning::FullPreset& preset) = 0;
    virtual bool GetLinkLawEntries(std::vector<LinkLawEntry>& entries) = 0;
    virtual bool SetLinkLawsValue(unsigned int sourceIndex, double value) = 0;
    /// The handler keeps the listener until UnregisterVolumeChangedListener.
    virtual void RegisterVolumeChangedListener(
        const std::shared_ptr<IVolumeTableHelper::VolumeChangedListener>& listener) = 0;
    virtual void UnregisterVolumeChangedListener() = 0;
    virtual bool WaitForFlush() = 0;
    virtual bool Flush() = 0;
    virtual bool FlushAllSettingsToDsp() = 0;
    virtual bool GetDspVersion(std::string& version) = 0;
    virtual bool CreateTuningData() = 0;
    virtual bool ClearTuningData() = 0;
    /// An empty pointer removes the listener.
    virtual void RegisterParametersAndChunksChangedListener(
        const std::shared_ptr<IParametersAndChunksChangedListener>& listener) = 0;
    virtual bool IsTuningMode() = 0;
    virtual bool StartTuningMode(bool start) = 0;
    virtual bool OnDspWakeUp() = 0;
    /// number only names the control in the log; it is not sent.
    virtual bool SetControl(unsigned int number, const std::vector<char>& buffer) = 0;
    virtual bool SetCurrentPreset() = 0;
    virtual void Dump() const = 0;
    virtual std::string GetDescriptionString() const = 0;
    virtual SubtypeMasks GetOrientationSubtype(int orientation) = 0;
    virtual SubtypeMasks GetSubtypeMasks() = 0;
    virtual void ApplySubtypeMasks() = 0;
    virtual bool HasPreset(unsigned int outputMode, unsigned int soundMode) = 0;
    virtual bool GetPresetName(unsigned int outputMode, unsigned int soundMode,
                               std::string& name) = 0;
    virtual void UpdatePresetHandle(unsigned int outputMode, unsigned int soundMode) = 0;
    virtual bool UpdateVolumeLinkLaw(double volumeDb) = 0;
    virtual bool ApplyOutputAndSoundMode(unsigned int outputMode, unsigned int soundMode) = 0;
    virtual bool SendEnable(bool enable) = 0;
    virtual bool SendLrSwap(bool lrSwap) = 0;
    virtual bool SendBypass(bool bypass) = 0;
    virtual bool SendSystemVolume(float volumeDb) = 0;
    virtual bool SetParametersArrayCommand(const std::map<unsigned int, double>& parameters,
                                           bool flag) = 0;
    virtual bool SetParametersArrayCommandImpl(const std::map<unsigned int, double>& parameters,
                                               bool flag) = 0;
    virtual void NotifyVolumeChanged(double volumeDb) = 0;
    virtual void NotifyParametersAndChunksChanged(
        const std::map<unsigned int, double>& parameters,
        const std::map<unsigned int, std::vector<char>>& chunks) = 0;
    virtual bool SetLinkLawsValueImpl(unsigned int sourceIndex, double value) = 0;
    virtual void ReapplyLinkLawsValues() = 0;
};

}  // namespace TesselFX
