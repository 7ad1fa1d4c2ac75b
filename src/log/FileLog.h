#pragma once

#include <memory>
#include <string>

#include "log/FileWriter.h"
#include "log/Message.h"
#include "log/TesselLogInterface.h"
#include "log/ThreadedQueue.h"

namespace TesselFX {

/// The file output, named "FILE_LOG". Print only posts a line to the output's own queue
/// thread (bounded at 1000 waiting messages; a full queue drops the line and the next line
/// written carries the mark "* "); all file access happens on that thread, in posting order.
/// "FILE_LOG://path" opens path in append mode; any other name with the prefix "FILE_LOG"
/// closes the file.
///
/// Thread safety: Print may be called from any thread. Lines that the queue itself logs about
/// a post are not posted again (that would recurse without end); lines logged on the queue
/// thread are written in place.
class FileLog : public TesselLogInterface {
  public:
    FileLog();
    /// Closes the file after what is queued, then joins the queue thread.
    ~FileLog() override;

    void Print(const std::string& timestamp, uint32_t pid, uint32_t tid, uint32_t level,
               const std::string& tag, const std::string& text) override;
    bool SetOutputEnabled(const char* name, bool enable) override;

    /// Returns once every message posted before has been executed; false if the queue has
    /// stopped or when called from the queue's own thread.
    bool WaitUntilWritten();
    /// Closes the file after what is queued and stops the queue thread for good; later lines
    /// are dropped. Idempotent.
    void Shutdown();

  private:
    bool PostMessage(std::shared_ptr<TesselInterprocess::Message> message);

    std::shared_ptr<TesselInterprocess::ThreadedQueue> m_queue;
    std::shared_ptr<FileWriter> m_writer;
};

}  // namespace TesselFX
