#include "SimulatedDsp.h"

#include <cstring>

#include "DspKitSim.h"
#include "SimEffect.h"
#include "ZbctlError.h"
#include "dsp/DspProtocol.h"
#include "dsp/ZorbEffectWrapper.h"

namespace TesselFX {
namespace zbctl {

namespace {

constexpr size_t kWord = 4;
// Parameter 1 is slot 1 of the generic block of group 0.
constexpr uint32_t kPassThroughBlock = dspkit_sim::kCoefGenericBase + 1 / dspkit_sim::kGenericGroup;
constexpr size_t kPassThroughSlot = 1 % dspkit_sim::kGenericGroup;

uint32_t Word(const unsigned char* data) {
    return static_cast<uint32_t>(data[0]) | static_cast<uint32_t>(data[1]) << 8 |
           static_cast<uint32_t>(data[2]) << 16 | static_cast<uint32_t>(data[3]) << 24;
}

void PutWord(unsigned char* data, uint32_t value) {
    for (size_t i = 0; i < kWord; ++i) data[i] = static_cast<unsigned char>(value >> (8 * i));
}

// Writes reply code, length and payload when they fit the room the sender gave.
int Reply(uint32_t code, const void* payload, uint32_t length, void* reply, uint32_t* replySize,
          DspExchange& exchange) {
    if (reply == nullptr || replySize == nullptr || *replySize < 2 * kWord + length) {
        exchange.error = "no room for the reply";
        return -1;
    }
    auto* out = static_cast<unsigned char*>(reply);
    PutWord(out, code);
    PutWord(out + kWord, length);
    std::memcpy(out + 2 * kWord, payload, length);
    *replySize = static_cast<uint32_t>(2 * kWord + length);
    exchange.replyCode = code;
    exchange.replySize = *replySize;
    return 0;
}

}  // namespace

SimulatedDsp::SimulatedDsp(const std::string& dspKitPath, uint32_t sampleRate, uint32_t channels,
                           uint32_t sampleSize)
    : m_sampleRate(sampleRate), m_channels(channels) {
    m_effect = ZorbEffectWrapper::Create(dspKitPath, ZorbEffectWrapper::kDefaultLoadFlags);
    if (!m_effect) throw ZbctlError("cannot load the DSP library " + dspKitPath);
    if (!m_effect->Initialize(sampleRate, channels, sampleSize)) {
        throw ZbctlError("the DSP library " + dspKitPath + " does not initialise an effect of " +
                         std::to_string(sampleRate) + " Hz, " + std::to_string(channels) +
                         " channels");
    }
}

SimulatedDsp::~SimulatedDsp() = default;

int SimulatedDsp::Handle(const void* data, uint32_t size, void* reply, uint32_t* replySize,
                         DspExchange& exchange) {
    exchange = DspExchange();
    exchange.size = size;
    const auto* bytes = static_cast<const unsigned char*>(data);
    if (bytes == nullptr || size < kWord) {
        exchange.error = "request shorter than its opcode";
        return -1;
    }
    exchange.opcode = Word(bytes);
    switch (exchange.opcode) {
        case kDspOpcodeSetCoefficients: {
            const int result = SetCoefficients(bytes, size, exchange);
            if (replySize != nullptr) *replySize = 0;
            return result;
        }
        case kDspOpcodeGetMeters: {
            std::vector<unsigned char> meters(kMaxDspBufferSize);
            unsigned length = static_cast<unsigned>(meters.size());
            if (!m_effect->Meters_GetBuffer(meters.data(), &length)) {
                exchange.error = "the effect gives no meter buffer";
                return -1;
            }
            return Reply(kDspReplyMeters, meters.data(), length, reply, replySize, exchange);
        }
        case kDspOpcodeGetVersion: {
            const char* text = nullptr;
            unsigned length = 0;
            if (!m_effect->Revision_Get(&text, &length) || text == nullptr) {
                exchange.error = "the effect gives no revision";
                return -1;
            }
            exchange.version.assign(text, length);
            return Reply(kDspReplyVersion, text, length, reply, replySize, exchange);
        }
        default:
            exchange.error = "unknown opcode";
            return -1;
    }
}

int SimulatedDsp::SetCoefficients(const unsigned char* data, uint32_t size, DspExchange& exchange) {
    if (size < 2 * kWord) {
        exchange.error = "frame shorter than its header";
        return -1;
    }
    const uint32_t length = Word(data + kWord);
    if (length != size - 2 * kWord) {
        exchange.error = "payload length " + std::to_string(length) + " differs from the frame's " +
                         std::to_string(size - 2 * kWord);
        return -1;
    }
    for (size_t offset = 2 * kWord; offset < size;) {
        const unsigned char* block = data + offset;
        const uint32_t left = static_cast<uint32_t>(size - offset);
        unsigned used = 0;
        if (!m_effect->Control_Coefficient_Set(block, left, &used) || used == 0 || used > left) {
            exchange.error = "block at payload offset " + std::to_string(offset - 2 * kWord) +
                             " refused by the effect";
            return -1;
        }
        if (left >= kWord) {
            const uint32_t id = Word(block);
            exchange.blockIds.push_back(id);
            const size_t slot = 2 * kWord + kWord * kPassThroughSlot;
            if (id == kPassThroughBlock && used >= slot + kWord) {
                float value;
                std::memcpy(&value, block + slot, sizeof(value));
                m_passThrough = value != 0.0f;
            }
        }
        offset += used;
    }
    return 0;
}

void SimulatedDsp::Process(const float* in, float* out, size_t frames) {
    if (m_passThrough) {
        if (in != out) std::memmove(out, in, frames * m_channels * sizeof(float));
        return;
    }
    ZorbStream_t input{const_cast<float*>(in), static_cast<uint32_t>(frames)};
    ZorbStream_t output{out, static_cast<uint32_t>(frames)};
    ZorbStream_t* inputs[] = {&input};
    ZorbStream_t* outputs[] = {&output};
    if (!m_effect->Process(inputs, outputs))
        std::memmove(out, in, frames * m_channels * sizeof(float));
}

}  // namespace zbctl
}  // namespace TesselFX
