// zbctl zps build: JSON text read into a preset document, which is written as a preset file.
// Text that is not JSON, a document that zbctl refuses and a value that does not fit its
// field must end in a clean error (the JSON parser's, or ZbctlError); a file that zbctl
// writes must be one that the library's reader accepts.
#include <nlohmann/json.hpp>

#include <cstdint>
#include <cstdlib>
#include <vector>

#include "FuzzLogSink.h"
#include "ZbctlCalls.h"
#include "ZbctlError.h"
#include "ZpsBinary.h"
#include "ZpsJson.h"

using namespace TesselFX;
using namespace TesselFX::zbctl;

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    fuzz::FuzzLogSink::Install();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const nlohmann::json json = nlohmann::json::parse(data, data + size, nullptr, false);
    if (json.is_discarded()) return 0;
    std::vector<char> bytes;
    try {
        const ZpsDocument document = fuzz::CallWithWarnings(&ZpsFromJson, json);
        bytes = fuzz::CallWithWarnings(&EncodeZps, document);
    } catch (const ZbctlError&) {
        return 0;
    }
    if (!LibraryRefusal(bytes).empty()) std::abort();
    return 0;
}
