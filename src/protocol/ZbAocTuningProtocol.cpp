#include "protocol/ZbAocTuningProtocol.h"

#include <limits>
#include <string>

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

}  // namespace ZbAocTuningProtocol
}  // namespace TesselFX
