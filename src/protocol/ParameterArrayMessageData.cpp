#include "protocol/ParameterArrayMessageData.h"

#include <algorithm>

#include "log/TesselLog.h"
#include "preset/BinaryPrimitives.h"

namespace TesselFX {

ParameterArrayMessageData::ParameterArrayMessageData(const std::vector<unsigned int>& ids,
                                                     const std::vector<double>& values) {
    for (size_t i = 0; i < std::min(ids.size(), values.size()); ++i) {
        m_parameters[ids[i]] = values[i];
    }
}

std::vector<char> ParameterArrayMessageData::GetPayload() const {
    std::vector<char> payload(PayloadSize(m_parameters.size()));
    char* cursor = payload.data();
    WritePayload(cursor, cursor + payload.size(), m_parameters.begin(), m_parameters.size());
    return payload;
}

bool ParameterArrayMessageData::SetPayload(const char* data, unsigned int size) {
    m_parameters.clear();
    const char* end = data + size;
    uint32_t count = 0;
    // A count that wraps the 32-bit product passes the size check and fails on the reads.
    if (!ReadCount(data, end, count) || !CheckSizeFromCount(4u + kEntrySize * count, count, size)) {
        return false;
    }
    for (uint32_t i = 0; i < count; ++i) {
        uint32_t id = 0;
        double value = 0.0;
        if (!ReadU32(data, end, id) || !ReadF64(data, end, value)) {
            TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "read param fail");
            return false;
        }
        m_parameters[id] = value;
    }
    return true;
}

}  // namespace TesselFX
