#include "protocol/CharArrayTypeMessageData.h"

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
    return ReadSizedArray(data, data + size, sizeof(uint32_t), size, m_data);
}

}  // namespace TesselFX
