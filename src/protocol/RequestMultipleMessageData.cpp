#include "protocol/RequestMultipleMessageData.h"

namespace TesselFX {

std::vector<char> RequestMultipleMessageData::GetPayload() const {
    std::vector<char> payload(MultipleMsgHeader::kSize);
    char* cursor = payload.data();
    m_header.Write(cursor, cursor + payload.size());
    return payload;
}

bool RequestMultipleMessageData::SetPayload(const char* data, unsigned int size) {
    return m_header.Read(data, data + size);
}

}  // namespace TesselFX
