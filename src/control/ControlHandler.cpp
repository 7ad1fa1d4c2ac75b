#include "control/ControlHandler.h"

#include <algorithm>
#include <cmath>

#include "log/TesselLog.h"
#include "preset/CLinkLawEntrySerializer.h"
#include "preset/LinkLawEntry.h"
#include "preset/LinkLaws.h"
#include "preset/TuningPreset.h"

namespace TesselFX {

namespace {

constexpr const char* kDumpName = "virtual void TesselFX::ControlHandler::Dump() const";

/// Control numbers of the small control messages; they name the message in the log only.
constexpr unsigned int kControlEnable = 1;
constexpr unsigned int kControlLrSwap = 2;
constexpr unsigned int kControlSystemVolume = 3;
constexpr unsigned int kControlBypass = 4;
constexpr unsigned int kControlParametersFirst = 5;

/// Whether the map and the list hold the same ids with values that compare equal as doubles.
bool SameParameters(const std::map<unsigned int, double>& parameters, const ParameterList& list) {
    return parameters.size() == list.size() &&
           std::equal(parameters.begin(), parameters.end(), list.begin(),
                      [](const std::pair<const unsigned int, double>& a,
                         const std::pair<unsigned int, double>& b) {
                          return a.first == b.first && a.second == b.second;
                      });
}

/// A FromTuning call on a handler that has no tuning preset.
bool TuningNotActive() {
    TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "tuning is not active yet");
    return false;
}

}  // namespace

ControlHandler::ControlHandler(const std::shared_ptr<IDspBufferSender>& dspBufferSender,
                               const std::shared_ptr<IControlDescription>& controlDescription,
                               const std::shared_ptr<IPresetSet>& presetSet,
                               const std::shared_ptr<IVolumePolicy>& volumePolicy,
                               const std::shared_ptr<IVolumeTableHelper>& volumeTableHelper,
                               const std::shared_ptr<OrientationPolicy>& orientationPolicy,
                               const std::shared_ptr<IControlBufferGenerator>& generator,
                               const std::shared_ptr<IReplyBufferParser>& parser,
                               const std::shared_ptr<IMasterValueConverter>& masterValueConverter)
    : m_dspBufferSender(dspBufferSender),
      m_controlDescription(controlDescription),
      m_presetSet(presetSet),
      m_volumePolicy(volumePolicy),
      m_volumeTableHelper(volumeTableHelper),
      m_orientationPolicy(orientationPolicy),
      m_masterValueConverter(masterValueConverter),
      m_enableGenerator(std::dynamic_pointer_cast<ISetEnableBufferGenerator>(generator)),
      m_bypassGenerator(std::dynamic_pointer_cast<ISetBypassBufferGenerator>(generator)),
      m_systemVolumeGenerator(
          std::dynamic_pointer_cast<ISetSystemVolumeBufferGenerator>(generator)),
      m_lrSwapGenerator(std::dynamic_pointer_cast<ISetLrSwapBufferGenerator>(generator)),
      m_parameterGenerator(std::dynamic_pointer_cast<ISetParameterBufferGenerator>(generator)),
      m_parameterGeneratorV2(std::dynamic_pointer_cast<ISetParameterBufferGeneratorV2>(generator)),
      m_parameterArrayGenerator(
          std::dynamic_pointer_cast<ISetParameterArrayBufferGenerator>(generator)),
      m_metersGenerator(std::dynamic_pointer_cast<IGetMetersBufferGenerator>(generator)),
      m_replyMetersParser(std::dynamic_pointer_cast<IReplyMetersBufferParser>(parser)),
      m_versionGenerator(std::dynamic_pointer_cast<IGetVersionBufferGenerator>(generator)),
      m_replyVersionParser(std::dynamic_pointer_cast<IReplyVersionBufferParser>(parser)) {
    m_volume = m_volumePolicy->GetDefaultVolume();
    m_superPreset = std::make_shared<SuperPreset>();
    m_volumeTableHelper->SetListener(this);

    const auto& presets = m_controlDescription->GetPresets();
    if (presets.empty() || !presets.front()) {
        TESSEL_LOG_ERROR(
            TESSEL_LOG_FXModule,
            "%s Supported preset is not defined. Please make sure it's added to the config file.",
            "ControlHandler");
    } else {
        const unsigned int outputMode = presets.front()->GetOutputMode();
        const unsigned int soundMode = presets.front()->GetSoundMode();
        GetPresetName(outputMode, soundMode, m_presetName);
        m_orientation = m_orientationPolicy->GetDefaultOrientationAngle(m_presetName);
        UpdatePresetHandle(outputMode, soundMode);
    }
    const auto settings = m_controlDescription->GetSettings();
    if (settings) {
        m_description = settings->ToString();
    }
    Dump();
}

ControlHandler::~ControlHandler() { m_volumeTableHelper->ClearListener(); }

void ControlHandler::MarkCallerChange() {
    m_notifyParameters = true;
    m_notifyChunks = true;
}

bool ControlHandler::SetLrSwap(bool lrSwap) {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "%s SetLrSwap %u", GetDescriptionString().c_str(),
               static_cast<unsigned int>(lrSwap));
    m_lrSwap = lrSwap;
    MarkCallerChange();
    return m_waitingForFlush || SendLrSwap(lrSwap);
}

bool ControlHandler::GetLrSwap() { return m_lrSwap; }

bool ControlHandler::SetActive(unsigned int outputMode, unsigned int soundMode) {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "%s SetActive OM:%u SM:%u", GetDescriptionString().c_str(),
               outputMode, soundMode);
    MarkCallerChange();
    if (outputMode == kCurrentMode) {
        outputMode = m_outputMode;
    }
    if (soundMode == kCurrentMode) {
        soundMode = m_soundMode;
    }
    return ChangeModes(outputMode, soundMode, [outputMode, soundMode] {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule,
                         "Preset with output mode %d, sound mode %d does not exist",
                         static_cast<int>(outputMode), static_cast<int>(soundMode));
    });
}

bool ControlHandler::SetSoundMode(unsigned int soundMode) {
    MarkCallerChange();
    return ChangeModes(m_outputMode, soundMode, [soundMode] {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "not supported sound mode %u", soundMode);
    });
}

bool ControlHandler::SetOutputMode(unsigned int outputMode) {
    MarkCallerChange();
    return ChangeModes(outputMode, m_soundMode, [outputMode] {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "not supported output mode %u", outputMode);
    });
}

template <typename Report>
bool ControlHandler::ChangeModes(unsigned int outputMode, unsigned int soundMode,
                                 Report reportUnknown) {
    if (outputMode == m_outputMode && soundMode == m_soundMode) {
        return true;
    }
    if (!HasPreset(outputMode, soundMode)) {
        reportUnknown();
        return false;
    }
    return ApplyOutputAndSoundMode(outputMode, soundMode);
}

bool ControlHandler::ApplyOutputAndSoundMode(unsigned int outputMode, unsigned int soundMode) {
    UpdatePresetHandle(outputMode, soundMode);
    return SetCurrentPreset();
}

bool ControlHandler::SetVolume(double volume) {
    MarkCallerChange();
    return OnVolumeChanged(volume);
}

bool ControlHandler::OnVolumeChanged(const double& volume) {
    m_volume = volume;
    const double volumeDb = VolumeToDb(volume);
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "%s SetVolume volume %lf volumeDb %fdB",
               GetDescriptionString().c_str(), volume, volumeDb);
    bool result = SendSystemVolume(static_cast<float>(volumeDb));
    bool applyPreset = UpdateVolumeLinkLaw(volumeDb);
    if (applyPreset) {
        TESSEL_LOG(1, TESSEL_LOG_FXModule,
                   "ControlHandler::SetVolume trigger LL for new volume, applying new preset.");
    }
    const SubtypeMasks mask = m_volumePolicy->GetSubtypeMaskForVolume(m_presetName, volumeDb);
    if (mask != m_volumeSubtype) {
        TESSEL_LOG(1, TESSEL_LOG_FXModule,
                   "CoppHandle::SetVolume Subtype changed for new volume, applying new preset.");
        m_volumeSubtype = mask;
        ApplySubtypeMasks();
        applyPreset = true;
    }
    if (applyPreset) {
        result = SetCurrentPreset() && result;
    }
    NotifyVolumeChanged(volumeDb);
    return result;
}

double ControlHandler::GetVolume() { return m_volume; }

bool ControlHandler::UpdateVolumeLinkLaw(double volumeDb) {
    if (!m_masterValueConverter) {
        return false;
    }
    float masterValue = 0.0f;
    if (!m_masterValueConverter->Convert(static_cast<float>(volumeDb), masterValue)) {
        return false;
    }
    return SetLinkLawsValueImpl(0, masterValue);
}

bool ControlHandler::SetVolumeTable(const std::map<unsigned int, double>& volumes) {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "%s SetVolumeTable function entry",
               GetDescriptionString().c_str());
    MarkCallerChange();
    return m_volumeTableHelper->SetVolumeTable(volumes);
}

bool ControlHandler::SetOrientation(int orientation) {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "%s SetOrientation %d", GetDescriptionString().c_str(),
               orientation);
    m_orientation = orientation;
    MarkCallerChange();
    const SubtypeMasks mask = GetOrientationSubtype(orientation);
    if (mask != m_orientationSubtype) {
        TESSEL_LOG(1, TESSEL_LOG_FXModule,
                   "%s::SetOrientation Subtype changed for new orientation, applying new preset.",
                   "ControlHandler");
        m_orientationSubtype = mask;
        ApplySubtypeMasks();
        // A failed send is deliberately not reported: the state moved and the next full send
        // carries it.
        SetCurrentPreset();
    }
    return true;
}

bool ControlHandler::SetEnable(bool enable) {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "%s SetEnable %u", GetDescriptionString().c_str(),
               static_cast<unsigned int>(enable));
    m_enable = enable;
    MarkCallerChange();
    return m_waitingForFlush || SendEnable(enable);
}

bool ControlHandler::GetEnable() { return m_enable; }

bool ControlHandler::SetBypass(bool bypass) {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "%s SetBypass %u", GetDescriptionString().c_str(),
               static_cast<unsigned int>(bypass));
    m_bypass = bypass;
    MarkCallerChange();
    return m_waitingForFlush || SendBypass(bypass);
}

bool ControlHandler::GetBypass() { return m_bypass; }

template <typename Generator, typename Make>
bool ControlHandler::SendControl(const std::shared_ptr<Generator>& generator, unsigned int number,
                                 Make make) {
    if (!generator) {
        return true;
    }
    std::vector<char> buffer;
    if (make(*generator, buffer) != kStatusOk) {
        return false;
    }
    return SetControl(number, buffer);
}

bool ControlHandler::SendEnable(bool enable) {
    return SendControl(m_enableGenerator, kControlEnable,
                       [enable](ISetEnableBufferGenerator& generator, std::vector<char>& buffer) {
                           return generator.MakeSetEnableBuffer(buffer, enable);
                       });
}

bool ControlHandler::SendLrSwap(bool lrSwap) {
    return SendControl(m_lrSwapGenerator, kControlLrSwap,
                       [lrSwap](ISetLrSwapBufferGenerator& generator, std::vector<char>& buffer) {
                           return generator.MakeSetLrSwapBuffer(buffer, lrSwap);
                       });
}

bool ControlHandler::SendBypass(bool bypass) {
    return SendControl(m_bypassGenerator, kControlBypass,
                       [bypass](ISetBypassBufferGenerator& generator, std::vector<char>& buffer) {
                           return generator.MakeSetBypassBuffer(buffer, bypass);
                       });
}

bool ControlHandler::SendSystemVolume(float) {
    if (m_waitingForFlush) {
        return true;
    }
    return SendControl(m_systemVolumeGenerator, kControlSystemVolume,
                       [](ISetSystemVolumeBufferGenerator& generator, std::vector<char>& buffer) {
                           return generator.MakeSetSystemVolumeBuffer(buffer, true);
                       });
}

bool ControlHandler::SetControl(unsigned int, const std::vector<char>& buffer) {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "%s SetControl", GetDescriptionString().c_str());
    if (!m_dspBufferSender->Send(m_controlDescription->GetSettings(), buffer)) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "SendBufferToDsp fail");
        return false;
    }
    return true;
}

bool ControlHandler::SetParameter(unsigned int index, double value) {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "%s SetParameter %u = %f", GetDescriptionString().c_str(),
               index, value);
    return SetParametersArray({{index, value}}, false);
}

bool ControlHandler::SetParametersArray(const std::map<unsigned int, double>& parameters,
                                        bool flag) {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "%s SetParametersArray num_parameters = %u",
               GetDescriptionString().c_str(), static_cast<unsigned int>(parameters.size()));
    m_notifyParameters = true;
    m_superPreset->SetParameterArray(parameters);
    if (!m_presetHandle || m_waitingForFlush) {
        return true;
    }
    return SendAllParameters(flag);
}

bool ControlHandler::SetChunk(unsigned int index, const std::vector<char>& data) {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "%s SetChunk nIndex = %u", GetDescriptionString().c_str(),
               index);
    m_notifyParameters = true;
    m_superPreset->SetChunk(index, data);
    return SetCurrentPreset();
}

bool ControlHandler::SetCurrentPreset() {
    if (m_waitingForFlush) {
        return true;
    }
    return SendAllParameters(false);
}

const ParameterList* ControlHandler::FlatParameters() {
    if (m_tuningPreset) return m_tuningPreset->GetFinalParameterList();
    if (m_presetHandle) return m_presetHandle->GetFinalParameterList();
    return nullptr;
}

bool ControlHandler::TakeParameterChanges(std::vector<unsigned int>& ids) {
    const void* source = m_tuningPreset ? static_cast<const void*>(m_tuningPreset.get())
                                        : static_cast<const void*>(m_presetHandle.get());
    bool tracked = m_tuningPreset ? m_tuningPreset->TakeParameterChanges(ids)
                                  : m_presetHandle->TakeParameterChanges(ids);
    // The baseline and the generator hold what the source of the last send gave; changes of
    // another source say nothing about that.
    if (source != m_changeSource) {
        m_changeSource = source;
        ids.clear();
        tracked = false;
    }
    return tracked;
}

bool ControlHandler::SendAllParameters(bool flag) {
    ++m_parameterSends;
    const ParameterList* all = FlatParameters();
    if (all == nullptr) {
        std::map<unsigned int, double> parameters;
        return GetParametersArray(parameters) && SetParametersArrayCommand(parameters, flag);
    }
    ParameterChanges changes;
    // A send from inside a listener's call finds changes that an outer send took and has not
    // yet given the generator: it compares everything.
    changes.all = !TakeParameterChanges(changes.ids) || m_announcing != 0;
    if (changes.all) {
        changes.ids.clear();
        m_nanParameters.clear();
        for (const auto& parameter : *all) {
            if (std::isnan(parameter.second)) m_nanParameters.insert(parameter.first);
        }
    } else {
        std::sort(changes.ids.begin(), changes.ids.end());
        changes.ids.erase(std::unique(changes.ids.begin(), changes.ids.end()), changes.ids.end());
        for (unsigned int id : changes.ids) {
            const auto found = FindParameter(*all, id);
            if (found != all->end() && std::isnan(found->second)) {
                m_nanParameters.insert(id);
            } else {
                m_nanParameters.erase(id);
            }
        }
    }
    std::vector<char> linkLaws;
    if (!GetChunk(ZBAC_LINKLAWS, linkLaws)) {
        linkLaws.clear();
    }
    const std::map<unsigned int, std::vector<char>> chunks{{ZBAC_LINKLAWS, std::move(linkLaws)}};
    const Announcement announce = UpdateNotificationBaseline(*all, changes, chunks);
    if (!announce.parameters && !announce.chunks) {
        return SendParameterList(*all, changes, flag);
    }
    // The listener may call back into the library and change the parameters: a copy is told
    // and sent, as in SetParametersArrayCommand.
    const ParameterList parameters = *all;
    const unsigned int sends = m_parameterSends;
    // Kept alive by the copy should a callback replace it.
    const std::shared_ptr<IParametersAndChunksChangedListener> listener =
        m_parametersAndChunksChangedListener;
    {
        struct Announcing {
            explicit Announcing(unsigned int& depth) : m_depth(++depth) {}
            ~Announcing() { --m_depth; }
            unsigned int& m_depth;
        } announcing(m_announcing);
        if (announce.parameters) {
            listener->OnParameterListChanged(parameters);
        }
        if (announce.chunks) {
            listener->OnChunksChanged(chunks);
        }
    }
    if (m_parameterSends != sends) {
        return SendParametersAsTheyAreNow(flag);
    }
    return SendParameterList(parameters, changes, flag);
}

bool ControlHandler::SendParametersAsTheyAreNow(bool flag) {
    std::map<unsigned int, double> now;
    return GetParametersArray(now) && SetParametersArrayCommandImpl(now, flag);
}

bool ControlHandler::SendParameterList(const ParameterList& all, const ParameterChanges&,
                                       bool flag) {
    return SetParametersArrayCommandImpl(ToParameterMap(all), flag);
}

ControlHandler::Announcement ControlHandler::UpdateNotificationBaseline(
    const ParameterList& all, const ParameterChanges& changes,
    const std::map<unsigned int, std::vector<char>>& chunks) {
    const bool incremental = m_lastParametersTracked && !changes.all;
    // As maps compare: another count, another key or a value that compares unequal, which a
    // NaN always does.
    bool parametersChanged;
    if (incremental) {
        parametersChanged = all.size() != m_lastParameters.size() || m_lastParametersNaN != 0;
        for (auto id = changes.ids.begin(); !parametersChanged && id != changes.ids.end(); ++id) {
            const auto now = FindParameter(all, *id);
            const auto last = FindParameter(m_lastParameters, *id);
            parametersChanged = (now == all.end()) != (last == m_lastParameters.end()) ||
                                (now != all.end() && !(now->second == last->second));
        }
    } else {
        parametersChanged = all != m_lastParameters;
    }
    // Two empty chunk maps count as different.
    const bool chunksChanged = (chunks.empty() && m_lastChunks.empty()) || chunks != m_lastChunks;
    Announcement announce;
    if (m_parametersAndChunksChangedListener) {
        announce.parameters = m_notifyParameters && parametersChanged;
        announce.chunks = m_notifyChunks && chunksChanged;
    }
    // The baseline moves before the listener runs: a notifier that changes something from
    // inside its call is then compared with what it was just told, and a repeated change ends.
    if (incremental) {
        for (unsigned int id : changes.ids) {
            const auto last = FindParameter(m_lastParameters, id);
            if (last != m_lastParameters.end() && std::isnan(last->second)) --m_lastParametersNaN;
            const auto now = FindParameter(all, id);
            if (now == all.end()) {
                EraseParameterFromList(m_lastParameters, id);
                continue;
            }
            SetParameterInList(m_lastParameters, id, now->second);
            if (std::isnan(now->second)) ++m_lastParametersNaN;
        }
    } else if (parametersChanged) {
        m_lastParameters = all;
        m_lastParametersNaN = static_cast<size_t>(std::count_if(
            all.begin(), all.end(), [](const std::pair<unsigned int, double>& parameter) {
                return std::isnan(parameter.second);
            }));
    }
    if (chunksChanged) {
        m_lastChunks = chunks;
    }
    m_lastParametersTracked = true;
    m_notifyParameters = false;
    m_notifyChunks = false;
    return announce;
}

bool ControlHandler::GetParametersArray(std::map<unsigned int, double>& parameters) {
    if (m_tuningPreset) {
        parameters = m_tuningPreset->GetAllParameters();
        return true;
    }
    if (m_presetHandle) {
        parameters = m_presetHandle->GetAllParameters();
        return true;
    }
    TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "no valid parameters could be got");
    return false;
}

bool ControlHandler::GetParametersArray(const std::vector<unsigned int>& ids,
                                        std::vector<unsigned int>& foundIds,
                                        std::vector<double>& values) {
    return ReadParameters([&](const auto& all) {
        foundIds.clear();
        values.clear();
        for (unsigned int id : ids) {
            if (const double* found = FindValue(all, id)) {
                foundIds.push_back(id);
                values.push_back(*found);
            }
        }
        return true;
    });
}

bool ControlHandler::GetParameter(unsigned int index, double& value) {
    return ReadParameters([&](const auto& all) {
        const double* found = FindValue(all, index);
        if (found == nullptr) {
            return false;
        }
        value = *found;
        return true;
    });
}

template <typename Read>
bool ControlHandler::ReadParameters(Read read) {
    // The flat list of the tuning preset or the handle answers without a copy of every
    // parameter.
    if (const ParameterList* list = FlatParameters()) {
        return read(*list);
    }
    std::map<unsigned int, double> all;
    return GetParametersArray(all) && read(all);
}

bool ControlHandler::GetChunk(unsigned int index, std::vector<char>& data) {
    if (m_tuningPreset) {
        return m_tuningPreset->GetChunk(index, data);
    }
    if (m_presetHandle) {
        return m_presetHandle->GetChunk(static_cast<int>(index), data);
    }
    TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "no valid chunk could be got");
    return false;
}

bool ControlHandler::SetParametersArrayCommand(const std::map<unsigned int, double>& parameters,
                                               bool flag) {
    const unsigned int sends = ++m_parameterSends;
    std::vector<char> linkLaws;
    if (!GetChunk(ZBAC_LINKLAWS, linkLaws)) {
        linkLaws.clear();
    }
    NotifyParametersAndChunksChanged(parameters, {{ZBAC_LINKLAWS, linkLaws}});
    if (m_parameterSends != sends) {
        return SendParametersAsTheyAreNow(flag);
    }
    return SetParametersArrayCommandImpl(parameters, flag);
}

bool ControlHandler::SetParametersArrayCommandImpl(const std::map<unsigned int, double>& parameters,
                                                   bool flag) {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "%s SetParametersArrayCommandImpl num_parameters = %u",
               GetDescriptionString().c_str(), static_cast<unsigned int>(parameters.size()));
    if (m_waitingForFlush || !m_parameterArrayGenerator) {
        return true;
    }
    std::vector<std::vector<char>> buffers;
    if (m_parameterArrayGenerator->MakeSetParameterArrayBuffer(buffers, parameters, flag) !=
        kStatusOk) {
        return false;
    }
    bool result = true;
    for (size_t i = 0; i < buffers.size(); ++i) {
        result = SetControl(kControlParametersFirst + static_cast<unsigned int>(i), buffers[i]) &&
                 result;
    }
    return result;
}

bool ControlHandler::WaitForFlush() {
    m_waitingForFlush = true;
    return true;
}

bool ControlHandler::Flush() {
    if (!m_waitingForFlush) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "Must call WaitForFlush before call Flush");
        return false;
    }
    m_waitingForFlush = false;
    return FlushAllSettingsToDsp();
}

bool ControlHandler::FlushAllSettingsToDsp() {
    SendEnable(GetEnable());
    SendBypass(GetBypass());
    SendLrSwap(GetLrSwap());
    SendSystemVolume(static_cast<float>(VolumeToDb(GetVolume())));
    SetCurrentPreset();
    return true;
}

bool ControlHandler::GetMeters(const std::map<uint32_t, CMeterInfo>& infos,
                               std::map<uint32_t, CMeterValue>& values) {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "%s GetMeters", GetDescriptionString().c_str());
    if (!m_metersGenerator || !m_replyMetersParser) {
        return true;
    }
    std::vector<char> request;
    if (m_metersGenerator->MakeGetMetersBuffer(request, infos) != kStatusOk) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "MakeGetMetersBuffer fail");
        return false;
    }
    std::vector<char> reply;
    if (!m_dspBufferSender->SendAndReceive(m_controlDescription->GetSettings(), request, reply)) {
        // Meters are polled; a DSP that does not answer leaves the values as they were.
        TESSEL_LOG(1, TESSEL_LOG_FXModule, "SendBufferToDsp fail");
        return true;
    }
    if (m_replyMetersParser->ParseReplyMetersBuffer(reply, infos, values) != kStatusOk) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "ParseReplyMetersBuffer fail");
        return false;
    }
    return true;
}

bool ControlHandler::GetDspVersion(std::string& version) {
    if (!m_versionGenerator || !m_replyVersionParser) {
        return false;
    }
    std::vector<char> request;
    if (m_versionGenerator->MakeGetVersionBuffer(request) != kStatusOk) {
        return false;
    }
    std::vector<char> reply;
    if (!m_dspBufferSender->SendAndReceive(m_controlDescription->GetSettings(), request, reply)) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "SendBufferToDsp fail");
        return false;
    }
    return m_replyVersionParser->ParseReplyVersionBuffer(reply, version) == kStatusOk;
}

bool ControlHandler::OnDspWakeUp() { return true; }

std::string ControlHandler::GetDescriptionString() const {
    return "ControlHandler[sm=" + std::to_string(m_soundMode) +
           ";om=" + std::to_string(m_outputMode) + ";" + m_description + "] :";
}

void ControlHandler::Dump() const {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "%s ==== start ====", kDumpName);
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "%s", m_description.c_str());
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "%s ====  end  ====", kDumpName);
}

SubtypeMasks ControlHandler::GetOrientationSubtype(int orientation) {
    return m_orientationPolicy->GetSubtypeMaskForOrientation(m_presetName, orientation);
}

SubtypeMasks ControlHandler::GetSubtypeMasks() { return m_volumeSubtype | m_orientationSubtype; }

void ControlHandler::ApplySubtypeMasks() {
    if (m_presetHandle) {
        m_presetHandle->SetSubtypeMasks(GetSubtypeMasks());
    }
}

std::shared_ptr<PresetDescription> ControlHandler::FindPreset(unsigned int outputMode,
                                                              unsigned int soundMode) const {
    for (const auto& preset : m_controlDescription->GetPresets()) {
        if (preset && preset->GetOutputMode() == outputMode &&
            preset->GetSoundMode() == soundMode) {
            return preset;
        }
    }
    return nullptr;
}

bool ControlHandler::HasPreset(unsigned int outputMode, unsigned int soundMode) {
    return FindPreset(outputMode, soundMode) != nullptr;
}

bool ControlHandler::GetPresetName(unsigned int outputMode, unsigned int soundMode,
                                   std::string& name) {
    const auto preset = FindPreset(outputMode, soundMode);
    if (!preset) {
        return false;
    }
    name = preset->GetName();
    return true;
}

void ControlHandler::UpdatePresetHandle(unsigned int outputMode, unsigned int soundMode) {
    m_outputMode = outputMode;
    m_soundMode = soundMode;
    GetPresetName(outputMode, soundMode, m_presetName);
    m_presetHandle = m_presetSet->RequestPresetHandle(outputMode, soundMode);
    if (!m_presetHandle) {
        return;
    }
    m_presetHandle->SetSuperPreset(m_superPreset);
    m_volumeSubtype = m_volumePolicy->GetSubtypeMaskForVolume(m_presetName, VolumeToDb(m_volume));
    m_orientationSubtype = GetOrientationSubtype(m_orientation);
    ApplySubtypeMasks();
    ReapplyLinkLawsValues();
}

void ControlHandler::ReapplyLinkLawsValues() {
    if (!m_presetHandle) {
        return;
    }
    for (const auto& value : m_linkLawValues) {
        m_presetHandle->SetLinkLawValue(value.first, value.second);
    }
}

bool ControlHandler::SetLinkLawsValue(unsigned int sourceIndex, double value) {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "%s SetLinkLawsValue sourceIndex %u value %lf",
               GetDescriptionString().c_str(), sourceIndex, value);
    m_notifyParameters = true;
    return SetLinkLawsValueImpl(sourceIndex, value) && SetCurrentPreset();
}

bool ControlHandler::SetLinkLawsValueImpl(unsigned int sourceIndex, double value) {
    m_notifyParameters = true;
    m_linkLawValues[sourceIndex] = value;
    if (m_tuningPreset) {
        m_tuningPreset->SetLinkLawValue(sourceIndex, value);
    }
    if (m_presetHandle) {
        return m_presetHandle->SetLinkLawValue(sourceIndex, value);
    }
    return true;
}

bool ControlHandler::GetLinkLawEntries(std::vector<LinkLawEntry>& entries) {
    if (m_tuningPreset) {
        entries = m_tuningPreset->GetLinkLawEntries();
        return true;
    }
    if (m_presetHandle) {
        entries = m_presetHandle->GetLinkLawEntries();
        return true;
    }
    return false;
}

void ControlHandler::RegisterVolumeChangedListener(
    const std::shared_ptr<IVolumeTableHelper::VolumeChangedListener>& listener) {
    m_volumeChangedListener = listener;
}

void ControlHandler::UnregisterVolumeChangedListener() { m_volumeChangedListener.reset(); }

void ControlHandler::NotifyVolumeChanged(double volumeDb) {
    // Kept alive by the copy should a callback replace it.
    const std::shared_ptr<IVolumeTableHelper::VolumeChangedListener> listener =
        m_volumeChangedListener;
    if (listener) {
        listener->OnVolumeChanged(volumeDb);
    }
}

void ControlHandler::RegisterParametersAndChunksChangedListener(
    const std::shared_ptr<IParametersAndChunksChangedListener>& listener) {
    m_parametersAndChunksChangedListener = listener;
}

void ControlHandler::NotifyParametersAndChunksChanged(
    const std::map<unsigned int, double>& parameters,
    const std::map<unsigned int, std::vector<char>>& chunks) {
    // A listener may be replaced from inside its own call (a notifier that unregisters): the
    // local copy keeps it alive until both calls are over.
    const std::shared_ptr<IParametersAndChunksChangedListener> listener =
        m_parametersAndChunksChangedListener;
    // Values compare as doubles: a NaN always counts as a change.
    const bool tellParameters =
        listener && m_notifyParameters && !SameParameters(parameters, m_lastParameters);
    // Two empty chunk maps count as different.
    const bool tellChunks = listener && m_notifyChunks &&
                            ((chunks.empty() && m_lastChunks.empty()) || chunks != m_lastChunks);
    // The baseline moves before the listener runs: a notifier that changes something from
    // inside its call is then compared with what it was just told, and a repeated change ends.
    m_notifyParameters = false;
    m_notifyChunks = false;
    m_lastParameters.assign(parameters.begin(), parameters.end());
    m_lastChunks = chunks;
    m_lastParametersTracked = false;
    if (tellParameters) {
        listener->OnParametersChanged(parameters);
    }
    if (tellChunks) {
        listener->OnChunksChanged(chunks);
    }
}

bool ControlHandler::IsTuningMode() { return m_tuningPreset != nullptr; }

bool ControlHandler::StartTuningMode(bool start) {
    return start ? CreateTuningData() : ClearTuningData();
}

bool ControlHandler::CreateTuningData() {
    if (m_tuningPreset) {
        TESSEL_LOG(0, TESSEL_LOG_FXModule, "tuning data already exists");
        return true;
    }
    auto tuningPreset = std::make_shared<TuningPreset>(std::make_shared<CLinkLawEntrySerializer>(),
                                                       std::make_shared<LinkLaws>());
    if (m_presetHandle) {
        tuningPreset->InitFromPresetHandle(m_presetHandle);
    } else {
        for (const auto& value : m_linkLawValues) {
            tuningPreset->SetLinkLawValue(value.first, value.second);
        }
    }
    m_tuningPreset = tuningPreset;
    return true;
}

bool ControlHandler::ClearTuningData() {
    if (!m_tuningPreset) {
        TESSEL_LOG(0, TESSEL_LOG_FXModule, "tuning data does not exist");
        return true;
    }
    m_tuningPreset.reset();
    // The system preset replaces what the tool sent.
    return m_presetHandle ? SetCurrentPreset() : true;
}

bool ControlHandler::SetParametersArrayFromTuning(const std::map<unsigned int, double>& parameters,
                                                  bool flag) {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "%s SetParametersArray num_parameters = %u",
               GetDescriptionString().c_str(), static_cast<unsigned int>(parameters.size()));
    if (!m_tuningPreset) {
        return TuningNotActive();
    }
    // No notify flag: the tool is not told of its own change. The send checks
    // waitingForFlush itself.
    m_tuningPreset->SetParameterArray(parameters);
    return SendAllParameters(flag);
}

bool ControlHandler::SetParameterFromTuning(unsigned int index, double value) {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "%s SetParameterFromTuning %u = %f",
               GetDescriptionString().c_str(), index, value);
    if (!m_tuningPreset) {
        return TuningNotActive();
    }
    return SetParametersArrayFromTuning({{index, value}}, false);
}

bool ControlHandler::SetChunkFromTuning(unsigned int index, const std::vector<char>& data) {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "%s SetChunkFromTuning nIndex = %u",
               GetDescriptionString().c_str(), index);
    m_notifyParameters = true;
    return SetChunkFromTuningNoResponse(index, data);
}

bool ControlHandler::SetChunkFromTuningNoResponse(unsigned int index,
                                                  const std::vector<char>& data) {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "%s SetChunkFromTuningNoResponse nIndex = %u",
               GetDescriptionString().c_str(), index);
    if (!m_tuningPreset) {
        return TuningNotActive();
    }
    m_tuningPreset->SetChunk(index, data);
    return SetCurrentPreset();
}

bool ControlHandler::SetFullPresetFromTuning(const TesselTuning::FullPreset& preset) {
    // The record's link-law sources are not applied here.
    bool result = true;
    if (preset.hasParameters) {
        result = SetParametersArrayFromTuning(preset.parameters, false);
    }
    if (preset.hasLlChunk) {
        result = SetChunkFromTuningNoResponse(ZBAC_LINKLAWS, preset.llChunk) && result;
    }
    return result;
}

}  // namespace TesselFX
