#include "config/Hifi3zHalControlConfig.h"

#include "config/SupportedCoefsConverterSettingParser.h"

namespace TesselFX {

Hifi3zHalControlConfig::Hifi3zHalControlConfig() = default;

Hifi3zHalControlConfig::~Hifi3zHalControlConfig() = default;

LineParsers Hifi3zHalControlConfig::MakeLineParsers() {
    LineParsers parsers = HalControlConfig::MakeLineParsers();
    parsers.emplace_back(kCoefsConverterSection,
                         std::make_shared<SupportedCoefsConverterSettingParser>(
                             m_audioFormatType, m_audioFormatChannels, m_audioFormatSampleRate,
                             m_audioFormatBitsPerSample, m_audioFormatSampleSize,
                             m_audioFormatIncrement, m_dspKitPath64));
    return parsers;
}

}  // namespace TesselFX
