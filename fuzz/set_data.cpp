// zb_set_data on an initialised handle with a notifier: every fixed data id (0 to 12), ids
// beyond them and below 0, and custom actions, defined or not, with fuzzed payloads. Each call
// takes from the input an id, an instance, whether the payload pointer is null, a size (the
// one its id expects, a multiple of four, or any up to the buffer's 64 bytes) and the bytes.
#include <dlfcn.h>
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string>
#include <vector>

#include "FuzzLogSink.h"
#include "ThreeModeFiles.h"
#include "zbhalcontroller/zb_api.h"

using namespace bringup_test;

namespace {

std::string g_systemPath;
std::string g_configPath;

/// The ids a call chooses from, with the size each expects; the last entry takes any id.
struct DataId {
    int32_t id;
    uint32_t size;
};
const DataId kIds[] = {{0, 8},    {1, 4},   {2, 8},   {3, 4},          {4, 4},
                       {5, 1},    {6, 1},   {7, 16},  {8, 8},          {9, 24},
                       {10, 0},   {11, 0},  {12, 0},  {13, 4},         {255, 4},
                       {-1, 4},   {256, 4}, {300, 8}, {301, 12},       {302, 4},
                       {1000, 4}, {0, 0}};

int QuietSender(void*, uint32_t, const void*, uint32_t, void*, uint32_t*, void*) { return 0; }

int ReadingNotifier(void*, const void* data, uint32_t size, void*) {
    // Reads every byte it was given, so that a short or dangling text shows under ASan.
    unsigned sum = 0;
    for (uint32_t i = 0; i < size; ++i) sum += static_cast<const unsigned char*>(data)[i];
    return sum == 0xFFFFFFFFu ? -1 : 0;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    TesselFX::fuzz::FuzzLogSink::Install();
    static TempDir dir;
    g_systemPath = dir.Write("system.zps", ThreeModePresets());
    // Three actions: rules by numbers and priority, one with a rule that matches anything,
    // and one whose only rule names no preset (dropped, so nothing ever matches).
    g_configPath = dir.Write("hal.ini", ThreeModeConfig("[CUSTOM_ACTION_300]\n"
                                                        "movie=PRIORITY:1,NUMBERS:7|8:1,PRESET:Movie\n"
                                                        "laws=PRIORITY:2,NUMBERS:7,PRESET:Laws\n"
                                                        "music=PRIORITY:3,PRESET:Music\n"
                                                        "[CUSTOM_ACTION_301]\n"
                                                        "any=PRIORITY:0,NUMBERS:1|2|3:4:5,PRESET:Laws\n"
                                                        "[CUSTOM_ACTION_302]\n"
                                                        "none=PRIORITY:1,PRESET:Nowhere\n"));
    // Keeps the stand-in library loaded between inputs.
    dlopen(DSPKIT_SIM_PATH, RTLD_NOW);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider input(data, size);
    void* handle = nullptr;
    zb_create(&handle, nullptr);
    if (zb_initialize(handle, g_systemPath.c_str(), "", g_configPath.c_str(), QuietSender) != 1) {
        std::abort();
    }
    zb_register_notifier(handle, 1, ReadingNotifier);
    for (int calls = 0; calls < 64 && input.remaining_bytes() > 0; ++calls) {
        const size_t choice = input.ConsumeIntegralInRange<size_t>(0, std::size(kIds) - 1);
        const int32_t id =
            choice + 1 < std::size(kIds) ? kIds[choice].id : input.ConsumeIntegral<int32_t>();
        const uint32_t instance = input.ConsumeIntegralInRange<uint32_t>(0, 3);
        const bool null = input.ConsumeIntegralInRange<int>(0, 15) == 0;
        alignas(double) unsigned char payload[64] = {};
        uint32_t length = kIds[choice].size;
        switch (input.ConsumeIntegralInRange<int>(0, 3)) {
            case 0:
                length = 4 * input.ConsumeIntegralInRange<uint32_t>(0, sizeof(payload) / 4);
                break;
            case 1:
                length = input.ConsumeIntegralInRange<uint32_t>(0, sizeof(payload));
                break;
            default:
                break;
        }
        const std::vector<uint8_t> bytes = input.ConsumeBytes<uint8_t>(length);
        if (!bytes.empty()) std::memcpy(payload, bytes.data(), bytes.size());
        zb_set_data(handle, instance, id, null ? nullptr : payload, length);
    }
    zb_destroy(&handle);
    return 0;
}
