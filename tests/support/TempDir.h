#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace TesselFX {
namespace test {

/// A fresh directory under /tmp, removed with everything in it when the object goes.
class TempDir {
  public:
    TempDir() {
        char pattern[] = "/tmp/zbtestXXXXXX";
        const char* made = mkdtemp(pattern);
        m_path = made != nullptr ? made : "/tmp/zbtest-not-made";
    }
    ~TempDir() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    /// The full path of name inside the directory.
    std::string Path(const std::string& name) const { return m_path + "/" + name; }
    /// Writes bytes to name inside the directory and returns the full path.
    std::string Write(const std::string& name, const std::string& bytes) const {
        std::ofstream(Path(name), std::ios::binary) << bytes;
        return Path(name);
    }

  private:
    std::string m_path;
};

inline std::string ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

}  // namespace test
}  // namespace TesselFX
