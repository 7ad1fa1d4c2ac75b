#include "SimEffect.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>

namespace dspkit_sim {

const int kFixedParameterIds[] = {100, 101, 102, 110, 111, 112, 120, 121, 122, 130, 131, 132, 200};
const int kFixedParameterCount = sizeof(kFixedParameterIds) / sizeof(kFixedParameterIds[0]);

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr float kDefaultFrequency[kBands] = {250.0f, 1000.0f, 4000.0f, 12000.0f};
constexpr float kDefaultQ = 0.7071f;

bool IsEqParameter(int id) {
    const int offset = id - kEqBaseId;
    return offset >= 0 && offset < static_cast<int>(kBands) * kEqBandStride &&
           offset % kEqBandStride < 3;
}

float DefaultEq(unsigned band, unsigned field) {
    return field == 0 ? kDefaultFrequency[band] : field == 1 ? 0.0f : kDefaultQ;
}

/// The value an input stands for: its default when unset or not finite, else clamped.
double Effective(const Input& input, double fallback, double low, double high) {
    if (!input.set || !std::isfinite(input.value)) return fallback;
    return std::min(std::max(static_cast<double>(input.value), low), high);
}

void Stage(Input& input, float value, bool& dirty) {
    // NaN differs from itself and so always counts as a change.
    if (!input.set || !(input.value == value)) dirty = true;
    input.value = value;
    input.set = true;
}

GenericBlock* FindGeneric(SimEffect& effect, int32_t group, bool create) {
    GenericBlock* begin = effect.generic;
    GenericBlock* end = begin + effect.genericCount;
    // Most often the block found last or the one after it.
    const uint32_t last = effect.lastGeneric;
    for (uint32_t i = last; i < effect.genericCount && i <= last + 1; ++i) {
        if (begin[i].group == group) {
            effect.lastGeneric = i;
            return begin + i;
        }
    }
    GenericBlock* it = std::lower_bound(
        begin, end, group, [](const GenericBlock& b, int32_t g) { return b.group < g; });
    effect.lastGeneric = static_cast<uint32_t>(it - begin);
    if (it != end && it->group == group) return it;
    if (!create || effect.genericCount == kMaxGenericBlocks) return nullptr;
    std::memmove(it + 1, it, static_cast<size_t>(end - it) * sizeof(GenericBlock));
    std::memset(static_cast<void*>(it), 0, sizeof(GenericBlock));
    it->group = group;
    ++effect.genericCount;
    return it;
}

const GenericBlock* FindGeneric(const SimEffect& effect, int32_t group) {
    return FindGeneric(const_cast<SimEffect&>(effect), group, false);
}

void BandCoefficients(const SimEffect& effect, unsigned band, float out[5]) {
    const Input* in = effect.eq[band];
    const double fs = effect.sampleRate;
    double c[5];
    PeakingBiquad(fs, Effective(in[0], kDefaultFrequency[band], 10.0, 0.45 * fs),
                  Effective(in[1], 0.0, -24.0, 24.0), Effective(in[2], kDefaultQ, 0.1, 20.0), c);
    for (int i = 0; i < 5; ++i) out[i] = static_cast<float>(c[i]);
}

float LinearGain(const SimEffect& effect) {
    return static_cast<float>(
        std::pow(10.0, Effective(effect.outputGain, 0.0, -96.0, 24.0) / 20.0));
}

void PutU32(unsigned char* out, uint32_t value) { std::memcpy(out, &value, 4); }

uint32_t GetU32(const unsigned char* in) {
    uint32_t value;
    std::memcpy(&value, in, 4);
    return value;
}

unsigned PutBlock(unsigned char* out, int id, const float* values, unsigned count) {
    PutU32(out, static_cast<uint32_t>(id));
    PutU32(out + 4, count);
    std::memcpy(out + kBlockHeaderSize, values, 4 * count);
    return kBlockHeaderSize + 4 * count;
}

void SetIdentity(float coefficients[5]) {
    coefficients[0] = 1.0f;
    for (int i = 1; i < 5; ++i) coefficients[i] = 0.0f;
}

}  // namespace

void PeakingBiquad(double sampleRate, double frequency, double gainDb, double q, double out[5]) {
    const double a = std::pow(10.0, gainDb / 40.0);
    const double w0 = 2.0 * kPi * frequency / sampleRate;
    const double alpha = std::sin(w0) / (2.0 * q);
    const double cosW0 = std::cos(w0);
    const double a0 = 1.0 + alpha / a;
    out[0] = (1.0 + alpha * a) / a0;
    out[1] = -2.0 * cosW0 / a0;
    out[2] = (1.0 - alpha * a) / a0;
    out[3] = -2.0 * cosW0 / a0;
    out[4] = (1.0 - alpha / a) / a0;
}

SimEffect* Construct(char* buffer, uint32_t sampleRate, uint32_t channels) {
    SimEffect* effect = new (buffer) SimEffect();
    effect->magic = kMagic;
    effect->sampleRate = sampleRate;
    effect->channels = channels;
    for (unsigned band = 0; band < kBands; ++band) {
        for (unsigned field = 0; field < 3; ++field)
            effect->eq[band][field].value = DefaultEq(band, field);
        SetIdentity(effect->appliedEq[band]);
    }
    effect->appliedGain = 1.0f;
    return effect;
}

SimEffect* FromBuffer(char* buffer) {
    if (buffer == nullptr || reinterpret_cast<uintptr_t>(buffer) % alignof(SimEffect) != 0) {
        return nullptr;
    }
    SimEffect* effect = std::launder(reinterpret_cast<SimEffect*>(buffer));
    return effect->magic == kMagic ? effect : nullptr;
}

int BlockOfParameter(int id) {
    if (id < 0) return -1;
    if (IsEqParameter(id)) return kCoefEqBase + (id - kEqBaseId) / kEqBandStride;
    if (id == kOutputGainId) return kCoefOutputGain;
    return kCoefGenericBase + id / static_cast<int>(kGenericGroup);
}

bool SetParameter(SimEffect& effect, int id, float value) {
    if (id < 0) return false;
    if (IsEqParameter(id)) {
        const int offset = id - kEqBaseId;
        const unsigned band = static_cast<unsigned>(offset / kEqBandStride);
        Stage(effect.eq[band][offset % kEqBandStride], value, effect.eqDirty[band]);
        return true;
    }
    if (id == kOutputGainId) {
        Stage(effect.outputGain, value, effect.outputGainDirty);
        return true;
    }
    GenericBlock* block = FindGeneric(effect, id / static_cast<int>(kGenericGroup), true);
    if (block == nullptr) return false;
    Stage(block->inputs[id % kGenericGroup], value, block->dirty);
    return true;
}

bool GetParameter(const SimEffect& effect, int id, float& value) {
    if (id < 0) return false;
    if (IsEqParameter(id)) {
        const int offset = id - kEqBaseId;
        value = effect.eq[offset / kEqBandStride][offset % kEqBandStride].value;
    } else if (id == kOutputGainId) {
        value = effect.outputGain.value;
    } else {
        const GenericBlock* block = FindGeneric(effect, id / static_cast<int>(kGenericGroup));
        value = block != nullptr ? block->inputs[id % kGenericGroup].value : 0.0f;
    }
    return true;
}

unsigned TakeChangedBlocks(SimEffect& effect, int* ids) {
    unsigned count = 0;
    for (unsigned band = 0; band < kBands; ++band) {
        if (effect.eqDirty[band]) ids[count++] = kCoefEqBase + static_cast<int>(band);
        effect.eqDirty[band] = false;
    }
    if (effect.outputGainDirty) ids[count++] = kCoefOutputGain;
    effect.outputGainDirty = false;
    for (unsigned i = 0; i < effect.genericCount; ++i) {
        GenericBlock& block = effect.generic[i];
        if (block.dirty) ids[count++] = kCoefGenericBase + block.group;
        block.dirty = false;
    }
    return count;
}

bool ListBlocks(const SimEffect& effect, int* ids, unsigned capacity, unsigned& count) {
    const unsigned total = kBands + 1 + effect.genericCount;
    if (capacity < total) return false;
    count = 0;
    for (unsigned band = 0; band < kBands; ++band)
        ids[count++] = kCoefEqBase + static_cast<int>(band);
    ids[count++] = kCoefOutputGain;
    for (unsigned i = 0; i < effect.genericCount; ++i) {
        ids[count++] = kCoefGenericBase + effect.generic[i].group;
    }
    return true;
}

bool GetBlock(const SimEffect& effect, int id, unsigned char* out, unsigned& size) {
    if (id >= kCoefEqBase && id < kCoefEqBase + static_cast<int>(kBands)) {
        float c[5];
        BandCoefficients(effect, static_cast<unsigned>(id - kCoefEqBase), c);
        size = PutBlock(out, id, c, 5);
        return true;
    }
    if (id == kCoefOutputGain) {
        const float gain = LinearGain(effect);
        size = PutBlock(out, id, &gain, 1);
        return true;
    }
    if (id < kCoefGenericBase) return false;
    const GenericBlock* block = FindGeneric(effect, id - kCoefGenericBase);
    if (block == nullptr) return false;
    float values[kGenericGroup];
    for (unsigned i = 0; i < kGenericGroup; ++i) values[i] = block->inputs[i].value;
    size = PutBlock(out, id, values, kGenericGroup);
    return true;
}

bool ApplyBlock(SimEffect& effect, const unsigned char* data, size_t size, unsigned& used) {
    if (size < kBlockHeaderSize) return false;
    const int id = static_cast<int>(GetU32(data));
    const uint32_t count = GetU32(data + 4);
    uint32_t expected;
    if (id >= kCoefEqBase && id < kCoefEqBase + static_cast<int>(kBands)) {
        expected = 5;
    } else if (id == kCoefOutputGain) {
        expected = 1;
    } else if (id >= kCoefGenericBase) {
        expected = kGenericGroup;
    } else {
        return false;
    }
    if (count != expected || size - kBlockHeaderSize < 4 * static_cast<size_t>(count)) return false;
    float values[kGenericGroup];
    std::memcpy(values, data + kBlockHeaderSize, 4 * count);
    if (expected == 5) {
        std::memcpy(effect.appliedEq[id - kCoefEqBase], values, sizeof(float) * 5);
    } else if (expected == 1) {
        effect.appliedGain = values[0];
    } else {
        GenericBlock* block = FindGeneric(effect, id - kCoefGenericBase, true);
        if (block == nullptr) return false;
        std::memcpy(block->applied, values, sizeof(block->applied));
    }
    used = kBlockHeaderSize + 4 * count;
    return true;
}

void Process(SimEffect& effect, const float* in, float* out, uint32_t frames) {
    const unsigned channels = effect.channels;
    double peak[kMaxChannels] = {};
    double energy[kMaxChannels] = {};
    for (uint32_t frame = 0; frame < frames; ++frame) {
        for (unsigned ch = 0; ch < channels; ++ch) {
            const size_t index = static_cast<size_t>(frame) * channels + ch;
            float x = in[index];
            for (unsigned band = 0; band < kBands; ++band) {
                const float* c = effect.appliedEq[band];
                float* s = effect.eqState[band][ch];
                // Transposed direct form II.
                const float y = c[0] * x + s[0];
                s[0] = c[1] * x - c[3] * y + s[1];
                s[1] = c[2] * x - c[4] * y;
                x = y;
            }
            x *= effect.appliedGain;
            out[index] = x;
            peak[ch] = std::max(peak[ch], std::fabs(static_cast<double>(x)));
            energy[ch] += static_cast<double>(x) * x;
        }
    }
    if (frames == 0) return;
    for (unsigned ch = 0; ch < channels; ++ch) {
        effect.meterValues[2 * ch] = static_cast<float>(peak[ch]);
        effect.meterValues[2 * ch + 1] = static_cast<float>(std::sqrt(energy[ch] / frames));
        effect.meterFlags[2 * ch] = 1;
        effect.meterFlags[2 * ch + 1] = 1;
    }
}

void Reset(SimEffect& effect) {
    std::memset(effect.eqState, 0, sizeof(effect.eqState));
    std::memset(effect.meterValues, 0, sizeof(effect.meterValues));
    std::memset(effect.meterFlags, 0, sizeof(effect.meterFlags));
}

unsigned MeterCount(const SimEffect& effect) { return 2 * effect.channels; }

unsigned MeterBufferSize(const SimEffect& effect) { return 4 + 8 * MeterCount(effect); }

void WriteMeters(const SimEffect& effect, unsigned char* out) {
    const unsigned count = MeterCount(effect);
    PutU32(out, count);
    for (unsigned i = 0; i < count; ++i) {
        std::memcpy(out + 4 + 8 * i, &effect.meterValues[i], 4);
        std::memcpy(out + 8 + 8 * i, &effect.meterFlags[i], 4);
    }
}

bool ReadMeters(SimEffect& effect, const unsigned char* data, size_t size) {
    const unsigned count = MeterCount(effect);
    if (size != MeterBufferSize(effect) || GetU32(data) != count) return false;
    for (unsigned i = 0; i < count; ++i) {
        std::memcpy(&effect.meterValues[i], data + 4 + 8 * i, 4);
        std::memcpy(&effect.meterFlags[i], data + 8 + 8 * i, 4);
    }
    return true;
}

}  // namespace dspkit_sim
