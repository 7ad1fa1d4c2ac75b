#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace TesselFX {
namespace zbctl {

/// Interleaved float audio.
struct AudioBuffer {
    uint32_t sampleRate = 48000;
    uint32_t channels = 2;
    std::vector<float> samples;

    size_t Frames() const { return channels == 0 ? 0 : samples.size() / channels; }
};

/// Reads any format libsndfile knows as float samples. Throws ZbctlError.
AudioBuffer ReadWav(const std::string& path);

/// Writes a 32-bit float WAV file, so that samples come back bit for bit, whole or not at all
/// (WriteFileWhole). Throws ZbctlError naming the cause.
void WriteWav(const std::string& path, const AudioBuffer& audio);

/// The most sample bytes a WAV file holds: its sizes are 32-bit.
constexpr uint64_t kMaxWavDataBytes = 0xFFFFFFFFull - 1024;

/// Writes a test signal as WriteWav does, block by block so that memory stays small whatever
/// its length: tones at 110 Hz, 1 kHz and 6 kHz, 0.2 each, faded in and out over 10 ms, the
/// same on every channel, frames long.
void WriteTestSignal(const std::string& path, uint32_t sampleRate, uint32_t channels,
                     uint64_t frames);

}  // namespace zbctl
}  // namespace TesselFX
