#include "AndroidLogFake.h"

#include <mutex>

namespace TesselFX {
namespace test {
namespace {

std::mutex g_mutex;
/// The innermost live capture's lines, or null.
std::vector<AndroidLogLine>* g_lines = nullptr;

}  // namespace

AndroidLogCapture::AndroidLogCapture() {
    std::lock_guard<std::mutex> lock(g_mutex);
    m_previous = g_lines;
    g_lines = &m_lines;
}

AndroidLogCapture::~AndroidLogCapture() {
    std::lock_guard<std::mutex> lock(g_mutex);
    g_lines = m_previous;
}

std::vector<AndroidLogLine> AndroidLogCapture::Lines() const {
    std::lock_guard<std::mutex> lock(g_mutex);
    return m_lines;
}

std::vector<std::string> AndroidLogCapture::Texts() const {
    std::vector<std::string> texts;
    for (const AndroidLogLine& line : Lines()) texts.push_back(line.text);
    return texts;
}

}  // namespace test
}  // namespace TesselFX

extern "C" int __android_log_write(int priority, const char* tag, const char* text) {
    std::lock_guard<std::mutex> lock(TesselFX::test::g_mutex);
    if (TesselFX::test::g_lines != nullptr) {
        TesselFX::test::g_lines->push_back({priority, tag, text});
    }
    return 1;
}
