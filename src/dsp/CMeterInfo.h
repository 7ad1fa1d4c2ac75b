#pragma once

#include <cstddef>
#include <cstdint>

#include "dsp/CMeterValue.h"

namespace TesselFX {

/// Which meter a tuning tool wants and how to read it. The meter index selects the entry of
/// the library's meter arrays and is also the key of meter maps.
class CMeterInfo {
  public:
    static constexpr uint32_t kTypeFloat = 1;
    static constexpr uint32_t kTypeInteger = 2;
    /// Byte forms: index, type, mode; plus the reset value when the mode carries one.
    static constexpr size_t kBaseSize = 12;
    static constexpr size_t kSizeWithResetValue = 16;

    CMeterInfo() = default;
    CMeterInfo(uint32_t index, uint32_t type, uint32_t mode);
    CMeterInfo(uint32_t index, uint32_t type, uint32_t mode, const CMeterValue& resetValue);

    uint32_t GetIndex() const { return m_index; }
    uint32_t GetType() const { return m_type; }
    uint32_t GetMode() const { return m_mode; }
    /// Always 4: the size of one value.
    uint32_t GetValueSize() const { return m_valueSize; }
    const CMeterValue& GetResetValue() const { return m_resetValue; }
    /// Modes 2 and 3 carry a reset value in the byte form.
    bool HasResetValue() const { return m_mode == 2 || m_mode == 3; }

    /// 12 or 16.
    size_t GetSerializedSize() const;
    /// Writes the little-endian byte form field by field through the cursor; false at the
    /// first field that does not fit before end, with the fields before it written.
    bool Serialize(char*& cursor, const char* end) const;
    /// Reads the byte form from the first size bytes of data; on success consumed is 12 or
    /// 16. Too few bytes are logged and give false with this object unchanged.
    bool Deserialize(const char* data, size_t size, size_t& consumed);

    bool operator==(const CMeterInfo& other) const;
    bool operator!=(const CMeterInfo& other) const { return !(*this == other); }

  private:
    uint32_t m_index = 0;
    uint32_t m_type = kTypeFloat;
    uint32_t m_mode = 1;
    uint32_t m_valueSize = 4;
    CMeterValue m_resetValue;
};

}  // namespace TesselFX
