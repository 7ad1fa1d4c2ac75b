// Runs one benchmark operation under callgrind with collection switched on only around the
// measured calls (run valgrind with --collect-atstart=no). Prints the calls, frames, bytes and
// notifications of the measured part; scripts/callgrind-bench reads the instruction counts from
// the callgrind output.
//
//   zb_callgrind OPERATION PARAMETERS CALLS [SHAPE]   SHAPE: classic (default) or tool
//   zb_callgrind initialize FILE CALLS     zb_initialize on a 10 MB file: filled or 16_pairs
//   zb_callgrind read_file FILE CALLS      a plain read of that file
//   zb_callgrind initialize_memory FILE 1  run without valgrind: the resident memory that
//                                          zb_initialize adds at its peak (in a fresh process),
//                                          and the file's size

#include <valgrind/callgrind.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "BenchSetup.h"
#include "zbhalcontroller/zb_api.h"

using namespace zb_bench;

namespace {

void Report(const std::string& name, unsigned long calls, const SendCounts& counts,
            uint64_t items) {
    std::printf(
        "operation=%s calls=%lu frames=%llu bytes=%llu notifications=%llu notified_bytes=%llu "
        "command_chars=%llu items=%llu\n",
        name.c_str(), calls, static_cast<unsigned long long>(counts.frames),
        static_cast<unsigned long long>(counts.bytes),
        static_cast<unsigned long long>(counts.notifications),
        static_cast<unsigned long long>(counts.notifiedBytes),
        static_cast<unsigned long long>(counts.commandChars),
        static_cast<unsigned long long>(items));
}

int RunInitialisation(const std::string& name, InitFile file, unsigned long calls) {
    BenchDir dir;
    uint64_t items = 0;
    const std::string bytes = InitPresetFile(file, items);
    const std::string presets = dir.Write("system.zps", bytes);
    const std::string config = dir.Write("hal.ini", InitConfig(file));
    SendCounts counts;
    for (unsigned long i = 0; i < calls; ++i) {
        if (name == "read_file") {
            CALLGRIND_TOGGLE_COLLECT;
            const size_t size = ReadWholeFile(presets).size();
            CALLGRIND_TOGGLE_COLLECT;
            if (size == 0) return 1;
            continue;
        }
        if (name == "initialize_memory") {
            std::printf("file_bytes=%zu peak_added_bytes=%llu\n", bytes.size(),
                        static_cast<unsigned long long>(PeakInitializeMemory(presets, config)));
            return 0;
        }
        void* handle = nullptr;
        zb_create(&handle, &counts);
        CALLGRIND_TOGGLE_COLLECT;
        const int result = zb_initialize(handle, presets.c_str(), "", config.c_str(), BenchSender);
        CALLGRIND_TOGGLE_COLLECT;
        zb_destroy(&handle);
        if (result != 1) return 1;
    }
    Report(name, calls, counts, items);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 4 && argv[1] == std::string(kMeasureMemoryArgument)) {
        return MeasureInitializeMemory(argv[2], argv[3]);
    }
    if (argc != 4 && argc != 5) {
        std::fprintf(stderr, "usage: %s OPERATION PARAMETERS CALLS [SHAPE]\n", argv[0]);
        return 2;
    }
    const std::string name = argv[1];
    const unsigned long calls = std::strtoul(argv[3], nullptr, 10);
    if (name == "initialize" || name == "read_file" || name == "initialize_memory") {
        for (InitFile file : {InitFile::kFilled, InitFile::kSixteenPairs}) {
            if (argv[2] == std::string(InitFileName(file))) {
                return RunInitialisation(name, file, calls);
            }
        }
        std::fprintf(stderr, "unknown file %s\n", argv[2]);
        return 2;
    }
    const unsigned parameters = static_cast<unsigned>(std::strtoul(argv[2], nullptr, 10));
    Shape shape = Shape::kClassic;
    const BenchOperation* operation = FindBenchOperation(name);
    if (operation == nullptr || (argc == 5 && !FindShape(argv[4], shape))) {
        std::fprintf(stderr, "unknown operation or shape\n");
        return 2;
    }
    BenchController controller(parameters, shape);
    operation->prepare(controller);
    operation->run(controller, 0);
    operation->run(controller, 1);
    const SendCounts before = controller.Counts();
    CALLGRIND_TOGGLE_COLLECT;
    for (unsigned long i = 0; i < calls; ++i) operation->run(controller, i);
    CALLGRIND_TOGGLE_COLLECT;
    Report(name, calls, Since(controller.Counts(), before), 0);
    return 0;
}
