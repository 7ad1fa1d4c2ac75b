#pragma once

#include <string>

#include "config/ConfigTypes.h"
#include "config/ISingleLineParser.h"

namespace TesselFX {

/// "name=threshold:subtype,..." -> volumeSubtypes[name]. Bad entries are logged and left out.
class VolumeSubtypesParser : public ISingleLineParser {
  public:
    explicit VolumeSubtypesParser(VolumeSubtypeTables& volumeSubtypes);
    void Parse(const std::string& name, const std::string& value) override;

  private:
    void ParseSubEntry(VolumeSubtypeTable& table, const std::string& entry);

    VolumeSubtypeTables& m_volumeSubtypes;
};

}  // namespace TesselFX
