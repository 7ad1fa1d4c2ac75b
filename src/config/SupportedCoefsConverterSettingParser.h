#pragma once

#include <functional>
#include <map>
#include <string>

#include "config/ISingleLineParser.h"

namespace TesselFX {

/// The coefficient converter's "key=value" lines. Unknown keys are ignored; the AudioFormat
/// keys take std::stoi of the value (which may throw), DspKitPath64 the value as it stands.
class SupportedCoefsConverterSettingParser : public ISingleLineParser {
  public:
    SupportedCoefsConverterSettingParser(int32_t& audioFormatType, int32_t& audioFormatChannels,
                                         int32_t& audioFormatSampleRate,
                                         int32_t& audioFormatBitsPerSample,
                                         int32_t& audioFormatSampleSize,
                                         int32_t& audioFormatIncrement, std::string& dspKitPath64);
    void Parse(const std::string& name, const std::string& value) override;

  private:
    std::map<std::string, std::function<void(const std::string&)>> m_setters;
};

}  // namespace TesselFX
