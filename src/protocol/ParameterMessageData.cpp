#include "protocol/ParameterMessageData.h"

#include "preset/BinaryPrimitives.h"

namespace TesselFX {

namespace {
constexpr unsigned int kPayloadSize = 12;
}

std::vector<char> ParameterMessageData::GetPayload() const {
    std::vector<char> payload(kPayloadSize);
    char* cursor = payload.data();
    const char* end = cursor + payload.size();
    WriteU32(cursor, end, m_parameterId);
    WriteF64(cursor, end, m_value);
    return payload;
}

bool ParameterMessageData::SetPayload(const char* data, unsigned int size) {
    if (!CheckExactSize(kPayloadSize, size)) {
        return false;
    }
    const char* end = data + size;
    uint32_t parameterId = 0;
    ReadU32(data, end, parameterId);
    ReadF64(data, end, m_value);
    m_parameterId = parameterId;
    return true;
}

}  // namespace TesselFX
