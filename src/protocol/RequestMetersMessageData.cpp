#include "protocol/RequestMetersMessageData.h"

#include "protocol/MeterPayload.h"

namespace TesselFX {

std::vector<char> RequestMetersMessageData::GetPayload() const {
    return SerializeMeterInfoMap(m_infos);
}

bool RequestMetersMessageData::SetPayload(const char* data, unsigned int size) {
    return DeserializeMeterInfoMap(data, size, m_infos);
}

}  // namespace TesselFX
