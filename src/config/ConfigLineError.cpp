#include "config/ConfigLineError.h"

#include <new>
#include <stdexcept>
#include <utility>

namespace TesselFX {

namespace {

/// The parser's exception type, with the line it came from.
template <typename Standard>
class WithLine : public Standard, public ConfigLineError {
  public:
    WithLine(const Standard& error, const std::string& section, const std::string& key,
             const std::string& value)
        : Standard(error), ConfigLineError(section, key, value) {}
};

const char* TypeName(const std::exception& error) {
    if (dynamic_cast<const std::bad_alloc*>(&error) != nullptr) return "std::bad_alloc";
    if (dynamic_cast<const std::invalid_argument*>(&error) != nullptr) {
        return "std::invalid_argument";
    }
    if (dynamic_cast<const std::out_of_range*>(&error) != nullptr) return "std::out_of_range";
    if (dynamic_cast<const std::logic_error*>(&error) != nullptr) return "std::logic_error";
    if (dynamic_cast<const std::runtime_error*>(&error) != nullptr) return "std::runtime_error";
    return "std::exception";
}

}  // namespace

ConfigLineError::ConfigLineError(std::string section, std::string key, std::string value)
    : m_section(std::move(section)), m_key(std::move(key)), m_value(std::move(value)) {}

ConfigLineError::~ConfigLineError() = default;

std::string ConfigLineError::Where() const {
    if (m_key.empty()) return "configuration section [" + m_section + "]";
    return "configuration line [" + m_section + "] " + m_key + "=" + m_value;
}

void ConfigLineError::RethrowWithLine(const std::string& section, const std::string& key,
                                      const std::string& value) {
    try {
        throw;
    } catch (const std::invalid_argument& error) {
        throw WithLine<std::invalid_argument>(error, section, key, value);
    } catch (const std::out_of_range& error) {
        throw WithLine<std::out_of_range>(error, section, key, value);
    }
}

std::string ConfigLineError::Describe(const std::exception& error) {
    const std::string type = TypeName(error);
    const std::string text = error.what();
    std::string cause = text == type ? type : type + ": " + text;
    if (const auto* line = dynamic_cast<const ConfigLineError*>(&error)) {
        cause = line->Where() + ": " + cause;
    }
    return cause;
}

}  // namespace TesselFX
