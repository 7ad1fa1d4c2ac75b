// DSP replies and send results through an initialised handle, driven by zb_* calls. The
// buffer_sender answers every send from the input: its result, and for a request that wants a
// reply the reply's bytes and the size it reports. The rest of the input picks the calls.
#include <dlfcn.h>
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "FuzzLogSink.h"
#include "ThreeModeFiles.h"
#include "zbhalcontroller/zb_api.h"

using namespace bringup_test;

namespace {

std::string g_systemPath;
std::string g_configPath;

/// Answers a send from the input: result 0 or not, and for a request with a reply, up to the
/// room of reply bytes and a reported size that may differ from what was written.
int FuzzedSender(void*, uint32_t, const void*, uint32_t, void* reply, uint32_t* replySize,
                 void* context) {
    FuzzedDataProvider& input = *static_cast<FuzzedDataProvider*>(context);
    if (reply != nullptr && replySize != nullptr) {
        const uint32_t room = *replySize;
        const std::vector<char> bytes =
            input.ConsumeBytes<char>(input.ConsumeIntegralInRange<uint32_t>(0, room));
        if (!bytes.empty()) std::memcpy(reply, bytes.data(), bytes.size());
        *replySize = input.ConsumeBool() ? static_cast<uint32_t>(bytes.size())
                                         : input.ConsumeIntegralInRange<uint32_t>(0, room);
    }
    return input.ConsumeBool() ? 0 : -1;
}

void Call(void* handle, FuzzedDataProvider& input) {
    const uint32_t instance = input.ConsumeIntegralInRange<uint32_t>(0, 2);
    switch (input.ConsumeIntegralInRange<int>(0, 10)) {
        case 0:
        case 1: {
            static const char* const kTypes[] = {"dsp", "dspkit", "halcontroller", "other"};
            char version[64];
            zb_get_version(handle, instance, kTypes[input.ConsumeIntegralInRange<int>(0, 3)],
                           version, input.ConsumeIntegralInRange<uint32_t>(0, sizeof(version)));
            break;
        }
        case 2:
            zb_set_active(handle, instance, input.ConsumeIntegralInRange<uint32_t>(0, 3),
                          input.ConsumeIntegralInRange<uint32_t>(0, 3));
            break;
        case 3:
            zb_set_volume(handle, instance, input.ConsumeFloatingPoint<double>());
            break;
        case 4:
            zb_set_parameter(handle, instance, input.ConsumeIntegralInRange<uint32_t>(0, 3000),
                             input.ConsumeFloatingPoint<double>());
            break;
        case 5:
            zb_on_dsp_wakeup(handle, instance);
            break;
        case 6:
            zb_set_enable(handle, instance, input.ConsumeIntegral<int>());
            zb_set_bypass(handle, instance, input.ConsumeIntegral<int>());
            break;
        case 7:
            zb_wait_for_flush(handle, instance);
            break;
        case 8:
            zb_flush(handle, instance);
            break;
        case 9:
            zb_set_orientation(handle, instance, input.ConsumeIntegralInRange<int>(-90, 360));
            break;
        case 10:
            zb_set_linklaws_value(handle, instance, input.ConsumeIntegralInRange<uint32_t>(0, 5),
                                  input.ConsumeFloatingPoint<double>(),
                                  input.ConsumeFloatingPoint<double>());
            break;
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    TesselFX::fuzz::FuzzLogSink::Install();
    static TempDir dir;
    g_systemPath = dir.Write("system.zps", ThreeModePresets());
    g_configPath = dir.Write("hal.ini", ThreeModeConfig());
    // Keeps the stand-in library loaded between inputs.
    dlopen(DSPKIT_SIM_PATH, RTLD_NOW);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider input(data, size);
    void* handle = nullptr;
    zb_create(&handle, &input);
    if (zb_initialize(handle, g_systemPath.c_str(), "", g_configPath.c_str(), FuzzedSender) != 1) {
        std::abort();
    }
    for (int calls = 0; calls < 64 && input.remaining_bytes() > 0; ++calls) Call(handle, input);
    zb_destroy(&handle);
    return 0;
}
