#pragma once

// Entry points of the stand-in DSP algorithm library libDspKit_HiFi3z.so. Every function
// returns 0 on success and a negative number on failure. The effect model is described in
// README.md beside this file.

#include <stdint.h>

#define DSPKIT_API __attribute__((visibility("default")))

#ifdef __cplusplus
extern "C" {
#endif

/// One stream description: sample rate, channels, format code 3, 0, sample size in bytes.
/// (The guard lets a host header declare the same C type.)
#ifndef ZORB_STREAM_FORMAT_T_DEFINED
#define ZORB_STREAM_FORMAT_T_DEFINED
typedef struct ZorbStreamFormat_t {
    uint32_t sampleRate;
    uint32_t channels;
    uint32_t formatCode;
    uint32_t reserved;
    uint32_t sampleSize;
} ZorbStreamFormat_t;
#endif

/// Interleaved float audio of the channel count the effect was initialised with.
typedef struct ZorbStream_t {
    float* samples;
    uint32_t frames;
} ZorbStream_t;

typedef int (*ZorbRpcCallback_t)(void* context, unsigned* data, unsigned size);

DSPKIT_API int ZorbEffect_GetEffectSize(unsigned* size);
DSPKIT_API int ZorbEffect_Initialize(char* effect, ZorbStreamFormat_t* const* in, unsigned inCount,
                                     ZorbStreamFormat_t* const* out, unsigned outCount);
DSPKIT_API int ZorbScenario_GetScenarioSize(unsigned* size);
DSPKIT_API int ZorbScenario_Initialize(void* scenario);
DSPKIT_API int ZorbEffect_GetEffectSizeFromScenario(void* scenario, unsigned* size);
DSPKIT_API int ZorbEffect_InitializeFromScenario(char* effect, void* scenario,
                                                 ZorbStreamFormat_t* const* in, unsigned inCount,
                                                 ZorbStreamFormat_t* const* out, unsigned outCount);
DSPKIT_API int ZorbEffect_RPC_SetRequestTx(void* rpc, void* tx);
DSPKIT_API int ZorbEffect_RPC_SetResponseTx(void* rpc, void* tx);
DSPKIT_API int ZorbEffect_RPC_GetSelfRx(void* rx);
DSPKIT_API int ZorbEffect_RPC_Register_cb_Command(void* rpc, ZorbRpcCallback_t callback,
                                                  void* context);
DSPKIT_API int ZorbEffect_RPC_Register_cb_GetCoefficient(void* rpc, ZorbRpcCallback_t callback,
                                                         void* context);
DSPKIT_API int ZorbEffect_RPC_Register_cb_GetMeters(void* rpc, ZorbRpcCallback_t callback,
                                                    void* context);
DSPKIT_API int ZorbEffect_RPC_Register_cb_GetParametersArray(void* rpc, ZorbRpcCallback_t callback,
                                                             void* context);
DSPKIT_API int ZorbEffect_RPC_Register_cb_GetRevision(void* rpc, ZorbRpcCallback_t callback,
                                                      void* context);
DSPKIT_API int ZorbEffect_Process(char* effect, ZorbStream_t* const* in, ZorbStream_t* const* out);
DSPKIT_API int ZorbEffect_Reset(char* effect);
DSPKIT_API int ZorbEffect_Control_Coefficient_GetBufferMaxSize(char* effect, unsigned* size);
DSPKIT_API int ZorbEffect_Control_Coefficient_Set(char* effect, const void* data, unsigned size,
                                                  unsigned* used);
DSPKIT_API int ZorbEffect_Control_Coefficient_Get(char* effect, int id, void* data, unsigned* size);
DSPKIT_API int ZorbEffect_Control_Deferred_GetMaxNumCoefIDs(char* effect, unsigned* count);
DSPKIT_API int ZorbEffect_Control_Deferred_ListAllCoefIDs(char* effect, int* ids, unsigned* count);
DSPKIT_API int ZorbEffect_Control_Deferred_Set(char* effect, int id, float value);
DSPKIT_API int ZorbEffect_Control_Deferred_Update(char* effect, int* ids, unsigned* count);
DSPKIT_API int ZorbEffect_Control_Parameter_Set(char* effect, int id, float value);
DSPKIT_API int ZorbEffect_Control_Parameter_Get(char* effect, int id, float* value);
DSPKIT_API int ZorbEffect_Control_ParametersArray_Get(char* effect, const int* ids, float* values,
                                                      unsigned count);
DSPKIT_API int ZorbEffect_Control_Parameter_IDs_Get(char* effect, const int** ids, int* count);
DSPKIT_API int ZorbEffect_Meters_GetBufferSize(char* effect, unsigned* count);
DSPKIT_API int ZorbEffect_Meters_GetBuffer(char* effect, void* data, unsigned* size);
DSPKIT_API int ZorbEffect_Meters_SetBuffer(char* effect, const void* data, unsigned size);
DSPKIT_API int ZorbEffect_Meters_Readout(char* effect, float* values, int* flags, unsigned count);
DSPKIT_API int ZorbEffect_Revision_Get(char* effect, const char** text, unsigned* size);
DSPKIT_API int ZorbEffect_GetMessageMaxSize(char* effect, unsigned* inSize, unsigned* outSize);
DSPKIT_API int ZorbEffect_Message(char* effect, const void* in, unsigned inSize, void* out,
                                  unsigned* outSize);

/// Not an entry point of the real library: replaces the list of entry points that fail with
/// -77 (comma-separated names; null or empty for none). Thread safe.
DSPKIT_API void DspKitSim_SetFailures(const char* names);

#ifdef __cplusplus
}
#endif
