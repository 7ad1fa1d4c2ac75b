#include "protocol/SetLinkLawsValueMessageData.h"

#include "preset/BinaryPrimitives.h"

namespace TesselFX {

namespace {
constexpr unsigned int kPayloadSize = 20;
}

std::vector<char> SetLinkLawsValueMessageData::GetPayload() const {
    std::vector<char> payload(kPayloadSize);
    char* cursor = payload.data();
    const char* end = cursor + payload.size();
    WriteU32(cursor, end, m_parameterId);
    WriteF64(cursor, end, m_first);
    WriteF64(cursor, end, m_second);
    return payload;
}

bool SetLinkLawsValueMessageData::SetPayload(const char* data, unsigned int size) {
    if (!CheckExactSize(kPayloadSize, size)) {
        return false;
    }
    const char* end = data + size;
    uint32_t parameterId = 0;
    ReadU32(data, end, parameterId);
    ReadF64(data, end, m_first);
    ReadF64(data, end, m_second);
    m_parameterId = parameterId;
    return true;
}

}  // namespace TesselFX
