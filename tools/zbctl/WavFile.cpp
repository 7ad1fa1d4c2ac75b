#include "WavFile.h"

#include <sndfile.h>

#include <algorithm>
#include <cmath>

#include "ZbctlError.h"

namespace TesselFX {
namespace zbctl {

AudioBuffer ReadWav(const std::string& path) {
    SF_INFO info{};
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
    if (file == nullptr)
        throw ZbctlError("cannot read audio " + path + ": " + sf_strerror(nullptr));
    AudioBuffer audio;
    audio.sampleRate = static_cast<uint32_t>(info.samplerate);
    audio.channels = static_cast<uint32_t>(info.channels);
    audio.samples.resize(static_cast<size_t>(info.frames) * audio.channels);
    const sf_count_t read = sf_readf_float(file, audio.samples.data(), info.frames);
    sf_close(file);
    audio.samples.resize(static_cast<size_t>(read) * audio.channels);
    return audio;
}

void WriteWav(const std::string& path, const AudioBuffer& audio) {
    SF_INFO info{};
    info.samplerate = static_cast<int>(audio.sampleRate);
    info.channels = static_cast<int>(audio.channels);
    info.format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
    SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
    if (file == nullptr)
        throw ZbctlError("cannot write audio " + path + ": " + sf_strerror(nullptr));
    const auto frames = static_cast<sf_count_t>(audio.Frames());
    const sf_count_t written = sf_writef_float(file, audio.samples.data(), frames);
    sf_close(file);
    if (written != frames) throw ZbctlError("cannot write audio " + path + ": disk full?");
}

AudioBuffer MakeTestSignal(uint32_t sampleRate, uint32_t channels, double seconds) {
    AudioBuffer audio;
    audio.sampleRate = sampleRate;
    audio.channels = channels;
    const size_t frames = static_cast<size_t>(std::max(0.0, seconds) * sampleRate);
    const double fade = 0.01 * sampleRate;
    const double pi = std::acos(-1.0);
    audio.samples.reserve(frames * channels);
    for (size_t i = 0; i < frames; ++i) {
        const double t = static_cast<double>(i) / sampleRate;
        const double envelope = std::min({1.0, i / fade, (frames - 1 - i) / fade});
        const double value = 0.2 * envelope *
                             (std::sin(2 * pi * 110 * t) + std::sin(2 * pi * 1000 * t) +
                              std::sin(2 * pi * 6000 * t));
        for (uint32_t ch = 0; ch < channels; ++ch)
            audio.samples.push_back(static_cast<float>(value));
    }
    return audio;
}

}  // namespace zbctl
}  // namespace TesselFX
