#pragma once

#include <set>
#include <string>

#include "config/ISingleLineParser.h"

namespace TesselFX {

/// "feature=1" switches a feature on; any other number leaves it out; a non-number throws.
class SupportedFeaturesParser : public ISingleLineParser {
  public:
    explicit SupportedFeaturesParser(std::set<std::string>& features);
    void Parse(const std::string& name, const std::string& value) override;

  private:
    std::set<std::string>& m_features;
};

}  // namespace TesselFX
