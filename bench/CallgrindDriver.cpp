// Runs one benchmark operation under callgrind with collection switched on only around the
// measured calls (run valgrind with --collect-atstart=no). Prints the calls, frames, bytes and
// notifications of the measured part; scripts/callgrind-bench reads the instruction counts from
// the callgrind output.
//
//   zb_callgrind OPERATION PARAMETERS CALLS
//   zb_callgrind initialize 0 CALLS      zb_initialize on the 10 MB file
//   zb_callgrind read_file 0 CALLS       a plain read of that file

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
        "items=%llu\n",
        name.c_str(), calls, static_cast<unsigned long long>(counts.frames),
        static_cast<unsigned long long>(counts.bytes),
        static_cast<unsigned long long>(counts.notifications),
        static_cast<unsigned long long>(counts.notifiedBytes),
        static_cast<unsigned long long>(items));
}

int RunInitialisation(const std::string& name, unsigned long calls) {
    BenchDir dir;
    uint64_t items = 0;
    const std::string presets = dir.Write("system.zps", InitPresetFile(items));
    const std::string config = dir.Write("hal.ini", BenchConfig());
    SendCounts counts;
    for (unsigned long i = 0; i < calls; ++i) {
        if (name == "read_file") {
            CALLGRIND_TOGGLE_COLLECT;
            const size_t size = ReadWholeFile(presets).size();
            CALLGRIND_TOGGLE_COLLECT;
            if (size == 0) return 1;
            continue;
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
    if (argc != 4) {
        std::fprintf(stderr, "usage: %s OPERATION PARAMETERS CALLS\n", argv[0]);
        return 2;
    }
    const std::string name = argv[1];
    const unsigned parameters = static_cast<unsigned>(std::strtoul(argv[2], nullptr, 10));
    const unsigned long calls = std::strtoul(argv[3], nullptr, 10);
    if (name == "initialize" || name == "read_file") return RunInitialisation(name, calls);
    const BenchOperation* operation = FindBenchOperation(name);
    if (operation == nullptr) {
        std::fprintf(stderr, "unknown operation %s\n", name.c_str());
        return 2;
    }
    BenchController controller(parameters);
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
