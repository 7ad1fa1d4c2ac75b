#pragma once

#include <sys/wait.h>

#include <algorithm>
#include <cstdio>
#include <sstream>
#include <string>

#include "TempDir.h"

namespace TesselFX {
namespace zbctl {
namespace test {

struct CommandResult {
    int status = -1;
    std::string out;  ///< standard output
    std::string err;  ///< standard error
};

/// Runs zbctl through the shell with the given arguments (a shell word list, which may end with
/// a redirection of standard input), after the shell commands of setup ("ulimit -f 8; ").
inline CommandResult RunZbctl(const std::string& arguments, const std::string& setup = "") {
    CommandResult result;
    const TesselFX::test::TempDir dir;
    const std::string command =
        setup + std::string(ZBCTL_BINARY) + " " + arguments + " 2>" + dir.Path("stderr");
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe != nullptr) {
        char buffer[4096];
        size_t read;
        while ((read = fread(buffer, 1, sizeof(buffer), pipe)) > 0) result.out.append(buffer, read);
        const int status = pclose(pipe);
        result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    // A --coverage build reports its own failed writes of profile data (under a file size
    // limit, which may also cut the last of these lines short) on standard error; they are not
    // zbctl's.
    const std::string gcov = "libgcov profiling error:";
    std::istringstream lines(TesselFX::test::ReadFile(dir.Path("stderr")));
    for (std::string line; std::getline(lines, line);) {
        const size_t compared = std::min(line.size(), gcov.size());
        if (line.empty() || line.compare(0, compared, gcov, 0, compared) != 0)
            result.err += line + "\n";
    }
    return result;
}

using TesselFX::test::ReadFile;
using TesselFX::test::TempDir;

}  // namespace test
}  // namespace zbctl
}  // namespace TesselFX
