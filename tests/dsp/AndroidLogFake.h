#pragma once

#include <string>
#include <vector>

namespace TesselFX {
namespace test {

struct AndroidLogLine {
    int priority;
    std::string tag;
    std::string text;
};

/// Records the lines written straight to the Android log while it lives. This test binary
/// defines __android_log_write itself, which the library's direct log calls link against.
/// Captures nest: the innermost live one records.
class AndroidLogCapture {
  public:
    AndroidLogCapture();
    ~AndroidLogCapture();
    AndroidLogCapture(const AndroidLogCapture&) = delete;
    AndroidLogCapture& operator=(const AndroidLogCapture&) = delete;

    std::vector<AndroidLogLine> Lines() const;
    /// Texts of all lines, in order.
    std::vector<std::string> Texts() const;

private:
    std::vector<AndroidLogLine> m_lines;
    std::vector<AndroidLogLine>* m_previous = nullptr;
};

}  // namespace test
}  // namespace TesselFX
