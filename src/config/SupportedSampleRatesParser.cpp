#include "config/SupportedSampleRatesParser.h"

#include "config/StringUtils.h"
#include "log/TesselLog.h"

namespace TesselFX {

SupportedSampleRatesParser::SupportedSampleRatesParser(
    std::map<std::string, std::vector<int32_t>>& sampleRates)
    : m_sampleRates(sampleRates) {}

void SupportedSampleRatesParser::Parse(const std::string& name, const std::string& value) {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "SupportedSampleRatesParser::Parse %s, %s", name.c_str(),
               value.c_str());
    std::vector<int32_t>& rates = m_sampleRates[name];
    for (const std::string& token : Split(value, '|')) rates.push_back(std::stoi(token));
}

}  // namespace TesselFX
