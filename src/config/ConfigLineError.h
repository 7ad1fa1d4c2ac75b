#pragma once

#include <exception>
#include <string>

namespace TesselFX {

/// The configuration line that a standard exception came from. The exception that leaves
/// HalControlConfig::ParseConfig for a line that does not parse is still the parser's own
/// std::invalid_argument or std::out_of_range, with the same what(), and it is a
/// ConfigLineError as well: a caller that wants the line asks with dynamic_cast, and one
/// that catches the standard type sees no change. Immutable; any thread.
class ConfigLineError {
  public:
    /// An empty key names the section itself (a CUSTOM_ACTION_<id> name whose id does not
    /// parse).
    ConfigLineError(std::string section, std::string key, std::string value);
    virtual ~ConfigLineError();

    /// "configuration line [SECTION] key=value", or "configuration section [SECTION]".
    std::string Where() const;

    /// Call only from inside a catch block. Throws the exception being handled again: a
    /// std::invalid_argument or std::out_of_range as the same type and text with this line as
    /// its ConfigLineError, any other exception as it is.
    [[noreturn]] static void RethrowWithLine(const std::string& section, const std::string& key,
                                             const std::string& value);

    /// The cause for a log line: the line it came from if any, then the exception's type and
    /// text, "configuration line [HAL_SUPPORTED_FEATURES] HeadTracking=yes:
    /// std::invalid_argument: stoul"; the text is left out where it only repeats the type
    /// ("std::bad_alloc").
    static std::string Describe(const std::exception& error);

  private:
    std::string m_section;
    std::string m_key;
    std::string m_value;
};

}  // namespace TesselFX
