#include "protocol/HalControlCommandParser.h"

#include <cstring>

#include "log/TesselLog.h"
#include "protocol/BoolMessages.h"
#include "protocol/CharArrayMessages.h"
#include "protocol/ChunkMessages.h"
#include "protocol/FullPresetMessages.h"
#include "protocol/IdMessages.h"
#include "protocol/MultipleMessageData.h"
#include "protocol/NewSessionId.h"
#include "protocol/ParameterArrayMessages.h"
#include "protocol/ParameterMessages.h"
#include "protocol/RequestMetersMessageData.h"
#include "protocol/RequestMultipleMessageData.h"
#include "protocol/SetLinkLawsValueMessageData.h"
#include "protocol/UintArrayMessages.h"
#include "protocol/UintMessages.h"
#include "protocol/UpdateMetersMessageData.h"

namespace TesselFX {

namespace {

/// Parses the frame of a command with a reply; a failure is logged as such.
bool ParseRequest(MessageData& request, const char* buffer, unsigned int size) {
    if (request.SetBuffer(buffer, size)) {
        return true;
    }
    TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "not valid messageData");
    return false;
}

std::vector<unsigned int> ToIds(const std::vector<uint32_t>& values) {
    return std::vector<unsigned int>(values.begin(), values.end());
}

}  // namespace

HalControlCommandParser::HalControlCommandParser() {
    using P = HalControlCommandParser;
    m_setHandlers = {
        {StartTuningModeMessageData::kId, &P::StartTuningModeFromBuffer},
        {SetParameterMessageData::kId, &P::SetParameterFromBuffer},
        {SetParameterArrayMessageData::kId, &P::SetParameterArrayFromBuffer},
        {SetChunkMessageData::kId, &P::SetChunkFromBuffer},
        {SetFullPresetMessageData::kId, &P::SetFullPresetFromBuffer},
        {SetLinkLawsValueMessageData::kId, &P::SetLinkLawsValueFromBuffer},
        {SetSoundModeMessageData::kId, &P::SetSoundModeFromBuffer},
        {SetOutputModeMessageData::kId, &P::SetOutputModeFromBuffer},
        {FlushMessageData::kId, &P::FlushFromBuffer},
        {WaitForFlushMessageData::kId, &P::WaitForFlushFromBuffer},
        {SetEnableMessageData::kId, &P::SetEnableFromBuffer},
        {SetBypassMessageData::kId, &P::SetBypassFromBuffer},
        {MultipleMessageData::kId, &P::HandleMultipleMsgDataForSetFromBuffer},
    };
    m_getHandlers = {
        {GetTuningModeValidationMessageData::kId, &P::GetTuningModeValidationFromBuffer},
        {ReplyTuningModeMessageData::kId, &P::GetTuningModeFromBuffer},
        {GetParameterMessageData::kId, &P::GetParameterFromBuffer},
        {GetParameterArrayMessageData::kId, &P::GetParameterArrayFromBuffer},
        {GetChunkMessageData::kId, &P::GetChunkFromBuffer},
        {GetFullPresetMessageData::kId, &P::GetFullPresetFromBuffer},
        {GetLinkLawParameterArrayMessageData::kId, &P::GetLinkLawParameterArrayFromBuffer},
        {RequestLinkLawsSourceParameterMessageData::kId,
         &P::RequestLinkLawsSourceParameterFromBuffer},
        {RequestLinkLawsSourceParameterArrayMessageData::kId,
         &P::RequestLinkLawsSourceParameterArrayFromBuffer},
        {RequestMetersMessageData::kId, &P::RequestMetersFromBuffer},
        {GetVersionMessageData::kId, &P::GetVersionFromBuffer},
        {GetEnableMessageData::kId, &P::GetEnableFromBuffer},
        {GetBypassMessageData::kId, &P::GetBypassFromBuffer},
        {MultipleMessageData::kId, &P::HandleMultipleMsgDataForGetFromBuffer},
        {RequestMultipleMessageData::kId, &P::RequestMultipleMessageDataFromBuffer},
    };
}

bool HalControlCommandParser::SetCommand(const zorbaudio_settings_t* settings, const char* buffer,
                                         unsigned int size) {
    if (!m_manager) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "HalControlManager is null");
        return false;
    }
    return SetCommandFromMessageDataBuffer(settings, buffer, size);
}

bool HalControlCommandParser::GetCommand(const zorbaudio_settings_t* settings, const char* buffer,
                                         unsigned int size, char* reply, unsigned int& replySize) {
    if (!m_manager) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "HalControlManager is null");
        return false;
    }
    std::vector<char> data;
    if (!GetCommandFromMessageDataBuffer(settings, buffer, size, data)) {
        return false;
    }
    if (IsSplitRequired(data, replySize)) {
        std::vector<char> first;
        if (!SplitReplyData(data, replySize, first)) {
            return false;
        }
        data.swap(first);
    }
    return CopyReplyData(data, reply, replySize);
}

void HalControlCommandParser::SetHalControlManager(
    const std::shared_ptr<IHalControlManager>& manager) {
    m_manager = manager;
}

bool HalControlCommandParser::SetCommandFromMessageDataBuffer(const zorbaudio_settings_t* settings,
                                                              const char* buffer,
                                                              unsigned int size) {
    const int id = MessageData::GetMessageId(buffer, size);
    auto found = m_setHandlers.find(id);
    if (found == m_setHandlers.end()) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "do not support id %d", id);
        return false;
    }
    return found->second(this, settings, buffer, size);
}

bool HalControlCommandParser::GetCommandFromMessageDataBuffer(const zorbaudio_settings_t* settings,
                                                              const char* buffer, unsigned int size,
                                                              std::vector<char>& reply) {
    const int id = MessageData::GetMessageId(buffer, size);
    auto found = m_getHandlers.find(id);
    if (found == m_getHandlers.end()) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "do not support id %d", id);
        return false;
    }
    if (!found->second(this, settings, buffer, size, reply)) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "handler returned error");
        return false;
    }
    return true;
}

bool HalControlCommandParser::IsSplitRequired(const std::vector<char>& reply, unsigned int size) {
    return reply.size() > size;
}

bool HalControlCommandParser::SplitReplyData(const std::vector<char>& reply, unsigned int size,
                                             std::vector<char>& out) {
    const unsigned int sessionId = NewSessionId();
    if (!m_splitter.Add(sessionId, size, reply)) {
        return false;
    }
    const std::shared_ptr<MultipleMessageData> first = m_splitter.GetSplitData(sessionId, 0, true);
    if (!first) {
        return false;
    }
    out = first->GetBuffer();
    return true;
}

bool HalControlCommandParser::CopyReplyData(const std::vector<char>& data, char* out,
                                            unsigned int& size) {
    return CopyToReply(data.data(), data.size(), out, size);
}

bool HalControlCommandParser::CopyToReply(const char* data, size_t length, char* out,
                                          unsigned int& size) {
    if (length > size) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "replySize %u is not enough, actual size %u", size,
                         static_cast<unsigned int>(length));
        return false;
    }
    std::memset(out, 0, size);
    if (length > 0) {
        std::memcpy(out, data, length);
    }
    size = static_cast<unsigned int>(length);
    return true;
}

bool HalControlCommandParser::StartTuningModeFromBuffer(const zorbaudio_settings_t* settings,
                                                        const char* buffer, unsigned int size) {
    StartTuningModeMessageData message;
    return message.SetBuffer(buffer, size) &&
           m_manager->StartTuningMode(settings, message.GetValue());
}

bool HalControlCommandParser::SetParameterFromBuffer(const zorbaudio_settings_t* settings,
                                                     const char* buffer, unsigned int size) {
    SetParameterMessageData message;
    return message.SetBuffer(buffer, size) &&
           m_manager->SetParametersArrayFromTuning(
               settings, {{message.GetParameterId(), message.GetParameterValue()}}, false);
}

bool HalControlCommandParser::SetParameterArrayFromBuffer(const zorbaudio_settings_t* settings,
                                                          const char* buffer, unsigned int size) {
    SetParameterArrayMessageData message;
    return message.SetBuffer(buffer, size) &&
           m_manager->SetParametersArrayFromTuning(settings, message.GetParameters(), false);
}

bool HalControlCommandParser::SetChunkFromBuffer(const zorbaudio_settings_t* settings,
                                                 const char* buffer, unsigned int size) {
    SetChunkMessageData message;
    return message.SetBuffer(buffer, size) &&
           m_manager->SetChunkFromTuning(settings, message.GetIndex(), message.GetData());
}

bool HalControlCommandParser::SetFullPresetFromBuffer(const zorbaudio_settings_t* settings,
                                                      const char* buffer, unsigned int size) {
    SetFullPresetMessageData message;
    return message.SetBuffer(buffer, size) &&
           m_manager->SetFullPresetFromTuning(settings, message.GetFullPreset(), false);
}

bool HalControlCommandParser::SetLinkLawsValueFromBuffer(const zorbaudio_settings_t* settings,
                                                         const char* buffer, unsigned int size) {
    SetLinkLawsValueMessageData message;
    return message.SetBuffer(buffer, size) &&
           m_manager->SetLinkLawsValue(settings, message.GetParameterId(), message.GetFirstValue(),
                                       message.GetSecondValue());
}

bool HalControlCommandParser::SetSoundModeFromBuffer(const zorbaudio_settings_t* settings,
                                                     const char* buffer, unsigned int size) {
    SetSoundModeMessageData message;
    return message.SetBuffer(buffer, size) &&
           m_manager->SetSoundMode(settings, message.GetUintValue());
}

bool HalControlCommandParser::SetOutputModeFromBuffer(const zorbaudio_settings_t* settings,
                                                      const char* buffer, unsigned int size) {
    SetOutputModeMessageData message;
    return message.SetBuffer(buffer, size) &&
           m_manager->SetOutputMode(settings, message.GetUintValue());
}

bool HalControlCommandParser::FlushFromBuffer(const zorbaudio_settings_t* settings,
                                              const char* buffer, unsigned int size) {
    FlushMessageData message;
    return message.SetBuffer(buffer, size) && m_manager->Flush(settings);
}

bool HalControlCommandParser::WaitForFlushFromBuffer(const zorbaudio_settings_t* settings,
                                                     const char* buffer, unsigned int size) {
    WaitForFlushMessageData message;
    return message.SetBuffer(buffer, size) && m_manager->WaitForFlush(settings);
}

bool HalControlCommandParser::SetEnableFromBuffer(const zorbaudio_settings_t* settings,
                                                  const char* buffer, unsigned int size) {
    SetEnableMessageData message;
    return message.SetBuffer(buffer, size) && m_manager->SetEnable(settings, message.GetValue());
}

bool HalControlCommandParser::SetBypassFromBuffer(const zorbaudio_settings_t* settings,
                                                  const char* buffer, unsigned int size) {
    SetBypassMessageData message;
    return message.SetBuffer(buffer, size) && m_manager->SetBypass(settings, message.GetValue());
}

bool HalControlCommandParser::HandleMultipleMsgDataForSetFromBuffer(
    const zorbaudio_settings_t* settings, const char* buffer, unsigned int size) {
    bool complete = false;
    std::vector<char> merged;
    if (!MergePiece(buffer, size, complete, merged)) {
        return false;
    }
    return !complete || DispatchMerged([&] {
        return SetCommandFromMessageDataBuffer(settings, merged.data(),
                                               static_cast<unsigned int>(merged.size()));
    });
}

bool HalControlCommandParser::GetTuningModeValidationFromBuffer(
    const zorbaudio_settings_t* settings, const char* buffer, unsigned int size,
    std::vector<char>& reply) {
    GetTuningModeValidationMessageData request;
    bool valid = false;
    if (!ParseRequest(request, buffer, size) ||
        !m_manager->GetTuningModeValidation(settings, valid)) {
        return false;
    }
    reply = ReplyTuningModeValidationMessageData(valid).GetBuffer();
    return true;
}

bool HalControlCommandParser::GetTuningModeFromBuffer(const zorbaudio_settings_t* settings,
                                                      const char*, unsigned int,
                                                      std::vector<char>& reply) {
    // The request is this id with any payload; it is not parsed.
    bool tuningMode = false;
    if (!m_manager->IsTuningMode(settings, tuningMode)) {
        return false;
    }
    reply = ReplyTuningModeMessageData(tuningMode).GetBuffer();
    return true;
}

bool HalControlCommandParser::GetParameterFromBuffer(const zorbaudio_settings_t* settings,
                                                     const char* buffer, unsigned int size,
                                                     std::vector<char>& reply) {
    GetParameterMessageData request;
    double value = 0.0;
    if (!ParseRequest(request, buffer, size) ||
        !m_manager->GetParameter(settings, request.GetUintValue(), value)) {
        return false;
    }
    reply = ReplyParameterMessageData(request.GetUintValue(), value).GetBuffer();
    return true;
}

bool HalControlCommandParser::GetParameterArrayFromBuffer(const zorbaudio_settings_t* settings,
                                                          const char* buffer, unsigned int size,
                                                          std::vector<char>& reply) {
    GetParameterArrayMessageData request;
    std::map<unsigned int, double> parameters;
    if (!ParseRequest(request, buffer, size) ||
        !m_manager->GetParametersArray(settings, ToIds(request.GetValues()), parameters)) {
        return false;
    }
    reply = ReplyParameterArrayMessageData(parameters).GetBuffer();
    return true;
}

bool HalControlCommandParser::GetChunkFromBuffer(const zorbaudio_settings_t* settings,
                                                 const char* buffer, unsigned int size,
                                                 std::vector<char>& reply) {
    GetChunkMessageData request;
    std::vector<char> data;
    if (!ParseRequest(request, buffer, size) ||
        !m_manager->GetChunk(settings, request.GetUintValue(), data)) {
        return false;
    }
    reply = ReplyChunkMessageData(request.GetUintValue(), data).GetBuffer();
    return true;
}

bool HalControlCommandParser::GetFullPresetFromBuffer(const zorbaudio_settings_t* settings,
                                                      const char* buffer, unsigned int size,
                                                      std::vector<char>&) {
    GetFullPresetMessageData request;
    if (!ParseRequest(request, buffer, size)) {
        return false;
    }
    TesselTuning::FullPreset preset = request.GetFullPreset();
    return m_manager->GetFullPreset(settings, preset);
}

bool HalControlCommandParser::GetLinkLawParameterArrayFromBuffer(
    const zorbaudio_settings_t* settings, const char* buffer, unsigned int size,
    std::vector<char>& reply) {
    GetLinkLawParameterArrayMessageData request;
    std::map<unsigned int, double> values;
    if (!ParseRequest(request, buffer, size) ||
        !m_manager->GetLinkLawsParametersArray(settings, values)) {
        return false;
    }
    reply = ReplyParameterArrayMessageData(values).GetBuffer();
    return true;
}

bool HalControlCommandParser::RequestLinkLawsSourceParameterFromBuffer(
    const zorbaudio_settings_t* settings, const char* buffer, unsigned int size,
    std::vector<char>& reply) {
    RequestLinkLawsSourceParameterMessageData request;
    std::map<unsigned int, double> values;
    if (!ParseRequest(request, buffer, size) ||
        !m_manager->GetLinkLawsSourceValues(settings, {request.GetUintValue()}, values)) {
        return false;
    }
    reply = UpdateLinkLawsSourceParameterArrayMessageData(values).GetBuffer();
    return true;
}

bool HalControlCommandParser::RequestLinkLawsSourceParameterArrayFromBuffer(
    const zorbaudio_settings_t* settings, const char* buffer, unsigned int size,
    std::vector<char>& reply) {
    RequestLinkLawsSourceParameterArrayMessageData request;
    std::map<unsigned int, double> values;
    if (!ParseRequest(request, buffer, size) ||
        !m_manager->GetLinkLawsSourceValues(settings, ToIds(request.GetValues()), values)) {
        return false;
    }
    reply = UpdateLinkLawsSourceParameterArrayMessageData(values).GetBuffer();
    return true;
}

bool HalControlCommandParser::RequestMetersFromBuffer(const zorbaudio_settings_t* settings,
                                                      const char* buffer, unsigned int size,
                                                      std::vector<char>& reply) {
    RequestMetersMessageData request;
    std::map<uint32_t, CMeterValue> values;
    if (!ParseRequest(request, buffer, size) ||
        !m_manager->GetMeters(settings, request.GetMeterInfos(), values)) {
        return false;
    }
    reply = UpdateMetersMessageData(values).GetBuffer();
    return true;
}

bool HalControlCommandParser::GetVersionFromBuffer(const zorbaudio_settings_t* settings,
                                                   const char* buffer, unsigned int size,
                                                   std::vector<char>& reply) {
    GetVersionMessageData request;
    std::string version;
    if (!ParseRequest(request, buffer, size) ||
        !m_manager->GetVersion(settings, request.GetText(), version)) {
        return false;
    }
    reply = UpdateVersionMessageData(version).GetBuffer();
    return true;
}

bool HalControlCommandParser::GetEnableFromBuffer(const zorbaudio_settings_t* settings,
                                                  const char* buffer, unsigned int size,
                                                  std::vector<char>& reply) {
    GetEnableMessageData request;
    bool enable = false;
    if (!ParseRequest(request, buffer, size) || !m_manager->GetEnable(settings, enable)) {
        return false;
    }
    reply = UpdateEnableMessageData(enable).GetBuffer();
    return true;
}

bool HalControlCommandParser::GetBypassFromBuffer(const zorbaudio_settings_t* settings,
                                                  const char* buffer, unsigned int size,
                                                  std::vector<char>& reply) {
    GetBypassMessageData request;
    bool bypass = false;
    if (!ParseRequest(request, buffer, size) || !m_manager->GetBypass(settings, bypass)) {
        return false;
    }
    reply = UpdateBypassMessageData(bypass).GetBuffer();
    return true;
}

bool HalControlCommandParser::HandleMultipleMsgDataForGetFromBuffer(
    const zorbaudio_settings_t* settings, const char* buffer, unsigned int size,
    std::vector<char>& reply) {
    bool complete = false;
    std::vector<char> merged;
    if (!MergePiece(buffer, size, complete, merged)) {
        return false;
    }
    return !complete || DispatchMerged([&] {
        return GetCommandFromMessageDataBuffer(settings, merged.data(),
                                               static_cast<unsigned int>(merged.size()), reply);
    });
}

bool HalControlCommandParser::RequestMultipleMessageDataFromBuffer(const zorbaudio_settings_t*,
                                                                   const char* buffer,
                                                                   unsigned int size,
                                                                   std::vector<char>& reply) {
    RequestMultipleMessageData request;
    if (!request.SetBuffer(buffer, size) || !m_splitter.Contains(request.GetSessionId())) {
        return false;
    }
    // A counter that is not pending (never made, or served before) finds no piece.
    const std::shared_ptr<MultipleMessageData> piece =
        m_splitter.GetSplitData(request.GetSessionId(), request.GetCurrentMsgCounter(), true);
    if (!piece) {
        return false;
    }
    reply = piece->GetBuffer();
    return true;
}

bool HalControlCommandParser::MergePiece(const char* buffer, unsigned int size, bool& complete,
                                         std::vector<char>& merged) {
    auto piece = std::make_unique<MultipleMessageData>();
    if (!piece->SetBuffer(buffer, size)) {
        return false;
    }
    const int sessionId = static_cast<int>(piece->GetSessionId());
    complete = false;
    if (!m_merger.Add(piece, complete)) {
        return false;
    }
    return !complete || m_merger.FillMergedBuffer(sessionId, merged);
}

bool HalControlCommandParser::DispatchMerged(const std::function<bool()>& dispatch) {
    // A merged command may be a piece again, even of its own finished session, which would
    // merge to the same bytes for ever; the depth bounds that.
    if (m_mergeDepth >= kMaxMergeDepth) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "merged command nested deeper than %d",
                         kMaxMergeDepth);
        return false;
    }
    struct DepthGuard {
        int& depth;
        explicit DepthGuard(int& d) : depth(d) { ++depth; }
        ~DepthGuard() { --depth; }
    } guard(m_mergeDepth);
    return dispatch();
}

}  // namespace TesselFX
