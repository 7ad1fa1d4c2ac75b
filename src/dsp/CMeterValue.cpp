#include "dsp/CMeterValue.h"

#include <cstring>

#include "log/TesselLog.h"

namespace TesselFX {

void CMeterValue::Set(uint32_t value) { std::memcpy(m_bits, &value, sizeof(m_bits)); }

void CMeterValue::Set(float value) { std::memcpy(m_bits, &value, sizeof(m_bits)); }

uint32_t CMeterValue::Exchange(uint32_t value) {
    const uint32_t old = GetUInt32();
    Set(value);
    return old;
}

float CMeterValue::Exchange(float value) {
    const float old = GetFloat();
    Set(value);
    return old;
}

uint32_t CMeterValue::GetUInt32() const {
    uint32_t value;
    std::memcpy(&value, m_bits, sizeof(value));
    return value;
}

float CMeterValue::GetFloat() const {
    float value;
    std::memcpy(&value, m_bits, sizeof(value));
    return value;
}

bool CMeterValue::SetData(const void* data, int length) {
    if (length != GetSize()) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "CMeterValue::SetData nLen %d is invalid", length);
        return false;
    }
    std::memcpy(m_bits, data, sizeof(m_bits));
    return true;
}

bool CMeterValue::operator==(const CMeterValue& other) const {
    return std::memcmp(m_bits, other.m_bits, sizeof(m_bits)) == 0;
}

}  // namespace TesselFX
