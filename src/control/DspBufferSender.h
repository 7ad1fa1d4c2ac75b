#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "control/IDspBufferSender.h"

namespace TesselFX {

/// Hands control buffers to the host's sender function and, with the dump on, writes each
/// buffer to the log first. Holds no buffer after a call. No lock: every call comes under the
/// control manager's lock.
class DspBufferSender : public IDspBufferSender {
  public:
    /// Room of the reply buffer of SendAndReceive; also the largest DSP buffer.
    static constexpr uint32_t kReplyCapacity = 16000;

    /// handle is the control object that sendFunction is given back; it is not owned.
    DspBufferSender(void* handle, DspSendFunction sendFunction, bool dumpBuffers);
    ~DspBufferSender() override;

    bool Send(const std::shared_ptr<CommonSettings>& settings,
              const std::vector<char>& buffer) override;
    /// reply holds the answer on success, and kReplyCapacity bytes after a failed send.
    bool SendAndReceive(const std::shared_ptr<CommonSettings>& settings,
                        const std::vector<char>& buffer, std::vector<char>& reply) override;
    /// At info level: a title line, then one line per whole 32-bit word in hexadecimal.
    void DumpBufferToDsp(const std::vector<char>& buffer) override;

  private:
    void* m_handle;
    DspSendFunction m_sendFunction;
    bool m_dumpBuffers;
};

}  // namespace TesselFX
