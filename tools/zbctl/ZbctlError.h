#pragma once

#include <stdexcept>
#include <string>

namespace TesselFX {
namespace zbctl {

/// Exit status of every zbctl command: the work was done, the work failed (a file that cannot
/// be read or written, an input the library refuses), or the command line is wrong.
constexpr int kExitSuccess = 0;
constexpr int kExitFailure = 1;
constexpr int kExitUsage = 2;

/// A fault of the user's input (file, scenario line, text to decode) that ends a command with a
/// message and kExitFailure. The text is complete and meant to be printed as is.
class ZbctlError : public std::runtime_error {
  public:
    explicit ZbctlError(const std::string& text) : std::runtime_error(text) {}
};

/// A fault of the command line itself (an option out of range, an output that names an input),
/// found after the options were parsed; it ends the command with kExitUsage.
class UsageError : public ZbctlError {
  public:
    explicit UsageError(const std::string& text) : ZbctlError(text) {}
};

}  // namespace zbctl
}  // namespace TesselFX
