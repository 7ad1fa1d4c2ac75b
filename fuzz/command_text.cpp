// Tuning commands through zb_set_command and zb_get_command on an initialised handle with a
// notifier. The input is a sequence of commands (CommandInput.h): frames that are base64-coded
// first, or text as it is, through either call, on instances 0 to 3, with reply rooms of 16 to
// 2048 bytes. Pieces of long transfers both ways, tuning mode and every message id are reached
// by consecutive commands; the custom mutator below works on the decoded frames. Replies and
// notifications are read back as a tool reads them, and must be well-formed.
#include <dlfcn.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "BringupFiles.h"
#include "CommandInput.h"
#include "FuzzLogSink.h"
#include "ToolFrames.h"
#include "protocol/BoolMessages.h"
#include "protocol/CharArrayMessages.h"
#include "protocol/ChunkMessages.h"
#include "protocol/FullPresetMessages.h"
#include "protocol/IdMessages.h"
#include "protocol/MultipleMessageData.h"
#include "protocol/ParameterArrayMessages.h"
#include "protocol/ParameterMessages.h"
#include "protocol/RequestMetersMessageData.h"
#include "protocol/RequestMultipleMessageData.h"
#include "protocol/SetLinkLawsValueMessageData.h"
#include "protocol/UintArrayMessages.h"
#include "protocol/UintMessages.h"
#include "protocol/UpdateMetersMessageData.h"
#include "protocol/ZbAocTuningProtocol.h"
#include "zbhalcontroller/zb_api.h"

using namespace bringup_test;
using TesselFX::fuzz::Command;
using TesselFX::fuzz::CrossOverCommands;
using TesselFX::fuzz::MutateCommands;
using TesselFX::fuzz::ParseCommands;
using namespace TesselFX;

namespace {

std::string g_systemPath;
std::string g_configPath;

/// Version and meter answers of a DSP that knows four meters.
int AnsweringSender(void*, uint32_t, const void* data, uint32_t size, void* reply,
                    uint32_t* replySize, void*) {
    if (reply == nullptr || replySize == nullptr || size < 4) return 0;
    uint32_t opcode = 0;
    std::memcpy(&opcode, data, sizeof(opcode));
    std::string answer;
    if (opcode == 5) {
        PutU32(answer, 6);
        PutU32(answer, 4);
        answer += "fuzz";
    } else {
        PutU32(answer, 3);
        PutU32(answer, 36);
        PutU32(answer, 4);
        for (uint32_t i = 0; i < 4; ++i) {
            PutF32(answer, 0.5f * i);
            PutU32(answer, i & 1);
        }
    }
    if (*replySize < answer.size()) return -1;
    std::memcpy(reply, answer.data(), answer.size());
    *replySize = static_cast<uint32_t>(answer.size());
    return 0;
}

/// Reads what the library sends back as a tool does: every reply and notification must be a
/// frame that the answer class of its id reads, and the pieces of one session, once all have
/// come, must merge into such a frame. Anything else aborts: a tool could not read it.
class AnswerReader {
  public:
    void Clear() {
        m_pieces.clear();
        m_lastSession = 0;
    }
    /// The session of the last piece read; a request of a pending piece names it.
    uint32_t LastSession() const { return m_lastSession; }

    void Read(const std::vector<char>& frame) {
        if (frame.empty()) return;  // a set command, or a piece that did not end a transfer
        std::unique_ptr<MessageData> answer = AnswerOf(frame);
        if (!answer || !answer->SetBuffer(frame.data(), static_cast<unsigned>(frame.size()))) {
            // The one answer that may be cut: meter values beyond the payload's 10,240 bytes.
            if (answer && answer->GetId() == UpdateMetersMessageData::kId &&
                frame.size() >= 4 + 10240) {
                return;
            }
            std::abort();
        }
        if (answer->GetId() == MultipleMessageData::kId) {
            Collect(static_cast<const MultipleMessageData&>(*answer), frame);
        }
    }

  private:
    static std::unique_ptr<MessageData> AnswerOf(const std::vector<char>& frame) {
        switch (MessageData::GetMessageId(frame.data(), static_cast<unsigned>(frame.size()))) {
            case 2: return std::make_unique<ReplyParameterMessageData>();
            case 4: return std::make_unique<ReplyParameterArrayMessageData>();
            case 6: return std::make_unique<ReplyChunkMessageData>();
            case 31: return std::make_unique<UpdateLinkLawsSourceParameterMessageData>();
            case 34: return std::make_unique<UpdateLinkLawsSourceParameterArrayMessageData>();
            case 37: return std::make_unique<UpdateMetersMessageData>();
            case 38: return std::make_unique<UpdateVersionMessageData>();
            case 40: return std::make_unique<UpdateEnableMessageData>();
            case 43: return std::make_unique<UpdateBypassMessageData>();
            case 48: return std::make_unique<ReplyTuningModeValidationMessageData>();
            case 49: return std::make_unique<ReplyTuningModeMessageData>();
            case 51: return std::make_unique<ReplyFullPresetMessageData>();
            case 52: return std::make_unique<MultipleMessageData>();
            default: return nullptr;
        }
    }

    void Collect(const MultipleMessageData& piece, const std::vector<char>& frame) {
        m_lastSession = piece.GetSessionId();
        std::map<uint32_t, std::vector<char>>& pieces = m_pieces[m_lastSession];
        pieces.emplace(piece.GetCurrentMsgCounter(), frame);
        if (pieces.size() < piece.GetTotalMsgCount()) return;
        std::vector<std::vector<char>> frames;
        for (auto& entry : pieces) frames.push_back(std::move(entry.second));
        m_pieces.erase(m_lastSession);
        std::vector<char> merged;
        if (!MultipleMessageData::MergeBuffers(frames, merged)) std::abort();
        Read(merged);
    }

    std::map<uint32_t, std::map<uint32_t, std::vector<char>>> m_pieces;
    uint32_t m_lastSession = 0;
};

AnswerReader g_answers;

/// The request class that the parser reads a frame of id with, or null.
std::unique_ptr<MessageData> RequestOf(uint32_t id) {
    switch (id) {
        case 1: return std::make_unique<SetParameterMessageData>();
        case 3: return std::make_unique<SetParameterArrayMessageData>();
        case 5: return std::make_unique<SetChunkMessageData>();
        case 6: return std::make_unique<GetChunkMessageData>();
        case 7: return std::make_unique<GetVersionMessageData>();
        case 10: return std::make_unique<GetParameterMessageData>();
        case 11: return std::make_unique<GetParameterArrayMessageData>();
        case 12: return std::make_unique<SetSoundModeMessageData>();
        case 14: return std::make_unique<SetOutputModeMessageData>();
        case 29: return std::make_unique<GetLinkLawParameterArrayMessageData>();
        case 30: return std::make_unique<RequestLinkLawsSourceParameterMessageData>();
        case 33: return std::make_unique<RequestLinkLawsSourceParameterArrayMessageData>();
        case 35: return std::make_unique<SetLinkLawsValueMessageData>();
        case 36: return std::make_unique<RequestMetersMessageData>();
        case 39: return std::make_unique<GetEnableMessageData>();
        case 41: return std::make_unique<SetEnableMessageData>();
        case 42: return std::make_unique<GetBypassMessageData>();
        case 44: return std::make_unique<SetBypassMessageData>();
        case 45: return std::make_unique<FlushMessageData>();
        case 46: return std::make_unique<WaitForFlushMessageData>();
        case 47: return std::make_unique<StartTuningModeMessageData>();
        case 48: return std::make_unique<GetTuningModeValidationMessageData>();
        case 50: return std::make_unique<SetFullPresetMessageData>();
        case 51: return std::make_unique<GetFullPresetMessageData>();
        case 52: return std::make_unique<MultipleMessageData>();
        case 53: return std::make_unique<RequestMultipleMessageData>();
        default: return nullptr;
    }
}

/// A request that the library reads must read the same once a tool has written it with the
/// same class: the frame written from it reads, and writes the same bytes again.
void CheckRequestRoundTrip(const std::string& frame) {
    uint32_t id = 0;
    if (frame.size() < sizeof(id)) return;
    std::memcpy(&id, frame.data(), sizeof(id));
    std::unique_ptr<MessageData> first = RequestOf(id);
    if (!first || !first->SetBuffer(frame.data(), static_cast<unsigned>(frame.size()))) return;
    const std::vector<char> written = first->GetBuffer();
    // Meter infos beyond the payload's 10,240 bytes are cut when written, by design.
    if (id == RequestMetersMessageData::kId && written.size() >= 10240 - 16) return;
    std::unique_ptr<MessageData> second = RequestOf(id);
    if (!second->SetBuffer(written.data(), static_cast<unsigned>(written.size())) ||
        second->GetBuffer() != written) {
        std::abort();
    }
}

int ReadingNotifier(void*, const void* data, uint32_t size, void*) {
    std::vector<char> frame;
    const std::vector<char> text(static_cast<const char*>(data),
                                 static_cast<const char*>(data) + size);
    if (!ZbAocTuningProtocol::UnwrapBase64(text, frame)) std::abort();
    g_answers.Read(frame);
    return 0;
}

std::string PresetsWithLaws() {
    PresetRecord music;
    music.outputMode = 1;
    music.soundMode = 1;
    music.parameters = {{1, 0.0}, {1006, 1.0}, {2821, 1.0}};
    music.chunks[1] = LinkLaw(0, 1006, {{0.0f, 0.0f}, {1000.0f, 10.0f}});
    PresetRecord quiet = music;
    quiet.subtypeMask = 1;
    quiet.priority = 1;
    quiet.parameters = {{1022, 2.0}};
    quiet.chunks.clear();
    PresetRecord movie;
    movie.outputMode = 1;
    movie.soundMode = 2;
    movie.parameters = {{1, 0.0}, {1054, 9.0}};
    // Enough parameters that their notification comes in pieces.
    PresetRecord big;
    big.outputMode = 2;
    big.soundMode = 1;
    for (unsigned id = 3000; id < 4100; ++id) big.parameters[id] = id / 8.0;
    return PresetFile({music, quiet, movie, big});
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    TesselFX::fuzz::FuzzLogSink::Install();
    static TempDir dir;
    g_systemPath = dir.Write("system.zps", PresetsWithLaws());
    g_configPath =
        dir.Write("hal.ini",
                  "[HAL_SUPPORTED_SAMPLE_RATES]\nrates=48000\n"
                  "[HAL_VOLUME_SUBTYPES]\nmusicVol=-20:1,0:NULL\n"
                  "[HAL_SUPPORTED_PRESETS]\nMusic=OM:1,SM:1,VST:musicVol\nMovie=OM:1,SM:2\n"
                  "Big=OM:2,SM:1\n"
                  "[HAL_SUPPORTED_CONTROLS]\nSpeaker=DEV:2,SR:rates,PRESET:Music|Movie|Big,INSTANCE:1\n"
                  "Phone=DEV:4,SR:rates,PRESET:Movie,INSTANCE:2\n"
                  "[COEFS_CONVERTER_SETTING]\nDspKitPath64=" DSPKIT_SIM_PATH "\n");
    // Keeps the stand-in library loaded between inputs.
    dlopen(DSPKIT_SIM_PATH, RTLD_NOW);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    void* handle = nullptr;
    zb_create(&handle, nullptr);
    if (zb_initialize(handle, g_systemPath.c_str(), "", g_configPath.c_str(), AnsweringSender) !=
        1) {
        std::abort();
    }
    g_answers.Clear();
    zb_register_notifier(handle, 1, ReadingNotifier);
    zb_set_active(handle, 1, 1, 1);
    for (Command& command : ParseCommands(data, size)) {
        if ((command.flags & Command::kLastSession) != 0 && command.bytes.size() >= 16) {
            command.bytes.replace(12, 4, U32(g_answers.LastSession()));
        }
        if ((command.flags & Command::kText) == 0) CheckRequestRoundTrip(command.bytes);
        const std::string text = (command.flags & Command::kText) != 0
                                     ? command.bytes
                                     : ToText(command.bytes);
        if ((command.flags & Command::kGet) != 0) {
            std::vector<char> reply(command.ReplyRoom());
            if (zb_get_command(handle, command.Instance(), text.c_str(), reply.data(),
                               static_cast<uint32_t>(reply.size())) == 1) {
                const std::string frame =
                    FromText(std::string(reply.data(), strnlen(reply.data(), reply.size())));
                g_answers.Read(std::vector<char>(frame.begin(), frame.end()));
            }
        } else {
            std::string writable = text;
            zb_set_command(handle, command.Instance(), &writable[0]);
        }
    }
    zb_destroy(&handle);
    return 0;
}

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maxSize,
                                          unsigned int seed) {
    return MutateCommands(data, size, maxSize, seed);
}

extern "C" size_t LLVMFuzzerCustomCrossOver(const uint8_t* first, size_t firstSize,
                                            const uint8_t* second, size_t secondSize,
                                            uint8_t* out, size_t maxSize, unsigned int seed) {
    return CrossOverCommands(first, firstSize, second, secondSize, out, maxSize, seed);
}
