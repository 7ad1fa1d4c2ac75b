// zbctl msg decode: a command, reply or notification text (base64, or base64 in the text
// envelope) read into a frame and described. A text or frame that zbctl cannot read must end
// in a clean ZbctlError. The fields that a description gives are the words that msg encode
// takes: written again from them, the frame must be described the same.
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "FuzzLogSink.h"
#include "MessageCatalog.h"
#include "ZbctlError.h"

using namespace TesselFX;
using namespace TesselFX::zbctl;

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    fuzz::FuzzLogSink::Install();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string description;
    try {
        std::string instance;
        const std::vector<char> frame = MessageCatalog::FrameOfText(
            std::string(reinterpret_cast<const char*>(data), size), instance);
        description = MessageCatalog::Describe(frame, MessageDirection::kAny);
    } catch (const ZbctlError&) {
        return 0;
    }
    std::istringstream words(description);
    std::string name;
    std::vector<std::string> fields;
    words >> name;
    for (std::string field; words >> field;) fields.push_back(field);
    try {
        const std::vector<char> again = MessageCatalog::Encode(name, fields);
        if (MessageCatalog::Describe(again, MessageDirection::kAny) != description) std::abort();
    } catch (const ZbctlError&) {
        // A description that msg encode does not take back (a NaN, a text with blanks).
    }
    return 0;
}
