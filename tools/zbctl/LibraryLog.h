#pragma once

#include <ostream>

namespace TesselFX {
namespace zbctl {

/// Routes the library's log, the lines that reach Android's liblog from the library that zbctl
/// loads and from the library code it links, for the rest of the process's life: quiet, the
/// lines of error level and above are written to stderr as liblog writes them and the others
/// only counted; verbose, all are written. The library may log from any of its threads: the
/// count is atomic and the writing is liblog's own.
void RouteLibraryLog(bool verbose);

/// "zbctl: N lines of the library's log held back (warnings and below); -v shows them", when
/// lines were held back.
void PrintHeldBackLog(std::ostream& out);

}  // namespace zbctl
}  // namespace TesselFX
