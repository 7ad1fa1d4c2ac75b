#include "control/Hifi3zControlHandler.h"

#include <algorithm>
#include <vector>

#include "log/TesselLog.h"

namespace TesselFX {

namespace {

constexpr const char* kNoGeneratorText = "m_pSetParameterArrayBufferGeneratorV2 should not be null";

}  // namespace

Hifi3zControlHandler::Hifi3zControlHandler(
    const std::shared_ptr<IDspBufferSender>& dspBufferSender,
    const std::shared_ptr<IControlDescription>& controlDescription,
    const std::shared_ptr<IPresetSet>& presetSet,
    const std::shared_ptr<IVolumePolicy>& volumePolicy,
    const std::shared_ptr<IVolumeTableHelper>& volumeTableHelper,
    const std::shared_ptr<OrientationPolicy>& orientationPolicy,
    const std::shared_ptr<IControlBufferGenerator>& generator,
    const std::shared_ptr<IReplyBufferParser>& parser,
    const std::shared_ptr<IMasterValueConverter>& masterValueConverter)
    : ControlHandler(dspBufferSender, controlDescription, presetSet, volumePolicy,
                     volumeTableHelper, orientationPolicy, generator, parser, masterValueConverter),
      m_pSetParameterArrayBufferGeneratorV2(
          std::dynamic_pointer_cast<ISetParameterArrayBufferGeneratorV2>(generator)),
      m_parameterListGenerator(
          std::dynamic_pointer_cast<ISetParameterListBufferGenerator>(generator)) {
    PrimeParameterGenerator();
}

Hifi3zControlHandler::~Hifi3zControlHandler() = default;

void Hifi3zControlHandler::PrimeParameterGenerator() {
    if (!m_pSetParameterArrayBufferGeneratorV2) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "%s", kNoGeneratorText);
        return;
    }
    std::vector<std::vector<char>> discarded;
    const ParameterList* all = FlatParameters();
    if (all != nullptr && m_parameterListGenerator) {
        m_parameterListGenerator->MakeSetParameterListBuffer(discarded, *all, false);
        return;
    }
    std::map<unsigned int, double> parameters;
    if (!GetParametersArray(parameters)) {
        return;
    }
    m_pSetParameterArrayBufferGeneratorV2->MakeSetParameterArrayBufferV2(discarded, parameters,
                                                                         false);
}

double Hifi3zControlHandler::GetEnableBypassParameterValue() {
    return GetBypass() || !GetEnable() ? 1.0 : 0.0;
}

bool Hifi3zControlHandler::SendEnableBypassParameter() {
    const std::map<unsigned int, double> parameters{
        {kEnableBypassParameter, GetEnableBypassParameterValue()}};
    return SetParametersArrayCommandImpl(parameters, false);
}

void Hifi3zControlHandler::MergeEnableBypassParameter(std::map<unsigned int, double>& parameters) {
    auto found = parameters.find(kEnableBypassParameter);
    if (found != parameters.end() && found->second == 0.0) {
        found->second = GetEnableBypassParameterValue();
    }
}

bool Hifi3zControlHandler::SendEnable(bool) { return SendEnableBypassParameter(); }

bool Hifi3zControlHandler::SendBypass(bool) { return SendEnableBypassParameter(); }

bool Hifi3zControlHandler::SetParametersArrayCommandImpl(
    const std::map<unsigned int, double>& parameters, bool) {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "%s SetParametersArrayCommandImpl num_parameters = %u",
               GetDescriptionString().c_str(), static_cast<unsigned int>(parameters.size()));
    if (m_waitingForFlush) {
        return true;
    }
    if (!m_pSetParameterArrayBufferGeneratorV2) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "%s", kNoGeneratorText);
        return false;
    }
    std::map<unsigned int, double> merged = parameters;
    MergeEnableBypassParameter(merged);
    // Parameter 1 alone leaves the cache as a change list knows it.
    if (parameters.size() != parameters.count(kEnableBypassParameter)) {
        m_generatorTracked = false;
    }
    return SendParameterFrames([&](std::vector<std::vector<char>>& buffers) {
        return m_pSetParameterArrayBufferGeneratorV2->MakeSetParameterArrayBufferV2(
            buffers, merged, m_parametersSent);
    });
}

bool Hifi3zControlHandler::SendParameterList(const ParameterList& all,
                                             const ParameterChanges& changes, bool flag) {
    if (!m_parameterListGenerator || !m_pSetParameterArrayBufferGeneratorV2) {
        return ControlHandler::SendParameterList(all, changes, flag);
    }
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "%s SetParametersArrayCommandImpl num_parameters = %u",
               GetDescriptionString().c_str(), static_cast<unsigned int>(all.size()));
    if (m_waitingForFlush) {
        // The changes taken for this send do not reach the generator.
        m_generatorTracked = false;
        return true;
    }
    ParameterList parameters;
    if (changes.all || !m_generatorTracked) {
        parameters = all;
    } else {
        std::vector<unsigned int> ids = changes.ids;
        ids.push_back(kEnableBypassParameter);
        ids.insert(ids.end(), m_nanParameters.begin(), m_nanParameters.end());
        std::sort(ids.begin(), ids.end());
        ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
        for (unsigned int id : ids) {
            const auto found = FindParameter(all, id);
            if (found != all.end()) parameters.push_back(*found);
        }
    }
    const auto bypass = std::lower_bound(
        parameters.begin(), parameters.end(), kEnableBypassParameter,
        [](const std::pair<unsigned int, double>& p, unsigned int id) { return p.first < id; });
    if (bypass != parameters.end() && bypass->first == kEnableBypassParameter &&
        bypass->second == 0.0) {
        bypass->second = GetEnableBypassParameterValue();
    }
    status_t status = kStatusOk;
    const bool sent = SendParameterFrames([&](std::vector<std::vector<char>>& buffers) {
        status = m_parameterListGenerator->MakeSetParameterListBuffer(buffers, parameters,
                                                                      m_parametersSent);
        return status;
    });
    m_generatorTracked = status == kStatusOk;
    return sent;
}

template <typename Make>
bool Hifi3zControlHandler::SendParameterFrames(Make make) {
    std::vector<std::vector<char>> buffers;
    if (make(buffers) != kStatusOk) {
        return false;
    }
    bool overtaken = false;
    if (!SendBuffers(buffers, overtaken)) {
        return false;
    }
    m_parametersSent = true;
    // Frames of this send went after newer values that a call from buffer_sender sent: the
    // DSP holds older values than the model. Send the whole model again.
    while (overtaken) {
        buffers.clear();
        m_pSetParameterArrayBufferGeneratorV2->MakeSetParameterArrayBufferV2(buffers, {}, false);
        if (!SendBuffers(buffers, overtaken)) {
            return false;
        }
    }
    return true;
}

bool Hifi3zControlHandler::SendBuffers(const std::vector<std::vector<char>>& buffers,
                                       bool& overtaken) {
    const unsigned int send = ++m_sendsBegun;
    overtaken = false;
    const std::shared_ptr<CommonSettings> settings = m_controlDescription->GetSettings();
    for (size_t i = 0; i < buffers.size(); ++i) {
        if (!m_dspBufferSender->Send(settings, buffers[i])) {
            TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "SendBufferToDsp fail");
            return false;
        }
        if (i + 1 < buffers.size() && m_sendsBegun != send) {
            overtaken = true;
        }
    }
    return true;
}

bool Hifi3zControlHandler::OnDspWakeUp() {
    m_parametersSent = false;
    return m_waitingForFlush || FlushAllSettingsToDsp();
}

bool Hifi3zControlHandler::FlushAllSettingsToDsp() {
    SetCurrentPreset();
    return true;
}

std::string Hifi3zControlHandler::GetDescriptionString() const {
    return "Hifi3zControlHandler[sm=" + std::to_string(m_soundMode) +
           ";om=" + std::to_string(m_outputMode) + ";" + m_description + "] :";
}

}  // namespace TesselFX
