#include "WavFile.h"

#include <sndfile.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <functional>

#include "FileAccess.h"
#include "ZbctlError.h"

namespace TesselFX {
namespace zbctl {

namespace {

constexpr uint64_t kBlockFrames = 1 << 14;

// Writes frames of audio through WriteFileWhole; fill(first, count, samples) gives frames
// [first, first + count) interleaved.
void WriteFloatWav(const std::string& path, uint32_t sampleRate, uint32_t channels, uint64_t frames,
                   const std::function<void(uint64_t, uint64_t, std::vector<float>&)>& fill) {
    WriteFileWhole(path, [&](int fd) {
        SF_INFO info{};
        info.samplerate = static_cast<int>(sampleRate);
        info.channels = static_cast<int>(channels);
        info.format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
        errno = 0;
        SNDFILE* file = sf_open_fd(fd, SFM_WRITE, &info, SF_FALSE);
        const auto failure = [&](SNDFILE* source) {
            return errno != 0 ? WriteFailure(path)
                              : "cannot write " + path + ": " + sf_strerror(source);
        };
        if (file == nullptr) throw ZbctlError(failure(nullptr));
        // The peak chunk holds the time of writing; without it a file is the same each time.
        sf_command(file, SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
        std::vector<float> block;
        for (uint64_t first = 0; first < frames; first += kBlockFrames) {
            const uint64_t count = std::min(kBlockFrames, frames - first);
            fill(first, count, block);
            if (sf_writef_float(file, block.data(), static_cast<sf_count_t>(count)) !=
                static_cast<sf_count_t>(count)) {
                const std::string text = failure(file);
                sf_close(file);
                throw ZbctlError(text);
            }
        }
        if (sf_close(file) != 0) throw ZbctlError(failure(nullptr));
    });
}

}  // namespace

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
    WriteFloatWav(path, audio.sampleRate, audio.channels, audio.Frames(),
                  [&](uint64_t first, uint64_t count, std::vector<float>& block) {
                      const auto begin =
                          audio.samples.begin() + static_cast<long>(first * audio.channels);
                      block.assign(begin, begin + static_cast<long>(count * audio.channels));
                  });
}

void WriteTestSignal(const std::string& path, uint32_t sampleRate, uint32_t channels,
                     uint64_t frames) {
    const double fade = 0.01 * sampleRate;
    const double pi = std::acos(-1.0);
    WriteFloatWav(
        path, sampleRate, channels, frames,
        [&](uint64_t first, uint64_t count, std::vector<float>& block) {
            block.clear();
            for (uint64_t i = first; i < first + count; ++i) {
                const double t = static_cast<double>(i) / sampleRate;
                const double envelope = std::min({1.0, static_cast<double>(i) / fade,
                                                  static_cast<double>(frames - 1 - i) / fade});
                const double value = 0.2 * envelope *
                                     (std::sin(2 * pi * 110 * t) + std::sin(2 * pi * 1000 * t) +
                                      std::sin(2 * pi * 6000 * t));
                block.insert(block.end(), channels, static_cast<float>(value));
            }
        });
}

}  // namespace zbctl
}  // namespace TesselFX
