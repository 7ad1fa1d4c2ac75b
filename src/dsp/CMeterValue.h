#pragma once

#include <cstdint>

namespace TesselFX {

/// One 32-bit meter cell, read as an unsigned integer or as a float according to the meter
/// it belongs to (CMeterInfo's value type). It holds no type of its own.
class CMeterValue {
  public:
    CMeterValue() = default;
    explicit CMeterValue(uint32_t value) { Set(value); }
    explicit CMeterValue(float value) { Set(value); }

    void Set(uint32_t value);
    void Set(float value);
    /// Stores the new value and gives back the old bits in the same reading.
    uint32_t Exchange(uint32_t value);
    float Exchange(float value);
    uint32_t GetUInt32() const;
    float GetFloat() const;

    const void* GetData() const { return m_bits; }
    int GetSize() const { return static_cast<int>(sizeof(m_bits)); }
    /// Copies exactly 4 bytes in host order; any other length is logged and changes nothing.
    bool SetData(const void* data, int length);

    /// Bitwise comparison (a NaN equals itself).
    bool operator==(const CMeterValue& other) const;
    bool operator!=(const CMeterValue& other) const { return !(*this == other); }

  private:
    unsigned char m_bits[4] = {0, 0, 0, 0};
};

}  // namespace TesselFX
