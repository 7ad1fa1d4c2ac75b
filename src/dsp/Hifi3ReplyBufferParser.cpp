#include "dsp/Hifi3ReplyBufferParser.h"

#include <cmath>

#include "log/TesselLog.h"

namespace TesselFX {

namespace {

constexpr size_t kReplyHeaderSize = 8;

uint32_t ReadU32(const std::vector<char>& buffer, size_t offset) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(buffer.data() + offset);
    return static_cast<uint32_t>(bytes[0]) | static_cast<uint32_t>(bytes[1]) << 8 |
           static_cast<uint32_t>(bytes[2]) << 16 | static_cast<uint32_t>(bytes[3]) << 24;
}

/// Whether the reply starts with the expected id and holds the 8-byte header. A wrong id is
/// logged as wrongIdText followed by the id, checked first when its bytes are there.
bool CheckReplyHeader(const std::vector<char>& reply, uint32_t expected, const char* wrongIdText,
                      const char* function) {
    if (reply.size() >= 4 && ReadU32(reply, 0) != expected) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "%s%d", wrongIdText,
                         static_cast<int>(ReadU32(reply, 0)));
        return false;
    }
    if (reply.size() < kReplyHeaderSize) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "%s reply of %zu bytes is too short", function,
                         reply.size());
        return false;
    }
    return true;
}

/// Truncates towards zero, saturating at the int32 limits; NaN gives 0.
int32_t SaturatingToInt32(float value) {
    if (std::isnan(value)) return 0;
    if (value >= 2147483648.0f) return INT32_MAX;
    if (value <= -2147483648.0f) return INT32_MIN;
    return static_cast<int32_t>(value);
}

}  // namespace

Hifi3ReplyBufferParser::Hifi3ReplyBufferParser(std::shared_ptr<IZorbEffectWrapper> zorbEffect)
    : m_pZorbEffect(std::move(zorbEffect)) {
    if (m_pZorbEffect) {
        unsigned count = 0;
        if (m_pZorbEffect->Meters_GetBufferSize(&count)) {
            m_meterCount = count;
            TESSEL_LOG(1, TESSEL_LOG_FXModule,
                       "Hifi3ReplyBufferParser::Hifi3ReplyBufferParser got buffer size %u",
                       m_meterCount);
        } else {
            TESSEL_LOG_ERROR(
                TESSEL_LOG_FXModule,
                "Hifi3ReplyBufferParser::Hifi3ReplyBufferParser failed to prepare meter buffer");
        }
    }
    m_meterValues.resize(m_meterCount);
    m_meterFlags.resize(m_meterCount);
}

bool Hifi3ReplyBufferParser::FlagTestAndClear(size_t index) {
    if (index >= m_meterFlags.size()) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule,
                         "Hifi3ReplyBufferParser::FlagTestAndClear index out of range %zu", index);
        return false;
    }
    if (m_meterFlags[index] == 0) return false;
    m_meterFlags[index] = 0;
    return true;
}

status_t Hifi3ReplyBufferParser::ParseReplyVersionBuffer(const std::vector<char>& reply,
                                                         std::string& version) {
    if (!CheckReplyHeader(reply, kDspReplyVersion, "wrong id ",
                          "Hifi3ReplyBufferParser::ParseReplyVersionBuffer")) {
        return kStatusBadValue;
    }
    const uint32_t length = ReadU32(reply, 4);
    if (length > reply.size() - kReplyHeaderSize) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule,
                         "Hifi3ReplyBufferParser::ParseReplyVersionBuffer text of %u bytes "
                         "exceeds the reply of %zu bytes",
                         length, reply.size());
        return kStatusBadValue;
    }
    version.assign(reply.data() + kReplyHeaderSize, length);
    return kStatusOk;
}

status_t Hifi3ReplyBufferParser::ParseReplyMetersBuffer(const std::vector<char>& reply,
                                                        const std::map<uint32_t, CMeterInfo>& infos,
                                                        std::map<uint32_t, CMeterValue>& values) {
    if (!CheckReplyHeader(reply, kDspReplyMeters,
                          "Hifi3ReplyBufferParser::ParseReplyMetersBuffer invalid id ",
                          "Hifi3ReplyBufferParser::ParseReplyMetersBuffer")) {
        return kStatusBadValue;
    }
    if (!m_pZorbEffect || !m_pZorbEffect->IsInitialized()) {
        TESSEL_LOG_ERROR(
            TESSEL_LOG_FXModule,
            "Hifi3ReplyBufferParser::ParseReplyMetersBuffer ZorbEffect not initialized");
        return kStatusUnknownError;
    }
    const uint32_t size = ReadU32(reply, 4);
    if (reply.size() != static_cast<uint64_t>(size) + kReplyHeaderSize) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule,
                         "Hifi3ReplyBufferParser::ParseReplyMetersBuffer buffer size error. "
                         "%u != %u + %u + %u",
                         static_cast<unsigned>(reply.size()), size, 4u, 4u);
        return kStatusUnknownError;
    }
    if (!m_pZorbEffect->Meters_SetBuffer(reply.data() + kReplyHeaderSize, size)) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule,
                         "Hifi3ReplyBufferParser::ParseReplyMetersBuffer ZorbEffect failed to "
                         "deserialize meter buffer");
        return kStatusUnknownError;
    }
    if (!m_pZorbEffect->Meters_Readout(m_meterValues.data(), m_meterFlags.data(), m_meterCount)) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule,
                         "Hifi3ReplyBufferParser::ParseReplyMetersBuffer failed to read meters "
                         "from ZorbEffect");
        return kStatusUnknownError;
    }
    for (const auto& entry : infos) {
        const CMeterInfo& info = entry.second;
        const uint32_t index = info.GetIndex();
        if (!FlagTestAndClear(index)) {
            values[entry.first] = info.GetResetValue();
            continue;
        }
        if (info.GetType() == CMeterInfo::kTypeInteger) {
            values[entry.first] =
                CMeterValue(static_cast<uint32_t>(SaturatingToInt32(m_meterValues[index])));
        } else if (info.GetType() == CMeterInfo::kTypeFloat) {
            values[entry.first] = CMeterValue(m_meterValues[index]);
        }
    }
    return kStatusOk;
}

}  // namespace TesselFX
