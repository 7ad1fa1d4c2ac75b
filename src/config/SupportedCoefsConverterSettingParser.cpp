#include "config/SupportedCoefsConverterSettingParser.h"

#include "log/TesselLog.h"

namespace TesselFX {

namespace {

std::function<void(const std::string&)> IntSetter(int32_t& field) {
    return [&field](const std::string& value) { field = std::stoi(value); };
}

}  // namespace

SupportedCoefsConverterSettingParser::SupportedCoefsConverterSettingParser(
    int32_t& audioFormatType, int32_t& audioFormatChannels, int32_t& audioFormatSampleRate,
    int32_t& audioFormatBitsPerSample, int32_t& audioFormatSampleSize,
    int32_t& audioFormatIncrement, std::string& dspKitPath64)
    : m_setters{
          {"AudioFormatType", IntSetter(audioFormatType)},
          {"AudioFormatChannels", IntSetter(audioFormatChannels)},
          {"AudioFormatSampleRate", IntSetter(audioFormatSampleRate)},
          {"AudioFormatBitsPerSample", IntSetter(audioFormatBitsPerSample)},
          {"AudioFormatSampleSize", IntSetter(audioFormatSampleSize)},
          {"AudioFormatIncrement", IntSetter(audioFormatIncrement)},
          {"DspKitPath64", [&dspKitPath64](const std::string& value) { dspKitPath64 = value; }},
      } {}

void SupportedCoefsConverterSettingParser::Parse(const std::string& name,
                                                 const std::string& value) {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "SupportedCoefsConverterSettingParser::Parse %s, %s",
               name.c_str(), value.c_str());
    auto setter = m_setters.find(name);
    if (setter != m_setters.end()) setter->second(value);
}

}  // namespace TesselFX
