#include "ScenarioRunner.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <set>

#include "FileAccess.h"
#include "LogRecorder.h"
#include "MessageCatalog.h"
#include "Printable.h"
#include "ZbctlError.h"
#include "config/CIniFile.h"
#include "config/Hifi3zHalControlConfig.h"
#include "protocol/Base64.h"
#include "protocol/MultipleMessageData.h"
#include "protocol/RequestMultipleMessageData.h"
#include "protocol/ZbAocTuningProtocol.h"

namespace TesselFX {
namespace zbctl {

namespace {

constexpr uint32_t kVersionBufferSize = 256;

std::string ReadText(const std::string& path, const std::string& what) {
    const std::vector<char> bytes = ReadFileBytes(path, what);
    return std::string(bytes.begin(), bytes.end());
}

// Reads frame into piece when it is a piece of a long transfer.
bool ReadPiece(const std::vector<char>& frame, MultipleMessageData& piece) {
    const auto size = static_cast<unsigned int>(frame.size());
    return MessageData::GetMessageId(frame.data(), size) ==
               static_cast<int>(MultipleMessageData::kId) &&
           piece.SetBuffer(frame.data(), size);
}

const char* OpcodeName(uint32_t opcode) {
    switch (opcode) {
        case 1:
            return "set coefficients";
        case 4:
            return "get meters";
        case 5:
            return "get version";
        default:
            return "unknown";
    }
}

}  // namespace

ScenarioRunner::ScenarioRunner(const RunOptions& options, std::ostream& out)
    : m_options(options), m_out(out) {}

ScenarioRunner::~ScenarioRunner() {
    if (m_handle != nullptr && m_library) m_library->Api().destroy(&m_handle);
    if (!m_tempConfig.empty()) std::remove(m_tempConfig.c_str());
}

// The library reads the DSP library's path from the configuration, so it gets a copy whose
// last section sets DspKitPath64; a repeated section and key keep the last value. The DSP side
// takes its audio format from the same configuration.
std::string ScenarioRunner::PrepareConfig() {
    const std::string text = ReadText(m_options.config, "configuration");
    {
        LogRecorder quiet(4);
        auto ini = std::make_shared<CIniFile>();
        ini->LoadMemory(text);
        Hifi3zHalControlConfig config;
        try {
            config.ParseConfig(ini);
        } catch (const std::exception& e) {
            Note(std::string("the configuration throws while it is parsed (") + e.what() +
                 "); zbctl check-config names the line");
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
    m_tempConfig = path;
    try {
        WriteAll(fd, copy.data(), copy.size(), path);
    } catch (const ZbctlError&) {
        close(fd);
        throw;
    }
    close(fd);
    return path;
}

SimulatedDsp& ScenarioRunner::Dsp(uint32_t instance) {
    auto& dsp = m_dsps[instance];
    if (!dsp)
        dsp = std::make_unique<SimulatedDsp>(m_options.dspKit, m_sampleRate, m_channels,
                                             m_sampleSize);
    return *dsp;
}

int ScenarioRunner::SendTrampoline(void*, uint32_t instance, const void* data, uint32_t size,
                                   void* reply, uint32_t* replySize, void* context) {
    return static_cast<ScenarioRunner*>(context)->Send(instance, data, size, reply, replySize);
}

int ScenarioRunner::NotifyTrampoline(void*, const void* data, uint32_t size, void* context) {
    auto* runner = static_cast<ScenarioRunner*>(context);
    const auto* bytes = static_cast<const char*>(data);
    if (size > 0 && bytes[size - 1] == '\0') --size;  // a closing terminator
    const std::string text = Printable(bytes, size);
    runner->Event("notification", text);
    std::string instance;
    std::vector<char> frame;
    try {
        frame = MessageCatalog::FrameOfText(text, instance);
    } catch (const ZbctlError&) {
        return 0;  // not a tuning notification: the text above is all there is
    }
    if (!instance.empty()) runner->TraceMessage("instance " + instance, frame);
    return 0;
}

int ScenarioRunner::Send(uint32_t instance, const void* data, uint32_t size, void* reply,
                         uint32_t* replySize) {
    DspExchange exchange;
    int status = -1;
    try {
        status = Dsp(instance).Handle(data, size, reply, replySize, exchange);
    } catch (const ZbctlError& e) {
        exchange.error = e.what();
    }
    if (m_options.json) {
        nlohmann::ordered_json frame;
        frame["instance"] = instance;
        frame["opcode"] = exchange.opcode;
        frame["size"] = size;
        if (exchange.opcode == 1) frame["blocks"] = exchange.blockIds;
        if (exchange.replyCode != 0) {
            frame["reply"] = exchange.replyCode;
            frame["reply_size"] = exchange.replySize;
        }
        if (!exchange.version.empty()) frame["version"] = exchange.version;
        if (!exchange.error.empty()) frame["error"] = exchange.error;
        frame["status"] = status;
        (*m_current)["events"].push_back({{"frame", frame}});
        return status;
    }
    FlushHeader();
    m_out << "    frame to instance " << instance << ": opcode " << exchange.opcode << " ("
          << OpcodeName(exchange.opcode) << "), " << size << " bytes";
    if (exchange.opcode == 1) {
        m_out << ", " << exchange.blockIds.size()
              << (exchange.blockIds.size() == 1 ? " block:" : " blocks:");
        for (uint32_t id : exchange.blockIds) m_out << " " << id;
    }
    if (exchange.replyCode != 0)
        m_out << "; reply " << exchange.replyCode << ", " << exchange.replySize << " bytes";
    if (!exchange.version.empty()) m_out << " \"" << exchange.version << "\"";
    if (!exchange.error.empty()) m_out << "; refused: " << exchange.error;
    m_out << "\n";
    return status;
}

void ScenarioRunner::BeginCall(size_t line, const std::string& text) {
    if (m_options.json) {
        nlohmann::ordered_json call;
        call["line"] = line == 0 ? nlohmann::ordered_json() : nlohmann::ordered_json(line);
        call["call"] = text;
        call["events"] = nlohmann::ordered_json::array();
        m_json["calls"].push_back(call);
        m_current = &m_json["calls"].back();
        return;
    }
    m_pendingHeader = (line == 0 ? std::string() : "line " + std::to_string(line) + ": ") + text;
}

void ScenarioRunner::FlushHeader() {
    if (m_pendingHeader.empty()) return;
    m_out << m_pendingHeader << "\n";
    m_pendingHeader.clear();
}

void ScenarioRunner::EndCall(int result, const std::string& detail) {
    if (m_options.json) {
        (*m_current)["result"] = result;
        if (!detail.empty()) (*m_current)["answer"] = detail;
        return;
    }
    const std::string answer =
        " = " + std::to_string(result) + (detail.empty() ? "" : " \"" + detail + "\"");
    if (m_pendingHeader.empty()) {
        m_out << "   " << answer << "\n";
    } else {
        m_out << m_pendingHeader << answer << "\n";
        m_pendingHeader.clear();
    }
}

void ScenarioRunner::Event(const std::string& kind, const std::string& text) {
    if (m_options.json) {
        (*m_current)["events"].push_back({{kind, text}});
    } else {
        FlushHeader();
        m_out << "    " << kind << ": " << text << "\n";
    }
}

void ScenarioRunner::TraceMessage(const std::string& kind, const std::vector<char>& frame) {
    try {
        Event(kind, MessageCatalog::Describe(frame, MessageDirection::kAnswer));
    } catch (const ZbctlError& e) {
        Event(kind, std::string("undecoded: ") + e.what());
        return;
    }
    MultipleMessageData piece;
    if (!ReadPiece(frame, piece)) return;
    std::vector<std::vector<char>>& pieces = m_pieces[piece.GetSessionId()];
    pieces.push_back(frame);
    if (pieces.size() < piece.GetTotalMsgCount()) return;
    std::vector<char> merged;
    const bool whole = MultipleMessageData::MergeBuffers(pieces, merged);
    m_pieces.erase(piece.GetSessionId());
    if (whole) TraceMessage("merged", merged);
}

int ScenarioRunner::Exchange(uint32_t instance, const std::vector<char>& frame,
                             std::vector<char>& answer) {
    const std::string command = Base64::Encode(frame);
    std::vector<char> reply(ZbAocTuningProtocol::kMaxDspBufferSize + 1, '\0');
    const int result = m_library->Api().getCommand(
        m_handle, instance, command.c_str(), reply.data(), ZbAocTuningProtocol::kMaxDspBufferSize);
    answer = Base64::Decode(std::string(reply.data()));
    return result;
}

int ScenarioRunner::GetCommand(uint32_t instance, const std::vector<char>& frame) {
    std::vector<char> answer;
    const int result = Exchange(instance, frame, answer);
    if (result == 0) return result;
    TraceMessage("reply", answer);
    MultipleMessageData first;
    if (!ReadPiece(answer, first)) return result;
    // The library keeps the other pieces until they are asked for, one by one.
    for (unsigned int counter = 1; counter < first.GetTotalMsgCount(); ++counter) {
        const RequestMultipleMessageData request(counter, first.GetTotalMsgCount(),
                                                 first.GetSessionId());
        if (Exchange(instance, request.GetBuffer(), answer) == 0) {
            Event("reply", "piece " + std::to_string(counter) + " refused");
            break;
        }
        TraceMessage("reply", answer);
    }
    return result;
}

void ScenarioRunner::Note(const std::string& text) {
    if (m_options.json) {
        m_json["notes"].push_back(text);
    } else {
        FlushHeader();
        m_out << "# " << text << "\n";
    }
}

int ScenarioRunner::Call(const ScenarioStep& step) {
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
        case ScenarioCall::kSetCommand: {
            std::string command = Base64::Encode(step.frame);
            return api.setCommand(m_handle, instance, command.data());
        }
        case ScenarioCall::kGetCommand:
            return GetCommand(instance, step.frame);
        case ScenarioCall::kRegisterNotifier:
            return api.registerNotifier(m_handle, instance, &NotifyTrampoline);
        case ScenarioCall::kGetVersion:
            break;
    }
    return 0;
}

void ScenarioRunner::Render() {
    if (m_input.samples.empty()) return;
    std::vector<float> segment(m_input.samples.size());
    Dsp(m_options.renderInstance).Process(m_input.samples.data(), segment.data(), m_input.Frames());
    m_output.samples.insert(m_output.samples.end(), segment.begin(), segment.end());
}

int ScenarioRunner::Run() {
    const std::vector<ScenarioStep> steps =
        ParseScenario(ReadText(m_options.scenario, "scenario"), m_options.scenario);
    RefuseOutputOverInputs(
        m_options.output,
        {m_options.input, m_options.config, m_options.systemPresets, m_options.userPresets,
         m_options.scenario, m_options.dspKit, m_options.halLibrary});
    if (!m_options.input.empty()) m_input = ReadWav(m_options.input);
    m_json["library"] = m_options.halLibrary;
    m_json["dspkit"] = m_options.dspKit;
    m_json["config"] = m_options.config;
    m_json["system_presets"] = m_options.systemPresets;
    m_json["user_presets"] = m_options.userPresets;
    m_json["scenario"] = m_options.scenario;
    m_json["calls"] = nlohmann::ordered_json::array();
    if (!m_options.json) {
        m_out << "# library " << m_options.halLibrary << "\n# DSP library " << m_options.dspKit
              << "\n# configuration " << m_options.config << "\n# system presets "
              << m_options.systemPresets << "\n# user presets "
              << (m_options.userPresets.empty() ? "(none)" : m_options.userPresets)
              << "\n# scenario " << m_options.scenario << "\n";
    }
    const std::string config = PrepareConfig();
    if (!m_input.samples.empty()) {
        if (m_input.channels != m_channels) {
            throw ZbctlError(m_options.input + " has " + std::to_string(m_input.channels) +
                             " channels; the configuration's effect has " +
                             std::to_string(m_channels));
        }
        if (m_input.sampleRate != m_sampleRate) {
            Note(m_options.input + " is at " + std::to_string(m_input.sampleRate) +
                 " Hz; the coefficients are computed for " + std::to_string(m_sampleRate) + " Hz");
        }
        m_output.sampleRate = m_input.sampleRate;
        m_output.channels = m_input.channels;
    }
    m_library = std::make_unique<HalLibrary>(m_options.halLibrary);
    const HalApi& api = m_library->Api();

    BeginCall(0, "zb_create");
    EndCall(api.create(&m_handle, this));
    BeginCall(0, "zb_initialize");
    const int initialized =
        api.initialize(m_handle, m_options.systemPresets.c_str(), m_options.userPresets.c_str(),
                       config.c_str(), &SendTrampoline);
    EndCall(initialized);
    if (initialized == 0) {
        Note(
            "zb_initialize failed: the library refused the presets, the configuration or the DSP "
            "library; its log (on stderr) tells why");
        if (m_options.json) m_out << m_json.dump(2) << "\n";
        return kExitFailure;
    }
    std::set<uint32_t> instances{0};
    for (const ScenarioStep& step : steps) instances.insert(step.instance);
    for (uint32_t instance : instances) {
        BeginCall(0, "zb_register_notifier " + std::to_string(instance));
        EndCall(api.registerNotifier(m_handle, instance, &NotifyTrampoline));
    }
    for (const ScenarioStep& step : steps) {
        BeginCall(step.line, step.source);
        if (step.call == ScenarioCall::kGetVersion) {
            char version[kVersionBufferSize] = {};
            const int result = api.getVersion(m_handle, step.instance, step.text.c_str(), version,
                                              kVersionBufferSize);
            EndCall(result, result ? version : "");
        } else {
            EndCall(Call(step));
        }
        if (step.call != ScenarioCall::kInstance) Render();
    }
    if (!m_options.json) m_out << "zb_destroy\n";
    api.destroy(&m_handle);
    m_handle = nullptr;
    if (!m_input.samples.empty()) {
        WriteWav(m_options.output, m_output);
        Note("audio: " + std::to_string(m_output.Frames() / std::max<size_t>(1, m_input.Frames())) +
             " segments of " + std::to_string(m_input.Frames()) + " frames, one per step, in " +
             m_options.output);
    }
    if (m_options.json) m_out << m_json.dump(2) << "\n";
    return 0;
}

}  // namespace zbctl
}  // namespace TesselFX
