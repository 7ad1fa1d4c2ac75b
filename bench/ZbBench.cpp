// Google Benchmark cases through the exported functions: per-call operations on generated
// presets of 200, 2,000 and 20,000 parameters, and zb_initialize on a 10 MB preset file beside a
// plain read of that file. Counters per call: frames and bytes that reached buffer_sender,
// notifications and their bytes that reached the notifier.

#include <benchmark/benchmark.h>

#include <memory>

#include "BenchSetup.h"
#include "zbhalcontroller/zb_api.h"

namespace zb_bench {
namespace {

void RunOperation(benchmark::State& state, const BenchOperation* operation) {
    BenchController controller(static_cast<unsigned>(state.range(0)));
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

/// The 10 MB file of the initialisation cases, written once.
struct InitFiles {
    InitFiles() {
        presets = dir.Write("system.zps", InitPresetFile(items));
        config = dir.Write("hal.ini", BenchConfig());
    }
    BenchDir dir;
    uint64_t items = 0;
    std::string presets;
    std::string config;
};

InitFiles& TheInitFiles() {
    static InitFiles files;
    return files;
}

void BM_ReadPresetFile(benchmark::State& state) {
    const InitFiles& files = TheInitFiles();
    for (auto _ : state) benchmark::DoNotOptimize(ReadWholeFile(files.presets));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                            static_cast<int64_t>(ReadWholeFile(files.presets).size()));
}

void BM_Initialize(benchmark::State& state) {
    const InitFiles& files = TheInitFiles();
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
}

void RegisterAll() {
    for (const BenchOperation& operation : BenchOperations()) {
        benchmark::RegisterBenchmark(operation.name, RunOperation, &operation)
            ->Arg(200)
            ->Arg(2000)
            ->Arg(20000)
            ->Unit(benchmark::kMicrosecond);
    }
    benchmark::RegisterBenchmark("read_preset_file_10MB", BM_ReadPresetFile)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("initialize_10MB", BM_Initialize)->Unit(benchmark::kMillisecond);
}

}  // namespace
}  // namespace zb_bench

int main(int argc, char** argv) {
    zb_bench::RegisterAll();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
