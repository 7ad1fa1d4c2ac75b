#include "config/VolumeSubtypesParser.h"

#include <cmath>
#include <exception>
#include <stdexcept>

#include "config/StringUtils.h"
#include "log/TesselLog.h"

namespace TesselFX {

VolumeSubtypesParser::VolumeSubtypesParser(VolumeSubtypeTables& volumeSubtypes)
    : m_volumeSubtypes(volumeSubtypes) {}

void VolumeSubtypesParser::Parse(const std::string& name, const std::string& value) {
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "VolumeSubtypesParser::Parse %s, %s", name.c_str(),
               value.c_str());
    VolumeSubtypeTable& table = m_volumeSubtypes[name];
    for (const std::string& entry : Split(value, ',')) ParseSubEntry(table, entry);
}

void VolumeSubtypesParser::ParseSubEntry(VolumeSubtypeTable& table, const std::string& entry) {
    const std::vector<std::string> tokens = Split(entry, ':');
    if (tokens.size() != 2) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "Invalid string format: %s", entry.c_str());
        return;
    }
    try {
        const double threshold = std::stof(tokens[0]);
        // A NaN key would break the table's ordering.
        if (std::isnan(threshold)) throw std::invalid_argument("stof");
        const SubTypeMask mask = tokens[1] == "NULL" ? 0u : 1u << (ToUint32(tokens[1]) & 31u);
        table[threshold] = mask;
        TESSEL_LOG(1, TESSEL_LOG_FXModule, "VolumeSubtypesParser::ParseSubEntry %f, %u", threshold,
                   mask);
    } catch (const std::exception& e) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "Exception: %s", e.what());
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "Invalid string format: %s", entry.c_str());
    }
}

}  // namespace TesselFX
