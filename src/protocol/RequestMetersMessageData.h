#pragma once

#include <map>

#include "dsp/CMeterInfo.h"
#include "protocol/MessageData.h"

namespace TesselFX {

/// Id 36: asks for meters, a map of CMeterInfo by meter index (payload of at most 10240
/// bytes, see MeterPayload.h).
class RequestMetersMessageData : public MessageData {
  public:
    static constexpr uint32_t kId = 36;

    RequestMetersMessageData() = default;
    explicit RequestMetersMessageData(std::map<uint32_t, CMeterInfo> infos)
        : m_infos(std::move(infos)) {}

    uint32_t GetId() const override { return kId; }
    std::vector<char> GetPayload() const override;
    bool SetPayload(const char* data, unsigned int size) override;

    const std::map<uint32_t, CMeterInfo>& GetMeterInfos() const { return m_infos; }

  private:
    std::map<uint32_t, CMeterInfo> m_infos;
};

}  // namespace TesselFX
