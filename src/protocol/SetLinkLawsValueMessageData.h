#pragma once

#include "protocol/MessageData.h"

namespace TesselFX {

/// Id 35: sets a link-law value: u32 id, f64 first, f64 second; exactly 20 bytes. The two
/// values are handed on as they stand.
class SetLinkLawsValueMessageData : public MessageData {
  public:
    static constexpr uint32_t kId = 35;

    SetLinkLawsValueMessageData() = default;
    SetLinkLawsValueMessageData(unsigned int parameterId, double first, double second)
        : m_parameterId(parameterId), m_first(first), m_second(second) {}

    uint32_t GetId() const override { return kId; }
    std::vector<char> GetPayload() const override;
    bool SetPayload(const char* data, unsigned int size) override;

    unsigned int GetParameterId() const { return m_parameterId; }
    double GetFirstValue() const { return m_first; }
    double GetSecondValue() const { return m_second; }

  private:
    unsigned int m_parameterId = 0;
    double m_first = 0.0;
    double m_second = 0.0;
};

}  // namespace TesselFX
