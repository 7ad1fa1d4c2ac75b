#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

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

/// A file under a fresh temporary directory, removed with it.
class TempDir {
  public:
    TempDir() {
        char pattern[] = "/tmp/zbctl-test-XXXXXX";
        m_path = mkdtemp(pattern);
    }
    ~TempDir() { std::system(("rm -rf '" + m_path + "'").c_str()); }
    std::string File(const std::string& name) const { return m_path + "/" + name; }
    std::string Write(const std::string& name, const std::string& text) const {
        std::ofstream(File(name), std::ios::binary) << text;
        return File(name);
    }

  private:
    std::string m_path;
};

inline std::string ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

}  // namespace test
}  // namespace zbctl
}  // namespace TesselFX
