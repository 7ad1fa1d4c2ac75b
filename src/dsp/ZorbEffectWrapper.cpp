#include "dsp/ZorbEffectWrapper.h"

#include <utility>

#include "dsp/ZorbEffectLog.h"

namespace TesselFX {

namespace {

/// The names of the entry points, in the order of EntryPoint, which is the order in which
/// they are looked up at load. ZorbScenario_Initialize comes last and is never looked up, so its
/// operation always reports the function as not found.
const char* const kEntryPointNames[] = {
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
    "ZorbScenario_Initialize",
};
static_assert(sizeof(kEntryPointNames) / sizeof(kEntryPointNames[0]) ==
                  ZorbEffectWrapper::kEntryPointCount,
              "one name per entry point");

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
        // The first entry point, ZorbScenario_GetScenarioSize, is looked up twice.
        loader->Resolve(kEntryPointNames[kScenarioGetScenarioSize]);
        for (size_t entry = 0; entry < kScenarioInitialize; ++entry) {
            loader->Resolve(kEntryPointNames[entry]);
        }
    }
    m_loader = loader;
    FindEntryPoints();
}

ZorbEffectWrapper::ZorbEffectWrapper(std::shared_ptr<const LibraryLoader> loader)
    : m_loader(std::move(loader)) {
    FindEntryPoints();
}

void ZorbEffectWrapper::FindEntryPoints() {
    for (size_t entry = 0; entry < kEntryPointCount; ++entry) {
        m_entryPoints[entry] = m_loader->Find(kEntryPointNames[entry]);
    }
}

std::shared_ptr<ZorbEffectWrapper> ZorbEffectWrapper::NewEffect() const {
    return std::shared_ptr<ZorbEffectWrapper>(new ZorbEffectWrapper(m_loader));
}

template <ZorbEffectWrapper::EntryPoint entry, typename Function, typename... Args>
bool ZorbEffectWrapper::Call(Args... args) {
    void* address = m_entryPoints[entry];
    const char* name = kEntryPointNames[entry];
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
    m_initialized = Call<kInitialize, int(char*, ZorbStreamFormat_t* const*, unsigned,
                                          ZorbStreamFormat_t* const*, unsigned)>(
        Effect(), in, inCount, out, outCount);
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
    return Call<kGetEffectSize, int(unsigned*)>(size);
}

bool ZorbEffectWrapper::GetScenarioSize(unsigned* size) {
    return Call<kScenarioGetScenarioSize, int(unsigned*)>(size);
}

bool ZorbEffectWrapper::Initialize(void* scenario) {
    return Call<kScenarioInitialize, int(void*)>(scenario);
}

bool ZorbEffectWrapper::GetEffectSizeFromScenario(void* scenario, unsigned* size) {
    return Call<kGetEffectSizeFromScenario, int(void*, unsigned*)>(scenario, size);
}

bool ZorbEffectWrapper::InitializeFromScenario(void* scenario, ZorbStreamFormat_t* const* in,
                                               unsigned inCount, ZorbStreamFormat_t* const* out,
                                               unsigned outCount) {
    return Call<kInitializeFromScenario, int(char*, void*, ZorbStreamFormat_t* const*, unsigned,
                                             ZorbStreamFormat_t* const*, unsigned)>(
        Effect(), scenario, in, inCount, out, outCount);
}

bool ZorbEffectWrapper::RPC_SetRequestTx(void* first, void* second) {
    return Call<kRpcSetRequestTx, int(void*, void*)>(first, second);
}

bool ZorbEffectWrapper::RPC_SetResponseTx(void* first, void* second) {
    return Call<kRpcSetResponseTx, int(void*, void*)>(first, second);
}

bool ZorbEffectWrapper::RPC_GetSelfRx(void* rx) { return Call<kRpcGetSelfRx, int(void*)>(rx); }

bool ZorbEffectWrapper::RPC_Register_cb_Command(void* rpc, ZorbRpcCallback callback,
                                                void* context) {
    return Call<kRpcRegisterCbCommand, int(void*, ZorbRpcCallback, void*)>(rpc, callback, context);
}

bool ZorbEffectWrapper::RPC_Register_cb_GetCoefficient(void* rpc, ZorbRpcCallback callback,
                                                       void* context) {
    return Call<kRpcRegisterCbGetCoefficient, int(void*, ZorbRpcCallback, void*)>(rpc, callback,
                                                                                  context);
}

bool ZorbEffectWrapper::RPC_Register_cb_GetMeters(void* rpc, ZorbRpcCallback callback,
                                                  void* context) {
    return Call<kRpcRegisterCbGetMeters, int(void*, ZorbRpcCallback, void*)>(rpc, callback,
                                                                             context);
}

bool ZorbEffectWrapper::RPC_Register_cb_GetParametersArray(void* rpc, ZorbRpcCallback callback,
                                                           void* context) {
    return Call<kRpcRegisterCbGetParametersArray, int(void*, ZorbRpcCallback, void*)>(rpc, callback,
                                                                                      context);
}

bool ZorbEffectWrapper::RPC_Register_cb_GetRevision(void* rpc, ZorbRpcCallback callback,
                                                    void* context) {
    return Call<kRpcRegisterCbGetRevision, int(void*, ZorbRpcCallback, void*)>(rpc, callback,
                                                                               context);
}

bool ZorbEffectWrapper::Process(ZorbStream_t* const* in, ZorbStream_t* const* out) {
    return Call<kProcess, int(char*, ZorbStream_t* const*, ZorbStream_t* const*)>(Effect(), in,
                                                                                  out);
}

bool ZorbEffectWrapper::Reset() { return Call<kReset, int(char*)>(Effect()); }

bool ZorbEffectWrapper::Control_Coefficient_GetBufferMaxSize(unsigned* size) {
    return Call<kControlCoefficientGetBufferMaxSize, int(char*, unsigned*)>(Effect(), size);
}

bool ZorbEffectWrapper::Control_Coefficient_Set(const void* data, unsigned size, unsigned* used) {
    return Call<kControlCoefficientSet, int(char*, const void*, unsigned, unsigned*)>(
        Effect(), data, size, used);
}

bool ZorbEffectWrapper::Control_Coefficient_Get(int id, void* data, unsigned* size) {
    return Call<kControlCoefficientGet, int(char*, int, void*, unsigned*)>(Effect(), id, data,
                                                                           size);
}

bool ZorbEffectWrapper::Control_Deferred_GetMaxNumCoefIDs(unsigned* count) {
    return Call<kControlDeferredGetMaxNumCoefIDs, int(char*, unsigned*)>(Effect(), count);
}

bool ZorbEffectWrapper::Control_Deferred_ListAllCoefIDs(int* ids, unsigned* count) {
    return Call<kControlDeferredListAllCoefIDs, int(char*, int*, unsigned*)>(Effect(), ids, count);
}

bool ZorbEffectWrapper::Control_Deferred_Set(int id, float value) {
    return Call<kControlDeferredSet, int(char*, int, float)>(Effect(), id, value);
}

bool ZorbEffectWrapper::Control_Deferred_Update(int* ids, unsigned* count) {
    return Call<kControlDeferredUpdate, int(char*, int*, unsigned*)>(Effect(), ids, count);
}

bool ZorbEffectWrapper::Control_Parameter_Set(int id, float value) {
    return Call<kControlParameterSet, int(char*, int, float)>(Effect(), id, value);
}

bool ZorbEffectWrapper::Control_Parameter_Get(int id, float* value) {
    return Call<kControlParameterGet, int(char*, int, float*)>(Effect(), id, value);
}

bool ZorbEffectWrapper::Control_ParametersArray_Get(const int* ids, float* values, unsigned count) {
    return Call<kControlParametersArrayGet, int(char*, const int*, float*, unsigned)>(
        Effect(), ids, values, count);
}

bool ZorbEffectWrapper::Control_Parameter_IDs_Get(const int** ids, int* count) {
    return Call<kControlParameterIDsGet, int(char*, const int**, int*)>(Effect(), ids, count);
}

bool ZorbEffectWrapper::Meters_GetBufferSize(unsigned* count) {
    return Call<kMetersGetBufferSize, int(char*, unsigned*)>(Effect(), count);
}

bool ZorbEffectWrapper::Meters_GetBuffer(void* data, unsigned* size) {
    return Call<kMetersGetBuffer, int(char*, void*, unsigned*)>(Effect(), data, size);
}

bool ZorbEffectWrapper::Meters_SetBuffer(const void* data, unsigned size) {
    return Call<kMetersSetBuffer, int(char*, const void*, unsigned)>(Effect(), data, size);
}

bool ZorbEffectWrapper::Meters_Readout(float* values, int* flags, unsigned count) {
    return Call<kMetersReadout, int(char*, float*, int*, unsigned)>(Effect(), values, flags, count);
}

bool ZorbEffectWrapper::Revision_Get(const char** text, unsigned* size) {
    return Call<kRevisionGet, int(char*, const char**, unsigned*)>(Effect(), text, size);
}

bool ZorbEffectWrapper::GetMessageMaxSize(unsigned* first, unsigned* second) {
    return Call<kGetMessageMaxSize, int(char*, unsigned*, unsigned*)>(Effect(), first, second);
}

bool ZorbEffectWrapper::Message(const void* in, unsigned inSize, void* out, unsigned* outSize) {
    return Call<kMessage, int(char*, const void*, unsigned, void*, unsigned*)>(Effect(), in, inSize,
                                                                               out, outSize);
}
}  // namespace TesselFX
