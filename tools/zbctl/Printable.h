#pragma once

#include <cstddef>
#include <string>

namespace TesselFX {
namespace zbctl {

/// Text from a file or a device made safe for a terminal: control characters (C0, DEL and C1)
/// and bytes that are not UTF-8 become \xNN; printable ASCII and valid UTF-8 stay as they are.
std::string Printable(const char* data, size_t size);
std::string Printable(const std::string& text);

}  // namespace zbctl
}  // namespace TesselFX
