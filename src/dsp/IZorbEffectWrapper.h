#pragma once

#include "dsp/ZorbEffectTypes.h"

namespace TesselFX {

/// The closed algorithm library, loaded at run time, as virtual operations. Each operation
/// calls the entry point of its name (prefix ZorbEffect_ or ZorbScenario_ removed) and
/// supplies the effect buffer where the entry point takes one; it gives true when the entry
/// point was found and returned 0. Not thread safe: callers serialise all use.
class IZorbEffectWrapper {
  public:
    virtual ~IZorbEffectWrapper() = default;

    /// The four characters before the second blank of the revision text, as a
    /// little-endian u32.
    virtual bool GetRevisionCode(unsigned* code) = 0;
    virtual bool GetEffectSize(unsigned* size) = 0;
    virtual bool IsInitialized() = 0;
    /// Allocates the effect buffer and initialises the effect for one stream format.
    virtual bool Initialize(unsigned sampleRate, unsigned channels, unsigned sampleSize) = 0;
    virtual bool Initialize(ZorbStreamFormat_t* const* in, unsigned inCount,
                            ZorbStreamFormat_t* const* out, unsigned outCount) = 0;
    virtual bool GetScenarioSize(unsigned* size) = 0;
    /// The library's scenario initialisation; never resolved, so it always fails.
    virtual bool Initialize(void* scenario) = 0;
    virtual bool GetEffectSizeFromScenario(void* scenario, unsigned* size) = 0;
    virtual bool InitializeFromScenario(void* scenario, ZorbStreamFormat_t* const* in,
                                        unsigned inCount, ZorbStreamFormat_t* const* out,
                                        unsigned outCount) = 0;
    virtual bool RPC_SetRequestTx(void* first, void* second) = 0;
    virtual bool RPC_SetResponseTx(void* first, void* second) = 0;
    virtual bool RPC_GetSelfRx(void* rx) = 0;
    virtual bool RPC_Register_cb_Command(void* rpc, ZorbRpcCallback callback, void* context) = 0;
    virtual bool RPC_Register_cb_GetCoefficient(void* rpc, ZorbRpcCallback callback,
                                                void* context) = 0;
    virtual bool RPC_Register_cb_GetMeters(void* rpc, ZorbRpcCallback callback, void* context) = 0;
    virtual bool RPC_Register_cb_GetParametersArray(void* rpc, ZorbRpcCallback callback,
                                                    void* context) = 0;
    virtual bool RPC_Register_cb_GetRevision(void* rpc, ZorbRpcCallback callback,
                                             void* context) = 0;
    virtual bool Process(ZorbStream_t* const* in, ZorbStream_t* const* out) = 0;
    virtual bool Reset() = 0;
    virtual bool Control_Coefficient_GetBufferMaxSize(unsigned* size) = 0;
    virtual bool Control_Coefficient_Set(const void* data, unsigned size, unsigned* used) = 0;
    virtual bool Control_Coefficient_Get(int id, void* data, unsigned* size) = 0;
    virtual bool Control_Deferred_GetMaxNumCoefIDs(unsigned* count) = 0;
    virtual bool Control_Deferred_ListAllCoefIDs(int* ids, unsigned* count) = 0;
    virtual bool Control_Deferred_Set(int id, float value) = 0;
    virtual bool Control_Deferred_Update(int* ids, unsigned* count) = 0;
    virtual bool Control_Parameter_Set(int id, float value) = 0;
    virtual bool Control_Parameter_Get(int id, float* value) = 0;
    virtual bool Control_ParametersArray_Get(const int* ids, float* values, unsigned count) = 0;
    virtual bool Control_Parameter_IDs_Get(const int** ids, int* count) = 0;
    /// Despite its name the answer is the number of meters.
    virtual bool Meters_GetBufferSize(unsigned* count) = 0;
    virtual bool Meters_GetBuffer(void* data, unsigned* size) = 0;
    virtual bool Meters_SetBuffer(const void* data, unsigned size) = 0;
    virtual bool Meters_Readout(float* values, int* flags, unsigned count) = 0;
    /// text points into the library; size is its length (no terminator counted).
    virtual bool Revision_Get(const char** text, unsigned* size) = 0;
    virtual bool GetMessageMaxSize(unsigned* first, unsigned* second) = 0;
    virtual bool Message(const void* in, unsigned inSize, void* out, unsigned* outSize) = 0;
};

}  // namespace TesselFX
