#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>
#include <thread>

namespace stress_test {

/// Aborts the process when it is not destroyed within limit: a test that hangs (a deadlock)
/// fails instead of stalling the run. The abort names what was being watched.
class Watchdog {
  public:
    Watchdog(std::chrono::seconds limit, std::string what)
        : m_what(std::move(what)), m_thread([this, limit] { Watch(limit); }) {}
    ~Watchdog() {
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            m_done = true;
        }
        m_condition.notify_all();
        m_thread.join();
    }
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

  private:
    void Watch(std::chrono::seconds limit) {
        std::unique_lock<std::mutex> lock(m_mutex);
        if (!m_condition.wait_for(lock, limit, [this] { return m_done; })) {
            std::fprintf(stderr, "watchdog: %s did not finish in %lld s: deadlock\n",
                         m_what.c_str(), static_cast<long long>(limit.count()));
            std::abort();
        }
    }

    std::string m_what;
    std::mutex m_mutex;
    std::condition_variable m_condition;
    bool m_done = false;
    std::thread m_thread;
};

}  // namespace stress_test
