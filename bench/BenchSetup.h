#pragma once

// The set-up shared by the Google Benchmark cases and the callgrind driver: generated preset
// files and configuration in a private temporary directory, a control object initialised
// through the exported functions with the stand-in DSP library, a buffer_sender that counts,
// and the operations that both measure.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace zb_bench {

/// What buffer_sender and the notifier saw.
struct SendCounts {
    uint64_t frames = 0;
    uint64_t bytes = 0;
    uint64_t notifications = 0;
    uint64_t notifiedBytes = 0;
    /// The characters of the command texts given to zb_set_command and zb_get_command.
    uint64_t commandChars = 0;
};

/// The counting buffer_sender; context is a SendCounts.
int BenchSender(void* handle, uint32_t instance, const void* data, uint32_t size, void* reply,
                uint32_t* replySize, void* context);
/// The counting notifier; context is a SendCounts.
int BenchNotifier(void* handle, const void* data, uint32_t size, void* context);

/// A directory under /tmp that is removed with the files written through it.
class BenchDir {
  public:
    BenchDir();
    ~BenchDir();
    BenchDir(const BenchDir&) = delete;
    BenchDir& operator=(const BenchDir&) = delete;

    /// Writes bytes to name inside the directory and returns the full path.
    std::string Write(const std::string& name, const std::string& bytes);

  private:
    std::string m_path;
    std::vector<std::string> m_files;
};

/// The presets that a benchmark runs on.
enum class Shape {
    /// Music (1,1) with parameter 1, the link-law switch 2821 and a link-law chunk in which
    /// source 0 drives 16 of its parameters; its sub preset of subtype 1 (mask 2) that
    /// overrides a tenth of them; Movie (1,2) with the same ids, every value another.
    kClassic,
    /// A tuning tool's session: Music (1,1) and Movie (1,2) of the same ids, a quarter of the
    /// values differing, each with the switch 2821, four link laws from source 0 and a sub
    /// preset of subtype 1 (mask 2) with a twentieth of the ids.
    kTool,
};

/// The name of a shape in benchmark names and on the command line: "classic", "tool".
const char* ShapeName(Shape shape);
/// The shape of that name; false when there is none.
bool FindShape(const std::string& name, Shape& shape);

/// Preset file of the benchmarks, for parameterCount parameters per base preset. fillerBytes
/// adds presets of other modes, which no control uses, until the file has at least that size.
/// itemCount, when given, gets the number of items (parameters and chunks) in the file.
std::string BenchPresetFile(unsigned parameterCount, Shape shape = Shape::kClassic,
                            size_t fillerBytes = 0, uint64_t* itemCount = nullptr);
/// Configuration: one control of instance kInstance with Music and Movie; a volume of -20 dB
/// or less selects subtype 1 of Music (and of Movie in the tool shape).
std::string BenchConfig(Shape shape = Shape::kClassic);

constexpr uint32_t kInstance = 1;
constexpr unsigned kLinkLawTargets = 16;
/// The parameter that the one-parameter cases change; in every generated preset.
constexpr uint32_t kChangedParameter = 3001;
/// The number of parameters that the notification case changes at once, from the first generic
/// id on; a preset of 200 parameters holds only the first 198 of them.
constexpr unsigned kNotifiedParameters = 1000;

/// One control object, initialised on the generated files.
class BenchController {
  public:
    explicit BenchController(unsigned parameterCount, Shape shape = Shape::kClassic);
    ~BenchController();
    BenchController(const BenchController&) = delete;
    BenchController& operator=(const BenchController&) = delete;

    void* Handle() const { return m_handle; }
    SendCounts& Counts() { return m_counts; }

  private:
    BenchDir m_dir;
    SendCounts m_counts;
    void* m_handle = nullptr;
};

/// SendCounts minus an earlier snapshot of it.
SendCounts Since(const SendCounts& now, const SendCounts& before);

/// An operation measured per call; iteration alternates the direction of a change.
struct BenchOperation {
    const char* name;
    /// Runs once before measuring, so that the first measured call is a steady one.
    void (*prepare)(BenchController&);
    void (*run)(BenchController&, uint64_t iteration);
};

/// The per-call operations: set_parameter_change, set_parameter_unchanged,
/// volume_linklaw_step, volume_subtype_switch, mode_change, dsp_wakeup, tuning_get_parameter,
/// tuning_set_parameter, notify_1000_parameters, set_parameter_change_notified, and with a
/// notifier registered set_parameter_unchanged_notified, volume_subtype_switch_notified,
/// mode_change_notified, tuning_set_parameter_notified, tuning_set_1000_parameters_notified.
const std::vector<BenchOperation>& BenchOperations();
/// The operation of that name, or null.
const BenchOperation* FindBenchOperation(const std::string& name);

/// The preset files of the initialisation cases.
enum class InitFile {
    /// 2,000 parameters for the control in the classic shape, filled up to 10 MB with presets
    /// that no control uses.
    kFilled,
    /// 16 mode pairs, each a base preset of 40,064 parameters with the tool shape's link laws
    /// and two volume sub presets of a twentieth of them; the control has them all.
    kSixteenPairs,
};
/// "filled", "16_pairs".
const char* InitFileName(InitFile file);
/// The file's bytes; itemCount gets the number of items (parameters and chunks) in it.
std::string InitPresetFile(InitFile file, uint64_t& itemCount);
/// The configuration that goes with the file.
std::string InitConfig(InitFile file);
/// Reads a whole file into a vector; the plain read that initialisation is compared with.
std::vector<char> ReadWholeFile(const std::string& path);
/// The argument with which a benchmark program, started again by PeakInitializeMemory, runs
/// MeasureInitializeMemory on the two paths that follow it.
constexpr const char* kMeasureMemoryArgument = "--measure-initialize-memory";
/// The resident memory in bytes that zb_initialize of the files adds at its peak, measured in
/// a fresh process of this program (a heap that a benchmark has used would serve part of the
/// allocations from memory resident already); 0 when that fails. Linux only.
uint64_t PeakInitializeMemory(const std::string& presets, const std::string& config);
/// The measurement in that process: prints "peak_added_bytes=N"; returns the exit status.
int MeasureInitializeMemory(const char* presets, const char* config);

}  // namespace zb_bench
