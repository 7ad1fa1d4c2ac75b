#pragma once

#include "protocol/MessageData.h"
#include "protocol/MultipleMsgHeader.h"

namespace TesselFX {

/// Id 53: asks for one pending piece of a long reply. Payload: u32 counter, u32 total, u32
/// session id; bytes after the twelfth are ignored.
class RequestMultipleMessageData : public MessageData {
  public:
    static constexpr uint32_t kId = 53;

    RequestMultipleMessageData() = default;
    RequestMultipleMessageData(unsigned int currentMsgCounter, unsigned int totalMsgCount,
                               unsigned int sessionId)
        : m_header{currentMsgCounter, totalMsgCount, sessionId} {}

    uint32_t GetId() const override { return kId; }
    std::vector<char> GetPayload() const override;
    bool SetPayload(const char* data, unsigned int size) override;

    virtual unsigned int GetCurrentMsgCounter() const { return m_header.currentMsgCounter; }
    virtual unsigned int GetTotalMsgCount() const { return m_header.totalMsgCount; }
    virtual unsigned int GetSessionId() const { return m_header.sessionId; }

  private:
    MultipleMsgHeader m_header;
};

}  // namespace TesselFX
