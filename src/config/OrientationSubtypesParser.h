#pragma once

#include <string>

#include "config/ConfigTypes.h"
#include "config/ISingleLineParser.h"

namespace TesselFX {

/// "name=angle:n|n,...,angle:DEFAULT_ANGLE" -> orientationSubtypes[name] and defaultAngles[name].
/// Bad entries are logged and left out.
class OrientationSubtypesParser : public ISingleLineParser {
  public:
    OrientationSubtypesParser(OrientationSubtypeTables& orientationSubtypes,
                              DefaultAngles& defaultAngles);
    void Parse(const std::string& name, const std::string& value) override;

  private:
    void ParseSubEntry(OrientationSubtypeTable& table, OrientationAngle& defaultAngle,
                       const std::string& entry);

    OrientationSubtypeTables& m_orientationSubtypes;
    DefaultAngles& m_defaultAngles;
};

}  // namespace TesselFX
