#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "TempDir.h"

namespace TesselFX {
namespace zbctl {
namespace test {

struct CommandResult {
    int status = -1;
    std::string out;  ///< standard output only
};

/// Runs zbctl with the given arguments (a shell word list); standard error goes to a file so
/// that only the trace or report is compared.
inline CommandResult RunZbctl(const std::string& arguments) {
    CommandResult result;
    const std::string command = std::string(ZBCTL_BINARY) + " " + arguments + " 2>/dev/null";
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) return result;
    char buffer[4096];
    size_t read;
    while ((read = fread(buffer, 1, sizeof(buffer), pipe)) > 0) result.out.append(buffer, read);
    const int status = pclose(pipe);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

using TesselFX::test::ReadFile;
using TesselFX::test::TempDir;

}  // namespace test
}  // namespace zbctl
}  // namespace TesselFX
