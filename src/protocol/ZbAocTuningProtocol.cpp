#include "protocol/ZbAocTuningProtocol.h"

#include <cstring>
#include <limits>

#include "config/StringUtils.h"
#include "log/TesselLog.h"
#include "protocol/Base64.h"

namespace TesselFX {
namespace ZbAocTuningProtocol {

const char* const kDspInstanceKey = "dsp_instance";
const char* const kTesselDataKey = "tessel_data";

std::vector<char> BuildHeader(uint32_t instance) {
    const std::string header =
        std::string(kDspInstanceKey) + "=" + std::to_string(instance) + ";" + kTesselDataKey + "=";
    return std::vector<char>(header.begin(), header.end());
}

size_t HeaderSize() {
    static const size_t size = BuildHeader(std::numeric_limits<uint32_t>::max()).size();
    return size;
}

std::vector<char> WrapRaw(uint32_t instance, const std::vector<char>& payload) {
    return WrapRaw(instance, payload.data(), payload.size());
}

std::vector<char> WrapRaw(uint32_t instance, const char* payload, size_t size) {
    std::vector<char> text = BuildHeader(instance);
    if (size != 0) {
        text.reserve(text.size() + size);
        text.insert(text.end(), payload, payload + size);
    }
    return text;
}

std::vector<char> WrapBase64(uint32_t instance, const std::vector<char>& payload) {
    const std::string encoded = Base64::Encode(payload);
    std::vector<char> text = BuildHeader(instance);
    text.insert(text.end(), encoded.begin(), encoded.end());
    return text;
}

bool UnwrapBase64(const std::vector<char>& buffer, std::vector<char>& out) {
    std::string value;
    if (!ExtractData(std::string(buffer.begin(), buffer.end()), value)) {
        return false;
    }
    out = Base64::Decode(value);
    return true;
}

bool ExtractData(const std::string& text, std::string& value) {
    // The value is cut by the key's length from the part's start, wherever the key stands.
    const size_t skip = std::strlen(kTesselDataKey) + 1;
    for (const std::string& part : Split(text, ';')) {
        if (part.find(kTesselDataKey) == std::string::npos) {
            continue;
        }
        value = part.size() > skip ? part.substr(skip) : std::string();
        TESSEL_LOG(0, TESSEL_LOG_FXModule, "TESSEL_DATA = %s", value.c_str());
        return true;
    }
    TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "fail to get %s from buffer", kTesselDataKey);
    return false;
}

size_t MaxBufferSize() { return kMaxDspBufferSize; }

size_t MaxDecodedSize() { return kMaxDecodedSize; }

size_t DecodedSize(size_t size) { return (size >> 2) * 3; }

}  // namespace ZbAocTuningProtocol
}  // namespace TesselFX
