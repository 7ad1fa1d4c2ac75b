#pragma once

#include <string>

#include "config/HalControlConfig.h"

namespace TesselFX {

/// The configuration of the HiFi 3z variant: adds the coefficient converter's audio format and
/// the path of the DSP algorithm library, read from COEFS_CONVERTER_SETTING. This 64-bit build
/// reads DspKitPath64 only.
class Hifi3zHalControlConfig : public HalControlConfig {
  public:
    static constexpr char kCoefsConverterSection[] = "COEFS_CONVERTER_SETTING";
    static constexpr char kDspKitPath64Key[] = "DspKitPath64";
    static constexpr char kDefaultDspKitPath64[] = "/vendor/lib64/libDspKit_HiFi3z.so";
    /// The 32-bit counterparts; no parser of this build reads them.
    static constexpr char kDspKitPathKey[] = "DspKitPath";
    static constexpr char kDefaultDspKitPath[] = "/vendor/lib/libDspKit_HiFi3z.so";

    Hifi3zHalControlConfig();
    ~Hifi3zHalControlConfig() override;

    LineParsers MakeLineParsers() override;

    virtual int32_t GetAudioFormatType() const { return m_audioFormatType; }
    virtual int32_t GetAudioFormatChannels() const { return m_audioFormatChannels; }
    virtual int32_t GetAudioFormatSampleRate() const { return m_audioFormatSampleRate; }
    virtual int32_t GetAudioFormatBitsPerSample() const { return m_audioFormatBitsPerSample; }
    virtual int32_t GetAudioFormatSampleSize() const { return m_audioFormatSampleSize; }
    virtual int32_t GetAudioFormatIncrement() const { return m_audioFormatIncrement; }
    virtual std::string GetDspKitPath64() const { return m_dspKitPath64; }

  private:
    int32_t m_audioFormatType = 0;
    int32_t m_audioFormatChannels = 2;
    int32_t m_audioFormatSampleRate = 48000;
    int32_t m_audioFormatBitsPerSample = 32;
    int32_t m_audioFormatSampleSize = 0;
    int32_t m_audioFormatIncrement = 2;
    std::string m_dspKitPath64 = kDefaultDspKitPath64;
};

}  // namespace TesselFX
