// The C entry points of the stand-in library: argument checks, failure injection, and the
// calls into the effect model of SimEffect.

#include "DspKitSim.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>

#include "SimEffect.h"

using namespace dspkit_sim;

namespace {

constexpr int kInvalid = -22;   // bad argument or state
constexpr int kInjected = -77;  // failure asked for by DspKitSim_SetFailures

/// The entry points to fail: a comma-separated list of names, read from DSPKIT_SIM_FAIL when
/// the library is loaded and replaced by DspKitSim_SetFailures. An entry point asks only the
/// flag while the list is empty, so that its calls cost nothing more than the model's work.
class Failures {
  public:
    Failures() { Set(std::getenv("DSPKIT_SIM_FAIL")); }

    void Set(const char* names) {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_names = names != nullptr ? names : "";
        m_any.store(!m_names.empty(), std::memory_order_relaxed);
    }

    /// True when the list holds name.
    bool Has(const char* name) {
        if (!m_any.load(std::memory_order_relaxed)) return false;
        std::lock_guard<std::mutex> lock(m_mutex);
        const size_t length = std::strlen(name);
        for (size_t item = 0; item <= m_names.size();) {
            size_t end = m_names.find(',', item);
            if (end == std::string::npos) end = m_names.size();
            if (end - item == length && m_names.compare(item, length, name) == 0) return true;
            item = end + 1;
        }
        return false;
    }

  private:
    std::atomic<bool> m_any{false};
    std::mutex m_mutex;
    std::string m_names;
};

Failures g_failures;

bool Injected(const char* name) { return g_failures.Has(name); }

struct Scenario {
    uint32_t sampleRate;
    uint32_t channels;
};

bool ValidFormat(ZorbStreamFormat_t* const* formats, unsigned count) {
    if (formats == nullptr || count == 0 || formats[0] == nullptr) return false;
    const ZorbStreamFormat_t& format = *formats[0];
    return format.sampleRate >= 8000 && format.sampleRate <= 384000 && format.channels >= 1 &&
           format.channels <= kMaxChannels && format.formatCode == 3;
}

}  // namespace

extern "C" {

void DspKitSim_SetFailures(const char* names) { g_failures.Set(names); }

int ZorbEffect_GetEffectSize(unsigned* size) {
    if (Injected(__func__)) return kInjected;
    if (size == nullptr) return kInvalid;
    *size = sizeof(SimEffect);
    return 0;
}

int ZorbEffect_Initialize(char* effect, ZorbStreamFormat_t* const* in, unsigned inCount,
                          ZorbStreamFormat_t* const* out, unsigned outCount) {
    if (Injected(__func__)) return kInjected;
    if (effect == nullptr || reinterpret_cast<uintptr_t>(effect) % alignof(SimEffect) != 0 ||
        !ValidFormat(in, inCount) || !ValidFormat(out, outCount) ||
        in[0]->channels != out[0]->channels || in[0]->sampleRate != out[0]->sampleRate) {
        return kInvalid;
    }
    Construct(effect, in[0]->sampleRate, in[0]->channels);
    return 0;
}

int ZorbScenario_GetScenarioSize(unsigned* size) {
    if (Injected(__func__)) return kInjected;
    if (size == nullptr) return kInvalid;
    *size = sizeof(Scenario);
    return 0;
}

int ZorbScenario_Initialize(void* scenario) {
    if (Injected(__func__)) return kInjected;
    if (scenario == nullptr) return kInvalid;
    const Scenario defaults = {48000, 2};
    std::memcpy(scenario, &defaults, sizeof(defaults));
    return 0;
}

int ZorbEffect_GetEffectSizeFromScenario(void* scenario, unsigned* size) {
    if (Injected(__func__)) return kInjected;
    if (scenario == nullptr || size == nullptr) return kInvalid;
    *size = sizeof(SimEffect);
    return 0;
}

int ZorbEffect_InitializeFromScenario(char* effect, void* scenario, ZorbStreamFormat_t* const*,
                                      unsigned, ZorbStreamFormat_t* const*, unsigned) {
    if (Injected(__func__)) return kInjected;
    if (scenario == nullptr) return kInvalid;
    Scenario s;
    std::memcpy(&s, scenario, sizeof(s));
    ZorbStreamFormat_t format = {s.sampleRate, s.channels, 3, 0, 4};
    ZorbStreamFormat_t* formats[] = {&format};
    return ZorbEffect_Initialize(effect, formats, 1, formats, 1);
}

// The RPC transport of the DSP build has no counterpart here: the calls are accepted.
int ZorbEffect_RPC_SetRequestTx(void* rpc, void*) {
    if (Injected(__func__)) return kInjected;
    return rpc != nullptr ? 0 : kInvalid;
}

int ZorbEffect_RPC_SetResponseTx(void* rpc, void*) {
    if (Injected(__func__)) return kInjected;
    return rpc != nullptr ? 0 : kInvalid;
}

int ZorbEffect_RPC_GetSelfRx(void* rx) {
    if (Injected(__func__)) return kInjected;
    return rx != nullptr ? 0 : kInvalid;
}

int ZorbEffect_RPC_Register_cb_Command(void* rpc, ZorbRpcCallback_t callback, void*) {
    if (Injected(__func__)) return kInjected;
    return rpc != nullptr && callback != nullptr ? 0 : kInvalid;
}

int ZorbEffect_RPC_Register_cb_GetCoefficient(void* rpc, ZorbRpcCallback_t callback, void*) {
    if (Injected(__func__)) return kInjected;
    return rpc != nullptr && callback != nullptr ? 0 : kInvalid;
}

int ZorbEffect_RPC_Register_cb_GetMeters(void* rpc, ZorbRpcCallback_t callback, void*) {
    if (Injected(__func__)) return kInjected;
    return rpc != nullptr && callback != nullptr ? 0 : kInvalid;
}

int ZorbEffect_RPC_Register_cb_GetParametersArray(void* rpc, ZorbRpcCallback_t callback, void*) {
    if (Injected(__func__)) return kInjected;
    return rpc != nullptr && callback != nullptr ? 0 : kInvalid;
}

int ZorbEffect_RPC_Register_cb_GetRevision(void* rpc, ZorbRpcCallback_t callback, void*) {
    if (Injected(__func__)) return kInjected;
    return rpc != nullptr && callback != nullptr ? 0 : kInvalid;
}

int ZorbEffect_Process(char* effect, ZorbStream_t* const* in, ZorbStream_t* const* out) {
    if (Injected(__func__)) return kInjected;
    SimEffect* e = FromBuffer(effect);
    if (e == nullptr || in == nullptr || out == nullptr || in[0] == nullptr || out[0] == nullptr ||
        in[0]->frames != out[0]->frames ||
        (in[0]->frames != 0 && (in[0]->samples == nullptr || out[0]->samples == nullptr))) {
        return kInvalid;
    }
    Process(*e, in[0]->samples, out[0]->samples, in[0]->frames);
    return 0;
}

int ZorbEffect_Reset(char* effect) {
    if (Injected(__func__)) return kInjected;
    SimEffect* e = FromBuffer(effect);
    if (e == nullptr) return kInvalid;
    Reset(*e);
    return 0;
}

int ZorbEffect_Control_Coefficient_GetBufferMaxSize(char* effect, unsigned* size) {
    if (Injected(__func__)) return kInjected;
    if (FromBuffer(effect) == nullptr || size == nullptr) return kInvalid;
    *size = kMaxBlockSize;
    return 0;
}

int ZorbEffect_Control_Coefficient_Set(char* effect, const void* data, unsigned size,
                                       unsigned* used) {
    if (Injected(__func__)) return kInjected;
    SimEffect* e = FromBuffer(effect);
    unsigned consumed = 0;
    if (e == nullptr || data == nullptr || used == nullptr ||
        !ApplyBlock(*e, static_cast<const unsigned char*>(data), size, consumed)) {
        return kInvalid;
    }
    *used = consumed;
    return 0;
}

int ZorbEffect_Control_Coefficient_Get(char* effect, int id, void* data, unsigned* size) {
    if (Injected(__func__)) return kInjected;
    SimEffect* e = FromBuffer(effect);
    unsigned written = 0;
    if (e == nullptr || data == nullptr || size == nullptr ||
        !GetBlock(*e, id, static_cast<unsigned char*>(data), written)) {
        return kInvalid;
    }
    *size = written;
    return 0;
}

int ZorbEffect_Control_Deferred_GetMaxNumCoefIDs(char* effect, unsigned* count) {
    if (Injected(__func__)) return kInjected;
    if (FromBuffer(effect) == nullptr || count == nullptr) return kInvalid;
    *count = kMaxCoefIds;
    return 0;
}

int ZorbEffect_Control_Deferred_ListAllCoefIDs(char* effect, int* ids, unsigned* count) {
    if (Injected(__func__)) return kInjected;
    SimEffect* e = FromBuffer(effect);
    unsigned listed = 0;
    if (e == nullptr || ids == nullptr || count == nullptr ||
        !ListBlocks(*e, ids, *count, listed)) {
        return kInvalid;
    }
    *count = listed;
    return 0;
}

int ZorbEffect_Control_Deferred_Set(char* effect, int id, float value) {
    if (Injected(__func__)) return kInjected;
    SimEffect* e = FromBuffer(effect);
    return e != nullptr && SetParameter(*e, id, value) ? 0 : kInvalid;
}

int ZorbEffect_Control_Deferred_Update(char* effect, int* ids, unsigned* count) {
    if (Injected(__func__)) return kInjected;
    SimEffect* e = FromBuffer(effect);
    if (e == nullptr || ids == nullptr || count == nullptr) return kInvalid;
    *count = TakeChangedBlocks(*e, ids);
    return 0;
}

int ZorbEffect_Control_Parameter_Set(char* effect, int id, float value) {
    if (Injected(__func__)) return kInjected;
    SimEffect* e = FromBuffer(effect);
    if (e == nullptr || !SetParameter(*e, id, value)) return kInvalid;
    // Immediate form: the block also takes effect on this instance's processing.
    unsigned char block[kMaxBlockSize];
    unsigned size = 0;
    unsigned used = 0;
    if (!GetBlock(*e, BlockOfParameter(id), block, size) || !ApplyBlock(*e, block, size, used)) {
        return kInvalid;
    }
    return 0;
}

int ZorbEffect_Control_Parameter_Get(char* effect, int id, float* value) {
    if (Injected(__func__)) return kInjected;
    SimEffect* e = FromBuffer(effect);
    return e != nullptr && value != nullptr && GetParameter(*e, id, *value) ? 0 : kInvalid;
}

int ZorbEffect_Control_ParametersArray_Get(char* effect, const int* ids, float* values,
                                           unsigned count) {
    if (Injected(__func__)) return kInjected;
    SimEffect* e = FromBuffer(effect);
    if (e == nullptr || (count != 0 && (ids == nullptr || values == nullptr))) return kInvalid;
    for (unsigned i = 0; i < count; ++i) {
        if (!GetParameter(*e, ids[i], values[i])) return kInvalid;
    }
    return 0;
}

int ZorbEffect_Control_Parameter_IDs_Get(char* effect, const int** ids, int* count) {
    if (Injected(__func__)) return kInjected;
    if (FromBuffer(effect) == nullptr || ids == nullptr || count == nullptr) return kInvalid;
    *ids = kFixedParameterIds;
    *count = kFixedParameterCount;
    return 0;
}

int ZorbEffect_Meters_GetBufferSize(char* effect, unsigned* count) {
    if (Injected(__func__)) return kInjected;
    SimEffect* e = FromBuffer(effect);
    if (e == nullptr || count == nullptr) return kInvalid;
    *count = MeterCount(*e);
    return 0;
}

int ZorbEffect_Meters_GetBuffer(char* effect, void* data, unsigned* size) {
    if (Injected(__func__)) return kInjected;
    SimEffect* e = FromBuffer(effect);
    if (e == nullptr || data == nullptr || size == nullptr || *size < MeterBufferSize(*e)) {
        return kInvalid;
    }
    WriteMeters(*e, static_cast<unsigned char*>(data));
    *size = MeterBufferSize(*e);
    return 0;
}

int ZorbEffect_Meters_SetBuffer(char* effect, const void* data, unsigned size) {
    if (Injected(__func__)) return kInjected;
    SimEffect* e = FromBuffer(effect);
    if (e == nullptr || (data == nullptr && size != 0) ||
        !ReadMeters(*e, static_cast<const unsigned char*>(data), size)) {
        return kInvalid;
    }
    return 0;
}

int ZorbEffect_Meters_Readout(char* effect, float* values, int* flags, unsigned count) {
    if (Injected(__func__)) return kInjected;
    SimEffect* e = FromBuffer(effect);
    if (e == nullptr || count > MeterCount(*e) ||
        (count != 0 && (values == nullptr || flags == nullptr))) {
        return kInvalid;
    }
    for (unsigned i = 0; i < count; ++i) {
        values[i] = e->meterValues[i];
        flags[i] = e->meterFlags[i];
        e->meterFlags[i] = 0;
    }
    return 0;
}

int ZorbEffect_Revision_Get(char*, const char** text, unsigned* size) {
    if (Injected(__func__)) return kInjected;
    if (text == nullptr || size == nullptr) return kInvalid;
    *text = kRevisionText;
    *size = sizeof(kRevisionText) - 1;
    return 0;
}

int ZorbEffect_GetMessageMaxSize(char* effect, unsigned* inSize, unsigned* outSize) {
    if (Injected(__func__)) return kInjected;
    if (FromBuffer(effect) == nullptr || inSize == nullptr || outSize == nullptr) return kInvalid;
    *inSize = kMessageMaxSize;
    *outSize = kMessageMaxSize;
    return 0;
}

// The DSP end of the control protocol: set coefficients (1), get meters (4, answered by 3),
// get version (5, answered by 6). *outSize is the capacity of out on entry.
int ZorbEffect_Message(char* effect, const void* in, unsigned inSize, void* out,
                       unsigned* outSize) {
    if (Injected(__func__)) return kInjected;
    SimEffect* e = FromBuffer(effect);
    if (e == nullptr || in == nullptr || outSize == nullptr || inSize < 4 ||
        (*outSize != 0 && out == nullptr)) {
        return kInvalid;
    }
    const auto* request = static_cast<const unsigned char*>(in);
    auto* reply = static_cast<unsigned char*>(out);
    uint32_t words[2];
    std::memcpy(&words[0], request, 4);
    const unsigned capacity = *outSize;
    if (words[0] == 1) {
        if (inSize < 8) return kInvalid;
        std::memcpy(&words[1], request + 4, 4);
        if (words[1] != inSize - 8) return kInvalid;
        for (size_t offset = 8; offset < inSize;) {
            unsigned used = 0;
            if (!ApplyBlock(*e, request + offset, inSize - offset, used)) return kInvalid;
            offset += used;
        }
        *outSize = 0;
        return 0;
    }
    const char* payload;
    uint32_t payloadSize;
    unsigned char meters[4 + 8 * kMaxMeters];
    if (words[0] == 4) {
        WriteMeters(*e, meters);
        payload = reinterpret_cast<const char*>(meters);
        payloadSize = MeterBufferSize(*e);
        words[0] = 3;
    } else if (words[0] == 5) {
        payload = kRevisionText;
        payloadSize = sizeof(kRevisionText) - 1;
        words[0] = 6;
    } else {
        return kInvalid;
    }
    if (inSize != 4 || capacity < 8 + payloadSize) return kInvalid;
    words[1] = payloadSize;
    std::memcpy(reply, words, 8);
    std::memcpy(reply + 8, payload, payloadSize);
    *outSize = 8 + payloadSize;
    return 0;
}

}  // extern "C"
