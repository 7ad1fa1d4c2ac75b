// The process-wide logger outlives every caller: a program whose thread logs while main
// returns, and whose static object logs after the logger would have been destroyed, exits
// cleanly, and what main logged reaches the file.

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <sstream>
#include <string>

namespace TesselFX {
namespace {

TEST(LogAtExit, LoggingWhileTheProcessExitsIsSafeAndTheFileIsDrained) {
    char directory[] = "/tmp/log_exit_XXXXXX";
    ASSERT_NE(mkdtemp(directory), nullptr);
    const std::string path = std::string(directory) + "/exit.log";
    // Exit-time faults depend on thread timing: run the program several times.
    for (int run = 0; run < 20; ++run) {
        unlink(path.c_str());
        const int status = std::system(
            (std::string(PROBE_LAUNCHER " " LOG_EXIT_PROBE " ") + path + " 2>/dev/null").c_str());
        ASSERT_TRUE(WIFEXITED(status)) << "run " << run;
        ASSERT_EQ(WEXITSTATUS(status), 0) << "run " << run;
        std::ifstream file(path);
        std::stringstream text;
        text << file.rdbuf();
        EXPECT_NE(text.str().find(" INFO: TESSEL_LOG_UnitTest last line of main\n"),
                  std::string::npos)
            << "run " << run;
    }
    unlink(path.c_str());
    rmdir(directory);
}

}  // namespace
}  // namespace TesselFX
