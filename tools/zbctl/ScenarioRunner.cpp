#include "ScenarioRunner.h"

#include <algorithm>
#include <set>

#include "FileAccess.h"
#include "MessageCatalog.h"
#include "ZbctlError.h"
#include "protocol/Base64.h"
#include "protocol/MultipleMessageData.h"
#include "protocol/RequestMultipleMessageData.h"
#include "protocol/ZbAocTuningProtocol.h"

namespace TesselFX {
namespace zbctl {

namespace {

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
    : m_options(options), m_out(out), m_host(options) {
    m_host.SetListener(this);
}

// The library may still call back while the handle is destroyed, when the runner is half gone.
ScenarioRunner::~ScenarioRunner() { m_host.SetListener(nullptr); }

void ScenarioRunner::OnNotification(const std::string& text) {
    Event("notification", text);
    std::string instance;
    std::vector<char> frame;
    try {
        frame = MessageCatalog::FrameOfText(text, instance);
    } catch (const ZbctlError&) {
        return;  // not a tuning notification: the text above is all there is
    }
    if (!instance.empty()) TraceMessage("instance " + instance, frame);
}

void ScenarioRunner::OnFrame(uint32_t instance, uint32_t size, const DspExchange& exchange,
                             int status) {
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
        return;
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
    std::string reply;
    const int result =
        m_host.GetCommand(instance, Base64::Encode(frame),
                          static_cast<uint32_t>(ZbAocTuningProtocol::kMaxDspBufferSize), reply);
    answer = Base64::Decode(reply);
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

void ScenarioRunner::Render() {
    if (m_input.samples.empty()) return;
    std::vector<float> segment(m_input.samples.size());
    m_host.Dsp(m_options.renderInstance)
        .Process(m_input.samples.data(), segment.data(), m_input.Frames());
    m_output.samples.insert(m_output.samples.end(), segment.begin(), segment.end());
}

int ScenarioRunner::Play() {
    const std::vector<ScenarioStep> steps =
        m_options.scenario.empty()
            ? std::vector<ScenarioStep>()
            : ParseScenario(ReadText(m_options.scenario, "scenario"), m_options.scenario);
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
              << "\n# scenario " << (m_options.scenario.empty() ? "(none)" : m_options.scenario)
              << "\n";
    }
    const std::string note = m_host.PrepareConfig();
    if (!note.empty()) Note(note);
    if (!m_input.samples.empty()) {
        if (m_input.channels != m_host.Channels()) {
            throw ZbctlError(m_options.input + " has " + std::to_string(m_input.channels) +
                             " channels; the configuration's effect has " +
                             std::to_string(m_host.Channels()));
        }
        if (m_input.sampleRate != m_host.SampleRate()) {
            Note(m_options.input + " is at " + std::to_string(m_input.sampleRate) +
                 " Hz; the coefficients are computed for " + std::to_string(m_host.SampleRate()) +
                 " Hz");
        }
        m_output.sampleRate = m_input.sampleRate;
        m_output.channels = m_input.channels;
    }
    BeginCall(0, "zb_create");
    EndCall(m_host.Create());
    BeginCall(0, "zb_initialize");
    const int initialized = m_host.Initialize();
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
        EndCall(m_host.RegisterNotifier(instance));
    }
    for (const ScenarioStep& step : steps) {
        BeginCall(step.line, step.source);
        if (step.call == ScenarioCall::kGetCommand) {
            EndCall(GetCommand(step.instance, step.frame));
        } else {
            std::string version;
            const int result = m_host.Call(step, version);
            EndCall(result, version);
        }
        if (step.call != ScenarioCall::kInstance) Render();
    }
    return kExitSuccess;
}

int ScenarioRunner::Finish() {
    if (!m_options.json) m_out << "zb_destroy\n";
    m_host.Destroy();
    if (!m_input.samples.empty()) {
        WriteWav(m_options.output, m_output);
        Note("audio: " + std::to_string(m_output.Frames() / std::max<size_t>(1, m_input.Frames())) +
             " segments of " + std::to_string(m_input.Frames()) + " frames, one per step, in " +
             m_options.output);
    }
    if (m_options.json) m_out << m_json.dump(2) << "\n";
    return kExitSuccess;
}

}  // namespace zbctl
}  // namespace TesselFX
