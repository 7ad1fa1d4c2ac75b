#include "log/FileLog.h"

#include <cstring>
#include <thread>

#include "log/CloseFileMessage.h"
#include "log/FileLogPrintMessage.h"
#include "log/MessageQueue.h"
#include "log/OpenFileMessage.h"
#include "log/SynchronousMessage.h"

namespace TesselFX {

namespace {

constexpr uint32_t kQueueCapacity = 1000;
constexpr char kPathPrefix[] = "FILE_LOG://";

// The file output this thread is posting to at the moment. A line logged during that post
// (by the queue, about this post) must not be posted again: each post would log another.
thread_local const FileLog* t_postingTo = nullptr;

class PostingScope {
  public:
    explicit PostingScope(const FileLog* fileLog) : m_outer(t_postingTo) { t_postingTo = fileLog; }
    ~PostingScope() { t_postingTo = m_outer; }
    PostingScope(const PostingScope&) = delete;
    PostingScope& operator=(const PostingScope&) = delete;

  private:
    const FileLog* m_outer;
};

}  // namespace

FileLog::FileLog()
    : TesselLogInterface("FILE_LOG"),
      m_queue(std::make_shared<TesselInterprocess::ThreadedQueue>(
          std::make_shared<TesselInterprocess::MessageQueue>(kQueueCapacity))),
      m_writer(std::make_shared<FileWriter>()) {}

FileLog::~FileLog() { Shutdown(); }

void FileLog::Shutdown() {
    PostMessage(std::make_shared<CloseFileMessage>(m_writer));
    m_queue->Stop();
}

void FileLog::Print(const std::string& timestamp, uint32_t pid, uint32_t tid, uint32_t level,
                    const std::string& tag, const std::string& text) {
    auto message = std::make_shared<FileLogPrintMessage>(m_writer, timestamp, pid, tid,
                                                         LogLevelWord(level), tag, text);
    if (m_queue->IsQueueThread()) {
        // The queue thread owns the file: it writes its own lines at once.
        message->Execute();
        return;
    }
    PostMessage(std::move(message));
}

bool FileLog::SetOutputEnabled(const char* name, bool enable) {
    if (name == nullptr || strncmp(name, m_name.c_str(), m_name.size()) != 0) return false;
    m_enabled = enable;
    const size_t prefixLength = sizeof(kPathPrefix) - 1;
    if (enable && strncmp(name, kPathPrefix, prefixLength) == 0) {
        PostMessage(std::make_shared<OpenFileMessage>(m_writer, name + prefixLength, "a+"));
    } else {
        PostMessage(std::make_shared<CloseFileMessage>(m_writer));
    }
    return true;
}

bool FileLog::WaitUntilWritten() {
    if (m_queue->IsQueueThread() || t_postingTo == this) return false;
    while (!m_queue->IsStopped()) {
        // A full queue refuses the flush; it drains, so try again with a fresh message.
        if (PostMessage(std::make_shared<TesselInterprocess::FlushMessage>())) return true;
        std::this_thread::yield();
    }
    return false;
}

bool FileLog::PostMessage(std::shared_ptr<TesselInterprocess::Message> message) {
    if (t_postingTo == this) return false;
    PostingScope scope(this);
    return m_queue->Post(std::move(message));
}

}  // namespace TesselFX
