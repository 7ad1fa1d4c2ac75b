#include "config/SupportedFeaturesParser.h"

#include "config/StringUtils.h"
#include "log/TesselLog.h"

namespace TesselFX {

SupportedFeaturesParser::SupportedFeaturesParser(std::set<std::string>& features)
    : m_features(features) {}

void SupportedFeaturesParser::Parse(const std::string& name, const std::string& value) {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "SupportedFeaturesParser::Parse %s, %s", name.c_str(),
               value.c_str());
    if (ToUint32(value) == 1) m_features.insert(name);
}

}  // namespace TesselFX
