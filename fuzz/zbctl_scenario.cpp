// zbctl run's scenario lines: the parser must give steps or a clean ZbctlError.
#include <cstdint>
#include <string>

#include "Scenario.h"
#include "ZbctlError.h"

using namespace TesselFX;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    try {
        zbctl::ParseScenario(std::string(reinterpret_cast<const char*>(data), size), "fuzz");
    } catch (const zbctl::ZbctlError&) {
    }
    return 0;
}
