#include "protocol/MultipleMsgDataSplitter.h"

#include "log/TesselLog.h"

namespace TesselFX {

bool MultipleMsgDataSplitter::Add(unsigned int sessionId, unsigned int splitSize,
                                  const std::vector<char>& buffer) {
    if (Contains(sessionId)) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "sessionId %u already exist", sessionId);
        return false;
    }
    std::vector<std::shared_ptr<MultipleMessageData>> pieces;
    if (!MultipleMessageData::Split(sessionId, splitSize, buffer, pieces)) {
        return false;
    }
    m_sessions[sessionId] = std::move(pieces);
    return true;
}

std::shared_ptr<MultipleMessageData> MultipleMsgDataSplitter::GetSplitData(
    unsigned int sessionId, unsigned int currentMsgCounter, bool erase) {
    TESSEL_LOG(0, TESSEL_LOG_FXModule, "%s sessionId %u currentMsgCounter %u", "GetSplitData",
               sessionId, currentMsgCounter);
    const auto session = m_sessions.find(sessionId);
    if (session == m_sessions.end()) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "could not find session id %u", sessionId);
        return nullptr;
    }
    auto& pieces = session->second;
    for (auto piece = pieces.begin(); piece != pieces.end(); ++piece) {
        if ((*piece)->GetCurrentMsgCounter() != currentMsgCounter) continue;
        std::shared_ptr<MultipleMessageData> found = *piece;
        if (erase) {
            pieces.erase(piece);
            if (pieces.empty()) m_sessions.erase(session);
        }
        return found;
    }
    TESSEL_LOG_ERROR(TESSEL_LOG_FXModule,
                     "could not find matched sessionId %u currentMsgCounter %u", sessionId,
                     currentMsgCounter);
    return nullptr;
}

void MultipleMsgDataSplitter::Remove(unsigned int sessionId) { m_sessions.erase(sessionId); }

bool MultipleMsgDataSplitter::Contains(unsigned int sessionId) const {
    return m_sessions.count(sessionId) != 0;
}

}  // namespace TesselFX
