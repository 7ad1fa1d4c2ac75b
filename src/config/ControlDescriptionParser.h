#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "config/IControlDescription.h"
#include "config/ISingleLineParser.h"
#include "config/PresetDescription.h"

namespace TesselFX {

/// "name=DEV:n,SR:rates,PRESET:a|b,CONTROL_TYPE:t,other:value,..." -> controls[name]. Other
/// pairs go into the control's settings as strings. Bad entries are logged; a control without a
/// device, rates or presets is logged and not made. Never throws for bad text.
class ControlDescriptionParser : public ISingleLineParser {
  public:
    ControlDescriptionParser(ControlDescriptions& controls,
                             const std::map<std::string, std::vector<int32_t>>& sampleRates,
                             const PresetDescriptions& presets);
    void Parse(const std::string& name, const std::string& value) override;

  private:
    ControlDescriptions& m_controls;
    const std::map<std::string, std::vector<int32_t>>& m_sampleRates;
    const PresetDescriptions& m_presets;
};

}  // namespace TesselFX
