#include "protocol/UintArrayTypeMessageData.h"

#include "log/TesselLog.h"
#include "preset/BinaryPrimitives.h"

namespace TesselFX {

UintArrayTypeMessageData::UintArrayTypeMessageData(unsigned int count, const uint32_t* values)
    : m_values(values, values + count) {}

std::vector<char> UintArrayTypeMessageData::GetPayload() const {
    std::vector<char> payload(sizeof(uint32_t) * (1 + m_values.size()));
    char* cursor = payload.data();
    const char* end = cursor + payload.size();
    WriteU32(cursor, end, static_cast<uint32_t>(m_values.size()));
    for (uint32_t value : m_values) WriteU32(cursor, end, value);
    return payload;
}

bool UintArrayTypeMessageData::SetPayload(const char* data, unsigned int size) {
    m_values.clear();
    const char* end = data + size;
    uint32_t count = 0;
    // A count that wraps the 32-bit product passes the size check and fails on the reads.
    if (!ReadCount(data, end, count) || !CheckSizeFromCount(4u + 4u * count, count, size)) {
        return false;
    }
    for (uint32_t i = 0; i < count; ++i) {
        uint32_t value = 0;
        if (!ReadU32(data, end, value)) {
            TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "read value fail");
            return false;
        }
        m_values.push_back(value);
    }
    return true;
}

}  // namespace TesselFX
