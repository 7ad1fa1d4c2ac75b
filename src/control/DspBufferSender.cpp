#include "control/DspBufferSender.h"

#include <cstdio>
#include <cstring>
#include <string>

#include "config/StringUtils.h"
#include "log/TesselLog.h"

namespace TesselFX {

namespace {

constexpr uint32_t kDumpLevel = 2;

}  // namespace

DspBufferSender::DspBufferSender(void* handle, DspSendFunction sendFunction, bool dumpBuffers)
    : m_handle(handle), m_sendFunction(sendFunction), m_dumpBuffers(dumpBuffers) {}

DspBufferSender::~DspBufferSender() = default;

bool DspBufferSender::Send(const std::shared_ptr<CommonSettings>& settings,
                           const std::vector<char>& buffer) {
    if (m_dumpBuffers) {
        DumpBufferToDsp(buffer);
    }
    uint32_t replySize = 0;
    return m_sendFunction != nullptr &&
           m_sendFunction(m_handle, settings.get(), buffer.data(),
                          static_cast<uint32_t>(buffer.size()), nullptr, &replySize) == 0;
}

bool DspBufferSender::SendAndReceive(const std::shared_ptr<CommonSettings>& settings,
                                     const std::vector<char>& buffer, std::vector<char>& reply) {
    if (m_dumpBuffers) {
        DumpBufferToDsp(buffer);
    }
    reply.resize(kReplyCapacity);
    uint32_t replySize = kReplyCapacity;
    if (m_sendFunction == nullptr ||
        m_sendFunction(m_handle, settings.get(), buffer.data(),
                       static_cast<uint32_t>(buffer.size()), reply.data(), &replySize) != 0) {
        return false;
    }
    reply.resize(replySize);
    return true;
}

void DspBufferSender::DumpBufferToDsp(const std::vector<char>& buffer) {
    if (!TESSEL_LOG_ON(kDumpLevel, TESSEL_LOG_FXModule)) {
        return;
    }
    TESSEL_LOG(kDumpLevel, TESSEL_LOG_FXModule, "RAW message buffer sent to DSP");
    std::string words;
    for (size_t offset = 0; offset + sizeof(uint32_t) <= buffer.size();
         offset += sizeof(uint32_t)) {
        uint32_t word;
        std::memcpy(&word, buffer.data() + offset, sizeof(word));
        char text[16];
        std::snprintf(text, sizeof(text), "%x,", word);
        words += text;
    }
    int index = 0;
    for (const std::string& word : Split(words, ',')) {
        TESSEL_LOG(kDumpLevel, TESSEL_LOG_FXModule, "index:%d, %s", index++, word.c_str());
    }
}

}  // namespace TesselFX
