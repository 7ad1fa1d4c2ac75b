#pragma once

#include <map>

#include "dsp/CMeterValue.h"
#include "protocol/MessageData.h"

namespace TesselFX {

/// Id 37: meter values by key, answering id 36 (payload of at most 10240 bytes, see
/// MeterPayload.h).
class UpdateMetersMessageData : public MessageData {
  public:
    static constexpr uint32_t kId = 37;

    UpdateMetersMessageData() = default;
    explicit UpdateMetersMessageData(std::map<uint32_t, CMeterValue> values)
        : m_values(std::move(values)) {}

    uint32_t GetId() const override { return kId; }
    std::vector<char> GetPayload() const override;
    bool SetPayload(const char* data, unsigned int size) override;

    /// A copy of the values.
    virtual std::map<uint32_t, CMeterValue> GetMeterValues() const { return m_values; }

  private:
    std::map<uint32_t, CMeterValue> m_values;
};

}  // namespace TesselFX
