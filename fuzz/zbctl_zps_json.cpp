// zbctl zps build: JSON text read into a preset document, which is written as a preset file.
// Text that is not JSON, a document that zbctl refuses and a value that does not fit its
// field must end in a clean ZbctlError; a file that zbctl writes must be one that the
// library's reader accepts.
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "WarningList.h"
#include "ZbctlError.h"
#include "ZpsBinary.h"
#include "ZpsJson.h"

using namespace TesselFX;
using namespace TesselFX::zbctl;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::vector<char> text(data, data + size);
    WarningList warnings;
    std::vector<char> bytes;
    try {
        bytes = EncodeZps(ZpsFromJson(ParseZpsJson(text, warnings), warnings), warnings);
    } catch (const ZbctlError&) {
        return 0;
    }
    if (!LibraryRefusal(bytes).empty()) std::abort();
    return 0;
}
