#pragma once

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "config/CustomAction.h"
#include "config/IControlDescription.h"
#include "config/IVolumeTableHelper.h"
#include "control/IControlHandler.h"
#include "control/IHalControlManager.h"
#include "control/IHalNotifier.h"
#include "protocol/MessageData.h"

namespace TesselFX {

/// Owns the control handlers of one control object, selects those that a settings record
/// names, and routes each operation to one or all of them. Empty, and failing every selecting
/// operation with "no valid ControlHandler", until Initialize. No lock of its own: reach it
/// only through HalControlManager.
class HalControlManagerImpl : public IHalControlManager {
  public:
    /// Tells the manager the volume in dB that a handler applied; link-law source 0 of the
    /// handler carries it. Holds the manager by plain pointer: the manager outlives it, since
    /// its destructor unregisters every listener.
    class ControlHandlerVolumeChangedListener : public IVolumeTableHelper::VolumeChangedListener {
      public:
        ControlHandlerVolumeChangedListener(HalControlManagerImpl* manager,
                                            const std::shared_ptr<IControlHandler>& handler);
        bool OnVolumeChanged(const double& volumeDb) override;

      private:
        HalControlManagerImpl* m_manager;
        std::shared_ptr<IControlHandler> m_handler;
    };

    /// Turns a handler's parameter and chunk changes into notifications. Holds the manager by
    /// plain pointer: the manager outlives it, since it registers an empty listener with the
    /// handler when the notifier goes and when it is destroyed itself.
    class ControlHandlerParametersAndChunksChangedListener
        : public IParametersAndChunksChangedListener {
      public:
        ControlHandlerParametersAndChunksChangedListener(
            HalControlManagerImpl* manager, const std::shared_ptr<IControlHandler>& handler);
        void OnParametersChanged(const std::map<unsigned int, double>& parameters) override;
        void OnParameterListChanged(const ParameterList& parameters) override;
        /// One notification per chunk, in index order.
        void OnChunksChanged(const std::map<unsigned int, std::vector<char>>& chunks) override;

      private:
        HalControlManagerImpl* m_manager;
        std::shared_ptr<IControlHandler> m_handler;
    };

    using HandlerList = std::vector<std::shared_ptr<IControlHandler>>;

    static constexpr uint32_t kSettingsVersion = 2;

    HalControlManagerImpl();
    ~HalControlManagerImpl() override;
    HalControlManagerImpl(const HalControlManagerImpl&) = delete;
    HalControlManagerImpl& operator=(const HalControlManagerImpl&) = delete;

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

    /// Whether settings are present and of the supported version; logs why not.
    bool CheckAudioCalSettings(const zorbaudio_settings_t* settings);
    /// The handlers whose description matches the search record, in map order.
    HandlerList GetControlHandlers(const zorbaudio_settings_t* settings);

    /// The handler's parameters and link-law chunk as it reads them, each flagged valid when
    /// the read worked, and the link-law source values last given for it.
    TesselTuning::FullPreset MakeFullPreset(const std::shared_ptr<IControlHandler>& handler);

    /// Last link-law source values per handler.
    const std::map<std::shared_ptr<IControlHandler>, std::map<unsigned int, double>>&
    GetLinkLawSourceValues() const {
        return m_linkLawSourceValues;
    }
    unsigned int GetMessageBufferSize() const { return m_messageBufferSize; }
    unsigned int GetMaxNotificationSize() const { return m_maxNotificationSize; }
    unsigned int GetMaxParametersPerNotification() const { return m_maxParametersPerNotification; }

  private:
    using HandlerOperation = std::function<bool(IControlHandler&)>;

    /// The selection, or false after "no valid ControlHandler" when it is empty.
    bool SelectControlHandlers(const zorbaudio_settings_t* settings, HandlerList& handlers);
    /// Every selected handler, also after a failure; the AND of their results.
    bool RouteAll(const zorbaudio_settings_t* settings, const HandlerOperation& operation);
    /// The first selected handler only.
    bool RouteFirst(const zorbaudio_settings_t* settings, const HandlerOperation& operation);
    /// The selected handlers in order until one succeeds; failureText (a complete line) is
    /// logged when none does.
    bool RouteAny(const zorbaudio_settings_t* settings, const HandlerOperation& operation,
                  const std::string& failureText);
    void UnregisterVolumeChangedListeners();
    /// The data command of a configured custom action: the numbers in pData select a mode pair.
    bool SetCustomAction(const zorbaudio_settings_t* settings, int id, const void* pData,
                         unsigned int size);
    /// Drops the notifier of every selected handler and its listener; handlers without one
    /// are passed over.
    bool EraseNotifier(const zorbaudio_settings_t* settings);
    /// Breaks the reference cycles between handlers and their change listeners.
    void UnregisterParametersAndChunksChangedListeners();
    std::shared_ptr<IHalNotifier> GetNotifier(const std::shared_ptr<IControlHandler>& handler);
    void NotifyParameterArrayChanged(const std::shared_ptr<IControlHandler>& handler,
                                     const std::map<unsigned int, double>& parameters);
    void NotifyParameterArrayChanged(const std::shared_ptr<IControlHandler>& handler,
                                     const ParameterList& parameters);
    /// Cuts the count parameters from first, in id order, into messages of at most
    /// maxParametersPerNotification entries (all in one when it is 0) and notifies each.
    template <typename Iterator>
    void NotifyParameters(const std::shared_ptr<IControlHandler>& handler, Iterator first,
                          size_t count);
    void NotifyChunkChanged(const std::shared_ptr<IControlHandler>& handler, unsigned int index,
                            const std::vector<char>& data);
    void NotifyLinkLawSourceValueChanged(const std::shared_ptr<IControlHandler>& handler,
                                         unsigned int sourceIndex, double value);
    /// The full preset of the handler, as a notification of id 51.
    void NotifyCurrentSystemPreset(const std::shared_ptr<IControlHandler>& handler);
    /// Hands message to the handler's notifier as base64 text, cut into pieces of at most
    /// maxNotificationSize bytes when it is longer.
    void NotifyDataChanged(const std::shared_ptr<IControlHandler>& handler,
                           const MessageData& message);
    /// The same for the bytes of a message.
    void NotifyFrame(const std::shared_ptr<IControlHandler>& handler,
                     const std::vector<char>& frame);

    ControlHandlerMap m_controlHandlers;
    std::map<std::shared_ptr<IControlHandler>, std::shared_ptr<IControlDescription>>
        m_handlerDescriptions;
    std::map<std::shared_ptr<IControlHandler>, std::map<unsigned int, double>>
        m_linkLawSourceValues;
    std::set<std::string> m_supportedFeatures;
    std::map<int, std::shared_ptr<CustomAction>> m_customActions;
    std::set<unsigned int> m_excludedParameters;
    std::map<std::shared_ptr<IControlHandler>, std::shared_ptr<IHalNotifier>> m_notifiers;
    std::string m_dspKitVersion;
    unsigned int m_messageBufferSize = 0;
    unsigned int m_maxNotificationSize = 0;
    unsigned int m_maxParametersPerNotification = 0;
};

}  // namespace TesselFX
