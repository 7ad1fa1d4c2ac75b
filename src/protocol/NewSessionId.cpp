#include "protocol/NewSessionId.h"

#include <chrono>
#include <cstdio>
#include <random>

namespace TesselFX {

namespace {

uint32_t ReadSeed() {
    uint32_t seed = 0;
    FILE* file = std::fopen("/dev/urandom", "rb");
    const bool read = file != nullptr && std::fread(&seed, sizeof(seed), 1, file) == 1;
    if (file != nullptr) std::fclose(file);
    if (!read) {
        // No random device: the clock still varies the ids from run to run.
        seed = static_cast<uint32_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    }
    return seed;
}

}  // namespace

uint32_t NewSessionId() {
    static std::mt19937 engine(ReadSeed());
    std::uniform_int_distribution<uint32_t> draw(0, 2147483647u);
    return draw(engine);
}

}  // namespace TesselFX
