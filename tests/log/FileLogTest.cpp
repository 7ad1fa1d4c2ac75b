#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdio>
#include <map>
#include <thread>

#include "LogCapture.h"
#include "LogTestHelpers.h"
#include "log/FileLog.h"
#include "log/FileLogPrintMessage.h"
#include "log/FileWriter.h"
#include "log/MessageQueue.h"
#include "log/TesselLog.h"

namespace TesselFX {
namespace {

using test::LogCapture;
using test::ReadFile;
using test::TempDir;
using test::WithoutLineNumbers;

const char kStamp[] = "03-14 09:26:53:589";

TEST(FileLog, WritesConsoleFormatLinesAppendingAndClosesOnDisable) {
    LogCapture capture(2);
    TempDir dir;
    const std::string path = dir.Write("fx.log", "earlier line\n");
    FileLog fileLog;
    EXPECT_EQ(fileLog.GetName(), "FILE_LOG");
    EXPECT_FALSE(fileLog.IsEnabled());
    EXPECT_TRUE(fileLog.SetOutputEnabled(("FILE_LOG://" + path).c_str(), true));
    EXPECT_TRUE(fileLog.IsEnabled());
    for (uint32_t level = 0; level < 5; ++level) {
        fileLog.Print(kStamp, 1201, 1305, level, "TESSEL_LOG_FXModule",
                      "level " + std::to_string(level));
    }
    fileLog.Print(kStamp, 7, 8, 4, "TESSEL_LOG_DspKit", "");
    // Disabling closes the file after the lines queued before it.
    EXPECT_TRUE(fileLog.SetOutputEnabled("FILE_LOG", false));
    EXPECT_FALSE(fileLog.IsEnabled());
    fileLog.Print(kStamp, 1, 1, 2, "TESSEL_LOG_FXModule", "after close");
    // A name that only starts with FILE_LOG is this output too; without a path no file opens.
    EXPECT_TRUE(fileLog.SetOutputEnabled("FILE_LOGGER", true));
    EXPECT_TRUE(fileLog.IsEnabled());
    fileLog.Print(kStamp, 1, 1, 2, "TESSEL_LOG_FXModule", "no file");
    EXPECT_FALSE(fileLog.SetOutputEnabled("FILE_LO", false));
    EXPECT_FALSE(fileLog.SetOutputEnabled("ANDROID_LOG", false));
    EXPECT_FALSE(fileLog.SetOutputEnabled(nullptr, false));
    EXPECT_TRUE(fileLog.IsEnabled());
    ASSERT_TRUE(fileLog.WaitUntilWritten());
    EXPECT_EQ(ReadFile(path),
              "earlier line\n"
              "03-14 09:26:53:589 1201 1305 DEBUG: TESSEL_LOG_FXModule level 0\n"
              "03-14 09:26:53:589 1201 1305 DEBUG: TESSEL_LOG_FXModule level 1\n"
              "03-14 09:26:53:589 1201 1305 INFO: TESSEL_LOG_FXModule level 2\n"
              "03-14 09:26:53:589 1201 1305 WARNING: TESSEL_LOG_FXModule level 3\n"
              "03-14 09:26:53:589 1201 1305 ERROR: TESSEL_LOG_FXModule level 4\n"
              "03-14 09:26:53:589 7 8 ERROR: TESSEL_LOG_DspKit \n");
    EXPECT_TRUE(capture.Lines().empty());
}

TEST(FileLog, LostLinesAreMarkedOncePerGap) {
    TempDir dir;
    const std::string path = dir.Path("lost.log");
    auto writer = std::make_shared<FileWriter>();
    ASSERT_TRUE(writer->Open(path, "a+"));
    auto line = [&](const char* text) {
        return std::make_shared<FileLogPrintMessage>(writer, kStamp, 10, 11,
                                                     "INFO:", "TESSEL_LOG_FXModule", text);
    };
    LogCapture capture(4);
    TesselInterprocess::MessageQueue queue(1);
    EXPECT_TRUE(queue.Enqueue(line("a")));
    EXPECT_FALSE(queue.Enqueue(line("lost 1")));
    EXPECT_FALSE(queue.Enqueue(line("lost 2")));
    queue.Dequeue()->Execute();
    EXPECT_TRUE(queue.Enqueue(line("b")));
    queue.Dequeue()->Execute();
    EXPECT_TRUE(queue.Enqueue(line("c")));
    EXPECT_FALSE(queue.Enqueue(line("lost 3")));
    queue.Dequeue()->Execute();
    EXPECT_TRUE(queue.Enqueue(line("d")));
    queue.Dequeue()->Execute();
    // Every line is flushed as it is written.
    EXPECT_EQ(ReadFile(path),
              "03-14 09:26:53:589 10 11 INFO: TESSEL_LOG_FXModule a\n"
              "* 03-14 09:26:53:589 10 11 INFO: TESSEL_LOG_FXModule b\n"
              "03-14 09:26:53:589 10 11 INFO: TESSEL_LOG_FXModule c\n"
              "* 03-14 09:26:53:589 10 11 INFO: TESSEL_LOG_FXModule d\n");
}

TEST(FileLog, FailedOpenIsLoggedAndLaterLinesAreHarmless) {
    LogCapture capture(4);
    TempDir dir;
    const std::string missing = dir.Path("no/such/dir.log");
    {
        FileLog fileLog;
        EXPECT_TRUE(fileLog.SetOutputEnabled("FILE_LOG://", true));
        EXPECT_TRUE(fileLog.SetOutputEnabled(("FILE_LOG://" + missing).c_str(), true));
        fileLog.Print(kStamp, 1, 2, 2, "TESSEL_LOG_FXModule", "goes nowhere");
        ASSERT_TRUE(fileLog.WaitUntilWritten());
    }
    EXPECT_EQ(WithoutLineNumbers(capture.Texts()),
              (std::vector<std::string>{
                  "FileWriter.cpp:N, ",
                  "FileWriter::Open  fail No such file or directory",
                  "FileWriter.cpp:N, ",
                  "FileWriter::Open " + missing + " fail No such file or directory",
              }));
    EXPECT_TRUE(capture.Has(4, "FileWriter::Open  fail No such file or directory"));
}

TEST(FileLog, WriterReopenLeavesTheEarlierFileOpen) {
    TempDir dir;
    const std::string first = dir.Path("first.log");
    const std::string second = dir.Path("second.log");
    auto writer = std::make_shared<FileWriter>();
    EXPECT_FALSE(writer->IsOpen());
    writer->Write("dropped");
    writer->Flush();
    ASSERT_TRUE(writer->Open(first, "a+"));
    writer->Write("one\n");  // stays in the first stream's buffer
    ASSERT_TRUE(writer->Open(second, "a+"));
    writer->Write("two\n");
    writer->Flush();
    EXPECT_EQ(ReadFile(first), "");
    EXPECT_EQ(ReadFile(second), "two\n");
    writer->Close();
    EXPECT_FALSE(writer->IsOpen());
    writer->Write("after close\n");
    writer.reset();  // closes the stream it replaced, which flushes it
    EXPECT_EQ(ReadFile(first), "one\n");
    EXPECT_EQ(ReadFile(second), "two\n");
}

// The file output's queue logs about each post through the process-wide logger; with the file
// on and every tag at level 0 those lines come back into the same queue, from several threads
// and while the queue overflows. This must neither stop nor recurse.
TEST(FileLog, ProcessWideFileOutputAtLevelZeroFromManyThreads) {
    TempDir dir;
    const std::string path = dir.Path("busy.log");
    constexpr int kThreads = 4;
    constexpr int kLines = 400;
    size_t fullLines = 0;
    {
        LogCapture capture(0);
        TesselLog& log = TesselLog::Get();
        auto fileLog = std::dynamic_pointer_cast<FileLog>(log.GetOutput(4));
        ASSERT_TRUE(fileLog);
        ASSERT_TRUE(log.SetLogOutput(("FILE_LOG://" + path).c_str(), true));
        std::vector<std::thread> workers;
        for (int t = 0; t < kThreads; ++t) {
            workers.emplace_back([t] {
                for (int i = 0; i < kLines; ++i) {
                    TESSEL_LOG(2, TESSEL_LOG_Preset, "worker %d line %d", t, i);
                }
            });
        }
        for (auto& worker : workers) worker.join();
        EXPECT_TRUE(fileLog->WaitUntilWritten());
        EXPECT_TRUE(log.SetLogOutput("FILE_LOG", false));
        EXPECT_TRUE(fileLog->WaitUntilWritten());
        EXPECT_TRUE(capture.HasFragment("MessageQueue::Enqueue "));
        fullLines = capture.Count("MessageQueue::Enqueue() Message Queue full");
    }
    std::map<int, int> lastLine;
    size_t workerLines = 0;
    size_t marks = 0;
    size_t dequeueLines = 0;
    for (std::string line : test::SplitLines(ReadFile(path))) {
        if (line.rfind("* ", 0) == 0) {
            ++marks;
            line.erase(0, 2);
        }
        // "MM-DD hh:mm:ss:mmm pid tid LEVEL: tag text"
        const size_t stampEnd = test::kTimestampShape.size();
        ASSERT_TRUE(test::MatchesShape(line.substr(0, stampEnd), test::kTimestampShape)) << line;
        std::istringstream fields(line.substr(stampEnd));
        unsigned pid = 0, tid = 0;
        std::string word, tag, body;
        ASSERT_TRUE(fields >> pid >> tid >> word >> tag) << line;
        fields.get();
        std::getline(fields, body);
        EXPECT_EQ(pid, static_cast<unsigned>(getpid()));
        EXPECT_TRUE(word == "DEBUG:" || word == "INFO:" || word == "WARNING:" || word == "ERROR:")
            << line;
        if (body.rfind("MessageQueue::Dequeue ", 0) == 0) ++dequeueLines;
        int worker = 0, index = 0, consumed = 0;
        if (sscanf(body.c_str(), "worker %d line %d%n", &worker, &index, &consumed) != 2 ||
            static_cast<size_t>(consumed) != body.size()) {
            continue;
        }
        EXPECT_EQ(word, "INFO:");
        EXPECT_EQ(tag, "TESSEL_LOG_Preset");
        // Each thread's lines land in the order it posted them.
        if (lastLine.count(worker) != 0) {
            EXPECT_GT(index, lastLine[worker]) << line;
        }
        lastLine[worker] = index;
        ++workerLines;
    }
    // The queue thread writes its own lines in place.
    EXPECT_GT(dequeueLines, 0u);
    if (fullLines == 0) {
        EXPECT_EQ(workerLines, static_cast<size_t>(kThreads * kLines));
        EXPECT_EQ(marks, 0u);
    } else {
        EXPECT_LT(workerLines, static_cast<size_t>(kThreads * kLines));
    }
}

}  // namespace
}  // namespace TesselFX
