// Google Benchmark cases through the exported functions: per-call operations on generated
// presets of 200, 2,000 and 20,000 parameters in two shapes ("classic/..." and "tool/..."), and
// zb_initialize on two 10 MB preset files beside a plain read of each. Counters per call:
// frames and bytes that reached buffer_sender, notifications and their bytes that reached the
// notifier; for zb_initialize the resident memory it adds at its peak, in a fresh process.

#include <benchmark/benchmark.h>

#include <memory>

#include "BenchSetup.h"
#include "zbhalcontroller/zb_api.h"

namespace zb_bench {
namespace {

void RunOperation(benchmark::State& state, const BenchOperation* operation, Shape shape) {
    BenchController controller(static_cast<unsigned>(state.range(0)), shape);
    operation->prepare(controller);
    operation->run(controller, 0);
    operation->run(controller, 1);
    const SendCounts before = controller.Counts();
    uint64_t iteration = 0;
    for (auto _ : state) operation->run(controller, iteration++);
    const SendCounts counts = Since(controller.Counts(), before);
    const auto perCall = [](uint64_t value) {
        return benchmark::Counter(static_cast<double>(value), benchmark::Counter::kAvgIterations);
    };
    state.counters["frames"] = perCall(counts.frames);
    state.counters["bytes"] = perCall(counts.bytes);
    state.counters["notifications"] = perCall(counts.notifications);
    state.counters["notified_bytes"] = perCall(counts.notifiedBytes);
}

/// A 10 MB file of the initialisation cases, written once.
struct InitFiles {
    explicit InitFiles(InitFile file) {
        presets = dir.Write("system.zps", InitPresetFile(file, items));
        config = dir.Write("hal.ini", InitConfig(file));
    }
    BenchDir dir;
    uint64_t items = 0;
    std::string presets;
    std::string config;
};

InitFiles& TheInitFiles(InitFile file) {
    static InitFiles filled(InitFile::kFilled);
    static InitFiles pairs(InitFile::kSixteenPairs);
    return file == InitFile::kFilled ? filled : pairs;
}

void BM_ReadPresetFile(benchmark::State& state, InitFile file) {
    const InitFiles& files = TheInitFiles(file);
    for (auto _ : state) benchmark::DoNotOptimize(ReadWholeFile(files.presets));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                            static_cast<int64_t>(ReadWholeFile(files.presets).size()));
}

void BM_Initialize(benchmark::State& state, InitFile file) {
    const InitFiles& files = TheInitFiles(file);
    SendCounts counts;
    for (auto _ : state) {
        state.PauseTiming();
        void* handle = nullptr;
        zb_create(&handle, &counts);
        state.ResumeTiming();
        if (zb_initialize(handle, files.presets.c_str(), "", files.config.c_str(), BenchSender) !=
            1) {
            state.SkipWithError("zb_initialize failed");
        }
        state.PauseTiming();
        zb_destroy(&handle);
        state.ResumeTiming();
    }
    state.counters["items"] = static_cast<double>(files.items);
    state.counters["file_bytes"] = static_cast<double>(ReadWholeFile(files.presets).size());
    state.counters["peak_added_bytes"] =
        static_cast<double>(PeakInitializeMemory(files.presets, files.config));
}

void RegisterAll() {
    for (Shape shape : {Shape::kClassic, Shape::kTool}) {
        for (const BenchOperation& operation : BenchOperations()) {
            const std::string name = std::string(ShapeName(shape)) + "/" + operation.name;
            benchmark::RegisterBenchmark(name.c_str(), RunOperation, &operation, shape)
                ->Arg(200)
                ->Arg(2000)
                ->Arg(20000)
                ->Unit(benchmark::kMicrosecond);
        }
    }
    for (InitFile file : {InitFile::kFilled, InitFile::kSixteenPairs}) {
        const std::string suffix = std::string("_10MB/") + InitFileName(file);
        benchmark::RegisterBenchmark(("read_preset_file" + suffix).c_str(), BM_ReadPresetFile, file)
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark(("initialize" + suffix).c_str(), BM_Initialize, file)
            ->Unit(benchmark::kMillisecond);
    }
}

}  // namespace
}  // namespace zb_bench

int main(int argc, char** argv) {
    if (argc == 4 && argv[1] == std::string(zb_bench::kMeasureMemoryArgument)) {
        return zb_bench::MeasureInitializeMemory(argv[2], argv[3]);
    }
    zb_bench::RegisterAll();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
