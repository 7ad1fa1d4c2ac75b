#pragma once

#include <map>
#include <string>
#include <vector>

#include "config/ISingleLineParser.h"

namespace TesselFX {

/// "name=rate|rate|..." -> sampleRates[name]. A token without digits throws std::invalid_argument.
class SupportedSampleRatesParser : public ISingleLineParser {
  public:
    explicit SupportedSampleRatesParser(std::map<std::string, std::vector<int32_t>>& sampleRates);
    void Parse(const std::string& name, const std::string& value) override;

  private:
    std::map<std::string, std::vector<int32_t>>& m_sampleRates;
};

}  // namespace TesselFX
