#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "LogCapture.h"
#include "LogTestHelpers.h"
#include "log/StdoutLog.h"
#include "log/TesselLog.h"

namespace TesselFX {
namespace {

using test::LogCapture;
using test::ReadFile;
using test::RecordedLine;
using test::RecordingOutput;
using test::TempDir;

std::vector<uint32_t> Levels(const TesselLog& log) {
    std::vector<uint32_t> levels;
    for (const auto& level : log.levels) levels.push_back(level.load());
    return levels;
}

// A logger without a loader whose only enabled output is a recorder in slot 1.
struct RecordedLog {
    RecordedLog() : log(false), output(std::make_shared<RecordingOutput>("SYS_LOG")) {
        log.ReplaceOutput(0, nullptr);
        log.ReplaceOutput(1, output);
    }
    TesselLog log;
    std::shared_ptr<RecordingOutput> output;
};

TEST(TesselLogSettings, SettersRefuseUntilTheLoaderHasFinished) {
    TempDir dir;
    const std::string fifo = dir.Path("zorb_conf.ini");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    auto android = std::make_shared<RecordingOutput>("ANDROID_LOG");
    TesselLog log(true, {dir.Path("absent.ini"), fifo});
    log.ReplaceOutput(0, android);
    // The loader now waits in the open of the pipe until a writer comes.
    EXPECT_FALSE(log.SetLogLevel("TESSEL_LOG_Preset", 4));
    EXPECT_FALSE(log.SetLogOutput("STDOUT_LOG", true));
    EXPECT_FALSE(log.SetLogLevel(nullptr, 9));
    EXPECT_EQ(Levels(log), std::vector<uint32_t>(9, 2));
    EXPECT_FALSE(log.GetOutput(2)->IsEnabled());
    {
        const int fd = open(fifo.c_str(), O_WRONLY | O_CLOEXEC);
        const std::string ini = "[TesselLogTag]\nTESSEL_LOG_FXModule=0\nTESSEL_LOG_Preset=3\n";
        EXPECT_EQ(write(fd, ini.data(), ini.size()), static_cast<ssize_t>(ini.size()));
        close(fd);
    }
    log.WaitForInit();
    // The INI itself was not barred.
    EXPECT_EQ(Levels(log), (std::vector<uint32_t>{2, 0, 2, 2, 2, 2, 3, 2, 2}));
    EXPECT_TRUE(log.SetLogLevel("TESSEL_LOG_Preset", 4));
    EXPECT_EQ(log.levels[TESSEL_LOG_Preset].load(), 4u);

    EXPECT_EQ(android->Texts(),
              (std::vector<std::string>{
                  "Init did not finish. Please wait for a while to call SetLogLevel again",
                  "Init did not finish. Please wait for a while to call SetLogOutput again",
                  "Init did not finish. Please wait for a while to call SetLogLevel again",
                  "TesselLog::TesselLog LoadIni succeed from " + fifo}));
    const auto lines = android->Lines();
    ASSERT_EQ(lines.size(), 4u);
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(lines[i].level, 3u);
        EXPECT_EQ(lines[i].tag, "TESSEL_LOG_FXModule");
    }
    EXPECT_EQ(lines[3].level, 0u);
    for (const auto& line : lines) {
        // Android is the only output: no time, pid or tid is computed.
        EXPECT_EQ(line.timestamp, "");
        EXPECT_EQ(line.pid, 0u);
        EXPECT_EQ(line.tid, 0u);
    }
}

TEST(TesselLogSettings, SetLogLevelAndSetLogOutputFailures) {
    RecordedLog recorded;
    TesselLog& log = recorded.log;
    EXPECT_FALSE(log.SetLogLevel(nullptr, 1));
    EXPECT_FALSE(log.SetLogLevel("TESSEL_LOG_ALL", 5));
    EXPECT_FALSE(log.SetLogLevel("TESSEL_LOG_Preset", 7));
    EXPECT_FALSE(log.SetLogLevel("TESSEL_LOG_Presets", 1));
    EXPECT_FALSE(log.SetLogLevel("tessel_log_preset", 1));
    EXPECT_EQ(Levels(log), std::vector<uint32_t>(9, 2));
    EXPECT_TRUE(log.SetLogLevel("TESSEL_LOG_DspKit", 4));
    EXPECT_EQ(Levels(log), (std::vector<uint32_t>{2, 2, 2, 2, 2, 2, 2, 4, 2}));
    EXPECT_TRUE(log.SetLogLevel("TESSEL_LOG_ALL", 0));
    EXPECT_EQ(Levels(log), std::vector<uint32_t>(9, 0));
    EXPECT_TRUE(log.SetLogLevel("TESSEL_LOG_DefaultLog", 4));
    EXPECT_EQ(log.levels[TESSEL_LOG_DefaultLog].load(), 4u);

    EXPECT_FALSE(log.SetLogOutput(nullptr, true));
    EXPECT_FALSE(log.SetLogOutput("FILE", true));
    EXPECT_FALSE(log.SetLogOutput("stdout_log", true));
    EXPECT_TRUE(log.SetLogOutput("STDERR_LOG", false));
    EXPECT_EQ(recorded.output->Texts(),
              (std::vector<std::string>{
                  "TesselLogImpl::SetLogLevel szTagName is NULL",
                  "TesselLogImpl::SetLogLevelTESSEL_LOG_ALL : log level 5 is not valid",
                  "TesselLogImpl::SetLogLevelTESSEL_LOG_Preset : log level 7 is not valid",
                  "TesselLogImpl::SetLogLevel can't find log tagTESSEL_LOG_Presets",
                  "TesselLogImpl::SetLogLevel can't find log tagtessel_log_preset",
                  "TesselLogImpl::SetLogOutput szOutputName is NULL",
                  "TesselLogImpl::SetLogOutput can't find log output FILE",
                  "TesselLogImpl::SetLogOutput can't find log output stdout_log",
              }));
    for (const auto& line : recorded.output->Lines()) {
        EXPECT_EQ(line.level, 3u);
        EXPECT_EQ(line.tag, "TESSEL_LOG_FXModule");
    }
}

TEST(TesselLogSettings, ProcessWideSettersForwardToTheSingleton) {
    LogCapture capture(2);
    EXPECT_TRUE(TesselLogSetLogLevel(3, "TESSEL_LOG_Preset"));
    EXPECT_EQ(TesselLog::Get().levels[TESSEL_LOG_Preset].load(), 3u);
    EXPECT_FALSE(TesselLogSetLogLevel(5, "TESSEL_LOG_ALL"));
    EXPECT_EQ(TesselLog::Get().levels[TESSEL_LOG_Preset].load(), 3u);
    EXPECT_FALSE(TesselLogSetLogOutput("NOPE_LOG", true));
    EXPECT_TRUE(
        capture.Has(3, "TesselLogImpl::SetLogLevelTESSEL_LOG_ALL : log level 5 is not valid"));
    EXPECT_TRUE(capture.Has(3, "TesselLogImpl::SetLogOutput can't find log output NOPE_LOG"));
}

TEST(TesselLogSettings, OutputsFlagsAndTheTextCut) {
    TesselLog log(false);
    auto android = std::make_shared<RecordingOutput>("ANDROID_LOG");
    auto other = std::make_shared<RecordingOutput>("SYS_LOG", false);
    log.ReplaceOutput(0, android);
    log.ReplaceOutput(1, other);
    log.Print(2, "TESSEL_LOG_Preset", "one %d", 1);
    EXPECT_TRUE(log.SetLogOutput("SYS_LOG", true));
    log.Print(3, "TESSEL_LOG_Preset", "two %s", "x");
    log.Print(5, "TESSEL_LOG_Preset", "level five is never written");
    EXPECT_TRUE(log.SetLogOutput("ANDROID_LOG", false));
    const std::string longText(2000, 'y');
    log.Print(4, "TESSEL_LOG_Preset", "%s", longText.c_str());
    EXPECT_TRUE(log.SetLogOutput("SYS_LOG", false));
    log.Print(4, "TESSEL_LOG_Preset", "with no output");

    const auto androidLines = android->Lines();
    ASSERT_EQ(androidLines.size(), 2u);
    EXPECT_EQ(androidLines[0].text, "one 1");
    EXPECT_EQ(androidLines[0].level, 2u);
    EXPECT_EQ(androidLines[0].timestamp, "");
    EXPECT_EQ(androidLines[0].pid, 0u);
    // With a second output on, Android lines come with the real values too.
    const RecordedLine& second = androidLines[1];
    EXPECT_EQ(second.text, "two x");
    EXPECT_EQ(second.tag, "TESSEL_LOG_Preset");
    EXPECT_TRUE(test::MatchesShape(second.timestamp, test::kTimestampShape)) << second.timestamp;
    const int month = std::stoi(second.timestamp.substr(0, 2));
    EXPECT_TRUE(month >= 1 && month <= 12) << second.timestamp;
    EXPECT_EQ(second.pid, static_cast<uint32_t>(getpid()));
    EXPECT_EQ(second.tid, static_cast<uint32_t>(syscall(SYS_gettid)));

    const auto otherLines = other->Lines();
    ASSERT_EQ(otherLines.size(), 2u);
    EXPECT_EQ(otherLines[0].text, "two x");
    EXPECT_EQ(otherLines[0].timestamp, second.timestamp);
    EXPECT_EQ(otherLines[1].text, longText.substr(0, 1023));
    EXPECT_EQ(otherLines[1].level, 4u);
}

TEST(TesselLogSettings, IniLinesTakeEffectInFileOrder) {
    TempDir dir;
    const std::string path = dir.Path("ini.log");
    RecordedLog recorded;
    TesselLog& log = recorded.log;
    EXPECT_TRUE(
        log.LoadFromIniText("; comment\n"
                            "TESSEL_LOG_JNI=0\n"
                            "  [TesselLogTag]  \r\n"
                            "\tTESSEL_LOG_ALL=1\r\n"
                            "TESSEL_LOG_Preset=3 \n"
                            "# TESSEL_LOG_DspKit=0\n"
                            "TESSEL_LOG_UnitTest=abc\n"
                            "TESSEL_LOG_UnitTest =4\n"
                            "TESSEL_LOG_DspKit= 4\n"
                            "TESSEL_LOG_DefaultLog=-1\n"
                            "[tessellogtag]\n"
                            "TESSEL_LOG_JNI=0\n"
                            "[TesselLogOutput]\n"
                            "SYS_LOG=1\n"
                            "STDERR_LOG=1\n"
                            "STDERR_LOG=0\n"
                            "NOPE_LOG=1\n"
                            "FILE_LOG://" +
                            path +
                            "=1\n"
                            "[TesselLogTag]\n"
                            "TESSEL_LOG_FXLibrary=9\n"
                            "TESSEL_LOG_Preset=2\n"
                            "TESSEL_LOG_OpenSLES\n"
                            "\n"
                            "   \r\n"));
    EXPECT_EQ(Levels(log), (std::vector<uint32_t>{1, 1, 1, 1, 1, 1, 2, 4, 1}));
    EXPECT_EQ(recorded.output->Texts(),
              (std::vector<std::string>{
                  "TesselLogImpl::LoadFromIniFile invalid argument TESSEL_LOG_UnitTest=abc",
                  "TesselLogImpl::SetLogLevel can't find log tagTESSEL_LOG_UnitTest ",
                  "TesselLogImpl::SetLogLevelTESSEL_LOG_DefaultLog : log level 4294967295 is not "
                  "valid",
                  "TesselLogImpl::SetLogOutput can't find log output NOPE_LOG",
                  "TesselLogImpl::SetLogLevelTESSEL_LOG_FXLibrary : log level 9 is not valid",
                  "TesselLogImpl::LoadFromIniFile invalid argument TESSEL_LOG_OpenSLES",
              }));
    EXPECT_TRUE(recorded.output->IsEnabled());
    EXPECT_FALSE(log.GetOutput(3)->IsEnabled());
    ASSERT_TRUE(log.GetOutput(4)->IsEnabled());
    log.Print(2, "TESSEL_LOG_FXModule", "to the file");
    log.WaitForInit();  // also waits for the file output's thread
    const std::string pidTid =
        std::to_string(getpid()) + " " + std::to_string(syscall(SYS_gettid)) + " ";
    const auto written = test::SplitLines(ReadFile(path));
    const std::vector<std::string> expected = {
        pidTid +
            "WARNING: TESSEL_LOG_FXModule TesselLogImpl::SetLogLevelTESSEL_LOG_FXLibrary : "
            "log level 9 is not valid",
        pidTid +
            "WARNING: TESSEL_LOG_FXModule TesselLogImpl::LoadFromIniFile invalid argument "
            "TESSEL_LOG_OpenSLES",
        pidTid + "INFO: TESSEL_LOG_FXModule to the file",
    };
    ASSERT_EQ(written.size(), expected.size());
    for (size_t i = 0; i < expected.size(); ++i) {
        const size_t stampEnd = test::kTimestampShape.size();
        EXPECT_TRUE(test::MatchesShape(written[i].substr(0, stampEnd), test::kTimestampShape));
        EXPECT_EQ(written[i].substr(stampEnd), " " + expected[i]);
    }
}

TEST(TesselLogSettings, ConsoleLinesAndOutputNames) {
    FILE* stream = tmpfile();
    ASSERT_NE(stream, nullptr);
    StdLog console("CONSOLE", stream);
    for (uint32_t level = 0; level < 5; ++level) {
        console.Print("12-31 23:59:59:999", 1, 4294967295u, level, "TESSEL_LOG_JNI", "text");
    }
    console.Print("", 0, 0, 2, "", "");
    fflush(stream);
    rewind(stream);
    char buffer[1024] = {};
    const size_t got = fread(buffer, 1, sizeof(buffer) - 1, stream);
    fclose(stream);
    EXPECT_EQ(std::string(buffer, got),
              "12-31 23:59:59:999 1 4294967295 DEBUG: TESSEL_LOG_JNI text\n"
              "12-31 23:59:59:999 1 4294967295 DEBUG: TESSEL_LOG_JNI text\n"
              "12-31 23:59:59:999 1 4294967295 INFO: TESSEL_LOG_JNI text\n"
              "12-31 23:59:59:999 1 4294967295 WARNING: TESSEL_LOG_JNI text\n"
              "12-31 23:59:59:999 1 4294967295 ERROR: TESSEL_LOG_JNI text\n"
              " 0 0 INFO:  \n");

    // Console outputs match their name exactly, unlike the file output.
    StdoutLog out;
    EXPECT_FALSE(out.IsEnabled());
    EXPECT_FALSE(out.SetOutputEnabled("STDOUT_LOGGER", true));
    EXPECT_FALSE(out.SetOutputEnabled("STDOUT_LO", true));
    EXPECT_FALSE(out.SetOutputEnabled(nullptr, true));
    EXPECT_FALSE(out.IsEnabled());
    EXPECT_TRUE(out.SetOutputEnabled("STDOUT_LOG", true));
    EXPECT_TRUE(out.IsEnabled());
}

}  // namespace
}  // namespace TesselFX
