#pragma once

#include <cstdint>

#include "config/CommonSettings.h"

namespace TesselFX {

/// The sender that the library's own objects use in place of the caller's buffer_sender: it
/// finds the handle's entry, reads INSTANCE from settings and calls the caller's function with
/// the entry's context. -1 when the handle, the function or the instance is missing. Takes the
/// handle table's lock again; it is recursive.
int SendBufferTrampoline(void* handle, CommonSettings* settings, const void* data, uint32_t size,
                         void* reply, uint32_t* replySize);

/// The notifier counterpart: the caller's notifier registered for the instance of settings.
int NotifyTrampoline(void* handle, CommonSettings* settings, const void* data, uint32_t size);

/// The instance that a settings record names under INSTANCE: the unsigned value, or the
/// decimal number at the start of the text form of a value of another kind.
bool ReadInstance(CommonSettings* settings, uint32_t& instance);

}  // namespace TesselFX
