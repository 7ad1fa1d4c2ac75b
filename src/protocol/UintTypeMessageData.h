#pragma once

#include "protocol/MessageData.h"

namespace TesselFX {

/// A message of one u32. The payload must hold at least 4 bytes; bytes after them are ignored.
class UintTypeMessageData : public MessageData {
  public:
    UintTypeMessageData() = default;
    explicit UintTypeMessageData(uint32_t value) : m_value(value) {}

    std::vector<char> GetPayload() const override;
    bool SetPayload(const char* data, unsigned int size) override;

    uint32_t GetUintValue() const { return m_value; }

  private:
    uint32_t m_value = 0;
};

}  // namespace TesselFX
