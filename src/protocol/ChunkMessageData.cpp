#include "protocol/ChunkMessageData.h"

#include "log/TesselLog.h"
#include "preset/BinaryPrimitives.h"

namespace TesselFX {

std::vector<char> ChunkMessageData::GetPayload() const {
    std::vector<char> payload(2 * sizeof(uint32_t) + m_data.size());
    char* cursor = payload.data();
    const char* end = cursor + payload.size();
    WriteU32(cursor, end, m_index);
    WriteU32(cursor, end, static_cast<uint32_t>(m_data.size()));
    WriteBytes(cursor, end, m_data.data(), m_data.size());
    return payload;
}

bool ChunkMessageData::SetPayload(const char* data, unsigned int size) {
    m_data.clear();
    const char* end = data + size;
    uint32_t index = 0;
    if (!ReadU32(data, end, index)) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "read index fail");
        return false;
    }
    m_index = index;
    uint32_t length = 0;
    if (!ReadCount(data, end, length) || !CheckSizeFromCount(length + 8u, length, size)) {
        return false;
    }
    if (!ReadBytes(data, end, length, m_data)) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "read chunk fail");
        return false;
    }
    return true;
}

}  // namespace TesselFX
