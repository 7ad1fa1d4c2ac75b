// Tuning commands through zb_set_command and zb_get_command on an initialised handle with a
// notifier. The input is a sequence of commands, each a flags byte, a u16 length and that many
// bytes: bit 0 of the flags makes it a zb_get_command, bit 1 passes the bytes as text as they
// are (else they are a frame and are base64-coded first), bits 2 and 3 pick the instance
// (0 to 3), and bits 4 to 7 the reply room (16 << n bytes). Pieces of a long transfer, tuning
// mode and every message id are reached by consecutive commands.
#include <dlfcn.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "BringupFiles.h"
#include "FuzzLogSink.h"
#include "zbhalcontroller/zb_api.h"

using namespace bringup_test;

namespace {

std::string g_systemPath;
std::string g_configPath;

/// Version and meter answers of a DSP that knows four meters.
int AnsweringSender(void*, uint32_t, const void* data, uint32_t size, void* reply,
                    uint32_t* replySize, void*) {
    if (reply == nullptr || replySize == nullptr || size < 4) return 0;
    uint32_t opcode = 0;
    std::memcpy(&opcode, data, sizeof(opcode));
    std::string answer;
    if (opcode == 5) {
        PutU32(answer, 6);
        PutU32(answer, 4);
        answer += "fuzz";
    } else {
        PutU32(answer, 3);
        PutU32(answer, 36);
        PutU32(answer, 4);
        for (uint32_t i = 0; i < 4; ++i) {
            PutF32(answer, 0.5f * i);
            PutU32(answer, i & 1);
        }
    }
    if (*replySize < answer.size()) return -1;
    std::memcpy(reply, answer.data(), answer.size());
    *replySize = static_cast<uint32_t>(answer.size());
    return 0;
}

int CountingNotifier(void*, const void* data, uint32_t size, void*) {
    // Reads every byte it was given, so that a short or dangling text shows under ASan.
    unsigned sum = 0;
    for (uint32_t i = 0; i < size; ++i) sum += static_cast<const unsigned char*>(data)[i];
    return sum == 0xFFFFFFFFu ? -1 : 0;
}

std::string Base64(const uint8_t* data, size_t size) {
    static const char kAlphabet[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (size_t i = 0; i < size; i += 3) {
        const uint32_t group = data[i] << 16 | (i + 1 < size ? data[i + 1] << 8 : 0) |
                               (i + 2 < size ? data[i + 2] : 0);
        text += kAlphabet[group >> 18 & 63];
        text += kAlphabet[group >> 12 & 63];
        text += i + 1 < size ? kAlphabet[group >> 6 & 63] : '=';
        text += i + 2 < size ? kAlphabet[group & 63] : '=';
    }
    return text;
}

std::string PresetsWithLaws() {
    PresetRecord music;
    music.outputMode = 1;
    music.soundMode = 1;
    music.parameters = {{1, 0.0}, {1006, 1.0}, {2821, 1.0}};
    music.chunks[1] = LinkLaw(0, 1006, {{0.0f, 0.0f}, {1000.0f, 10.0f}});
    PresetRecord quiet = music;
    quiet.subtypeMask = 1;
    quiet.priority = 1;
    quiet.parameters = {{1022, 2.0}};
    quiet.chunks.clear();
    PresetRecord movie;
    movie.outputMode = 1;
    movie.soundMode = 2;
    movie.parameters = {{1, 0.0}, {1054, 9.0}};
    return PresetFile({music, quiet, movie});
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    TesselFX::fuzz::FuzzLogSink::Install();
    static TempDir dir;
    g_systemPath = dir.Write("system.zps", PresetsWithLaws());
    g_configPath =
        dir.Write("hal.ini",
                  "[HAL_SUPPORTED_SAMPLE_RATES]\nrates=48000\n"
                  "[HAL_VOLUME_SUBTYPES]\nmusicVol=-20:1,0:NULL\n"
                  "[HAL_SUPPORTED_PRESETS]\nMusic=OM:1,SM:1,VST:musicVol\nMovie=OM:1,SM:2\n"
                  "[HAL_SUPPORTED_CONTROLS]\nSpeaker=DEV:2,SR:rates,PRESET:Music|Movie,INSTANCE:1\n"
                  "Phone=DEV:4,SR:rates,PRESET:Movie,INSTANCE:2\n"
                  "[COEFS_CONVERTER_SETTING]\nDspKitPath64=" DSPKIT_SIM_PATH "\n");
    // Keeps the stand-in library loaded between inputs.
    dlopen(DSPKIT_SIM_PATH, RTLD_NOW);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    void* handle = nullptr;
    zb_create(&handle, nullptr);
    if (zb_initialize(handle, g_systemPath.c_str(), "", g_configPath.c_str(), AnsweringSender) !=
        1) {
        std::abort();
    }
    zb_register_notifier(handle, 1, CountingNotifier);
    zb_set_active(handle, 1, 1, 1);
    size_t at = 0;
    while (at + 3 <= size) {
        const uint8_t flags = data[at];
        const size_t length = std::min<size_t>(data[at + 1] | data[at + 2] << 8, size - at - 3);
        const uint8_t* bytes = data + at + 3;
        at += 3 + length;
        std::string text = (flags & 2) != 0
                               ? std::string(reinterpret_cast<const char*>(bytes), length)
                               : Base64(bytes, length);
        const uint32_t instance = flags >> 2 & 3;
        if ((flags & 1) != 0) {
            std::vector<char> reply(16u << (flags >> 4));
            zb_get_command(handle, instance, text.c_str(), reply.data(),
                           static_cast<uint32_t>(reply.size()));
        } else {
            zb_set_command(handle, instance, &text[0]);
        }
    }
    zb_destroy(&handle);
    return 0;
}
