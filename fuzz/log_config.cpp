// The log configuration file, applied to a logger of its own. Any "FILE_LOG://" path of the
// input is replaced by one file in a private directory, so that the fuzzer never appends to a
// file elsewhere; the rest of the text reaches the logger as it is. The logger then prints a
// line at every level and is destroyed, which ends its file output's queue thread. Console
// output is what the input asks for: run with -close_fd_mask=3.
#include <stdlib.h>
#include <unistd.h>

#include <cstdint>
#include <string>

#include "log/TesselLog.h"

using namespace TesselFX;

namespace {

std::string g_logFile;

/// text with the path behind each "FILE_LOG://" (up to '=' or the end of the line) replaced.
std::string ConfineFileOutput(const std::string& text) {
    static const std::string kPrefix = "FILE_LOG://";
    std::string out;
    size_t from = 0;
    for (size_t at; (at = text.find(kPrefix, from)) != std::string::npos;) {
        out.append(text, from, at - from).append(kPrefix).append(g_logFile);
        from = text.find_first_of("=\r\n", at + kPrefix.size());
        if (from == std::string::npos) return out;
    }
    return out.append(text, from, std::string::npos);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    char pattern[] = "/tmp/zb_fuzz_log_XXXXXX";
    const char* dir = mkdtemp(pattern);
    g_logFile = std::string(dir != nullptr ? dir : "/tmp") + "/fx.log";
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text =
        ConfineFileOutput(std::string(reinterpret_cast<const char*>(data), size));
    {
        TesselLog log(false, {});
        log.LoadFromIniText(text);
        for (uint32_t level = 0; level <= 5; ++level) {
            log.Print(level, "TESSEL_LOG_FXModule", "line %u %s", level, "of the fuzzer");
        }
        log.WaitForInit();
    }
    truncate(g_logFile.c_str(), 0);
    return 0;
}
