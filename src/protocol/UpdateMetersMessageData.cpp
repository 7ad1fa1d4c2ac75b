#include "protocol/UpdateMetersMessageData.h"

#include "protocol/MeterPayload.h"

namespace TesselFX {

std::vector<char> UpdateMetersMessageData::GetPayload() const {
    return SerializeMeterValueMap(m_values);
}

bool UpdateMetersMessageData::SetPayload(const char* data, unsigned int size) {
    return DeserializeMeterValueMap(data, size, m_values);
}

}  // namespace TesselFX
