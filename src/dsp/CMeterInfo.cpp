#include "dsp/CMeterInfo.h"

#include "log/TesselLog.h"
#include "preset/BinaryPrimitives.h"

namespace TesselFX {

CMeterInfo::CMeterInfo(uint32_t index, uint32_t type, uint32_t mode)
    : m_index(index), m_type(type), m_mode(mode) {}

CMeterInfo::CMeterInfo(uint32_t index, uint32_t type, uint32_t mode, const CMeterValue& resetValue)
    : m_index(index), m_type(type), m_mode(mode), m_resetValue(resetValue) {}

size_t CMeterInfo::GetSerializedSize() const {
    return HasResetValue() ? kSizeWithResetValue : kBaseSize;
}

bool CMeterInfo::Serialize(char*& cursor, const char* end) const {
    return WriteU32(cursor, end, m_index) && WriteU32(cursor, end, m_type) &&
           WriteU32(cursor, end, m_mode) &&
           (!HasResetValue() || WriteU32(cursor, end, m_resetValue.GetUInt32()));
}

bool CMeterInfo::Deserialize(const char* data, size_t size, size_t& consumed) {
    if (size < kBaseSize) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "CMeterInfo::Deserialize Not enough data for meters");
        return false;
    }
    const char* cursor = data;
    const char* end = data + size;
    CMeterInfo read;
    ReadU32(cursor, end, read.m_index);
    ReadU32(cursor, end, read.m_type);
    ReadU32(cursor, end, read.m_mode);
    if (read.HasResetValue()) {
        if (size < kSizeWithResetValue) {
            TESSEL_LOG_ERROR(
                TESSEL_LOG_FXModule,
                "CMeterInfo::Deserialize Not enough data for meters at for meter with reset value");
            return false;
        }
        uint32_t resetValue = 0;
        ReadU32(cursor, end, resetValue);
        read.m_resetValue.Set(resetValue);
    }
    *this = read;
    consumed = GetSerializedSize();
    return true;
}

bool CMeterInfo::operator==(const CMeterInfo& other) const {
    return m_index == other.m_index && m_type == other.m_type && m_mode == other.m_mode &&
           m_valueSize == other.m_valueSize && m_resetValue == other.m_resetValue;
}

}  // namespace TesselFX
