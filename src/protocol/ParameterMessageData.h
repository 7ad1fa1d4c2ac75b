#pragma once

#include "protocol/MessageData.h"

namespace TesselFX {

/// A message of one parameter: u32 id, f64 value; exactly 12 bytes.
class ParameterMessageData : public MessageData {
  public:
    ParameterMessageData() = default;
    ParameterMessageData(unsigned int parameterId, double value)
        : m_parameterId(parameterId), m_value(value) {}

    std::vector<char> GetPayload() const override;
    bool SetPayload(const char* data, unsigned int size) override;

    unsigned int GetParameterId() const { return m_parameterId; }
    double GetParameterValue() const { return m_value; }

  private:
    unsigned int m_parameterId = 0;
    double m_value = 0.0;
};

}  // namespace TesselFX
