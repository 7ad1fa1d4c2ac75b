#pragma once

#include <memory>

#include "protocol/MessageData.h"
#include "protocol/MultipleMsgHeader.h"

namespace TesselFX {

/// Id 52: one piece of a buffer that is too long for one message. Payload: u32 counter (from
/// 0), u32 total pieces, u32 session id, u32 size, then size bytes; a piece of n bytes is a
/// frame of n + 20 bytes.
class MultipleMessageData : public MessageData {
  public:
    static constexpr uint32_t kId = 52;
    /// Frame bytes of a piece besides its data: id and the four u32.
    static constexpr unsigned int kFrameOverhead = 20;

    MultipleMessageData() = default;
    MultipleMessageData(unsigned int currentMsgCounter, unsigned int totalMsgCount,
                        unsigned int sessionId, std::vector<char> data);

    uint32_t GetId() const override { return kId; }
    std::vector<char> GetPayload() const override;
    bool SetPayload(const char* data, unsigned int size) override;

    virtual unsigned int GetCurrentMsgCounter() const { return m_header.currentMsgCounter; }
    virtual unsigned int GetTotalMsgCount() const { return m_header.totalMsgCount; }
    virtual unsigned int GetSessionId() const { return m_header.sessionId; }
    virtual std::vector<char> GetData() const { return m_data; }

    /// Cuts buffer into pieces whose frames are splitSize bytes each, the last one at most.
    /// pieces is replaced on success; an empty buffer or a splitSize of 20 or less is logged
    /// and gives false with pieces untouched.
    static bool Split(unsigned int sessionId, unsigned int splitSize,
                      const std::vector<char>& buffer,
                      std::vector<std::shared_ptr<MultipleMessageData>>& pieces);
    /// Split, then the frames of the pieces in order.
    static bool SplitToBuffers(unsigned int sessionId, unsigned int splitSize,
                               const std::vector<char>& buffer,
                               std::vector<std::vector<char>>& frames);
    /// Joins the data of frames given in order; all must carry the first one's session id.
    static bool MergeBuffers(const std::vector<std::vector<char>>& frames, std::vector<char>& out);

  private:
    MultipleMsgHeader m_header;
    std::vector<char> m_data;
};

}  // namespace TesselFX
