#include "protocol/ParameterArrayMessageData.h"

#include <algorithm>

#include "log/TesselLog.h"
#include "preset/BinaryPrimitives.h"

namespace TesselFX {

namespace {
constexpr uint32_t kEntrySize = 12;
}

ParameterArrayMessageData::ParameterArrayMessageData(const std::vector<unsigned int>& ids,
                                                     const std::vector<double>& values) {
    for (size_t i = 0; i < std::min(ids.size(), values.size()); ++i) {
        m_parameters[ids[i]] = values[i];
    }
}

std::vector<char> ParameterArrayMessageData::GetPayload() const {
    std::vector<char> payload(sizeof(uint32_t) + kEntrySize * m_parameters.size());
    char* cursor = payload.data();
    const char* end = cursor + payload.size();
    WriteU32(cursor, end, static_cast<uint32_t>(m_parameters.size()));
    for (const auto& parameter : m_parameters) {
        WriteU32(cursor, end, parameter.first);
        WriteF64(cursor, end, parameter.second);
    }
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
