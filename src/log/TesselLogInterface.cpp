#include "log/TesselLogInterface.h"

#include <cstring>

namespace TesselFX {

bool TesselLogInterface::SetOutputEnabled(const char* name, bool enable) {
    if (name == nullptr || m_name != name) return false;
    m_enabled = enable;
    return true;
}

const char* LogLevelWord(uint32_t level) {
    static const char* const kWords[] = {"DEBUG:", "DEBUG:", "INFO:", "WARNING:", "ERROR:"};
    return level < 5 ? kWords[level] : "";
}

}  // namespace TesselFX
