#include "log/TesselLog.h"

#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <sstream>
#include <thread>

#include "log/AndroidLog.h"
#include "log/FileLog.h"
#include "log/StderrLog.h"
#include "log/StdoutLog.h"
#include "log/ThreadStart.h"

namespace TesselFX {

namespace {

const char* const kTagNames[kTesselLogTagCount] = {
    "TESSEL_LOG_FXLibrary", "TESSEL_LOG_FXModule",       "TESSEL_LOG_JNI",
    "TESSEL_LOG_OpenSLES",  "TESSEL_LOG_MediaPlayerJni", "TESSEL_LOG_UnitTest",
    "TESSEL_LOG_Preset",    "TESSEL_LOG_DspKit",         "TESSEL_LOG_DefaultLog",
};
constexpr uint32_t kDefaultLevel = 2;
constexpr size_t kMessageBufferSize = 1024;
constexpr size_t kAndroidSlot = 0;
constexpr size_t kFileSlot = 4;

std::string Timestamp() {
    struct timespec now {};
    clock_gettime(CLOCK_REALTIME, &now);
    struct tm local {};
    localtime_r(&now.tv_sec, &local);
    char text[32];
    snprintf(text, sizeof(text), "%02d-%02d %02d:%02d:%02d:%03d", local.tm_mon + 1, local.tm_mday,
             local.tm_hour, local.tm_min, local.tm_sec, static_cast<int>(now.tv_nsec / 1000000));
    return text;
}

}  // namespace

class TesselLogImpl {
  public:
    TesselLogImpl(TesselLog* owner, bool asynchronous, std::vector<std::string> iniPaths);
    ~TesselLogImpl();

    bool HasAnyOutput() const { return m_anyOutput; }
    void PrintText(uint32_t level, const std::string& tag, const std::string& text);
    bool SetLogLevel(const char* tagName, uint32_t level, bool force);
    bool SetLogOutput(const char* outputName, bool enable, bool force);
    bool LoadFromIniFile(const std::string& text);
    void WaitForInit();
    /// Joins the loader thread, writes out what the file output was given and ends its queue
    /// thread; later file lines are dropped. Idempotent.
    void EndThreads();
    std::shared_ptr<TesselLogInterface> GetOutput(size_t slot) const;
    std::shared_ptr<TesselLogInterface> ReplaceOutput(size_t slot,
                                                      std::shared_ptr<TesselLogInterface> output);
    void RefreshOutputFlags();

  private:
    void LoadIni();
    static bool ReadFile(const std::string& path, std::string& text);
    void Warn(const std::string& text) { PrintText(3, kTagNames[TESSEL_LOG_FXModule], text); }
    std::shared_ptr<FileLog> GetFileLog() const {
        return std::dynamic_pointer_cast<FileLog>(m_outputs[kFileSlot]);
    }

    std::shared_ptr<TesselLogInterface> m_outputs[kTesselLogOutputSlots];
    TesselLog* m_owner;
    std::atomic<bool> m_anyOutput{false};
    std::atomic<bool> m_androidOnly{false};
    std::thread m_loaderThread;
    std::atomic<bool> m_initDone{false};
    bool m_asynchronous;
    std::vector<std::string> m_iniPaths;
    // Taken by the loader while it applies the INI and by ReplaceOutput; signals initDone.
    std::mutex m_settingsMutex;
    std::condition_variable m_settingsCondition;
};

TesselLogImpl::TesselLogImpl(TesselLog* owner, bool asynchronous, std::vector<std::string> iniPaths)
    : m_owner(owner), m_asynchronous(asynchronous), m_iniPaths(std::move(iniPaths)) {
    for (auto& level : m_owner->levels) level.store(kDefaultLevel, std::memory_order_relaxed);
    m_outputs[kAndroidSlot] = std::make_shared<AndroidLog>();
    m_outputs[kAndroidSlot]->SetOutputEnabled("ANDROID_LOG", true);
    m_outputs[2] = std::make_shared<StdoutLog>();
    m_outputs[3] = std::make_shared<StderrLog>();
    m_outputs[kFileSlot] = std::make_shared<FileLog>();
    RefreshOutputFlags();
    if (m_asynchronous) {
        m_initDone = false;
        m_loaderThread = StartThread([this] { LoadIni(); });
    } else {
        m_initDone = true;
    }
}

TesselLogImpl::~TesselLogImpl() {
    // The file queue thread logs through this object: end it while every slot still stands,
    // then turn all output off so that nothing reads a slot while it is released.
    EndThreads();
    m_anyOutput = false;
    for (size_t slot = kTesselLogOutputSlots; slot-- > 0;) m_outputs[slot].reset();
}

void TesselLogImpl::EndThreads() {
    if (m_loaderThread.joinable()) m_loaderThread.join();
    if (auto fileLog = GetFileLog()) fileLog->Shutdown();
}

void TesselLogImpl::WaitForInit() {
    {
        std::unique_lock<std::mutex> lock(m_settingsMutex);
        m_settingsCondition.wait(lock, [this] { return m_initDone.load(); });
    }
    // Also let the file queue thread finish what it was given, including its start-up line.
    if (auto fileLog = GetFileLog()) fileLog->WaitUntilWritten();
}

void TesselLogImpl::PrintText(uint32_t level, const std::string& tag, const std::string& text) {
    if (!m_anyOutput) return;
    std::string timestamp;
    uint32_t pid = 0;
    uint32_t tid = 0;
    if (!m_androidOnly) {
        timestamp = Timestamp();
        pid = static_cast<uint32_t>(getpid());
        tid = static_cast<uint32_t>(syscall(SYS_gettid));
    }
    for (auto& output : m_outputs) {
        if (output && output->IsEnabled()) output->Print(timestamp, pid, tid, level, tag, text);
    }
}

bool TesselLogImpl::SetLogLevel(const char* tagName, uint32_t level, bool force) {
    if (!m_initDone && !force) {
        Warn("Init did not finish. Please wait for a while to call SetLogLevel again");
        return false;
    }
    if (tagName == nullptr) {
        Warn("TesselLogImpl::SetLogLevel szTagName is NULL");
        return false;
    }
    if (level >= 5) {
        Warn(std::string("TesselLogImpl::SetLogLevel") + tagName + " : log level " +
             std::to_string(level) + " is not valid");
        return false;
    }
    if (strcmp(tagName, "TESSEL_LOG_ALL") == 0) {
        for (auto& each : m_owner->levels) each.store(level, std::memory_order_relaxed);
        return true;
    }
    for (size_t i = 0; i < kTesselLogTagCount; ++i) {
        if (strcmp(tagName, kTagNames[i]) == 0) {
            m_owner->levels[i].store(level, std::memory_order_relaxed);
            return true;
        }
    }
    Warn(std::string("TesselLogImpl::SetLogLevel can't find log tag") + tagName);
    return false;
}

bool TesselLogImpl::SetLogOutput(const char* outputName, bool enable, bool force) {
    if (!m_initDone && !force) {
        Warn("Init did not finish. Please wait for a while to call SetLogOutput again");
        return false;
    }
    if (outputName == nullptr) {
        Warn("TesselLogImpl::SetLogOutput szOutputName is NULL");
        return false;
    }
    bool found = false;
    for (auto& output : m_outputs) {
        if (output && output->SetOutputEnabled(outputName, enable)) {
            found = true;
            break;
        }
    }
    if (!found) {
        Warn(std::string("TesselLogImpl::SetLogOutput can't find log output ") + outputName);
        return false;
    }
    RefreshOutputFlags();
    return true;
}

void TesselLogImpl::RefreshOutputFlags() {
    bool any = false;
    bool othersOff = true;
    for (size_t slot = 0; slot < kTesselLogOutputSlots; ++slot) {
        const bool on = m_outputs[slot] && m_outputs[slot]->IsEnabled();
        any = any || on;
        if (slot != kAndroidSlot && on) othersOff = false;
    }
    m_anyOutput = any;
    m_androidOnly = m_outputs[kAndroidSlot] && m_outputs[kAndroidSlot]->IsEnabled() && othersOff;
}

std::shared_ptr<TesselLogInterface> TesselLogImpl::GetOutput(size_t slot) const {
    return slot < kTesselLogOutputSlots ? m_outputs[slot] : nullptr;
}

std::shared_ptr<TesselLogInterface> TesselLogImpl::ReplaceOutput(
    size_t slot, std::shared_ptr<TesselLogInterface> output) {
    if (slot >= kTesselLogOutputSlots) return nullptr;
    std::lock_guard<std::mutex> lock(m_settingsMutex);
    auto previous = std::move(m_outputs[slot]);
    m_outputs[slot] = std::move(output);
    RefreshOutputFlags();
    return previous;
}

bool TesselLogImpl::LoadFromIniFile(const std::string& text) {
    enum class Section { kNone, kTags, kOutputs } section = Section::kNone;
    std::istringstream lines(text);
    std::string line;
    while (std::getline(lines, line)) {
        const size_t first = line.find_first_not_of(" \t");
        const size_t last = line.find_last_not_of(" \t\r\n");
        if (first == std::string::npos || last == std::string::npos || last < first) continue;
        line = line.substr(first, last - first + 1);
        if (line[0] == '#' || line[0] == ';') continue;
        if (line.front() == '[' && line.back() == ']') {
            const std::string name = line.substr(1, line.size() - 2);
            section = name == "TesselLogTag"      ? Section::kTags
                      : name == "TesselLogOutput" ? Section::kOutputs
                                                  : Section::kNone;
            continue;
        }
        if (section == Section::kNone) continue;
        const size_t equals = line.find('=');
        const std::string name = line.substr(0, equals);
        std::istringstream valueStream(equals == std::string::npos ? std::string()
                                                                   : line.substr(equals + 1));
        int value = 0;
        if (!(valueStream >> value)) {
            Warn("TesselLogImpl::LoadFromIniFile invalid argument " + line);
            continue;
        }
        if (section == Section::kTags) {
            SetLogLevel(name.c_str(), static_cast<uint32_t>(value), true);
        } else {
            SetLogOutput(name.c_str(), value == 1, true);
        }
    }
    return true;
}

bool TesselLogImpl::ReadFile(const std::string& path, std::string& text) {
    FILE* file = fopen(path.c_str(), "rbe");
    if (file == nullptr) return false;
    char chunk[4096];
    size_t got;
    while ((got = fread(chunk, 1, sizeof(chunk), file)) > 0) text.append(chunk, got);
    fclose(file);
    return true;
}

void TesselLogImpl::LoadIni() {
    static const char kEmpty[] = "";
    std::string text = kEmpty;
    std::string source = "TesselLog::TesselLog LoadIni from memory";
    for (const std::string& path : m_iniPaths) {
        if (ReadFile(path, text)) {
            source = "TesselLog::TesselLog LoadIni succeed from " + path;
            break;
        }
    }
    // The settings are applied under the mutex that ReplaceOutput takes: the reading above
    // may block (a slow disk), the applying must not meet a slot being replaced.
    std::lock_guard<std::mutex> lock(m_settingsMutex);
    LoadFromIniFile(text);
    if (m_owner->levels[TESSEL_LOG_FXModule].load(std::memory_order_relaxed) == 0 &&
        m_outputs[kAndroidSlot]) {
        m_outputs[kAndroidSlot]->Print("", 0, 0, 0, kTagNames[TESSEL_LOG_FXModule], source);
    }
    m_initDone = true;
    m_settingsCondition.notify_all();
}

TesselLog& TesselLog::Get() {
    // Never destroyed: threads and static objects may log while the process exits, after a
    // destructor of it would have run. At exit its threads end, the file written out first.
    static TesselLog* const instance = [] {
        TesselLog* log = new TesselLog(true);
        std::atexit([] { Get().m_impl->EndThreads(); });
        return log;
    }();
    return *instance;
}

std::vector<std::string> TesselLog::DefaultIniPaths() {
    return {"/vendor/etc/zorb_conf.ini", "/system/etc/zorb_conf.ini"};
}

TesselLog::TesselLog(bool asynchronous) : TesselLog(asynchronous, DefaultIniPaths()) {}

TesselLog::TesselLog(bool asynchronous, std::vector<std::string> iniPaths)
    : m_impl(std::make_shared<TesselLogImpl>(this, asynchronous, std::move(iniPaths))) {}

TesselLog::~TesselLog() = default;

bool TesselLog::SetLogLevel(const char* tagName, uint32_t level) {
    return m_impl->SetLogLevel(tagName, level, false);
}

bool TesselLog::SetLogOutput(const char* outputName, bool enable) {
    return m_impl->SetLogOutput(outputName, enable, false);
}

void TesselLog::Print(uint32_t level, const char* tag, const char* format, ...) {
    va_list args;
    va_start(args, format);
    PrintV(level, tag, format, args);
    va_end(args);
}

void TesselLog::PrintV(uint32_t level, const char* tag, const char* format, va_list args) {
    if (level > 4 || format == nullptr || !m_impl->HasAnyOutput()) return;
    char message[kMessageBufferSize];
    vsnprintf(message, sizeof(message), format, args);
    m_impl->PrintText(level, tag != nullptr ? tag : "", message);
}

void TesselLog::WaitForInit() { m_impl->WaitForInit(); }

bool TesselLog::LoadFromIniText(const std::string& text) { return m_impl->LoadFromIniFile(text); }

std::shared_ptr<TesselLogInterface> TesselLog::GetOutput(size_t slot) const {
    return m_impl->GetOutput(slot);
}

std::shared_ptr<TesselLogInterface> TesselLog::ReplaceOutput(
    size_t slot, std::shared_ptr<TesselLogInterface> output) {
    return m_impl->ReplaceOutput(slot, std::move(output));
}

void TesselLog::RefreshOutputFlags() { m_impl->RefreshOutputFlags(); }

bool TesselLogSetLogLevel(uint32_t level, const char* tagName) {
    return TesselLog::Get().SetLogLevel(tagName, level);
}

bool TesselLogSetLogOutput(const char* outputName, bool enable) {
    return TesselLog::Get().SetLogOutput(outputName, enable);
}

}  // namespace TesselFX
