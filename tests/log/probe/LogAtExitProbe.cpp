// Logs while the process exits: a thread keeps logging while main returns, and a static
// object that was built before the logger logs from its destructor. Usage: probe PATH; the
// file output writes to PATH. Exits 0 unless it fails to set up, or crashes.

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include "log/TesselLog.h"

namespace {

struct LogsWhenDestroyed {
    ~LogsWhenDestroyed() { TESSEL_LOG(2, TESSEL_LOG_UnitTest, "static object destroyed"); }
};

// Built before main, so before the logger's first use, and destroyed after it.
LogsWhenDestroyed g_logsWhenDestroyed;

std::atomic<bool> g_threadLogged{false};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    TesselFX::TesselLog& log = TesselFX::TesselLog::Get();
    log.WaitForInit();
    if (!log.SetLogOutput("ANDROID_LOG", false) ||
        !log.SetLogOutput((std::string("FILE_LOG://") + argv[1]).c_str(), true)) {
        return 3;
    }
    // The thread runs until the process ends; it must be detached to outlive main. It logs a
    // line a millisecond: flat out it would fill the file queue, which then drops lines, the
    // last line of main among them, on a loaded machine.
    std::thread([] {
        for (;;) {
            TESSEL_LOG(2, TESSEL_LOG_UnitTest, "thread line");
            g_threadLogged = true;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }).detach();
    while (!g_threadLogged) std::this_thread::yield();
    TESSEL_LOG(2, TESSEL_LOG_UnitTest, "last line of main");
    return 0;
}
