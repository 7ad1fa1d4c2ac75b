#pragma once

#include <memory>
#include <string>

#include "config/CustomAction.h"
#include "config/ISingleLineParser.h"
#include "config/PresetDescription.h"

namespace TesselFX {

/// "name=PRIORITY:n,NUMBERS:a|b:c,PRESET:preset" -> a rule of one custom action. A rule without
/// a priority or a known preset is logged and dropped; a bad number throws std::invalid_argument
/// or std::out_of_range.
class CustomActionParser : public ISingleLineParser {
  public:
    CustomActionParser(const PresetDescriptions& presets, std::shared_ptr<CustomAction> action);
    void Parse(const std::string& name, const std::string& value) override;

  private:
    const PresetDescriptions& m_presets;
    std::shared_ptr<CustomAction> m_action;
};

}  // namespace TesselFX
