// The soak: the stress workload (StressWorkload.h) for a given number of minutes. Four host
// threads call on the two handles and a tuning tool sends commands from a fifth, while the
// callbacks re-enter. Every second, and at the end, a wake-up of each handle must send exactly
// what its DSP holds, and no call may have been running for more than 1 s (a hang). Every 10 s
// it checks that resident memory stays flat after a warm-up and that no call has taken longer
// than 1 s, and prints calls per second and the worst call time.
//
// Usage: soak [MINUTES]   (10 by default; fractions allowed). Exit status 0 when it held.

#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "StressWorkload.h"
#include "Watchdog.h"

namespace stress_test {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kHostThreads = 4;
/// One in this many chances to re-create or re-initialise a handle is taken.
constexpr unsigned kChurn = 1000;
constexpr auto kDspCheckEvery = std::chrono::seconds(1);
/// Every this many DSP checks, resident memory and call times are checked and reported.
constexpr int kReportEvery = 10;
constexpr auto kLongestCall = std::chrono::seconds(1);
/// Resident memory may grow by this much per 10 minutes after the warm-up, and by this much
/// at least in a shorter run, where the allocator's own slack would otherwise decide.
constexpr long kGrowthKbPer10Minutes = 1024;

/// What one thread is doing, read by the checks.
struct ThreadClock {
    std::atomic<int64_t> callStart{0};  // steady-clock nanoseconds; 0 between calls
    std::atomic<const char*> last{"no call"};
    std::atomic<uint64_t> calls{0};
    std::atomic<int64_t> worst{0};  // nanoseconds
    std::atomic<const char*> worstName{""};

    template <typename Call>
    void Time(Call call) {
        const int64_t start = Clock::now().time_since_epoch().count();
        callStart.store(start);
        const char* name = call();
        const int64_t took = Clock::now().time_since_epoch().count() - start;
        callStart.store(0);
        last.store(name);
        calls++;
        if (took > worst.load()) {
            worst.store(took);
            worstName.store(name);
        }
    }
};

/// The host threads and the tuning tool's thread, each calling until stopped; they can be held
/// between two calls while the DSP state is checked.
class Workers {
  public:
    explicit Workers(Host& host) : clocks(kHostThreads + 1) {
        for (int t = 0; t <= kHostThreads; ++t) {
            m_threads.emplace_back([this, &host, t] {
                std::minstd_rand random(1 + t);
                while (WaitWhileHeld()) {
                    Host::Slot& slot = host.slots[random() % 2];
                    clocks[t].Time([&] {
                        return t < kHostThreads
                                   ? CallOne(host, slot.handle.load(), random(), random)
                                   : TuningCommand(host, slot, random(), random);
                    });
                }
            });
        }
    }
    ~Workers() { Stop(); }

    /// Holds every thread between two calls; false when they are not all held within 5 s.
    bool Hold() {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_hold = true;
        return m_changed.wait_for(lock, std::chrono::seconds(5),
                                  [this] { return m_held == m_threads.size(); });
    }
    void Release() {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_hold = false;
        m_changed.notify_all();
    }
    void Stop() {
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            m_stop = true;
            m_hold = false;
            m_changed.notify_all();
        }
        for (std::thread& thread : m_threads) {
            if (thread.joinable()) thread.join();
        }
    }

    std::vector<ThreadClock> clocks;

  private:
    /// False once stopped.
    bool WaitWhileHeld() {
        std::unique_lock<std::mutex> lock(m_mutex);
        if (m_hold) {
            ++m_held;
            m_changed.notify_all();
            m_changed.wait(lock, [this] { return !m_hold; });
            --m_held;
        }
        return !m_stop;
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_hold = false;
    bool m_stop = false;
    size_t m_held = 0;
    std::vector<std::thread> m_threads;
};

long ResidentKb() {
    std::ifstream statm("/proc/self/statm");
    long size = 0;
    long resident = 0;
    statm >> size >> resident;
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

double Ms(int64_t nanoseconds) { return nanoseconds / 1e6; }

[[noreturn]] void Hang(const Workers& workers) {
    const int64_t now = Clock::now().time_since_epoch().count();
    for (const ThreadClock& clock : workers.clocks) {
        const int64_t started = clock.callStart;
        if (started != 0) {
            std::printf("FAIL: a call running for %.0f ms, after %s\n", Ms(now - started),
                        clock.last.load());
        }
    }
    std::fflush(stdout);
    std::abort();
}

/// Checks the DSP state; prints the faults and returns their number.
size_t CheckDsp(Host& host) {
    const std::vector<std::string> faults = CheckDspState(host);
    for (const std::string& fault : faults) std::printf("FAIL: DSP state: %s\n", fault.c_str());
    return faults.size();
}

int Run(double minutes) {
    // One malloc arena for every thread: free memory in the arenas of several threads, which no
    // trim gives back, would make resident memory swing by megabytes with the thread that freed
    // last. With one, what stays resident after a trim follows what the library holds.
    mallopt(M_ARENA_MAX, 1);
    const auto duration = std::chrono::duration_cast<Clock::duration>(
        std::chrono::duration<double, std::ratio<60>>(minutes));
    // A sixth of the run, between 10 s and 60 s, lets caches and the allocator settle.
    const auto warmUp = std::clamp<Clock::duration>(duration / 6, std::chrono::seconds(10),
                                                     std::chrono::seconds(60));
    const int64_t longestCall = std::chrono::nanoseconds(kLongestCall).count();
    std::printf("soak: %.1f min, %d host threads and a tuning tool on two handles\n", minutes,
                kHostThreads);
    // The first handle lasts the whole run, as a host's does, so that what it gathers shows;
    // the second is re-created and initialised again now and then.
    Host host(kChurn, true);
    Workers workers(host);
    const Clock::time_point start = Clock::now();
    long baselineKb = 0;
    long rssKb = 0;
    uint64_t calls = 0;
    double seconds = 0;
    int64_t worst = 0;
    const char* worstName = "";
    bool failed = false;
    for (int tick = 1; !failed; ++tick) {
        std::this_thread::sleep_until(std::min(start + tick * kDspCheckEvery, start + duration));
        const Clock::time_point now = Clock::now();
        for (const ThreadClock& clock : workers.clocks) {
            const int64_t started = clock.callStart;
            if (started != 0 && now.time_since_epoch().count() - started > longestCall) {
                Hang(workers);
            }
        }
        const bool last = now - start >= duration;
        const bool report = tick % kReportEvery == 0 || last;
        // With every thread between two calls: the DSP state passes a wake-up, and resident
        // memory, once the allocator has given back what is free, is what the handles hold.
        if (!workers.Hold()) Hang(workers);
        failed = CheckDsp(host) != 0;
        if (report) {
            malloc_trim(0);
            rssKb = ResidentKb();
        }
        workers.Release();
        if (!report) continue;
        calls = 0;
        for (const ThreadClock& clock : workers.clocks) {
            calls += clock.calls;
            if (clock.worst > worst) {
                worst = clock.worst;
                worstName = clock.worstName;
            }
        }
        seconds = std::chrono::duration<double>(now - start).count();
        if (baselineKb == 0 && now - start >= warmUp) baselineKb = rssKb;
        std::printf("%6.0f s  %10llu calls  %7.0f calls/s  worst %.2f ms (%s)  RSS %ld kB", seconds,
                    static_cast<unsigned long long>(calls), calls / seconds, Ms(worst), worstName,
                    rssKb);
        if (baselineKb != 0) {
            const double tenMinutes =
                std::chrono::duration<double, std::ratio<600>>(now - start - warmUp).count();
            const long allowed =
                static_cast<long>(kGrowthKbPer10Minutes * std::max(1.0, tenMinutes));
            std::printf("  (%+ld kB since warm-up, %ld allowed)", rssKb - baselineKb, allowed);
            if (rssKb - baselineKb > allowed) {
                std::printf("\nFAIL: resident memory grew by %ld kB after the warm-up",
                            rssKb - baselineKb);
                failed = true;
            }
        }
        std::printf("\n");
        if (worst > longestCall) {
            std::printf("FAIL: a call (%s) took %.0f ms\n", worstName, Ms(worst));
            failed = true;
        }
        std::fflush(stdout);
        if (last) break;
    }
    {
        Watchdog watchdog(std::chrono::seconds(60), "the soak's threads at their end");
        workers.Stop();
    }
    if (CheckDsp(host) != 0) {
        failed = true;
    } else {
        std::printf("DSP state: a wake-up sends the %zu and %zu blocks the two DSPs hold\n",
                    host.slots[0].dsp.Blocks().size(), host.slots[1].dsp.Blocks().size());
    }
    std::printf("%u sends, %u re-entries, %u re-creations, %u notifications\n",
                host.sends.load(), host.reentries.load(), host.recreations.load(),
                host.notifications.load());
    std::printf("soak %s: %llu calls in %.0f s, %.0f calls/s, worst call %.2f ms (%s), RSS %ld kB "
                "after warm-up, %ld kB at the end\n",
                failed ? "FAILED" : "passed", static_cast<unsigned long long>(calls), seconds,
                calls / seconds, Ms(worst), worstName, baselineKb, rssKb);
    return failed ? 1 : 0;
}

}  // namespace
}  // namespace stress_test

int main(int argc, char** argv) {
    const double minutes = argc > 1 ? std::atof(argv[1]) : 10.0;
    if (argc > 2 || !(minutes > 0)) {
        std::fprintf(stderr, "usage: soak [MINUTES]\n");
        return 2;
    }
    return stress_test::Run(minutes);
}
