#pragma once

#include <gmock/gmock.h>

#include "dsp/IZorbEffectWrapper.h"

namespace TesselFX {
namespace test {

class MockZorbEffectWrapper : public IZorbEffectWrapper {
  public:
    MOCK_METHOD(bool, GetRevisionCode, (unsigned*), (override));
    MOCK_METHOD(bool, GetEffectSize, (unsigned*), (override));
    MOCK_METHOD(bool, IsInitialized, (), (override));
    MOCK_METHOD(bool, Initialize, (unsigned, unsigned, unsigned), (override));
    MOCK_METHOD(bool, Initialize,
                (ZorbStreamFormat_t* const*, unsigned, ZorbStreamFormat_t* const*, unsigned),
                (override));
    MOCK_METHOD(bool, GetScenarioSize, (unsigned*), (override));
    MOCK_METHOD(bool, Initialize, (void*), (override));
    MOCK_METHOD(bool, GetEffectSizeFromScenario, (void*, unsigned*), (override));
    MOCK_METHOD(bool, InitializeFromScenario,
                (void*, ZorbStreamFormat_t* const*, unsigned, ZorbStreamFormat_t* const*, unsigned),
                (override));
    MOCK_METHOD(bool, RPC_SetRequestTx, (void*, void*), (override));
    MOCK_METHOD(bool, RPC_SetResponseTx, (void*, void*), (override));
    MOCK_METHOD(bool, RPC_GetSelfRx, (void*), (override));
    MOCK_METHOD(bool, RPC_Register_cb_Command, (void*, ZorbRpcCallback, void*), (override));
    MOCK_METHOD(bool, RPC_Register_cb_GetCoefficient, (void*, ZorbRpcCallback, void*), (override));
    MOCK_METHOD(bool, RPC_Register_cb_GetMeters, (void*, ZorbRpcCallback, void*), (override));
    MOCK_METHOD(bool, RPC_Register_cb_GetParametersArray, (void*, ZorbRpcCallback, void*),
                (override));
    MOCK_METHOD(bool, RPC_Register_cb_GetRevision, (void*, ZorbRpcCallback, void*), (override));
    MOCK_METHOD(bool, Process, (ZorbStream_t* const*, ZorbStream_t* const*), (override));
    MOCK_METHOD(bool, Reset, (), (override));
    MOCK_METHOD(bool, Control_Coefficient_GetBufferMaxSize, (unsigned*), (override));
    MOCK_METHOD(bool, Control_Coefficient_Set, (const void*, unsigned, unsigned*), (override));
    MOCK_METHOD(bool, Control_Coefficient_Get, (int, void*, unsigned*), (override));
    MOCK_METHOD(bool, Control_Deferred_GetMaxNumCoefIDs, (unsigned*), (override));
    MOCK_METHOD(bool, Control_Deferred_ListAllCoefIDs, (int*, unsigned*), (override));
    MOCK_METHOD(bool, Control_Deferred_Set, (int, float), (override));
    MOCK_METHOD(bool, Control_Deferred_Update, (int*, unsigned*), (override));
    MOCK_METHOD(bool, Control_Parameter_Set, (int, float), (override));
    MOCK_METHOD(bool, Control_Parameter_Get, (int, float*), (override));
    MOCK_METHOD(bool, Control_ParametersArray_Get, (const int*, float*, unsigned), (override));
    MOCK_METHOD(bool, Control_Parameter_IDs_Get, (const int**, int*), (override));
    MOCK_METHOD(bool, Meters_GetBufferSize, (unsigned*), (override));
    MOCK_METHOD(bool, Meters_GetBuffer, (void*, unsigned*), (override));
    MOCK_METHOD(bool, Meters_SetBuffer, (const void*, unsigned), (override));
    MOCK_METHOD(bool, Meters_Readout, (float*, int*, unsigned), (override));
    MOCK_METHOD(bool, Revision_Get, (const char**, unsigned*), (override));
    MOCK_METHOD(bool, GetMessageMaxSize, (unsigned*, unsigned*), (override));
    MOCK_METHOD(bool, Message, (const void*, unsigned, void*, unsigned*), (override));
};

}  // namespace test
}  // namespace TesselFX
