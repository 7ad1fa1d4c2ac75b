// The logger under load at its end: threads log at level 0 with the file output on while the
// library that holds the logger is closed with dlclose, or while the process exits. Each case
// runs log_unload_probe in a child process, which must end on its own with status 0 (no crash,
// no sanitizer report, no hang) and leave its lines in the log file.

#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "BringupFiles.h"

extern char** environ;

namespace {

constexpr auto kChildLimit = std::chrono::seconds(120);

/// Runs the probe in mode and returns its wait status, or -1 when it had to be killed.
int RunProbe(const std::string& mode, const std::string& logFile) {
    // The emulator of a cross build, if any, then the probe and its arguments.
    std::vector<std::string> words;
    std::istringstream launcher(PROBE_LAUNCHER);
    for (std::string word; launcher >> word;) words.push_back(word);
    words.insert(words.end(), {LOG_EXIT_PROBE_PATH, mode, LOG_PROBE_MODULE_PATH, logFile});
    std::vector<char*> argv;
    for (std::string& word : words) argv.push_back(&word[0]);
    argv.push_back(nullptr);
    pid_t child = 0;
    if (posix_spawnp(&child, argv[0], nullptr, nullptr, argv.data(), environ) != 0) return -2;
    const auto deadline = std::chrono::steady_clock::now() + kChildLimit;
    int status = 0;
    while (waitpid(child, &status, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() > deadline) {
            kill(child, SIGKILL);
            waitpid(child, &status, 0);
            return -1;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return status;
}

/// The "probe <thread> <line>" lines of the log file, as "<thread> <line>".
std::multiset<std::string> ProbeLines(const std::string& path) {
    std::ifstream file(path);
    std::multiset<std::string> lines;
    for (std::string line; std::getline(file, line);) {
        const size_t at = line.find(" probe ");
        if (at != std::string::npos) lines.insert(line.substr(at + 7));
    }
    return lines;
}

/// Runs the probe in mode, expects it to end with status 0, and returns its probe lines.
std::multiset<std::string> ProbeLinesOfACleanRun(const std::string& mode) {
    bringup_test::TempDir dir;
    const std::string logFile = dir.Write("fx.log", "");
    const int status = RunProbe(mode, logFile);
    EXPECT_TRUE(WIFEXITED(status)) << "status " << status;
    EXPECT_EQ(WEXITSTATUS(status), 0) << "status " << status;
    return ProbeLines(logFile);
}

TEST(LoggerExitTest, DlcloseWritesEveryQueuedLineAndEndsTheQueueThread) {
    const std::multiset<std::string> lines = ProbeLinesOfACleanRun("dlclose");
    EXPECT_EQ(lines.size(), 800u);
    for (unsigned thread = 0; thread < 4; ++thread) {
        EXPECT_EQ(lines.count(std::to_string(thread) + " 0"), 1u);
        EXPECT_EQ(lines.count(std::to_string(thread) + " 199"), 1u);
    }
}

TEST(LoggerExitTest, ExitWhileThreadsLogEndsCleanly) {
    EXPECT_FALSE(ProbeLinesOfACleanRun("exit").empty());
}

}  // namespace
