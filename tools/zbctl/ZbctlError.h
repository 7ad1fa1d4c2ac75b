#pragma once

#include <stdexcept>
#include <string>

namespace TesselFX {
namespace zbctl {

/// A fault of the user's input (file, option, scenario line) that ends a command with a
/// message and a non-zero exit status. The text is complete and meant to be printed as is.
class ZbctlError : public std::runtime_error {
  public:
    explicit ZbctlError(const std::string& text) : std::runtime_error(text) {}
};

}  // namespace zbctl
}  // namespace TesselFX
