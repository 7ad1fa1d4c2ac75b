// Loads the logger probe module, turns on level 0 and the file output, and has threads log
// through it; then either unloads the module with dlclose once the threads are done
// ("dlclose"), or ends the process with exit() while they are still logging ("exit").
// Usage: log_unload_probe dlclose|exit MODULE LOGFILE. Exit status 0 when all went well.
#include <dlfcn.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr unsigned kThreads = 4;
// Below the file queue's bound of 1000 waiting lines: none of them may be refused.
constexpr unsigned kLinesPerThread = 200;

using Configure = int (*)(const char*);
using Print = void (*)(unsigned, unsigned);

}  // namespace

// LeakSanitizer stays off in this probe; the other sanitizers stay on. The logger is never
// destroyed, so that callers may log until the very end: once dlclose has unloaded its module
// nothing points to it any more, which LeakSanitizer reports as a leak. And its check at exit
// stops every thread from a tracer, which crashes while threads are still running.
extern "C" int __lsan_is_turned_off() { return 1; }

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: %s dlclose|exit MODULE LOGFILE\n", argv[0]);
        return 2;
    }
    const std::string mode = argv[1];
    void* module = dlopen(argv[2], RTLD_NOW | RTLD_LOCAL);
    if (module == nullptr) {
        std::fprintf(stderr, "dlopen: %s\n", dlerror());
        return 2;
    }
    auto configure = reinterpret_cast<Configure>(dlsym(module, "zb_log_probe_configure"));
    auto print = reinterpret_cast<Print>(dlsym(module, "zb_log_probe_print"));
    if (configure == nullptr || print == nullptr) return 2;
    const std::string ini = std::string("[TesselLogTag]\nTESSEL_LOG_ALL=0\n[TesselLogOutput]\n") +
                            "ANDROID_LOG=0\nFILE_LOG://" + argv[3] + "=1\n";
    if (configure(ini.c_str()) != 1) return 2;

    if (mode == "dlclose") {
        std::vector<std::thread> threads;
        for (unsigned t = 0; t < kThreads; ++t) {
            threads.emplace_back([print, t] {
                for (unsigned line = 0; line < kLinesPerThread; ++line) print(t, line);
            });
        }
        for (std::thread& thread : threads) thread.join();
        return dlclose(module) == 0 ? 0 : 3;
    }
    if (mode == "exit") {
        std::atomic<unsigned> printed{0};
        for (unsigned t = 0; t < kThreads; ++t) {
            // Still logging when the process ends: they cannot be joined.
            std::thread([print, t, &printed] {
                for (unsigned line = 0;; ++line) {
                    print(t, line);
                    printed++;
                }
            }).detach();
        }
        while (printed.load() < kThreads * kLinesPerThread) std::this_thread::yield();
        std::exit(0);
    }
    return 2;
}
