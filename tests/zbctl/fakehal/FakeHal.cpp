// A stand-in for libzbhalcontroller.so with the same 22 exported functions, for testing the
// host side of zbctl run: zb_set_volume sends the output gain block, zb_set_bypass the block
// of parameter 1 and a notification, zb_get_version "dsp" asks the DSP. zb_initialize fails
// when the system preset file does not open or the configuration's last DspKitPath64 is not an
// absolute path. Tuning texts are answered from a few fixed ones: GetParameter 131 with
// ReplyParameter 131 -3.5; GetEnable with UpdateEnable 1 cut into two pieces of session 7;
// StartTuningMode 1 with the same two pieces as notifications in the envelope.
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "../DspFrames.h"
#include "zbhalcontroller/zb_api.h"

namespace {

struct Fake {
    void* context = nullptr;
    buffer_sender sender = nullptr;
    notifier notify = nullptr;
} g_fake;

int SendBlock(void* handle, uint32_t instance, uint32_t id, const std::vector<float>& values) {
    const std::vector<unsigned char> frame =
        TesselFX::zbctl::test::Frame({TesselFX::zbctl::test::Block(id, values)});
    return g_fake.sender(handle, instance, frame.data(), static_cast<uint32_t>(frame.size()),
                         nullptr, nullptr, g_fake.context) == 0;
}

// UpdateEnable 1 (28 00 00 00 01 00 00 00) in pieces of 4 bytes, session 7.
constexpr const char* kEnablePiece0 = "NAAAAAAAAAACAAAABwAAAAQAAAAoAAAA";
constexpr const char* kEnablePiece1 = "NAAAAAEAAAACAAAABwAAAAQAAAABAAAA";

// The reply to a known command text, or nullptr.
const char* TuningReply(const std::string& command) {
    if (command == "CgAAAIMAAAA=") return "AgAAAIMAAAAAAAAAAAAMwA==";  // GetParameter 131
    if (command == "JwAAAAAAAAA=") return kEnablePiece0;               // GetEnable 0
    if (command == "NQAAAAEAAAACAAAABwAAAA==") return kEnablePiece1;   // RequestMultiple 1 2 7
    return nullptr;
}

}  // namespace

extern "C" {

int zb_create(void** handle, void* context) {
    *handle = &g_fake;
    g_fake.context = context;
    return 1;
}
void zb_destroy(void**) {}
int zb_initialize(void*, const char* systemPresetPath, const char*, const char* configPath,
                  buffer_sender sender) {
    std::ifstream file(configPath);
    std::stringstream text;
    text << file.rdbuf();
    g_fake.sender = sender;
    const size_t key = text.str().rfind("\nDspKitPath64=");
    const bool dspKit =
        key != std::string::npos && text.str().compare(key, 15, "\nDspKitPath64=/") == 0;
    return dspKit && std::ifstream(systemPresetPath).good() ? 1 : 0;
}
int zb_set_enable(void*, uint32_t, int) { return 1; }
int zb_set_bypass(void* handle, uint32_t instance, int bypass) {
    const int sent =
        SendBlock(handle, instance, 4096,
                  TesselFX::zbctl::test::PassThroughSwitch((bypass & 1) ? 1.0f : 0.0f));
    const std::string text = "bypass=" + std::to_string(bypass & 1);
    // With its terminator, which the host leaves out of what it shows.
    if (g_fake.notify)
        g_fake.notify(handle, text.c_str(), static_cast<uint32_t>(text.size() + 1), g_fake.context);
    return sent;
}
int zb_set_active(void*, uint32_t, uint32_t, uint32_t) { return 1; }
int zb_set_sound_mode(void*, uint32_t, uint32_t) { return 1; }
int zb_set_output_mode(void*, uint32_t, uint32_t) { return 0; }
int zb_set_volume(void* handle, uint32_t instance, double volume) {
    return SendBlock(handle, instance, 10, {static_cast<float>(volume)});
}
int zb_set_orientation(void*, uint32_t, int) { return 1; }
int zb_set_parameter(void*, uint32_t, uint32_t, double) { return 1; }
int zb_set_parameters_array(void*, uint32_t, uint32_t, const uint32_t*, const double*) { return 1; }
int zb_set_command(void* handle, uint32_t instance, char* command) {
    if (std::strcmp(command, "LwAAAAEAAAA=") != 0 || !g_fake.notify) return 1;  // tuning on
    for (const char* piece : {kEnablePiece0, kEnablePiece1}) {
        const std::string text =
            "dsp_instance=" + std::to_string(instance) + ";tessel_data=" + piece;
        g_fake.notify(handle, text.c_str(), static_cast<uint32_t>(text.size()), g_fake.context);
    }
    return 1;
}
int zb_get_command(void*, uint32_t, const char* command, char* reply, uint32_t size) {
    const char* text = TuningReply(command);
    if (text == nullptr || std::strlen(text) >= size) return 0;
    std::strcpy(reply, text);
    return 1;
}
int zb_set_linklaws_value(void*, uint32_t, uint32_t, double, double) { return 1; }
int zb_wait_for_flush(void*, uint32_t) { return 1; }
int zb_flush(void*, uint32_t) { return 1; }
int zb_register_notifier(void*, uint32_t, notifier callback) {
    g_fake.notify = callback;
    return 1;
}
int zb_set_data(void*, uint32_t, int32_t, void*, uint32_t) { return 1; }
int zb_get_version(void* handle, uint32_t instance, const char* type, char* version,
                   uint32_t size) {
    if (std::strcmp(type, "dsp") != 0) return 0;
    const unsigned char request[4] = {5, 0, 0, 0};
    std::vector<unsigned char> reply(16000);
    uint32_t replySize = static_cast<uint32_t>(reply.size());
    if (g_fake.sender(handle, instance, request, 4, reply.data(), &replySize, g_fake.context) != 0)
        return 0;
    const uint32_t length = replySize - 8;
    if (length >= size) return 0;
    std::memcpy(version, reply.data() + 8, length);
    version[length] = '\0';
    return 1;
}
int zb_on_dsp_wakeup(void*, uint32_t) { return 1; }
int zb_is_feature_supported(void*, const char* feature) {
    return std::strcmp(feature, "HeadTracking") == 0;
}

}  // extern "C"
