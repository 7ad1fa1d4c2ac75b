// DSP replies to the get-meters and get-version requests, read by the reply parser with the
// stand-in algorithm library behind it. The input's first bytes choose up to eight meters
// (index, type, mode); the rest is the reply.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "FuzzLogSink.h"
#include "dsp/Hifi3ReplyBufferParser.h"
#include "dsp/ZorbEffectWrapper.h"

using namespace TesselFX;

namespace {

std::shared_ptr<IZorbEffectWrapper> g_zorbEffect;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    fuzz::FuzzLogSink::Install();
    g_zorbEffect = ZorbEffectWrapper::Create(DSPKIT_SIM_PATH, ZorbEffectWrapper::kHelperLoadFlags);
    if (!g_zorbEffect || !g_zorbEffect->Initialize(48000, 2, 0)) std::abort();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider input(data, size);
    std::map<uint32_t, CMeterInfo> infos;
    const uint8_t count = input.ConsumeIntegralInRange<uint8_t>(0, 8);
    for (uint8_t i = 0; i < count; ++i) {
        const uint32_t index = input.ConsumeIntegral<uint8_t>();
        const uint32_t type = input.ConsumeIntegralInRange<uint32_t>(0, 3);
        const uint32_t mode = input.ConsumeIntegralInRange<uint32_t>(0, 3);
        infos[i] = CMeterInfo(index, type, mode);
    }
    const std::vector<char> reply = input.ConsumeRemainingBytes<char>();

    Hifi3ReplyBufferParser parser(g_zorbEffect);
    std::map<uint32_t, CMeterValue> values;
    parser.ParseReplyMetersBuffer(reply, infos, values);
    std::string version;
    parser.ParseReplyVersionBuffer(reply, version);
    return 0;
}
