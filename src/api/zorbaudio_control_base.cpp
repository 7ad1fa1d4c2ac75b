#include "api/zorbaudio_control_base.h"

#include <memory>

#include "control/HalControlManager.h"

namespace TesselFX {

bool zorbaudio_create(void** handle) {
    if (handle == nullptr) {
        return false;
    }
    *handle = new HalControlManager(std::shared_ptr<IHalControlCommandParser>());
    return true;
}

void zorbaudio_destroy(void** handle) {
    if (handle == nullptr || *handle == nullptr) {
        return;
    }
    delete static_cast<HalControlManager*>(*handle);
}

}  // namespace TesselFX
