#include "protocol/MultipleMessageData.h"

#include "log/TesselLog.h"
#include "preset/BinaryPrimitives.h"

namespace TesselFX {

namespace {
/// The piece header and the u32 size.
constexpr uint32_t kHeaderSize = MultipleMsgHeader::kSize + 4;
}  // namespace

MultipleMessageData::MultipleMessageData(unsigned int currentMsgCounter, unsigned int totalMsgCount,
                                         unsigned int sessionId, std::vector<char> data)
    : m_header{currentMsgCounter, totalMsgCount, sessionId}, m_data(std::move(data)) {}

std::vector<char> MultipleMessageData::GetPayload() const {
    std::vector<char> payload(kHeaderSize + m_data.size());
    char* cursor = payload.data();
    const char* end = cursor + payload.size();
    m_header.Write(cursor, end);
    WriteU32(cursor, end, static_cast<uint32_t>(m_data.size()));
    WriteBytes(cursor, end, m_data.data(), m_data.size());
    return payload;
}

bool MultipleMessageData::SetPayload(const char* data, unsigned int size) {
    m_data.clear();
    const char* end = data + size;
    return m_header.Read(data, end) && ReadSizedArray(data, end, kHeaderSize, size, m_data);
}

bool MultipleMessageData::Split(unsigned int sessionId, unsigned int splitSize,
                                const std::vector<char>& buffer,
                                std::vector<std::shared_ptr<MultipleMessageData>>& pieces) {
    if (buffer.empty()) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "input buffer is empty");
        return false;
    }
    if (splitSize <= kFrameOverhead) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "splitSize too small. min_allowed:%u provided:%u",
                         kFrameOverhead, splitSize);
        return false;
    }
    const size_t chunk = splitSize - kFrameOverhead;
    const size_t last = (buffer.size() - 1) / chunk;
    const auto total = static_cast<unsigned int>(last + 1);
    pieces.clear();
    for (size_t i = 0; i <= last; ++i) {
        const auto from = buffer.begin() + static_cast<std::ptrdiff_t>(i * chunk);
        const auto to = i == last ? buffer.end() : from + static_cast<std::ptrdiff_t>(chunk);
        pieces.push_back(std::make_shared<MultipleMessageData>(
            static_cast<unsigned int>(i), total, sessionId, std::vector<char>(from, to)));
    }
    return true;
}

bool MultipleMessageData::SplitToBuffers(unsigned int sessionId, unsigned int splitSize,
                                         const std::vector<char>& buffer,
                                         std::vector<std::vector<char>>& frames) {
    std::vector<std::shared_ptr<MultipleMessageData>> pieces;
    if (!Split(sessionId, splitSize, buffer, pieces)) {
        return false;
    }
    frames.clear();
    for (const auto& piece : pieces) frames.push_back(piece->GetBuffer());
    return true;
}

bool MultipleMessageData::MergeBuffers(const std::vector<std::vector<char>>& frames,
                                       std::vector<char>& out) {
    out.clear();
    unsigned int sessionId = 0;
    for (size_t i = 0; i < frames.size(); ++i) {
        MultipleMessageData piece;
        if (!piece.SetBuffer(frames[i].data(), static_cast<unsigned int>(frames[i].size()))) {
            TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "failed to load from buffer");
            return false;
        }
        if (i == 0) {
            sessionId = piece.GetSessionId();
        } else if (piece.GetSessionId() != sessionId) {
            TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "session id don't match (%u!=%u)",
                             piece.GetSessionId(), sessionId);
            return false;
        }
        out.insert(out.end(), piece.m_data.begin(), piece.m_data.end());
    }
    return true;
}

}  // namespace TesselFX
