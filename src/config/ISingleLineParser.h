#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace TesselFX {

/// Parses one "name=value" line of a configuration section; the value has no white space left.
/// Parsers write into tables of the configuration that outlives them.
class ISingleLineParser {
  public:
    virtual ~ISingleLineParser() = default;
    virtual void Parse(const std::string& name, const std::string& value) = 0;
};

/// Section name and the parser of its lines, in parsing order.
using LineParsers = std::vector<std::pair<std::string, std::shared_ptr<ISingleLineParser>>>;

}  // namespace TesselFX
