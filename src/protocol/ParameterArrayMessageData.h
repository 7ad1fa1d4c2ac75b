#pragma once

#include <map>

#include "protocol/MessageData.h"

namespace TesselFX {

/// A message of parameters: u32 count, then count x (u32 id, f64 value) in ascending id.
class ParameterArrayMessageData : public MessageData {
  public:
    ParameterArrayMessageData() = default;
    explicit ParameterArrayMessageData(std::map<unsigned int, double> parameters)
        : m_parameters(std::move(parameters)) {}
    /// Pairs ids[i] with values[i], up to the shorter of the two; a repeated id keeps the
    /// last value.
    ParameterArrayMessageData(const std::vector<unsigned int>& ids,
                              const std::vector<double>& values);

    std::vector<char> GetPayload() const override;
    /// An id that appears twice keeps its last value.
    bool SetPayload(const char* data, unsigned int size) override;

    const std::map<unsigned int, double>& GetParameters() const { return m_parameters; }

  private:
    std::map<unsigned int, double> m_parameters;
};

}  // namespace TesselFX
