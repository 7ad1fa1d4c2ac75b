#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <string>

#include "dsp/IZorbEffectWrapper.h"
#include "dsp/LibraryLoader.h"

namespace TesselFX {

/// The algorithm library loaded with dlopen. Failures are written straight to the Android
/// log under "TESSEL_LOG_TAG" and give false. Owns the effect buffer, which it frees before
/// it lets go of the library. Not thread safe: a wrapper is shared by the converter and
/// reply parser of a control, and wrappers over one library run serialised.
class ZorbEffectWrapper : public IZorbEffectWrapper {
  public:
    /// The flags Hifi3zHelper loads with: RTLD_NOW | RTLD_NODELETE of Android's linker.
    static constexpr int kHelperLoadFlags = 4098;
    /// The default flags: RTLD_LAZY.
    static constexpr int kDefaultLoadFlags = 1;

    /// Loads the library at path; null when it did not open.
    static std::shared_ptr<IZorbEffectWrapper> Create(const std::string& path,
                                                      int flags = kDefaultLoadFlags);

    /// Opens the library and resolves its entry points; see Create.
    ZorbEffectWrapper(const std::string& path, int flags);
    ~ZorbEffectWrapper() override = default;
    ZorbEffectWrapper(const ZorbEffectWrapper&) = delete;
    ZorbEffectWrapper& operator=(const ZorbEffectWrapper&) = delete;

    bool IsLoaded() const { return m_loader->IsLoaded(); }
    /// A further effect over the library this wrapper has loaded: the library is not opened
    /// again and stays open while any wrapper over it lives. The new wrapper has an effect
    /// buffer of its own and starts uninitialised.
    std::shared_ptr<ZorbEffectWrapper> NewEffect() const;

    bool GetRevisionCode(unsigned* code) override;
    bool IsInitialized() override { return m_initialized; }
    bool Initialize(unsigned sampleRate, unsigned channels, unsigned sampleSize) override;
    bool GetEffectSize(unsigned* size) override;
    bool Initialize(ZorbStreamFormat_t* const* in, unsigned inCount, ZorbStreamFormat_t* const* out,
                    unsigned outCount) override;
    bool GetScenarioSize(unsigned* size) override;
    bool Initialize(void* scenario) override;
    bool GetEffectSizeFromScenario(void* scenario, unsigned* size) override;
    bool InitializeFromScenario(void* scenario, ZorbStreamFormat_t* const* in, unsigned inCount,
                                ZorbStreamFormat_t* const* out, unsigned outCount) override;
    bool RPC_SetRequestTx(void* first, void* second) override;
    bool RPC_SetResponseTx(void* first, void* second) override;
    bool RPC_GetSelfRx(void* rx) override;
    bool RPC_Register_cb_Command(void* rpc, ZorbRpcCallback callback, void* context) override;
    bool RPC_Register_cb_GetCoefficient(void* rpc, ZorbRpcCallback callback,
                                        void* context) override;
    bool RPC_Register_cb_GetMeters(void* rpc, ZorbRpcCallback callback, void* context) override;
    bool RPC_Register_cb_GetParametersArray(void* rpc, ZorbRpcCallback callback,
                                            void* context) override;
    bool RPC_Register_cb_GetRevision(void* rpc, ZorbRpcCallback callback, void* context) override;
    bool Process(ZorbStream_t* const* in, ZorbStream_t* const* out) override;
    bool Reset() override;
    bool Control_Coefficient_GetBufferMaxSize(unsigned* size) override;
    bool Control_Coefficient_Set(const void* data, unsigned size, unsigned* used) override;
    bool Control_Coefficient_Get(int id, void* data, unsigned* size) override;
    bool Control_Deferred_GetMaxNumCoefIDs(unsigned* count) override;
    bool Control_Deferred_ListAllCoefIDs(int* ids, unsigned* count) override;
    bool Control_Deferred_Set(int id, float value) override;
    bool Control_Deferred_Update(int* ids, unsigned* count) override;
    bool Control_Parameter_Set(int id, float value) override;
    bool Control_Parameter_Get(int id, float* value) override;
    bool Control_ParametersArray_Get(const int* ids, float* values, unsigned count) override;
    bool Control_Parameter_IDs_Get(const int** ids, int* count) override;
    bool Meters_GetBufferSize(unsigned* count) override;
    bool Meters_GetBuffer(void* data, unsigned* size) override;
    bool Meters_SetBuffer(const void* data, unsigned size) override;
    bool Meters_Readout(float* values, int* flags, unsigned count) override;
    bool Revision_Get(const char** text, unsigned* size) override;
    bool GetMessageMaxSize(unsigned* first, unsigned* second) override;
    bool Message(const void* in, unsigned inSize, void* out, unsigned* outSize) override;

    /// The library's entry points, in the order they are looked up at load.
    enum EntryPoint : size_t {
        kScenarioGetScenarioSize,
        kGetEffectSize,
        kInitialize,
        kGetEffectSizeFromScenario,
        kInitializeFromScenario,
        kRpcSetRequestTx,
        kRpcSetResponseTx,
        kRpcGetSelfRx,
        kRpcRegisterCbCommand,
        kRpcRegisterCbGetCoefficient,
        kRpcRegisterCbGetMeters,
        kRpcRegisterCbGetParametersArray,
        kRpcRegisterCbGetRevision,
        kProcess,
        kReset,
        kControlCoefficientGetBufferMaxSize,
        kControlCoefficientSet,
        kControlCoefficientGet,
        kControlDeferredGetMaxNumCoefIDs,
        kControlDeferredListAllCoefIDs,
        kControlDeferredSet,
        kControlDeferredUpdate,
        kControlParameterSet,
        kControlParameterGet,
        kControlParametersArrayGet,
        kControlParameterIDsGet,
        kMetersGetBufferSize,
        kMetersGetBuffer,
        kMetersSetBuffer,
        kMetersReadout,
        kRevisionGet,
        kGetMessageMaxSize,
        kMessage,
        kScenarioInitialize,
        kEntryPointCount
    };

  private:
    explicit ZorbEffectWrapper(std::shared_ptr<const LibraryLoader> loader);
    char* Effect() { return m_effect.get(); }
    /// Allocates the effect buffer of the size the library asks for, replacing any earlier
    /// one; on failure the buffer is freed.
    bool PrepareEffectBuffer();
    /// Takes the addresses of the entry points from the loader, null for those it lacks.
    void FindEntryPoints();
    /// Calls the entry point; one that the library lacks is logged as not found.
    template <EntryPoint entry, typename Function, typename... Args>
    bool Call(Args... args);

    // Declared first so that it is released last: the library outlives the effect buffer.
    std::shared_ptr<const LibraryLoader> m_loader;
    std::unique_ptr<char[]> m_effect;
    bool m_initialized = false;
    /// Resolved once when the wrapper is made; a call indexes it without a lookup.
    std::array<void*, kEntryPointCount> m_entryPoints{};
};

}  // namespace TesselFX
