#pragma once

namespace TesselFX {

/// Makes a control object (a HalControlManager with a base64 command parser) and writes its
/// address to *handle. False only for a null handle pointer.
bool zorbaudio_create(void** handle);

/// Deletes the control object *handle through its virtual destructor; a null pointer or a
/// null handle does nothing. The caller's variable is left as it is.
void zorbaudio_destroy(void** handle);

}  // namespace TesselFX
