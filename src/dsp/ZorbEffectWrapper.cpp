#include "dsp/ZorbEffectWrapper.h"

#include <utility>

#include "dsp/ZorbEffectLog.h"

namespace TesselFX {

namespace {

/// Every entry point looked up at load, in lookup order. ZorbScenario_GetScenarioSize is
/// looked up twice; ZorbScenario_Initialize is never looked up, so its operation always
/// reports the function as not found.
const char* const kEntryPoints[] = {
    "ZorbScenario_GetScenarioSize",
    "ZorbScenario_GetScenarioSize",
    "ZorbEffect_GetEffectSize",
    "ZorbEffect_Initialize",
    "ZorbEffect_GetEffectSizeFromScenario",
    "ZorbEffect_InitializeFromScenario",
    "ZorbEffect_RPC_SetRequestTx",
    "ZorbEffect_RPC_SetResponseTx",
    "ZorbEffect_RPC_GetSelfRx",
    "ZorbEffect_RPC_Register_cb_Command",
    "ZorbEffect_RPC_Register_cb_GetCoefficient",
    "ZorbEffect_RPC_Register_cb_GetMeters",
    "ZorbEffect_RPC_Register_cb_GetParametersArray",
    "ZorbEffect_RPC_Register_cb_GetRevision",
    "ZorbEffect_Process",
    "ZorbEffect_Reset",
    "ZorbEffect_Control_Coefficient_GetBufferMaxSize",
    "ZorbEffect_Control_Coefficient_Set",
    "ZorbEffect_Control_Coefficient_Get",
    "ZorbEffect_Control_Deferred_GetMaxNumCoefIDs",
    "ZorbEffect_Control_Deferred_ListAllCoefIDs",
    "ZorbEffect_Control_Deferred_Set",
    "ZorbEffect_Control_Deferred_Update",
    "ZorbEffect_Control_Parameter_Set",
    "ZorbEffect_Control_Parameter_Get",
    "ZorbEffect_Control_ParametersArray_Get",
    "ZorbEffect_Control_Parameter_IDs_Get",
    "ZorbEffect_Meters_GetBufferSize",
    "ZorbEffect_Meters_GetBuffer",
    "ZorbEffect_Meters_SetBuffer",
    "ZorbEffect_Meters_Readout",
    "ZorbEffect_Revision_Get",
    "ZorbEffect_GetMessageMaxSize",
    "ZorbEffect_Message",
};

}  // namespace

std::shared_ptr<IZorbEffectWrapper> ZorbEffectWrapper::Create(const std::string& path, int flags) {
    auto wrapper = std::make_shared<ZorbEffectWrapper>(path, flags);
    if (!wrapper->IsLoaded()) return nullptr;
    return wrapper;
}

ZorbEffectWrapper::ZorbEffectWrapper(const std::string& path, int flags) {
    auto loader = std::make_shared<LibraryLoader>(path, flags);
    if (!loader->IsLoaded()) {
        ZorbEffectLogError("ZorbEffectWrapper: %s load error", path.c_str());
    } else {
        for (const char* name : kEntryPoints) loader->Resolve(name);
    }
    m_loader = loader;
}

ZorbEffectWrapper::ZorbEffectWrapper(std::shared_ptr<const LibraryLoader> loader)
    : m_loader(std::move(loader)) {}

std::shared_ptr<ZorbEffectWrapper> ZorbEffectWrapper::NewEffect() const {
    return std::shared_ptr<ZorbEffectWrapper>(new ZorbEffectWrapper(m_loader));
}

void* ZorbEffectWrapper::Address(const char* name) {
    if (name == m_lastName) return m_lastAddress;
    auto known = m_addresses.find(name);
    if (known == m_addresses.end()) known = m_addresses.emplace(name, m_loader->Find(name)).first;
    m_lastName = name;
    m_lastAddress = known->second;
    return m_lastAddress;
}

template <typename Function, typename... Args>
bool ZorbEffectWrapper::Call(const char* name, Args... args) {
    void* address = Address(name);
    if (address == nullptr) {
        ZorbEffectLogError("Error: Function %s not found.", name);
        return false;
    }
    const int result = reinterpret_cast<Function*>(address)(args...);
    if (result != 0) {
        ZorbEffectLogError("Error: Function %s failed to execute. Returned value: %d", name,
                           result);
        return false;
    }
    return true;
}

bool ZorbEffectWrapper::GetRevisionCode(unsigned* code) {
    const char* text = nullptr;
    unsigned size = 0;
    if (code == nullptr || !Revision_Get(&text, &size) || text == nullptr) return false;
    const std::string revision(text, size);
    const size_t first = revision.find(' ', 1);
    if (first == std::string::npos) return false;
    const size_t second = revision.find(' ', first + 1);
    if (second == std::string::npos || second < 4) return false;
    unsigned value = 0;
    for (size_t i = 0; i < 4; ++i) {
        value |= static_cast<unsigned>(static_cast<unsigned char>(revision[second - 4 + i]))
                 << (8 * i);
    }
    *code = value;
    return true;
}

bool ZorbEffectWrapper::Initialize(unsigned sampleRate, unsigned channels, unsigned sampleSize) {
    ZorbStreamFormat_t format = {sampleRate, channels, kZorbStreamFormatCode, 0, sampleSize};
    ZorbStreamFormat_t* const formats[] = {&format};
    return Initialize(formats, 1, formats, 1);
}

bool ZorbEffectWrapper::Initialize(ZorbStreamFormat_t* const* in, unsigned inCount,
                                   ZorbStreamFormat_t* const* out, unsigned outCount) {
    if (!PrepareEffectBuffer()) return false;
    m_initialized =
        Call<int(char*, ZorbStreamFormat_t* const*, unsigned, ZorbStreamFormat_t* const*,
                 unsigned)>("ZorbEffect_Initialize", Effect(), in, inCount, out, outCount);
    return m_initialized;
}

bool ZorbEffectWrapper::PrepareEffectBuffer() {
    unsigned size = 0;
    if (!GetEffectSize(&size)) {
        ZorbEffectLogError("ZorbEffectWrapper::PrepareEffectBuffer failed");
        m_effect.reset();
        m_initialized = false;
        return false;
    }
    // Left uninitialised: the library sets up its own state.
    m_effect.reset(new char[size]);
    return true;
}

bool ZorbEffectWrapper::GetEffectSize(unsigned* size) {
    return Call<int(unsigned*)>("ZorbEffect_GetEffectSize", size);
}

bool ZorbEffectWrapper::GetScenarioSize(unsigned* size) {
    return Call<int(unsigned*)>("ZorbScenario_GetScenarioSize", size);
}

bool ZorbEffectWrapper::Initialize(void* scenario) {
    return Call<int(void*)>("ZorbScenario_Initialize", scenario);
}

bool ZorbEffectWrapper::GetEffectSizeFromScenario(void* scenario, unsigned* size) {
    return Call<int(void*, unsigned*)>("ZorbEffect_GetEffectSizeFromScenario", scenario, size);
}

bool ZorbEffectWrapper::InitializeFromScenario(void* scenario, ZorbStreamFormat_t* const* in,
                                               unsigned inCount, ZorbStreamFormat_t* const* out,
                                               unsigned outCount) {
    return Call<int(char*, void*, ZorbStreamFormat_t* const*, unsigned, ZorbStreamFormat_t* const*,
                    unsigned)>("ZorbEffect_InitializeFromScenario", Effect(), scenario, in, inCount,
                               out, outCount);
}

bool ZorbEffectWrapper::RPC_SetRequestTx(void* first, void* second) {
    return Call<int(void*, void*)>("ZorbEffect_RPC_SetRequestTx", first, second);
}

bool ZorbEffectWrapper::RPC_SetResponseTx(void* first, void* second) {
    return Call<int(void*, void*)>("ZorbEffect_RPC_SetResponseTx", first, second);
}

bool ZorbEffectWrapper::RPC_GetSelfRx(void* rx) {
    return Call<int(void*)>("ZorbEffect_RPC_GetSelfRx", rx);
}

bool ZorbEffectWrapper::RPC_Register_cb_Command(void* rpc, ZorbRpcCallback callback,
                                                void* context) {
    return Call<int(void*, ZorbRpcCallback, void*)>("ZorbEffect_RPC_Register_cb_Command", rpc,
                                                    callback, context);
}

bool ZorbEffectWrapper::RPC_Register_cb_GetCoefficient(void* rpc, ZorbRpcCallback callback,
                                                       void* context) {
    return Call<int(void*, ZorbRpcCallback, void*)>("ZorbEffect_RPC_Register_cb_GetCoefficient",
                                                    rpc, callback, context);
}

bool ZorbEffectWrapper::RPC_Register_cb_GetMeters(void* rpc, ZorbRpcCallback callback,
                                                  void* context) {
    return Call<int(void*, ZorbRpcCallback, void*)>("ZorbEffect_RPC_Register_cb_GetMeters", rpc,
                                                    callback, context);
}

bool ZorbEffectWrapper::RPC_Register_cb_GetParametersArray(void* rpc, ZorbRpcCallback callback,
                                                           void* context) {
    return Call<int(void*, ZorbRpcCallback, void*)>("ZorbEffect_RPC_Register_cb_GetParametersArray",
                                                    rpc, callback, context);
}

bool ZorbEffectWrapper::RPC_Register_cb_GetRevision(void* rpc, ZorbRpcCallback callback,
                                                    void* context) {
    return Call<int(void*, ZorbRpcCallback, void*)>("ZorbEffect_RPC_Register_cb_GetRevision", rpc,
                                                    callback, context);
}

bool ZorbEffectWrapper::Process(ZorbStream_t* const* in, ZorbStream_t* const* out) {
    return Call<int(char*, ZorbStream_t* const*, ZorbStream_t* const*)>("ZorbEffect_Process",
                                                                        Effect(), in, out);
}

bool ZorbEffectWrapper::Reset() { return Call<int(char*)>("ZorbEffect_Reset", Effect()); }

bool ZorbEffectWrapper::Control_Coefficient_GetBufferMaxSize(unsigned* size) {
    return Call<int(char*, unsigned*)>("ZorbEffect_Control_Coefficient_GetBufferMaxSize", Effect(),
                                       size);
}

bool ZorbEffectWrapper::Control_Coefficient_Set(const void* data, unsigned size, unsigned* used) {
    return Call<int(char*, const void*, unsigned, unsigned*)>("ZorbEffect_Control_Coefficient_Set",
                                                              Effect(), data, size, used);
}

bool ZorbEffectWrapper::Control_Coefficient_Get(int id, void* data, unsigned* size) {
    return Call<int(char*, int, void*, unsigned*)>("ZorbEffect_Control_Coefficient_Get", Effect(),
                                                   id, data, size);
}

bool ZorbEffectWrapper::Control_Deferred_GetMaxNumCoefIDs(unsigned* count) {
    return Call<int(char*, unsigned*)>("ZorbEffect_Control_Deferred_GetMaxNumCoefIDs", Effect(),
                                       count);
}

bool ZorbEffectWrapper::Control_Deferred_ListAllCoefIDs(int* ids, unsigned* count) {
    return Call<int(char*, int*, unsigned*)>("ZorbEffect_Control_Deferred_ListAllCoefIDs", Effect(),
                                             ids, count);
}

bool ZorbEffectWrapper::Control_Deferred_Set(int id, float value) {
    return Call<int(char*, int, float)>("ZorbEffect_Control_Deferred_Set", Effect(), id, value);
}

bool ZorbEffectWrapper::Control_Deferred_Update(int* ids, unsigned* count) {
    return Call<int(char*, int*, unsigned*)>("ZorbEffect_Control_Deferred_Update", Effect(), ids,
                                             count);
}

bool ZorbEffectWrapper::Control_Parameter_Set(int id, float value) {
    return Call<int(char*, int, float)>("ZorbEffect_Control_Parameter_Set", Effect(), id, value);
}

bool ZorbEffectWrapper::Control_Parameter_Get(int id, float* value) {
    return Call<int(char*, int, float*)>("ZorbEffect_Control_Parameter_Get", Effect(), id, value);
}

bool ZorbEffectWrapper::Control_ParametersArray_Get(const int* ids, float* values, unsigned count) {
    return Call<int(char*, const int*, float*, unsigned)>("ZorbEffect_Control_ParametersArray_Get",
                                                          Effect(), ids, values, count);
}

bool ZorbEffectWrapper::Control_Parameter_IDs_Get(const int** ids, int* count) {
    return Call<int(char*, const int**, int*)>("ZorbEffect_Control_Parameter_IDs_Get", Effect(),
                                               ids, count);
}

bool ZorbEffectWrapper::Meters_GetBufferSize(unsigned* count) {
    return Call<int(char*, unsigned*)>("ZorbEffect_Meters_GetBufferSize", Effect(), count);
}

bool ZorbEffectWrapper::Meters_GetBuffer(void* data, unsigned* size) {
    return Call<int(char*, void*, unsigned*)>("ZorbEffect_Meters_GetBuffer", Effect(), data, size);
}

bool ZorbEffectWrapper::Meters_SetBuffer(const void* data, unsigned size) {
    return Call<int(char*, const void*, unsigned)>("ZorbEffect_Meters_SetBuffer", Effect(), data,
                                                   size);
}

bool ZorbEffectWrapper::Meters_Readout(float* values, int* flags, unsigned count) {
    return Call<int(char*, float*, int*, unsigned)>("ZorbEffect_Meters_Readout", Effect(), values,
                                                    flags, count);
}

bool ZorbEffectWrapper::Revision_Get(const char** text, unsigned* size) {
    return Call<int(char*, const char**, unsigned*)>("ZorbEffect_Revision_Get", Effect(), text,
                                                     size);
}

bool ZorbEffectWrapper::GetMessageMaxSize(unsigned* first, unsigned* second) {
    return Call<int(char*, unsigned*, unsigned*)>("ZorbEffect_GetMessageMaxSize", Effect(), first,
                                                  second);
}

bool ZorbEffectWrapper::Message(const void* in, unsigned inSize, void* out, unsigned* outSize) {
    return Call<int(char*, const void*, unsigned, void*, unsigned*)>("ZorbEffect_Message", Effect(),
                                                                     in, inSize, out, outSize);
}
}  // namespace TesselFX
