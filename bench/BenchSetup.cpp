#include "BenchSetup.h"

#include <stdlib.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <map>
#include <stdexcept>

#include "BringupFiles.h"
#include "ToolFrames.h"
#include "zbhalcontroller/zb_api.h"

namespace zb_bench {

namespace {

constexpr unsigned kFirstGenericParameter = 3000;
constexpr unsigned kLinkLawSwitch = 2821;
constexpr unsigned kEnableBypassParameter = 1;

double MusicValue(unsigned id) { return (id % 97) * 0.25; }

/// count link laws from source 0, on targets spread evenly over ids.
std::string LinkLaws(const std::vector<unsigned>& ids, unsigned count) {
    std::string laws;
    for (unsigned j = 0; j < count; ++j) {
        const unsigned target = ids[j * ids.size() / count];
        laws += bringup_test::LinkLaw(0, target, {{0.0f, 0.0f}, {1000.0f, 1000.0f}});
    }
    return laws;
}

/// The generic parameter ids of a preset with parameterCount parameters in all: the switches
/// take two places.
std::vector<unsigned> GenericIds(unsigned parameterCount) {
    std::vector<unsigned> ids;
    for (unsigned i = 0; i + 2 < parameterCount; ++i) ids.push_back(kFirstGenericParameter + i);
    return ids;
}

bringup_test::PresetRecord Record(uint32_t om, uint32_t sm, uint32_t mask, uint32_t priority,
                                  const std::string& name) {
    bringup_test::PresetRecord record;
    record.outputMode = om;
    record.soundMode = sm;
    record.subtypeMask = mask;
    record.priority = priority;
    record.name = name;
    return record;
}

std::vector<bringup_test::PresetRecord> ClassicPresets(unsigned parameterCount) {
    const std::vector<unsigned> ids = GenericIds(parameterCount);
    bringup_test::PresetRecord music = Record(1, 1, 0, 0, "Music");
    bringup_test::PresetRecord quiet = Record(1, 1, 2, 1, "MusicQuiet");
    bringup_test::PresetRecord movie = Record(1, 2, 0, 0, "Movie");
    music.parameters[kEnableBypassParameter] = 0.0;
    music.parameters[kLinkLawSwitch] = 1.0;
    movie.parameters[kEnableBypassParameter] = 0.0;
    for (size_t i = 0; i < ids.size(); ++i) {
        music.parameters[ids[i]] = MusicValue(ids[i]);
        movie.parameters[ids[i]] = MusicValue(ids[i]) + 0.5;
        if (i % 10 == 5) quiet.parameters[ids[i]] = MusicValue(ids[i]) + 100.0;
    }
    music.chunks[1] = LinkLaws(ids, kLinkLawTargets);
    return {music, quiet, movie};
}

/// The two sound modes of output mode om in the tool shape, each with subPresets volume sub
/// presets (subtypes 1, 2, ...) of a twentieth of the ids.
std::vector<bringup_test::PresetRecord> ToolPresets(unsigned parameterCount, uint32_t om,
                                                    unsigned subPresets) {
    constexpr unsigned kToolLinkLaws = 4;
    const std::vector<unsigned> ids = GenericIds(parameterCount);
    std::vector<bringup_test::PresetRecord> presets;
    for (uint32_t sm = 1; sm <= 2; ++sm) {
        bringup_test::PresetRecord base = Record(om, sm, 0, 0, sm == 1 ? "Music" : "Movie");
        base.parameters[kEnableBypassParameter] = 0.0;
        base.parameters[kLinkLawSwitch] = 1.0;
        for (size_t i = 0; i < ids.size(); ++i) {
            // A quarter of the values differ between the two sound modes.
            base.parameters[ids[i]] = MusicValue(ids[i]) + (sm == 2 && i % 4 == 1 ? 0.5 : 0.0);
        }
        base.chunks[1] = LinkLaws(ids, kToolLinkLaws);
        presets.push_back(base);
        for (unsigned sub = 1; sub <= subPresets; ++sub) {
            bringup_test::PresetRecord quiet = Record(om, sm, 1u << sub, sub, "Quiet");
            for (size_t i = 0; i < ids.size(); ++i) {
                if (i % 20 == 10 + sub % 10) quiet.parameters[ids[i]] = MusicValue(ids[i]) + 100.0;
            }
            presets.push_back(quiet);
        }
    }
    return presets;
}

using bringup_test::F64;
using bringup_test::Msg;
using bringup_test::ToText;
using bringup_test::U32;

/// The command texts of the tuning cases, made before any measured call. zb_set_command takes
/// a mutable text but leaves it as it is.
struct TuningTexts {
    std::string enterTuning = ToText(Msg(47, U32(1)));
    std::string getParameter = ToText(Msg(10, U32(kChangedParameter)));
    std::string setParameter[2] = {SetParameterText(2.5), SetParameterText(1.5)};
    std::string setParameters[2] = {SetParametersText(2.5), SetParametersText(1.5)};

    static std::string SetParameterText(double value) {
        return ToText(Msg(1, U32(kChangedParameter) + F64(value)));
    }
    /// SetParameterArray (id 3) of kNotifiedParameters parameters from the first generic id.
    static std::string SetParametersText(double first) {
        std::map<unsigned, double> parameters;
        for (unsigned i = 0; i < kNotifiedParameters; ++i) {
            parameters[kFirstGenericParameter + i] = first + i;
        }
        return ToText(Msg(3, bringup_test::Pairs(parameters)));
    }
};

TuningTexts& Texts() {
    static TuningTexts texts;
    return texts;
}

int GetParameterCommand(BenchController& c) {
    char reply[256];
    c.Counts().commandChars += Texts().getParameter.size();
    return zb_get_command(c.Handle(), kInstance, Texts().getParameter.c_str(), reply,
                          sizeof(reply));
}

int SetCommand(BenchController& c, std::string& text) {
    c.Counts().commandChars += text.size();
    return zb_set_command(c.Handle(), kInstance, &text[0]);
}

/// The ids and the two alternating value sets of the notification case.
struct NotifiedChange {
    NotifiedChange() {
        for (unsigned i = 0; i < kNotifiedParameters; ++i) {
            ids.push_back(kFirstGenericParameter + i);
            values[0].push_back(2.5 + i);
            values[1].push_back(1.5 + i);
        }
    }
    std::vector<uint32_t> ids;
    std::vector<double> values[2];
};

const NotifiedChange& TheNotifiedChange() {
    static const NotifiedChange change;
    return change;
}

void Check(int result, const char* what) {
    if (result != 1) throw std::runtime_error(std::string(what) + " failed");
}

void RegisterNotifier(BenchController& c) {
    Check(zb_register_notifier(c.Handle(), kInstance, BenchNotifier), "zb_register_notifier");
}

void SetParameter(BenchController& c, uint64_t i) {
    zb_set_parameter(c.Handle(), kInstance, kChangedParameter, (i & 1) ? 1.5 : 2.5);
}

void SetParameterUnchanged(BenchController& c, uint64_t) {
    zb_set_parameter(c.Handle(), kInstance, kChangedParameter, 7.0);
}

void SwitchVolumeSubtype(BenchController& c, uint64_t i) {
    zb_set_volume(c.Handle(), kInstance, (i & 1) ? 0.05 : 0.5);
}

void ChangeMode(BenchController& c, uint64_t i) {
    zb_set_active(c.Handle(), kInstance, 1, (i & 1) ? 2 : 1);
}

void EnterTuning(BenchController& c) { Check(SetCommand(c, Texts().enterTuning), "tuning mode"); }

void TuningSetParameter(BenchController& c, uint64_t i) {
    SetCommand(c, Texts().setParameter[i & 1]);
}

}  // namespace

int BenchSender(void*, uint32_t, const void*, uint32_t size, void*, uint32_t*, void* context) {
    SendCounts* counts = static_cast<SendCounts*>(context);
    ++counts->frames;
    counts->bytes += size;
    return 0;
}

int BenchNotifier(void*, const void*, uint32_t size, void* context) {
    SendCounts* counts = static_cast<SendCounts*>(context);
    ++counts->notifications;
    counts->notifiedBytes += size;
    return 0;
}

SendCounts Since(const SendCounts& now, const SendCounts& before) {
    SendCounts difference;
    difference.frames = now.frames - before.frames;
    difference.bytes = now.bytes - before.bytes;
    difference.notifications = now.notifications - before.notifications;
    difference.notifiedBytes = now.notifiedBytes - before.notifiedBytes;
    difference.commandChars = now.commandChars - before.commandChars;
    return difference;
}

BenchDir::BenchDir() {
    char pattern[] = "/tmp/zb_bench_XXXXXX";
    const char* made = mkdtemp(pattern);
    if (made == nullptr) throw std::runtime_error("mkdtemp failed");
    m_path = made;
}

BenchDir::~BenchDir() {
    for (const std::string& file : m_files) unlink(file.c_str());
    rmdir(m_path.c_str());
}

std::string BenchDir::Write(const std::string& name, const std::string& bytes) {
    const std::string path = m_path + "/" + name;
    FILE* file = fopen(path.c_str(), "wb");
    if (file == nullptr) throw std::runtime_error("cannot write " + path);
    fwrite(bytes.data(), 1, bytes.size(), file);
    fclose(file);
    m_files.push_back(path);
    return path;
}

const char* ShapeName(Shape shape) { return shape == Shape::kTool ? "tool" : "classic"; }

bool FindShape(const std::string& name, Shape& shape) {
    for (Shape candidate : {Shape::kClassic, Shape::kTool}) {
        if (name == ShapeName(candidate)) {
            shape = candidate;
            return true;
        }
    }
    return false;
}

namespace {

uint64_t CountItems(const std::vector<bringup_test::PresetRecord>& presets) {
    uint64_t items = 0;
    for (const auto& preset : presets) items += preset.parameters.size() + preset.chunks.size();
    return items;
}

}  // namespace

std::string BenchPresetFile(unsigned parameterCount, Shape shape, size_t fillerBytes,
                            uint64_t* itemCount) {
    std::vector<bringup_test::PresetRecord> presets =
        shape == Shape::kTool ? ToolPresets(parameterCount, 1, 1) : ClassicPresets(parameterCount);
    // A parameter item is 13 bytes; a preset holds at most 65,535 items.
    constexpr unsigned kFillerItems = 60000;
    size_t size = 0;
    for (uint32_t om = 10; size < fillerBytes; ++om) {
        bringup_test::PresetRecord filler = Record(om, 1, 0, 0, "Filler");
        for (unsigned id = 0; id < kFillerItems; ++id) filler.parameters[id] = id * 0.5;
        presets.push_back(filler);
        size += 13u * kFillerItems;
    }
    if (itemCount != nullptr) *itemCount = CountItems(presets);
    return bringup_test::PresetFile(presets);
}

namespace {

std::string ConfigText(const std::string& volumeSubtypes, const std::string& presets,
                       const std::string& presetNames) {
    return "[HAL_SUPPORTED_SAMPLE_RATES]\nrates=48000\n"
           "[HAL_VOLUME_SUBTYPES]\nbenchVol=" +
           volumeSubtypes +
           "\n"
           "[HAL_VOLUME_PRIORITY]\nAUDIO_STREAM_MUSIC=VOLUME_PRIORITY_HIGH\n"
           "[HAL_SUPPORTED_PRESETS]\n" +
           presets + "[HAL_SUPPORTED_CONTROLS]\nSpeaker=DEV:2,SR:rates,PRESET:" + presetNames +
           ",INSTANCE:1\n"
           "[COEFS_CONVERTER_SETTING]\nDspKitPath64=" DSPKIT_SIM_PATH "\n";
}

}  // namespace

std::string BenchConfig(Shape shape) {
    const std::string movieVolume = shape == Shape::kTool ? ",VST:benchVol" : "";
    return ConfigText("-20:1,0:NULL",
                      "Music=OM:1,SM:1,VST:benchVol\nMovie=OM:1,SM:2" + movieVolume + "\n",
                      "Music|Movie");
}

BenchController::BenchController(unsigned parameterCount, Shape shape) {
    const std::string presets = m_dir.Write("system.zps", BenchPresetFile(parameterCount, shape));
    const std::string config = m_dir.Write("hal.ini", BenchConfig(shape));
    if (zb_create(&m_handle, &m_counts) != 1 ||
        zb_initialize(m_handle, presets.c_str(), "", config.c_str(), BenchSender) != 1) {
        throw std::runtime_error("zb_initialize failed");
    }
    // A volume, as a host sets one first, and the first full send, so that every measured
    // send is a differential one.
    zb_set_volume(m_handle, kInstance, 0.5);
    zb_set_active(m_handle, kInstance, 1, 2);
    zb_set_active(m_handle, kInstance, 1, 1);
}

BenchController::~BenchController() { zb_destroy(&m_handle); }

const std::vector<BenchOperation>& BenchOperations() {
    static const std::vector<BenchOperation> operations = {
        {"set_parameter_change", [](BenchController&) {}, SetParameter},
        {"set_parameter_unchanged", [](BenchController& c) { SetParameterUnchanged(c, 0); },
         SetParameterUnchanged},
        {"volume_linklaw_step", [](BenchController&) {},
         [](BenchController& c, uint64_t i) {
             zb_set_volume(c.Handle(), kInstance, (i & 1) ? 0.5 : 0.6);
         }},
        {"volume_subtype_switch", [](BenchController&) {}, SwitchVolumeSubtype},
        {"mode_change", [](BenchController&) {}, ChangeMode},
        {"dsp_wakeup", [](BenchController&) {},
         [](BenchController& c, uint64_t) { zb_on_dsp_wakeup(c.Handle(), kInstance); }},
        {"tuning_get_parameter",
         [](BenchController& c) { Check(GetParameterCommand(c), "GetParameter"); },
         [](BenchController& c, uint64_t) { GetParameterCommand(c); }},
        {"tuning_set_parameter", EnterTuning, TuningSetParameter},
        {"notify_1000_parameters", RegisterNotifier,
         [](BenchController& c, uint64_t i) {
             const NotifiedChange& change = TheNotifiedChange();
             zb_set_parameters_array(c.Handle(), kInstance, kNotifiedParameters, change.ids.data(),
                                     change.values[i & 1].data());
         }},
        {"set_parameter_change_notified", RegisterNotifier, SetParameter},
        {"set_parameter_unchanged_notified",
         [](BenchController& c) {
             RegisterNotifier(c);
             SetParameterUnchanged(c, 0);
         },
         SetParameterUnchanged},
        {"volume_subtype_switch_notified", RegisterNotifier, SwitchVolumeSubtype},
        {"mode_change_notified", RegisterNotifier, ChangeMode},
        {"tuning_set_parameter_notified",
         [](BenchController& c) {
             RegisterNotifier(c);
             EnterTuning(c);
         },
         TuningSetParameter},
        {"tuning_set_1000_parameters_notified",
         [](BenchController& c) {
             RegisterNotifier(c);
             EnterTuning(c);
         },
         [](BenchController& c, uint64_t i) { SetCommand(c, Texts().setParameters[i & 1]); }},
    };
    return operations;
}

const BenchOperation* FindBenchOperation(const std::string& name) {
    for (const BenchOperation& operation : BenchOperations()) {
        if (name == operation.name) return &operation;
    }
    return nullptr;
}

const char* InitFileName(InitFile file) {
    return file == InitFile::kSixteenPairs ? "16_pairs" : "filled";
}

namespace {

constexpr unsigned kInitPairParameters = 40064;
constexpr unsigned kInitOutputModes = 8;

}  // namespace

std::string InitPresetFile(InitFile file, uint64_t& itemCount) {
    constexpr size_t kTenMegabytes = 10u * 1024u * 1024u;
    if (file == InitFile::kFilled) {
        return BenchPresetFile(2000, Shape::kClassic, kTenMegabytes, &itemCount);
    }
    std::vector<bringup_test::PresetRecord> presets;
    for (uint32_t om = 1; om <= kInitOutputModes; ++om) {
        for (auto& preset : ToolPresets(kInitPairParameters, om, 2)) presets.push_back(preset);
    }
    itemCount = CountItems(presets);
    return bringup_test::PresetFile(presets);
}

std::string InitConfig(InitFile file) {
    if (file == InitFile::kFilled) return BenchConfig(Shape::kClassic);
    std::string presets;
    std::string names;
    for (uint32_t om = 1; om <= kInitOutputModes; ++om) {
        for (uint32_t sm = 1; sm <= 2; ++sm) {
            const std::string name = "P" + std::to_string(om) + std::to_string(sm);
            presets += name + "=OM:" + std::to_string(om) + ",SM:" + std::to_string(sm) +
                       ",VST:benchVol\n";
            names += (names.empty() ? "" : "|") + name;
        }
    }
    return ConfigText("-40:2,-20:1,0:NULL", presets, names);
}

namespace {

/// The value in bytes of a "Name:   123 kB" line of /proc/self/status, or 0.
uint64_t StatusField(const char* name) {
    FILE* status = fopen("/proc/self/status", "r");
    if (status == nullptr) return 0;
    char line[256];
    uint64_t kilobytes = 0;
    const size_t length = strlen(name);
    while (fgets(line, sizeof(line), status) != nullptr) {
        if (strncmp(line, name, length) == 0 && line[length] == ':') {
            kilobytes = strtoull(line + length + 1, nullptr, 10);
            break;
        }
    }
    fclose(status);
    return kilobytes * 1024;
}

}  // namespace

uint64_t PeakInitializeMemory(const std::string& presets, const std::string& config) {
    char self[4096];
    const ssize_t length = readlink("/proc/self/exe", self, sizeof(self) - 1);
    if (length <= 0) return 0;
    self[length] = '\0';
    const std::string command = std::string(self) + " " + kMeasureMemoryArgument + " " + presets +
                                " " + config + " 2>/dev/null";
    FILE* child = popen(command.c_str(), "r");
    if (child == nullptr) return 0;
    unsigned long long bytes = 0;
    if (fscanf(child, "peak_added_bytes=%llu", &bytes) != 1) bytes = 0;
    pclose(child);
    return bytes;
}

int MeasureInitializeMemory(const char* presets, const char* config) {
    SendCounts counts;
    void* handle = nullptr;
    if (zb_create(&handle, &counts) != 1) return 1;
    const uint64_t before = StatusField("VmRSS");
    // Writing 5 resets the peak to the current resident size.
    FILE* clear = fopen("/proc/self/clear_refs", "w");
    if (clear == nullptr) return 1;
    fputs("5", clear);
    fclose(clear);
    const int result = zb_initialize(handle, presets, "", config, BenchSender);
    const uint64_t peak = StatusField("VmHWM");
    zb_destroy(&handle);
    if (result != 1) return 1;
    std::printf("peak_added_bytes=%llu\n",
                static_cast<unsigned long long>(peak > before ? peak - before : 0));
    return 0;
}

std::vector<char> ReadWholeFile(const std::string& path) {
    std::vector<char> bytes;
    FILE* file = fopen(path.c_str(), "rb");
    if (file == nullptr) return bytes;
    fseek(file, 0, SEEK_END);
    bytes.resize(static_cast<size_t>(ftell(file)));
    fseek(file, 0, SEEK_SET);
    const size_t read = fread(bytes.data(), 1, bytes.size(), file);
    bytes.resize(read);
    fclose(file);
    return bytes;
}

}  // namespace zb_bench
