#include "dsp/CMeterInfo.h"

#include <cstring>

#include "log/TesselLog.h"

namespace TesselFX {

namespace {

void AppendU32(std::vector<char>& out, uint32_t value) {
    for (int shift = 0; shift < 32; shift += 8) out.push_back(static_cast<char>(value >> shift));
}

uint32_t ReadU32(const char* data) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(data);
    return static_cast<uint32_t>(bytes[0]) | static_cast<uint32_t>(bytes[1]) << 8 |
           static_cast<uint32_t>(bytes[2]) << 16 | static_cast<uint32_t>(bytes[3]) << 24;
}

}  // namespace

CMeterInfo::CMeterInfo(uint32_t index, uint32_t type, uint32_t mode)
    : m_index(index), m_type(type), m_mode(mode) {}

CMeterInfo::CMeterInfo(uint32_t index, uint32_t type, uint32_t mode, const CMeterValue& resetValue)
    : m_index(index), m_type(type), m_mode(mode), m_resetValue(resetValue) {}

size_t CMeterInfo::GetSerializedSize() const {
    return HasResetValue() ? kSizeWithResetValue : kBaseSize;
}

void CMeterInfo::Serialize(std::vector<char>& out) const {
    AppendU32(out, m_index);
    AppendU32(out, m_type);
    AppendU32(out, m_mode);
    if (HasResetValue()) AppendU32(out, m_resetValue.GetUInt32());
}

bool CMeterInfo::Deserialize(const char* data, size_t size, size_t& consumed) {
    if (size < kBaseSize) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "CMeterInfo::Deserialize Not enough data for meters");
        return false;
    }
    CMeterInfo read(ReadU32(data), ReadU32(data + 4), ReadU32(data + 8));
    if (read.HasResetValue()) {
        if (size < kSizeWithResetValue) {
            TESSEL_LOG_ERROR(
                TESSEL_LOG_FXModule,
                "CMeterInfo::Deserialize Not enough data for meters at for meter with reset value");
            return false;
        }
        read.m_resetValue.Set(ReadU32(data + 12));
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
