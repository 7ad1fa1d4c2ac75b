#pragma once

#include <cstdint>

namespace TesselFX {

/// A session id for a long transfer: a uniform draw from 0 to 2147483647 of one process-wide
/// MT19937, seeded on first use from one value of "/dev/urandom". The seeding is thread safe;
/// the draws are not locked, so callers serialise them.
uint32_t NewSessionId();

}  // namespace TesselFX
