#include "protocol/CharArrayTypeMessageData.h"

#include "log/TesselLog.h"
#include "preset/BinaryPrimitives.h"

namespace TesselFX {

std::vector<char> CharArrayTypeMessageData::GetPayload() const {
    std::vector<char> payload(sizeof(uint32_t) + m_data.size());
    char* cursor = payload.data();
    const char* end = cursor + payload.size();
    WriteU32(cursor, end, static_cast<uint32_t>(m_data.size()));
    WriteBytes(cursor, end, m_data.data(), m_data.size());
    return payload;
}

bool CharArrayTypeMessageData::SetPayload(const char* data, unsigned int size) {
    m_data.clear();
    const char* end = data + size;
    uint32_t length = 0;
    if (!ReadU32(data, end, length)) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "read size fail");
        return false;
    }
    const uint32_t expected = length + 4u;
    if (expected != size) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule,
                         "expected total size %u from size %u is wrong, actual size %u", expected,
                         length, size);
        return false;
    }
    if (!ReadBytes(data, end, length, m_data)) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "read array fail");
        return false;
    }
    return true;
}

}  // namespace TesselFX
