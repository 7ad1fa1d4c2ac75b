#include "api/zorbaudio_control_base.h"

#include <memory>

#include "control/HalControlManager.h"
#include "protocol/Base64CodedHalControlCommandParser.h"

namespace TesselFX {

bool zorbaudio_create(void** handle) {
    if (handle == nullptr) {
        return false;
    }
    *handle = new HalControlManager(std::make_shared<Base64CodedHalControlCommandParser>());
    return true;
}

void zorbaudio_destroy(void** handle) {
    if (handle == nullptr || *handle == nullptr) {
        return;
    }
    delete static_cast<HalControlManager*>(*handle);
}

}  // namespace TesselFX
