#include "protocol/MultipleMsgDataMerger.h"

#include "log/TesselLog.h"

namespace TesselFX {

bool MultipleMsgDataMerger::MergeSession::AddPiece(unsigned int counter, std::vector<char> data,
                                                   bool& isComplete) {
    if (counter >= totalMsgCount) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "%s: index(%u/%u) exceeds boundary", "Add", counter,
                         totalMsgCount);
        return false;
    }
    if (pieces.count(counter) != 0) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "%s: index(%u/%u) already exists", "Add", counter,
                         totalMsgCount);
        return false;
    }
    pieces[counter] = std::move(data);
    if (pieces.size() != totalMsgCount) {
        isComplete = complete;
        return true;
    }
    for (const auto& piece : pieces) {
        merged.insert(merged.end(), piece.second.begin(), piece.second.end());
    }
    pieces.clear();
    complete = true;
    isComplete = true;
    return true;
}

bool MultipleMsgDataMerger::Add(std::unique_ptr<MultipleMessageData>& piece, bool& complete) {
    bool result = false;
    if (piece) {
        const int sessionId = static_cast<int>(piece->GetSessionId());
        std::unique_ptr<MergeSession>& session = m_sessions[sessionId];
        if (!session) {
            session = std::make_unique<MergeSession>();
            session->totalMsgCount = piece->GetTotalMsgCount();
        }
        result = session->AddPiece(piece->GetCurrentMsgCounter(), piece->GetData(), complete);
    }
    TESSEL_LOG(1, TESSEL_LOG_FXModule, " MultipleMsgDataMerger::Add result = %s",
               result ? "true" : "false");
    return result;
}

bool MultipleMsgDataMerger::FillMergedBuffer(int sessionId, std::vector<char>& out) {
    const auto session = m_sessions.find(sessionId);
    if (session == m_sessions.end()) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "%s: failed to find session %u", "FillMergedBuffer",
                         static_cast<unsigned int>(sessionId));
        return false;
    }
    if (!session->second) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "%s: failed to find session data %u",
                         "FillMergedBuffer", static_cast<unsigned int>(sessionId));
        return false;
    }
    if (!session->second->complete) {
        return false;
    }
    out = session->second->merged;
    return true;
}

}  // namespace TesselFX
