#include "StressWorkload.h"

#include <dlfcn.h>

#include <cstdio>
#include <cstring>

#include "DspKitSim.h"
#include "ThreeModeFiles.h"
#include "ToolFrames.h"
#include "zbhalcontroller/zb_api.h"

namespace stress_test {

using namespace bringup_test;

namespace {

constexpr int kCustomAction = 300;

/// An entry point of the stand-in DSP library (loaded once, never unloaded); aborts when missing.
template <typename Function>
Function Entry(const char* name) {
    static void* const library = dlopen(DSPKIT_SIM_PATH, RTLD_NOW);
    void* found = library == nullptr ? nullptr : dlsym(library, name);
    if (found == nullptr) {
        std::fprintf(stderr, "cannot load %s from %s: %s\n", name, DSPKIT_SIM_PATH, dlerror());
        std::abort();
    }
    return reinterpret_cast<Function>(found);
}

/// The entry points of the stand-in DSP library that a DSP end uses.
struct DspKit {
    decltype(&ZorbEffect_GetEffectSize) getEffectSize =
        Entry<decltype(getEffectSize)>("ZorbEffect_GetEffectSize");
    decltype(&ZorbEffect_Initialize) initialize =
        Entry<decltype(initialize)>("ZorbEffect_Initialize");
    decltype(&ZorbEffect_Control_Coefficient_Set) coefficientSet =
        Entry<decltype(coefficientSet)>("ZorbEffect_Control_Coefficient_Set");
    decltype(&ZorbEffect_Meters_GetBuffer) metersGetBuffer =
        Entry<decltype(metersGetBuffer)>("ZorbEffect_Meters_GetBuffer");
    decltype(&ZorbEffect_Revision_Get) revisionGet =
        Entry<decltype(revisionGet)>("ZorbEffect_Revision_Get");

    static const DspKit& Get() {
        static const DspKit kit;
        return kit;
    }
};

uint32_t WordAt(const char* bytes) {
    uint32_t word;
    std::memcpy(&word, bytes, sizeof(word));
    return word;
}

/// A block as "id [v0 v1 ...]", for fault lines.
std::string DescribeBlock(const std::string& block) {
    std::string text = std::to_string(WordAt(block.data())) + " [";
    for (size_t at = 8; at + 4 <= block.size(); at += 4) {
        float value;
        std::memcpy(&value, block.data() + at, sizeof(value));
        text += (at > 8 ? " " : "") + std::to_string(value);
    }
    return text + "]";
}

/// Writes code, length and payload to reply when they fit.
int Answer(uint32_t code, const void* payload, uint32_t length, void* reply, uint32_t* replySize) {
    if (reply == nullptr || replySize == nullptr || *replySize < 8 + length) return -1;
    const std::string head = U32(code) + U32(length);
    std::memcpy(reply, head.data(), head.size());
    std::memcpy(static_cast<char*>(reply) + head.size(), payload, length);
    *replySize = 8 + length;
    return 0;
}

int ReenteringSender(void* handle, uint32_t instance, const void* data, uint32_t size, void* reply,
                     uint32_t* replySize, void* context);

/// A handle of slot's host with the re-entering sender, initialised, woken so that the slot's
/// DSP end, emptied first, holds its whole model. The wake-up may re-enter.
void* NewHandle(Host::Slot& slot) {
    void* handle = nullptr;
    zb_create(&handle, &slot);
    zb_initialize(handle, slot.host->presetPath.c_str(), "", slot.host->configPath.c_str(),
                  ReenteringSender);
    slot.dsp.Reset();
    zb_on_dsp_wakeup(handle, kInstance);
    return handle;
}

void Recreate(Host::Slot& slot) {
    if (slot.Lasts()) return;
    void* old = slot.handle.exchange(nullptr);
    if (old == nullptr) return;
    zb_destroy(&old);
    slot.handle.store(NewHandle(slot));
    slot.host->recreations++;
}

/// Callbacks re-enter only from a call made by a host thread, never from a nested one: a
/// callback must not destroy a handle whose call is still on its own stack.
thread_local int t_callbackDepth = 0;

int ReenteringSender(void* handle, uint32_t instance, const void* data, uint32_t size, void* reply,
                     uint32_t* replySize, void* context) {
    Host::Slot& slot = *static_cast<Host::Slot*>(context);
    Host& host = *slot.host;
    const unsigned send = host.sends++;
    if (data == nullptr || size < 8) return -1;
    const int result = slot.dsp.Serve(data, size, reply, replySize);
    if (t_callbackDepth > 0 || host.quiet) return result;
    ++t_callbackDepth;
    host.reentries++;
    Host::Slot& other = host.slots[1 - slot.index];
    char text[32];
    switch (send % 8) {
        case 0:
            zb_set_parameter(other.handle.load(), instance, 1054, send % 7);
            break;
        case 1:
            zb_get_version(handle, instance, "dsp", text, sizeof(text));
            break;
        case 2:
            zb_set_volume(handle, instance, (send % 10) / 10.0);
            break;
        case 3:
            zb_is_feature_supported(other.handle.load(), "HeadTracking");
            break;
        case 4:
            // A lasting handle is initialised again too, more rarely: as a host whose
            // configuration changed.
            if (send / 8 % (other.Lasts() ? 16 * host.churn : host.churn) == 0) {
                // This thread holds the library's lock: no other call comes in between.
                void* initialised = other.handle.load();
                if (zb_initialize(initialised, host.presetPath.c_str(), "",
                                  host.configPath.c_str(), ReenteringSender) == 1) {
                    other.dsp.Reset();
                    zb_on_dsp_wakeup(initialised, instance);
                }
            }
            break;
        case 5:
            if (send / 8 % (2 * host.churn) == 0) Recreate(other);
            break;
        case 6:
            zb_on_dsp_wakeup(other.handle.load(), instance);
            break;
        default:
            zb_set_active(other.handle.load(), instance, 1 + send % 2, 1 + send / 2 % 2);
            break;
    }
    --t_callbackDepth;
    return result;
}

/// Re-enters as the sender does: a host change on its own handle (which notifies again), a
/// command on the other handle, and its own removal from inside its call.
int ReenteringNotifier(void* handle, const void* data, uint32_t size, void* context) {
    Host::Slot& slot = *static_cast<Host::Slot*>(context);
    Host& host = *slot.host;
    const unsigned notification = host.notifications++;
    if (data == nullptr || size == 0 || t_callbackDepth > 0 || host.quiet) return 0;
    ++t_callbackDepth;
    Host::Slot& other = host.slots[1 - slot.index];
    char reply[256];
    switch (notification % 4) {
        case 0:
            zb_set_parameter(handle, kInstance, 1022, notification % 5);
            break;
        case 1:
            zb_get_command(other.handle.load(), kInstance, "AQAAAAAAAAA=", reply, sizeof(reply));
            break;
        case 2:
            zb_register_notifier(handle, kInstance, nullptr);
            break;
        default:
            zb_set_volume(other.handle.load(), kInstance, (notification % 10) / 10.0);
            break;
    }
    --t_callbackDepth;
    return notification % 8 == 7 ? -1 : 0;
}

/// Wide (3,1): parameter 1 and 300 more, one in each block 4158 to 4457, so that a full send
/// takes two frames.
PresetRecord WidePreset() {
    std::map<unsigned, double> values{{1, 0.0}};
    for (unsigned g = 0; g < 300; ++g) values[1006 + 16 * g] = g + 1.0;
    return ModePreset(3, 1, 0, values);
}

int SetText(void* handle, const std::string& frame) {
    std::string text = ToText(frame);
    return zb_set_command(handle, kInstance, &text[0]);
}

/// zb_get_command with room for roomBytes of reply text; a reply that comes in pieces is
/// fetched to its end, as a tool does.
void GetText(void* handle, const std::string& frame, uint32_t room = 4096) {
    std::vector<char> reply(room);
    if (zb_get_command(handle, kInstance, ToText(frame).c_str(), reply.data(), room) != 1) return;
    const std::string first = FromText(std::string(reply.data(), strnlen(reply.data(), room)));
    if (first.size() < 20 || WordAt(first.data()) != 52) return;
    const uint32_t total = WordAt(first.data() + 8);
    const uint32_t session = WordAt(first.data() + 12);
    for (uint32_t counter = 1; counter < total; ++counter) {
        zb_get_command(handle, kInstance,
                       ToText(Msg(53, U32(counter) + U32(total) + U32(session))).c_str(),
                       reply.data(), room);
    }
}

/// A full preset payload: flags, parameters, link-law chunk, sources.
std::string FullPreset(const std::map<unsigned, double>& parameters, const std::string& chunk,
                       const std::map<unsigned, double>& sources) {
    return U32(0) + U32(1) + U32(!chunk.empty()) + U32(!sources.empty()) + Pairs(parameters) +
           U32(static_cast<uint32_t>(chunk.size())) + chunk + Pairs(sources);
}

}  // namespace

DspEnd::DspEnd() {
    const DspKit& kit = DspKit::Get();
    unsigned size = 0;
    kit.getEffectSize(&size);
    // A vector of a multiple of eight bytes is aligned for the effect record.
    m_effect.resize((size + 7) / 8 * 8);
    ZorbStreamFormat_t format{48000, 2, 3, 0, 4};
    ZorbStreamFormat_t* formats[] = {&format};
    if (kit.initialize(m_effect.data(), formats, 1, formats, 1) != 0) std::abort();
}

int DspEnd::Serve(const void* data, uint32_t size, void* reply, uint32_t* replySize) {
    const DspKit& kit = DspKit::Get();
    const char* bytes = static_cast<const char*>(data);
    std::lock_guard<std::mutex> lock(m_mutex);
    switch (WordAt(bytes)) {
        case 1:
            break;
        case 4: {
            char meters[512];
            unsigned length = sizeof(meters);
            if (kit.metersGetBuffer(m_effect.data(), meters, &length) != 0) return -1;
            return Answer(3, meters, length, reply, replySize);
        }
        case 5: {
            const char* text = nullptr;
            unsigned length = 0;
            if (kit.revisionGet(m_effect.data(), &text, &length) != 0) return -1;
            return Answer(6, text, length, reply, replySize);
        }
        default:
            m_faults.push_back("request of opcode " + std::to_string(WordAt(bytes)));
            return -1;
    }
    if (WordAt(bytes + 4) != size - 8) {
        m_faults.push_back("set-coefficients frame of " + std::to_string(size) +
                           " bytes with payload length " + std::to_string(WordAt(bytes + 4)));
        return -1;
    }
    for (uint32_t at = 8; at < size;) {
        unsigned used = 0;
        if (kit.coefficientSet(m_effect.data(), bytes + at, size - at, &used) != 0 || used == 0) {
            m_faults.push_back("block at frame offset " + std::to_string(at) + " refused");
            return -1;
        }
        std::string block(bytes + at, used);
        if (m_capturing) m_captured[WordAt(bytes + at)] = block;
        m_blocks[WordAt(bytes + at)] = std::move(block);
        at += used;
    }
    return 0;
}

void DspEnd::Reset() {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_blocks.clear();
}

void DspEnd::StartCapture() {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_captured.clear();
    m_capturing = true;
}

std::map<uint32_t, std::string> DspEnd::TakeCapture() {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_capturing = false;
    return std::move(m_captured);
}

std::map<uint32_t, std::string> DspEnd::Blocks() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_blocks;
}

std::vector<std::string> DspEnd::Faults() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_faults;
}

Host::Host(unsigned churnOneIn, bool firstHandleLasts)
    : churn(churnOneIn), firstLasts(firstHandleLasts) {
    presetPath = dir.Write("system.zps", ThreeModePresets({WidePreset()}));
    configPath = dir.Write(
        "hal.ini", ThreeModeConfig("[HAL_SUPPORTED_FEATURES]\nHeadTracking=1\n"
                                   "[CUSTOM_ACTION_300]\nmovie=PRIORITY:1,NUMBERS:7,PRESET:Movie\n"
                                   "music=PRIORITY:2,PRESET:Music\n",
                                   {"Wide=OM:3,SM:1"}));
    for (Slot& slot : slots) slot.handle.store(NewHandle(slot));
}

Host::~Host() {
    for (Slot& slot : slots) {
        void* handle = slot.handle.exchange(nullptr);
        zb_destroy(&handle);
    }
}

const char* CallOne(Host& host, void* handle, unsigned choice, std::minstd_rand& random) {
    const uint32_t value = random() % 4;
    switch (choice % 21) {
        case 0:
            zb_set_enable(handle, kInstance, value & 1);
            return "zb_set_enable";
        case 1:
            zb_set_bypass(handle, kInstance, value & 1);
            return "zb_set_bypass";
        case 2:
            zb_set_active(handle, kInstance, 1 + value % 2, 1 + value / 2);
            return "zb_set_active";
        case 3:
            zb_set_sound_mode(handle, kInstance, 1 + value % 2);
            return "zb_set_sound_mode";
        case 4:
            // Output mode 3 with sound mode 1 is Wide.
            zb_set_output_mode(handle, kInstance, 1 + value % 3);
            return "zb_set_output_mode";
        case 5:
            zb_set_volume(handle, kInstance, value / 4.0);
            return "zb_set_volume";
        case 6:
            zb_set_orientation(handle, kInstance, value % 2 == 0 ? 0 : 90);
            return "zb_set_orientation";
        case 7:
            zb_set_parameter(handle, kInstance, 1006 + 16 * value, value);
            return "zb_set_parameter";
        case 8: {
            const uint32_t ids[] = {1006, 1022, 1054};
            const double values[] = {value * 1.0, value * 2.0, value * 3.0};
            zb_set_parameters_array(handle, kInstance, 3, ids, values);
            return "zb_set_parameters_array";
        }
        case 9: {
            char command[] = "AQAAAAAAAAA=";
            zb_set_command(handle, kInstance, command);
            return "zb_set_command";
        }
        case 10: {
            char reply[256];
            zb_get_command(handle, kInstance, "AQAAAAAAAAA=", reply, sizeof(reply));
            return "zb_get_command";
        }
        case 11:
            zb_set_linklaws_value(handle, kInstance, 0, value / 4.0, value * 25.0);
            return "zb_set_linklaws_value";
        case 12:
            zb_wait_for_flush(handle, kInstance);
            return "zb_wait_for_flush";
        case 13:
            zb_flush(handle, kInstance);
            return "zb_flush";
        case 14:
            zb_register_notifier(handle, kInstance, value == 3 ? nullptr : ReenteringNotifier);
            return "zb_register_notifier";
        case 15: {
            alignas(double) unsigned char payload[24] = {};
            const double volume = value / 4.0;
            std::memcpy(payload, &volume, sizeof(volume));
            uint32_t numbers[] = {7};
            if (value % 2 == 0) {
                zb_set_data(handle, kInstance, 0, payload, sizeof(volume));
            } else {
                zb_set_data(handle, kInstance, kCustomAction, numbers, sizeof(numbers));
            }
            return "zb_set_data";
        }
        case 16: {
            char text[32];
            zb_get_version(handle, kInstance, value % 2 == 0 ? "dsp" : "halcontroller", text,
                           sizeof(text));
            return "zb_get_version";
        }
        case 17:
            zb_on_dsp_wakeup(handle, kInstance);
            return "zb_on_dsp_wakeup";
        case 18:
            zb_is_feature_supported(handle, "HeadTracking");
            return "zb_is_feature_supported";
        case 19: {
            // A private handle of this thread, made and dropped while the others work.
            void* own = nullptr;
            zb_create(&own, &host.scratch);
            zb_initialize(own, host.presetPath.c_str(), "", host.configPath.c_str(),
                          ReenteringSender);
            zb_set_active(own, kInstance, 1, 2);
            zb_destroy(&own);
            return "a private handle";
        }
        default:
            if (random() % host.churn == 0) Recreate(host.slots[random() % 2]);
            return "re-creation";
    }
}

const char* TuningCommand(Host& host, Host::Slot& slot, unsigned choice,
                          std::minstd_rand& random) {
    void* handle = slot.handle.load();
    const uint32_t value = random() % 4;
    switch (choice % 14) {
        case 0:
            // Mostly into tuning mode, where the tool's parameters count.
            SetText(handle, Msg(47, U32(value != 0)));
            return "StartTuningMode";
        case 1:
            SetText(handle, Msg(1, U32(1006 + 16 * value) + F64(value * 1.5)));
            return "SetParameter";
        case 2:
            SetText(handle, Msg(3, Pairs({{1022, value}, {1038, value * 2.0}, {1054, 3.0}})));
            return "SetParameterArray";
        case 3:
            SetText(handle, Msg(35, U32(0) + F64(value / 4.0) + F64(value * 25.0)));
            return "SetLinkLawsValue";
        case 4: {
            const std::string law = LinkLaw(0, 1038, {{0.0f, 0.0f}, {1000.0f, 100.0f * value}});
            SetText(handle, Msg(5, U32(1) + U32(static_cast<uint32_t>(law.size())) + law));
            return "SetChunk";
        }
        case 5:
            SetText(handle, Msg(50, FullPreset({{1, 0.0}, {1006, value * 2.0}}, "", {})));
            return "SetFullPreset";
        case 6:
            GetText(handle, Msg(51, FullPreset({}, "", {})));
            return "GetFullPreset";
        case 7:
            GetText(handle, Msg(10, U32(1006)));
            return "GetParameter";
        case 8: {
            // Forty ids: a reply of 484 bytes that comes in pieces of 72.
            std::string ids = U32(40);
            for (uint32_t i = 0; i < 40; ++i) ids += U32(1006 + 16 * i);
            GetText(handle, Msg(11, ids), 96 + 32 * value);
            return "GetParameterArray in pieces";
        }
        case 9:
            GetText(handle, Msg(33, U32(3) + U32(2800) + U32(2801) + U32(2804)));
            GetText(handle, Msg(29));
            return "link-law values";
        case 10:
            GetText(handle, Msg(36, U32(2) + U32(12) + U32(0) + U32(1) + U32(1) + U32(16) +
                                        U32(1) + U32(1) + U32(2) + U32(0)));
            return "RequestMeters";
        case 11: {
            // A parameter array in three pieces of a session of its own, now and then, and
            // never to a lasting handle: a parser keeps every finished session for its lifetime.
            const uint32_t session = host.sessions++;
            if (session % 4 != 0 || slot.Lasts()) {
                return "no pieces";
            }
            const std::string frame = Msg(3, Pairs({{1006, value}, {1022, value + 1.0}}));
            const size_t third = frame.size() / 3;
            for (uint32_t piece : {2u, 0u, 1u}) {
                const size_t end = piece == 2 ? frame.size() : (piece + 1) * third;
                SetText(handle, Piece(piece, 3, session, frame.substr(piece * third, end - piece * third)));
            }
            return "pieces";
        }
        case 12:
            GetText(handle, Msg(7, U32(3) + "dsp"));
            GetText(handle, Msg(49));
            return "versions and state";
        default:
            GetText(handle, Msg(39, U32(0)));
            GetText(handle, Msg(42, U32(0)));
            GetText(handle, Msg(48));
            return "enable, bypass, validation";
    }
}

std::vector<std::string> CheckDspState(Host& host) {
    host.quiet = true;
    std::vector<std::string> faults;
    for (Host::Slot& slot : host.slots) {
        const std::string name = "handle " + std::to_string(slot.index) + ": ";
        void* handle = slot.handle.load();
        // Ends a wait for flush; refused, with a log line, where there is none.
        zb_flush(handle, kInstance);
        const std::map<uint32_t, std::string> held = slot.dsp.Blocks();
        slot.dsp.StartCapture();
        if (zb_on_dsp_wakeup(handle, kInstance) != 1) faults.push_back(name + "wake-up failed");
        const std::map<uint32_t, std::string> sent = slot.dsp.TakeCapture();
        for (const auto& block : held) {
            const auto found = sent.find(block.first);
            if (found == sent.end()) {
                faults.push_back(name + "block " + DescribeBlock(block.second) +
                                 " held by the DSP is missing from the wake-up");
            } else if (found->second != block.second) {
                faults.push_back(name + "the DSP holds the stale block " +
                                 DescribeBlock(block.second) + ", the wake-up sends " +
                                 DescribeBlock(found->second));
            }
        }
        for (const auto& block : sent) {
            if (held.count(block.first) == 0) {
                faults.push_back(name + "block " + DescribeBlock(block.second) +
                                 " of the wake-up never reached the DSP");
            }
        }
        for (const std::string& fault : slot.dsp.Faults()) faults.push_back(name + fault);
    }
    host.quiet = false;
    return faults;
}

}  // namespace stress_test
