// zbctl msg decode: a command, reply or notification text (base64, or base64 in the text
// envelope) read into a frame and described. A text or frame that zbctl cannot read must end
// in a clean ZbctlError. The fields that a description gives are the words that msg encode
// takes: written again from them, the frame must be described the same. (A text field is
// written back from its words joined by one blank, so a description whose text holds other
// white space, control bytes or blanks side by side is not compared.)
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "MessageCatalog.h"
#include "Printable.h"
#include "ZbctlError.h"

using namespace TesselFX;
using namespace TesselFX::zbctl;

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
    if (Printable(description) != description) return 0;
    std::vector<std::string> words;
    for (size_t from = 0, blank = 0; blank != std::string::npos; from = blank + 1) {
        blank = description.find(' ', from);
        words.push_back(description.substr(from, blank - from));
        if (words.back().empty()) return 0;
    }
    const std::string name = words.front();
    const std::vector<std::string> fields(words.begin() + 1, words.end());
    try {
        const std::vector<char> again = MessageCatalog::Encode(name, fields);
        if (MessageCatalog::Describe(again, MessageDirection::kAny) != description) std::abort();
    } catch (const ZbctlError&) {
        // A description that msg encode does not take back (a NaN, ...).
    }
    return 0;
}
