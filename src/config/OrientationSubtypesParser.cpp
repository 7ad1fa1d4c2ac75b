#include "config/OrientationSubtypesParser.h"

#include <exception>
#include <stdexcept>

#include "config/StringUtils.h"
#include "log/TesselLog.h"

namespace TesselFX {

namespace {

/// stod of text, truncated toward zero; a number outside 32 bits (or NaN) throws.
OrientationAngle ToAngle(const std::string& text) {
    const double angle = std::stod(text);
    if (!(angle > -2147483649.0 && angle < 2147483648.0)) throw std::out_of_range("stod");
    return static_cast<OrientationAngle>(angle);
}

}  // namespace

OrientationSubtypesParser::OrientationSubtypesParser(OrientationSubtypeTables& orientationSubtypes,
                                                     DefaultAngles& defaultAngles)
    : m_orientationSubtypes(orientationSubtypes), m_defaultAngles(defaultAngles) {}

void OrientationSubtypesParser::Parse(const std::string& name, const std::string& value) {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "OrientationSubtypesParser::Parse %s, %s", name.c_str(),
               value.c_str());
    OrientationSubtypeTable& table = m_orientationSubtypes[name];
    OrientationAngle& defaultAngle = m_defaultAngles[name];
    defaultAngle = 0;
    for (const std::string& entry : Split(value, ',')) ParseSubEntry(table, defaultAngle, entry);
}

void OrientationSubtypesParser::ParseSubEntry(OrientationSubtypeTable& table,
                                              OrientationAngle& defaultAngle,
                                              const std::string& entry) {
    const std::vector<std::string> tokens = Split(entry, ':');
    if (tokens.size() != 2) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "Invalid string format: %s", entry.c_str());
        return;
    }
    try {
        const OrientationAngle angle = ToAngle(tokens[0]);
        if (tokens[1] == "DEFAULT_ANGLE") {
            defaultAngle = angle;
            TESSEL_LOG(1, TESSEL_LOG_FXModule,
                       "OrientationSubtypesParser::ParseSubEntry default orientation angle %d",
                       angle);
            return;
        }
        const SubTypeMask mask = ToSubtypeMask(tokens[1]);
        table[angle] = mask;
        TESSEL_LOG(1, TESSEL_LOG_FXModule, "OrientationSubtypesParser::ParseSubEntry %d, %u", angle,
                   mask);
    } catch (const std::exception& e) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "Exception: %s", e.what());
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "Invalid string format: %s", entry.c_str());
    }
}

}  // namespace TesselFX
