#include "HalHost.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "FileAccess.h"
#include "LogRecorder.h"
#include "Printable.h"
#include "ZbctlError.h"
#include "config/CIniFile.h"
#include "config/Hifi3zHalControlConfig.h"
#include "protocol/Base64.h"
#include "protocol/ZbAocTuningProtocol.h"

namespace TesselFX {
namespace zbctl {

namespace {

// The text of a notification: a closing terminator dropped, the rest escaped.
std::string NotificationText(const char* data, size_t size) {
    if (size > 0 && data[size - 1] == '\0') --size;
    return Printable(data, size);
}

}  // namespace

HalHost::HalHost(const HostOptions& options) : m_options(options) {}

HalHost::~HalHost() {
    Destroy();
    if (!m_config.empty()) std::remove(m_config.c_str());
}

// A repeated section and key keep the last value, so the copy's own last section wins.
std::string HalHost::PrepareConfig() {
    const std::string text = ReadText(m_options.config, "configuration");
    std::string note;
    {
        LogRecorder quiet(4);
        auto ini = std::make_shared<CIniFile>();
        ini->LoadMemory(text);
        Hifi3zHalControlConfig config;
        try {
            config.ParseConfig(ini);
        } catch (const std::exception& e) {
            note = std::string("the configuration throws while it is parsed (") + e.what() +
                   "); zbctl check-config names the line";
        }
        m_sampleRate = static_cast<uint32_t>(config.GetAudioFormatSampleRate());
        m_channels = static_cast<uint32_t>(config.GetAudioFormatChannels());
        m_sampleSize = static_cast<uint32_t>(config.GetAudioFormatSampleSize());
    }
    if (m_options.dspKit.empty()) throw UsageError("no DSP library: give --dspkit");
    if (m_options.dspKit.find_first_of(" \t\r\n\v\f") != std::string::npos) {
        throw UsageError("the DSP library path must not hold white space: " + m_options.dspKit);
    }
    const char* directory = std::getenv("TMPDIR");
    std::string path =
        std::string(directory && *directory ? directory : "/tmp") + "/zbctl-config-XXXXXX";
    const int fd = mkstemp(path.data());
    if (fd < 0) throw ZbctlError(WriteFailure(path));
    const std::string copy =
        text + "\n[COEFS_CONVERTER_SETTING]\nDspKitPath64=" + m_options.dspKit + "\n";
    m_config = path;
    try {
        WriteAll(fd, copy.data(), copy.size(), path);
    } catch (const ZbctlError&) {
        close(fd);
        throw;
    }
    close(fd);
    return note;
}

int HalHost::Create() {
    m_library = std::make_unique<HalLibrary>(m_options.halLibrary);
    return m_library->Api().create(&m_handle, this);
}

int HalHost::Initialize() {
    return m_library->Api().initialize(m_handle, m_options.systemPresets.c_str(),
                                       m_options.userPresets.c_str(), m_config.c_str(),
                                       &SendTrampoline);
}

void HalHost::Destroy() {
    if (m_handle == nullptr) return;
    m_library->Api().destroy(&m_handle);
    m_handle = nullptr;
}

SimulatedDsp& HalHost::Dsp(uint32_t instance) {
    auto& dsp = m_dsps[instance];
    if (!dsp)
        dsp = std::make_unique<SimulatedDsp>(m_options.dspKit, m_sampleRate, m_channels,
                                             m_sampleSize);
    return *dsp;
}

int HalHost::SendTrampoline(void*, uint32_t instance, const void* data, uint32_t size, void* reply,
                            uint32_t* replySize, void* context) {
    auto* host = static_cast<HalHost*>(context);
    DspExchange exchange;
    int status = -1;
    try {
        status = host->Dsp(instance).Handle(data, size, reply, replySize, exchange);
    } catch (const ZbctlError& e) {
        exchange.error = e.what();
    }
    if (host->m_listener) host->m_listener->OnFrame(instance, size, exchange, status);
    return status;
}

int HalHost::NotifyTrampoline(void*, const void* data, uint32_t size, void* context) {
    auto* host = static_cast<HalHost*>(context);
    if (host->m_listener)
        host->m_listener->OnNotification(NotificationText(static_cast<const char*>(data), size));
    return 0;
}

int HalHost::SetCommand(uint32_t instance, std::string command) {
    return m_library->Api().setCommand(m_handle, instance, command.data());
}

int HalHost::GetCommand(uint32_t instance, const std::string& command, uint32_t room,
                        std::string& reply) {
    // Exactly room bytes (one for room 0, so that the pointer is not null), so that a write
    // past them is an overflow that a sanitizer sees.
    std::vector<char> buffer(std::max<uint32_t>(room, 1));
    const int result =
        m_library->Api().getCommand(m_handle, instance, command.c_str(), buffer.data(), room);
    size_t length = 0;
    while (length < room && buffer[length] != '\0') ++length;
    reply.assign(buffer.data(), length);
    return result;
}

int HalHost::RegisterNotifier(uint32_t instance) {
    return m_library->Api().registerNotifier(m_handle, instance, &NotifyTrampoline);
}

int HalHost::Call(const ScenarioStep& step, std::string& version) {
    constexpr uint32_t kVersionBufferSize = 256;
    const HalApi& api = m_library->Api();
    const uint32_t instance = step.instance;
    const auto u = [&](size_t i) { return static_cast<uint32_t>(step.numbers[i]); };
    switch (step.call) {
        case ScenarioCall::kInstance:
            return 1;
        case ScenarioCall::kSetActive:
            return api.setActive(m_handle, instance, u(0), u(1));
        case ScenarioCall::kSetOutputMode:
            return api.setOutputMode(m_handle, instance, u(0));
        case ScenarioCall::kSetSoundMode:
            return api.setSoundMode(m_handle, instance, u(0));
        case ScenarioCall::kSetVolume:
            return api.setVolume(m_handle, instance, step.numbers[0]);
        case ScenarioCall::kSetOrientation:
            return api.setOrientation(m_handle, instance, static_cast<int>(step.numbers[0]));
        case ScenarioCall::kSetParameter:
            return api.setParameter(m_handle, instance, u(0), step.numbers[1]);
        case ScenarioCall::kSetLinkLawsValue:
            return api.setLinkLawsValue(m_handle, instance, u(0), step.numbers[1], step.numbers[2]);
        case ScenarioCall::kSetEnable:
            return api.setEnable(m_handle, instance, static_cast<int>(u(0)));
        case ScenarioCall::kSetBypass:
            return api.setBypass(m_handle, instance, static_cast<int>(u(0)));
        case ScenarioCall::kWaitForFlush:
            return api.waitForFlush(m_handle, instance);
        case ScenarioCall::kFlush:
            return api.flush(m_handle, instance);
        case ScenarioCall::kDspWakeup:
            return api.onDspWakeup(m_handle, instance);
        case ScenarioCall::kIsFeatureSupported:
            return api.isFeatureSupported(m_handle, step.text.c_str());
        case ScenarioCall::kSetCommand:
            return SetCommand(instance, Base64::Encode(step.frame));
        case ScenarioCall::kGetCommand: {
            std::string reply;
            return GetCommand(instance, Base64::Encode(step.frame),
                              static_cast<uint32_t>(ZbAocTuningProtocol::kMaxDspBufferSize), reply);
        }
        case ScenarioCall::kRegisterNotifier:
            return RegisterNotifier(instance);
        case ScenarioCall::kGetVersion: {
            char text[kVersionBufferSize] = {};
            const int result =
                api.getVersion(m_handle, instance, step.text.c_str(), text, kVersionBufferSize);
            if (result) version = text;
            return result;
        }
    }
    return 0;
}

}  // namespace zbctl
}  // namespace TesselFX
