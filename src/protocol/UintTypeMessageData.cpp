#include "protocol/UintTypeMessageData.h"

#include "log/TesselLog.h"
#include "preset/BinaryPrimitives.h"

namespace TesselFX {

std::vector<char> UintTypeMessageData::GetPayload() const {
    std::vector<char> payload(sizeof(uint32_t));
    char* cursor = payload.data();
    WriteU32(cursor, cursor + payload.size(), m_value);
    return payload;
}

bool UintTypeMessageData::SetPayload(const char* data, unsigned int size) {
    if (!ReadU32(data, data + size, m_value)) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "get zbIndex fail");
        return false;
    }
    return true;
}

}  // namespace TesselFX
