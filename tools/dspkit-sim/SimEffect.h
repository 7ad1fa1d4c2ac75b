#pragma once

// The effect model of the stand-in library. One SimEffect lives in the effect buffer that
// the caller allocates with the size ZorbEffect_GetEffectSize gives; it is a plain record
// without pointers, so that the caller may free the buffer without telling the library.

#include <cstddef>
#include <cstdint>

namespace dspkit_sim {

// Parameter ids.
constexpr unsigned kBands = 4;
constexpr int kEqBaseId = 100;      // band b: 100 + 10*b frequency (Hz),
constexpr int kEqBandStride = 10;   //         +1 gain (dB), +2 Q
constexpr int kOutputGainId = 200;  // dB
constexpr unsigned kGenericGroup = 16;

// Coefficient ids.
constexpr int kCoefEqBase = 1;          // band b: 1 + b, five floats b0 b1 b2 a1 a2
constexpr int kCoefOutputGain = 10;     // one float, linear gain
constexpr int kCoefGenericBase = 4096;  // + id / 16, sixteen floats

constexpr unsigned kMaxGenericBlocks = 4096;  // one per group of 16-bit ids
constexpr unsigned kMaxCoefIds = kBands + 1 + kMaxGenericBlocks;
constexpr unsigned kBlockHeaderSize = 8;
constexpr unsigned kMaxBlockSize = kBlockHeaderSize + 4 * kGenericGroup;
constexpr unsigned kMaxChannels = 8;
constexpr unsigned kMaxMeters = 2 * kMaxChannels;
constexpr unsigned kMessageMaxSize = 16000;

struct Input {
    float value;
    bool set;
};

struct GenericBlock {
    int32_t group;  // parameter id / 16
    Input inputs[kGenericGroup];
    float applied[kGenericGroup];
    bool dirty;
};

struct SimEffect {
    uint32_t magic;
    uint32_t sampleRate;
    uint32_t channels;
    // Host side: parameter inputs and which blocks changed since the last update.
    Input eq[kBands][3];
    Input outputGain;
    bool eqDirty[kBands];
    bool outputGainDirty;
    uint32_t genericCount;  // generic blocks, in ascending group
    GenericBlock generic[kMaxGenericBlocks];
    mutable uint32_t lastGeneric;  // the generic block found last: calls come in ascending ids
    // DSP side: the applied blocks, filter state and meters.
    float appliedEq[kBands][5];
    float appliedGain;
    float eqState[kBands][kMaxChannels][2];
    float meterValues[kMaxMeters];
    int32_t meterFlags[kMaxMeters];
};

constexpr uint32_t kMagic = 0x4D495344;  // "DSIM"

/// Sets up a fresh effect in the buffer: defaults, identity filters, zero meters.
SimEffect* Construct(char* buffer, uint32_t sampleRate, uint32_t channels);
/// The effect in a buffer, or null when the buffer holds no initialised effect.
SimEffect* FromBuffer(char* buffer);

/// Stages a parameter; false when the id is negative or no generic block is left.
bool SetParameter(SimEffect& effect, int id, float value);
/// The current value of a parameter (its default when never set).
bool GetParameter(const SimEffect& effect, int id, float& value);
/// Writes the ids of the blocks whose inputs changed, ascending, and forgets the changes.
unsigned TakeChangedBlocks(SimEffect& effect, int* ids);
/// Writes all existing coefficient ids, ascending; false when capacity is too small.
bool ListBlocks(const SimEffect& effect, int* ids, unsigned capacity, unsigned& count);
/// Writes the block of a coefficient id computed from the current inputs.
bool GetBlock(const SimEffect& effect, int id, unsigned char* out, unsigned& size);
/// The coefficient id whose block a parameter feeds.
int BlockOfParameter(int id);
/// Applies one block on the DSP side; used is its size in bytes.
bool ApplyBlock(SimEffect& effect, const unsigned char* data, size_t size, unsigned& used);
/// Filters interleaved audio (in place allowed) and updates the meters.
void Process(SimEffect& effect, const float* in, float* out, uint32_t frames);
/// Clears filter state and meters.
void Reset(SimEffect& effect);

/// Meter buffer: u32 count, then per meter f32 value and i32 flag.
unsigned MeterCount(const SimEffect& effect);
unsigned MeterBufferSize(const SimEffect& effect);
void WriteMeters(const SimEffect& effect, unsigned char* out);
bool ReadMeters(SimEffect& effect, const unsigned char* data, size_t size);

/// The peaking-EQ biquad of the audio EQ cookbook, normalised by a0: b0 b1 b2 a1 a2.
void PeakingBiquad(double sampleRate, double frequency, double gainDb, double q, double out[5]);

inline constexpr char kRevisionText[] = "DspKitSim 1.00 stand-in";
extern const int kFixedParameterIds[];
extern const int kFixedParameterCount;

}  // namespace dspkit_sim
