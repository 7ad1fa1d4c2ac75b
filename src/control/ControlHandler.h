#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "config/IControlDescription.h"
#include "config/IVolumePolicy.h"
#include "config/IVolumeTableHelper.h"
#include "config/OrientationPolicy.h"
#include "control/IControlHandler.h"
#include "control/IDspBufferSender.h"
#include "dsp/IControlBufferGenerator.h"
#include "dsp/IGetMetersBufferGenerator.h"
#include "dsp/IGetVersionBufferGenerator.h"
#include "dsp/IReplyBufferParser.h"
#include "dsp/IReplyMetersBufferParser.h"
#include "dsp/IReplyVersionBufferParser.h"
#include "dsp/ISetBypassBufferGenerator.h"
#include "dsp/ISetEnableBufferGenerator.h"
#include "dsp/ISetLrSwapBufferGenerator.h"
#include "dsp/ISetParameterArrayBufferGenerator.h"
#include "dsp/ISetParameterBufferGenerator.h"
#include "dsp/ISetParameterBufferGeneratorV2.h"
#include "dsp/ISetSystemVolumeBufferGenerator.h"
#include "preset/IMasterValueConverter.h"
#include "preset/IPresetHandle.h"
#include "preset/IPresetSet.h"
#include "preset/ITuningPreset.h"
#include "preset/SuperPreset.h"

namespace TesselFX {

/// The live state of one effect instance: it remembers modes, enable, bypass, swap, volume and
/// orientation, holds the preset handle of the current mode pair and turns each change into
/// control buffers. A change either sends one small control buffer or, when it changes the
/// preset or its subtypes, the whole parameter set of the current preset. Between WaitForFlush
/// and Flush the state moves but nothing is sent. A failed send keeps the new state; the next
/// full send carries it. No lock: every call comes under the control manager's lock.
class ControlHandler : public IControlHandler, public IVolumeTableHelper::VolumeChangedListener {
  public:
    static constexpr unsigned int kCurrentMode = 0xFFFFFFFFu;

    /// Registers itself as the helper's volume listener until destruction. Sender, description,
    /// preset set, policies and helper must not be null. generator and parser are searched for
    /// the interfaces they offer, and a missing one makes its operation a success without
    /// effect; without a converter the volume moves no link law.
    ControlHandler(const std::shared_ptr<IDspBufferSender>& dspBufferSender,
                   const std::shared_ptr<IControlDescription>& controlDescription,
                   const std::shared_ptr<IPresetSet>& presetSet,
                   const std::shared_ptr<IVolumePolicy>& volumePolicy,
                   const std::shared_ptr<IVolumeTableHelper>& volumeTableHelper,
                   const std::shared_ptr<OrientationPolicy>& orientationPolicy,
                   const std::shared_ptr<IControlBufferGenerator>& generator,
                   const std::shared_ptr<IReplyBufferParser>& parser,
                   const std::shared_ptr<IMasterValueConverter>& masterValueConverter);
    ~ControlHandler() override;
    ControlHandler(const ControlHandler&) = delete;
    ControlHandler& operator=(const ControlHandler&) = delete;

    bool SetLrSwap(bool lrSwap) override;
    bool GetLrSwap() override;
    bool SetActive(unsigned int outputMode, unsigned int soundMode) override;
    bool SetSoundMode(unsigned int soundMode) override;
    bool SetOutputMode(unsigned int outputMode) override;
    bool SetVolume(double volume) override;
    bool SetVolumeTable(const std::map<unsigned int, double>& volumes) override;
    bool OnVolumeChanged(const double& volume) override;
    double GetVolume() override;
    bool SetOrientation(int orientation) override;
    bool SetEnable(bool enable) override;
    bool GetEnable() override;
    bool SetBypass(bool bypass) override;
    bool GetBypass() override;
    bool SetParametersArray(const std::map<unsigned int, double>& parameters, bool flag) override;
    bool SetParametersArrayFromTuning(const std::map<unsigned int, double>& parameters,
                                      bool flag) override;
    bool SetParameter(unsigned int index, double value) override;
    bool SetParameterFromTuning(unsigned int index, double value) override;
    bool GetParameter(unsigned int index, double& value) override;
    bool GetParametersArray(const std::vector<unsigned int>& ids,
                            std::vector<unsigned int>& foundIds,
                            std::vector<double>& values) override;
    bool GetParametersArray(std::map<unsigned int, double>& parameters) override;
    bool GetMeters(const std::map<uint32_t, CMeterInfo>& infos,
                   std::map<uint32_t, CMeterValue>& values) override;
    bool SetChunk(unsigned int index, const std::vector<char>& data) override;
    bool SetChunkFromTuning(unsigned int index, const std::vector<char>& data) override;
    bool SetChunkFromTuningNoResponse(unsigned int index, const std::vector<char>& data) override;
    bool GetChunk(unsigned int index, std::vector<char>& data) override;
    bool SetFullPresetFromTuning(const TesselTuning::FullPreset& preset) override;
    bool GetLinkLawEntries(std::vector<LinkLawEntry>& entries) override;
    bool SetLinkLawsValue(unsigned int sourceIndex, double value) override;
    void RegisterVolumeChangedListener(
        const std::shared_ptr<IVolumeTableHelper::VolumeChangedListener>& listener) override;
    void UnregisterVolumeChangedListener() override;
    bool WaitForFlush() override;
    bool Flush() override;
    bool FlushAllSettingsToDsp() override;
    bool GetDspVersion(std::string& version) override;
    bool CreateTuningData() override;
    bool ClearTuningData() override;
    void RegisterParametersAndChunksChangedListener(
        const std::shared_ptr<IParametersAndChunksChangedListener>& listener) override;
    bool IsTuningMode() override;
    bool StartTuningMode(bool start) override;
    bool OnDspWakeUp() override;
    bool SetControl(unsigned int number, const std::vector<char>& buffer) override;
    bool SetCurrentPreset() override;
    void Dump() const override;
    std::string GetDescriptionString() const override;
    SubtypeMasks GetOrientationSubtype(int orientation) override;
    SubtypeMasks GetSubtypeMasks() override;
    void ApplySubtypeMasks() override;
    bool HasPreset(unsigned int outputMode, unsigned int soundMode) override;
    bool GetPresetName(unsigned int outputMode, unsigned int soundMode, std::string& name) override;
    void UpdatePresetHandle(unsigned int outputMode, unsigned int soundMode) override;
    bool UpdateVolumeLinkLaw(double volumeDb) override;
    bool ApplyOutputAndSoundMode(unsigned int outputMode, unsigned int soundMode) override;
    bool SendEnable(bool enable) override;
    bool SendLrSwap(bool lrSwap) override;
    bool SendBypass(bool bypass) override;
    bool SendSystemVolume(float volumeDb) override;
    bool SetParametersArrayCommand(const std::map<unsigned int, double>& parameters,
                                   bool flag) override;
    bool SetParametersArrayCommandImpl(const std::map<unsigned int, double>& parameters,
                                       bool flag) override;
    void NotifyVolumeChanged(double volumeDb) override;
    void NotifyParametersAndChunksChanged(
        const std::map<unsigned int, double>& parameters,
        const std::map<unsigned int, std::vector<char>>& chunks) override;
    bool SetLinkLawsValueImpl(unsigned int sourceIndex, double value) override;
    void ReapplyLinkLawsValues() override;

  protected:
    /// The buffer of one small control message; true without a generator.
    template <typename Generator, typename Make>
    bool SendControl(const std::shared_ptr<Generator>& generator, unsigned int number, Make make);
    /// Makes the pair current and sends its preset; true without effect when it is current
    /// already. reportUnknown tells the log when the description has no such preset.
    template <typename Report>
    bool ChangeModes(unsigned int outputMode, unsigned int soundMode, Report reportUnknown);
    /// The preset description of the mode pair, or null.
    std::shared_ptr<PresetDescription> FindPreset(unsigned int outputMode,
                                                  unsigned int soundMode) const;
    /// Sets both notify flags: a caller changed something that a tuning tool should hear of.
    void MarkCallerChange();

    /// Which final parameters of the preset handle changed since the last send: all of them,
    /// or those of ids (ascending, unique).
    struct ParameterChanges {
        bool all = true;
        std::vector<unsigned int> ids;
    };
    /// The parameters in flat storage of the tuning preset while tuning, else of the preset
    /// handle; null when that one keeps none.
    const ParameterList* FlatParameters();
    /// TakeParameterChanges of the tuning preset while tuning, else of the preset handle;
    /// false, and ids empty, at the first call after the source changed.
    bool TakeParameterChanges(std::vector<unsigned int>& ids);
    /// Collects all parameters and sends them, as SetParametersArrayCommand does with the map
    /// form of GetParametersArray. Reading flat parameters, it passes on only what changed:
    /// the notification baseline and the generator are updated for those parameters, and a
    /// listener is told with the flat list.
    bool SendAllParameters(bool flag);
    /// The last step of SendAllParameters: SetParametersArrayCommandImpl with a map of all.
    /// A variant whose generator takes change lists converts only what changed.
    virtual bool SendParameterList(const ParameterList& all, const ParameterChanges& changes,
                                   bool flag);
    /// SetParametersArrayCommandImpl with all parameters as they are now, for a send whose
    /// listener sent from inside its call: that send went out with newer values than the copy
    /// the listener was told of, which would otherwise overwrite them on the DSP.
    bool SendParametersAsTheyAreNow(bool flag);
    /// What the listener is to be told of.
    struct Announcement {
        bool parameters = false;
        bool chunks = false;
    };
    /// The change detection of NotifyParametersAndChunksChanged for a send of flat parameters:
    /// the baseline takes the changes, the notify flags are cleared, and the answer says what
    /// the listener is to be told.
    Announcement UpdateNotificationBaseline(
        const ParameterList& all, const ParameterChanges& changes,
        const std::map<unsigned int, std::vector<char>>& chunks);
    /// Calls read with the current parameters, as a ParameterList or a map, and returns its
    /// answer; false when there are none.
    template <typename Read>
    bool ReadParameters(Read read);

    std::shared_ptr<IDspBufferSender> m_dspBufferSender;
    std::shared_ptr<IControlDescription> m_controlDescription;
    std::shared_ptr<IPresetSet> m_presetSet;
    std::shared_ptr<IVolumePolicy> m_volumePolicy;
    std::shared_ptr<IVolumeTableHelper> m_volumeTableHelper;
    std::shared_ptr<OrientationPolicy> m_orientationPolicy;
    std::shared_ptr<IMasterValueConverter> m_masterValueConverter;
    std::shared_ptr<ISetEnableBufferGenerator> m_enableGenerator;
    std::shared_ptr<ISetBypassBufferGenerator> m_bypassGenerator;
    std::shared_ptr<ISetSystemVolumeBufferGenerator> m_systemVolumeGenerator;
    std::shared_ptr<ISetLrSwapBufferGenerator> m_lrSwapGenerator;
    std::shared_ptr<ISetParameterBufferGenerator> m_parameterGenerator;
    std::shared_ptr<ISetParameterBufferGeneratorV2> m_parameterGeneratorV2;
    std::shared_ptr<ISetParameterArrayBufferGenerator> m_parameterArrayGenerator;
    std::shared_ptr<IGetMetersBufferGenerator> m_metersGenerator;
    std::shared_ptr<IReplyMetersBufferParser> m_replyMetersParser;
    std::shared_ptr<IGetVersionBufferGenerator> m_versionGenerator;
    std::shared_ptr<IReplyVersionBufferParser> m_replyVersionParser;
    bool m_lrSwap = false;
    bool m_enable = true;
    bool m_bypass = false;
    unsigned int m_outputMode = 0;
    unsigned int m_soundMode = 0;
    std::string m_presetName;
    int m_orientation = 0;
    SubtypeMasks m_volumeSubtype = 0;
    SubtypeMasks m_orientationSubtype = 0;
    double m_volume = 1.0;
    bool m_waitingForFlush = false;
    std::string m_description;
    std::shared_ptr<IPresetHandle> m_presetHandle;
    std::shared_ptr<SuperPreset> m_superPreset;
    std::shared_ptr<ITuningPreset> m_tuningPreset;
    std::shared_ptr<IVolumeTableHelper::VolumeChangedListener> m_volumeChangedListener;
    std::shared_ptr<IParametersAndChunksChangedListener> m_parametersAndChunksChangedListener;
    bool m_notifyParameters = false;
    bool m_notifyChunks = false;
    /// The parameters of the last send, the baseline of the change detection.
    ParameterList m_lastParameters;
    std::map<unsigned int, std::vector<char>> m_lastChunks;
    /// m_lastParameters equals the handle's final parameters as of its last taken changes.
    bool m_lastParametersTracked = false;
    /// How many values of m_lastParameters are NaN, while tracked.
    size_t m_lastParametersNaN = 0;
    /// The ids whose final value is NaN: such a value never equals its former self.
    std::set<unsigned int> m_nanParameters;
    std::map<unsigned int, double> m_linkLawValues;
    /// The tuning preset or preset handle whose changes the last send took.
    const void* m_changeSource = nullptr;
    /// Counts the parameter sends begun, so that a send can tell that another one ran from
    /// inside its listener's call.
    unsigned int m_parameterSends = 0;
    /// How many sends are telling their listener now.
    unsigned int m_announcing = 0;
};

}  // namespace TesselFX
