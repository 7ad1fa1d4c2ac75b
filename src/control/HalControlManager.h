#pragma once

#include <pthread.h>

#include <memory>

#include "control/IHalControlManager.h"
#include "protocol/IHalControlCommandParser.h"

namespace TesselFX {

class HalControlManagerImpl;

/// The control object behind a handle. Every operation takes the object's recursive,
/// process-shared mutex and forwards to HalControlManagerImpl, except the two command
/// operations, which go to the command parser. The mutex is recursive because a send may end
/// in a notification and a command re-enters the manager through the parser.
class HalControlManager : public IHalControlManager {
  public:
    /// commandParser may be empty; the command operations then fail. It is given the impl.
    explicit HalControlManager(const std::shared_ptr<IHalControlCommandParser>& commandParser);
    ~HalControlManager() override;
    HalControlManager(const HalControlManager&) = delete;
    HalControlManager& operator=(const HalControlManager&) = delete;

    bool Initialize(const ControlHandlerMap& handlers,
                    const std::set<std::string>& supportedFeatures,
                    const std::set<unsigned int>& excludedParameters,
                    const std::map<int, std::shared_ptr<CustomAction>>& customActions) override;
    bool SetLrSwap(const zorbaudio_settings_t* settings, bool lrSwap) override;
    bool SetActive(const zorbaudio_settings_t* settings, unsigned int outputMode,
                   unsigned int soundMode) override;
    bool SetSoundMode(const zorbaudio_settings_t* settings, unsigned int soundMode) override;
    bool SetOutputMode(const zorbaudio_settings_t* settings, unsigned int outputMode) override;
    bool SetVolume(const zorbaudio_settings_t* settings, double volume) override;
    bool SetVolumeTable(const zorbaudio_settings_t* settings, size_t count,
                        const zorbaudio_stream_volume_t* volumes) override;
    bool SetOrientation(const zorbaudio_settings_t* settings, int orientation) override;
    bool SetEnable(const zorbaudio_settings_t* settings, bool enable) override;
    bool GetEnable(const zorbaudio_settings_t* settings, bool& enable) override;
    bool SetBypass(const zorbaudio_settings_t* settings, bool bypass) override;
    bool GetBypass(const zorbaudio_settings_t* settings, bool& bypass) override;
    bool StartTuningMode(const zorbaudio_settings_t* settings, bool start) override;
    bool IsTuningMode(const zorbaudio_settings_t* settings, bool& tuningMode) override;
    bool SetParametersArray(const zorbaudio_settings_t* settings,
                            const std::map<unsigned int, double>& parameters, bool flag) override;
    bool SetParametersArrayFromTuning(const zorbaudio_settings_t* settings,
                                      const std::map<unsigned int, double>& parameters,
                                      bool flag) override;
    bool GetParametersArray(const zorbaudio_settings_t* settings,
                            const std::vector<unsigned int>& ids,
                            std::map<unsigned int, double>& parameters) override;
    bool SetParameter(const zorbaudio_settings_t* settings, unsigned int index,
                      double value) override;
    bool SetParameterFromTuning(const zorbaudio_settings_t* settings, unsigned int index,
                                double value) override;
    bool GetParameter(const zorbaudio_settings_t* settings, unsigned int index,
                      double& value) override;
    bool IsFeatureSupported(const char* feature) override;
    bool SetLinkLawsValue(const zorbaudio_settings_t* settings, unsigned int sourceIndex,
                          double sourceValue, double masterValue) override;
    bool GetLinkLawsSourceValue(const zorbaudio_settings_t* settings, unsigned int sourceIndex,
                                double& value) override;
    bool GetLinkLawsSourceValues(const zorbaudio_settings_t* settings,
                                 const std::vector<unsigned int>& ids,
                                 std::map<unsigned int, double>& values) override;
    bool GetLinkLawsParametersArray(const zorbaudio_settings_t* settings,
                                    std::map<unsigned int, double>& values) override;
    bool SetChunk(const zorbaudio_settings_t* settings, unsigned int index,
                  const std::vector<char>& data) override;
    bool SetChunkFromTuning(const zorbaudio_settings_t* settings, unsigned int index,
                            const std::vector<char>& data) override;
    bool GetChunk(const zorbaudio_settings_t* settings, unsigned int index,
                  std::vector<char>& data) override;
    bool GetDspVersion(const zorbaudio_settings_t* settings, std::string& version) override;
    bool WaitForFlush(const zorbaudio_settings_t* settings) override;
    bool Flush(const zorbaudio_settings_t* settings) override;
    bool GetVersion(const zorbaudio_settings_t* settings, const std::string& versionType,
                    std::string& version) override;
    bool SetData(const zorbaudio_settings_t* settings, int id, const void* pData,
                 unsigned int size) override;
    bool OnDspWakeUp(const zorbaudio_settings_t* settings) override;
    void SetMessageBufferSize(unsigned int size) override;
    void SetDspKitVersion(const std::string& version) override;
    bool GetTuningModeValidation(const zorbaudio_settings_t* settings, bool& valid) override;
    bool GetMeters(const zorbaudio_settings_t* settings,
                   const std::map<uint32_t, CMeterInfo>& infos,
                   std::map<uint32_t, CMeterValue>& values) override;
    bool SetFullPresetFromTuning(const zorbaudio_settings_t* settings,
                                 const TesselTuning::FullPreset& preset, bool notify) override;
    bool GetFullPreset(const zorbaudio_settings_t* settings,
                       TesselTuning::FullPreset& preset) override;
    bool RegisterNotifier(const zorbaudio_settings_t* settings,
                          const std::shared_ptr<IHalNotifier>& notifier) override;

    /// A tuning command without reply; length counts the terminating zero.
    virtual bool SetCommand(const zorbaudio_settings_t* settings, const char* command,
                            unsigned int length);
    /// A tuning command with a reply of at most replySize bytes; replySize becomes its length.
    virtual bool GetCommand(const zorbaudio_settings_t* settings, const char* command,
                            unsigned int length, char* reply, unsigned int& replySize);

  private:
    /// Holds the mutex for its lifetime, also when an exception passes.
    class Lock {
      public:
        explicit Lock(pthread_mutex_t& mutex) : m_mutex(mutex) { pthread_mutex_lock(&m_mutex); }
        ~Lock() { pthread_mutex_unlock(&m_mutex); }
        Lock(const Lock&) = delete;
        Lock& operator=(const Lock&) = delete;

      private:
        pthread_mutex_t& m_mutex;
    };

    bool HasCommandParser(const char* operation) const;

    pthread_mutex_t m_mutex;
    std::shared_ptr<IHalControlCommandParser> m_commandParser;
    std::shared_ptr<HalControlManagerImpl> m_impl;
};

}  // namespace TesselFX
