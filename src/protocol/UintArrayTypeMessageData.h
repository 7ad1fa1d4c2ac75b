#pragma once

#include "protocol/MessageData.h"

namespace TesselFX {

/// A message of u32 values: u32 count, then count x u32.
class UintArrayTypeMessageData : public MessageData {
  public:
    UintArrayTypeMessageData() = default;
    explicit UintArrayTypeMessageData(std::vector<uint32_t> values) : m_values(std::move(values)) {}
    /// Copies count values from values.
    UintArrayTypeMessageData(unsigned int count, const uint32_t* values);

    std::vector<char> GetPayload() const override;
    bool SetPayload(const char* data, unsigned int size) override;

    const std::vector<uint32_t>& GetValues() const { return m_values; }

  private:
    std::vector<uint32_t> m_values;
};

}  // namespace TesselFX
