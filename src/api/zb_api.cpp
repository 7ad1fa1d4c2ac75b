#include "zbhalcontroller/zb_api.h"

#include <cstdlib>
#include <cstring>
#include <exception>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "api/ZbApiCallbacks.h"
#include "api/zorbaudio_control_Hifi3z.h"
#include "api/zorbaudio_control_base.h"
#include "config/ConfigLineError.h"
#include "config/ZorbAudioSettings.h"
#include "control/HalControlManager.h"
#include "control/HalNotifier.h"
#include "log/TesselLog.h"
#include "protocol/ZbAocTuningProtocol.h"

namespace TesselFX {

namespace {

constexpr const char* kInstanceKey = "INSTANCE";

/// One control object and what the caller gave for it.
struct HandleEntry {
    /// Shared so that a call in progress keeps the object alive when a callback destroys it.
    std::shared_ptr<HalControlManager> manager;
    buffer_sender sender = nullptr;
    std::map<uint32_t, notifier> notifiers;
    void* context = nullptr;
};

/// The process-wide table of control objects, keyed by handle value. Its recursive mutex is
/// held over every exported call, so that all calls of all handles are serialised; the
/// callbacks run inside it and may call back in. It lives as long as the process.
struct HandleTable {
    std::recursive_mutex mutex;
    std::map<uint64_t, HandleEntry> entries;
};

HandleTable& Table() {
    static HandleTable* table = new HandleTable();
    return *table;
}

uint64_t HandleKey(const void* handle) {
    return static_cast<uint64_t>(reinterpret_cast<uintptr_t>(handle));
}

/// The entry of handle, or null after "handle %p is invalid". Call with the mutex held.
HandleEntry* FindEntry(void* handle) {
    auto& entries = Table().entries;
    auto found = entries.find(HandleKey(handle));
    if (found == entries.end()) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "handle %p is invalid", handle);
        return nullptr;
    }
    return &found->second;
}

/// The entry of handle for a trampoline, or null after "handle %p not found".
HandleEntry* ScanEntry(void* handle) {
    const uint64_t key = HandleKey(handle);
    for (auto& entry : Table().entries) {
        if (entry.first == key) {
            return &entry.second;
        }
    }
    TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "handle %p not found", handle);
    return nullptr;
}

/// Logs the exception being handled as the cause of the failure of the exported function:
/// "%s: %s" at error level with its name and ConfigLineError::Describe. Call only from inside a
/// catch block. Never throws: when even the line cannot be written (out of memory), nothing is.
void LogEscapingException(const char* function) noexcept {
    try {
        try {
            throw;
        } catch (const std::exception& error) {
            TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "%s: %s", function,
                             ConfigLineError::Describe(error).c_str());
        } catch (...) {
            TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "%s: %s", function, "unknown exception");
        }
    } catch (...) {
    }
}

/// The boundary of an exported function, whose whole body is body: no exception leaves it, since
/// a C host cannot catch one. An exception (out of memory, a configuration line that does not
/// parse, one thrown by the caller's buffer_sender or notifier) is logged by
/// LogEscapingException and the function returns 0, or nothing when it returns void. The locks
/// that body took are released by then, and the handle stays valid.
template <typename Body>
auto AtBoundary(const char* function, Body body) noexcept -> decltype(body()) {
    try {
        return body();
    } catch (...) {
        LogEscapingException(function);
    }
    return decltype(body())();
}

/// The common shape of a call that takes an instance, within the boundary of the exported
/// function: under the table mutex, finds the entry, builds the search record
/// INSTANCE=instance and runs call with the manager and the record.
template <typename Call>
int WithInstance(const char* function, void* handle, uint32_t instance, Call call) noexcept {
    return AtBoundary(function, [&] {
        std::lock_guard<std::recursive_mutex> lock(Table().mutex);
        HandleEntry* entry = FindEntry(handle);
        if (entry == nullptr) {
            return 0;
        }
        std::shared_ptr<HalControlManager> manager = entry->manager;
        auto settings = std::make_unique<ZorbAudioSettings>();
        settings->AddUint(kInstanceKey, instance);
        return call(*manager, settings->GetSettings()) ? 1 : 0;
    });
}

bool RejectNull(const char* function, const char* argument) {
    TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "%s: %s is null", function, argument);
    return false;
}

}  // namespace

bool ReadInstance(CommonSettings* settings, uint32_t& instance) {
    if (settings == nullptr) {
        return false;
    }
    uint32_t count = 0;
    const char* const* keys = settings->GetKeys(count);
    if (keys == nullptr) {
        return false;
    }
    for (uint32_t i = 0; i < count; ++i) {
        if (keys[i] == nullptr || std::strcmp(keys[i], kInstanceKey) != 0) {
            continue;
        }
        if (settings->GetUint(kInstanceKey, instance)) {
            return true;
        }
        char text[256] = {};
        settings->GetString(kInstanceKey, text, sizeof(text));
        char* end = nullptr;
        const unsigned long value = std::strtoul(text, &end, 10);
        if (end != text) {
            instance = static_cast<uint32_t>(value);
            return true;
        }
    }
    return false;
}

int SendBufferTrampoline(void* handle, CommonSettings* settings, const void* data, uint32_t size,
                         void* reply, uint32_t* replySize) {
    std::lock_guard<std::recursive_mutex> lock(Table().mutex);
    HandleEntry* entry = ScanEntry(handle);
    if (entry == nullptr) {
        return -1;
    }
    if (entry->sender == nullptr) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "buffer_sender is invalid");
        return -1;
    }
    uint32_t instance = 0;
    if (!ReadInstance(settings, instance)) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "%s not found", kInstanceKey);
        return -1;
    }
    const buffer_sender sender = entry->sender;
    return sender(handle, instance, data, size, reply, replySize, entry->context);
}

int NotifyTrampoline(void* handle, CommonSettings* settings, const void* data, uint32_t size) {
    std::lock_guard<std::recursive_mutex> lock(Table().mutex);
    HandleEntry* entry = ScanEntry(handle);
    if (entry == nullptr) {
        return -1;
    }
    uint32_t instance = 0;
    if (!ReadInstance(settings, instance)) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "%s not found", kInstanceKey);
        return -1;
    }
    const std::map<uint32_t, notifier> notifiers = entry->notifiers;
    auto found = notifiers.find(instance);
    if (found == notifiers.end() || found->second == nullptr) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "notifier is invalid");
        return -1;
    }
    const std::vector<char> text = ZbAocTuningProtocol::WrapRaw(
        instance, static_cast<const char*>(data), data != nullptr ? size : 0);
    return found->second(handle, text.data(), static_cast<uint32_t>(text.size()), entry->context);
}

}  // namespace TesselFX

using TesselFX::AtBoundary;
using TesselFX::HalControlManager;
using TesselFX::Table;
using TesselFX::WithInstance;
using TesselFX::zorbaudio_settings_t;

int zb_create(void** handle, void* context) {
    return AtBoundary(__func__, [&] {
        std::lock_guard<std::recursive_mutex> lock(Table().mutex);
        if (handle == nullptr) {
            TesselFX::RejectNull("zb_create", "handle");
            return 0;
        }
        // A failure leaves null in the caller's variable, never an object outside the table.
        *handle = nullptr;
        void* object = nullptr;
        TesselFX::zorbaudio_create(&object);
        std::shared_ptr<HalControlManager> manager(static_cast<HalControlManager*>(object),
                                                   [](HalControlManager* doomed) {
                                                       void* value = doomed;
                                                       TesselFX::zorbaudio_destroy(&value);
                                                   });
        TesselFX::HandleEntry& entry = Table().entries[TesselFX::HandleKey(manager.get())];
        entry.manager = manager;
        entry.context = context;
        *handle = manager.get();
        return 1;
    });
}

void zb_destroy(void** handle) {
    AtBoundary(__func__, [&] {
        std::lock_guard<std::recursive_mutex> lock(Table().mutex);
        void* value = handle == nullptr ? nullptr : *handle;
        if (TesselFX::FindEntry(value) != nullptr) {
            Table().entries.erase(TesselFX::HandleKey(value));
        }
    });
}

int zb_initialize(void* handle, const char* systemPresetPath, const char* userPresetPath,
                  const char* configPath, buffer_sender sender) {
    return AtBoundary(__func__, [&] {
        std::lock_guard<std::recursive_mutex> lock(Table().mutex);
        TesselFX::HandleEntry* entry = TesselFX::FindEntry(handle);
        if (entry == nullptr) {
            return 0;
        }
        entry->sender = sender;
        std::shared_ptr<HalControlManager> manager = entry->manager;
        return TesselFX::zorbaudio_initialize(manager.get(), systemPresetPath, userPresetPath,
                                              configPath, TesselFX::SendBufferTrampoline)
                   ? 1
                   : 0;
    });
}

int zb_set_enable(void* handle, uint32_t instance, int enable) {
    return WithInstance(__func__, handle, instance,
                        [&](HalControlManager& manager, const zorbaudio_settings_t* settings) {
                            return manager.SetEnable(settings, (enable & 1) != 0);
                        });
}

int zb_set_bypass(void* handle, uint32_t instance, int bypass) {
    return WithInstance(__func__, handle, instance,
                        [&](HalControlManager& manager, const zorbaudio_settings_t* settings) {
                            return manager.SetBypass(settings, (bypass & 1) != 0);
                        });
}

int zb_set_active(void* handle, uint32_t instance, uint32_t outputMode, uint32_t soundMode) {
    return WithInstance(__func__, handle, instance,
                        [&](HalControlManager& manager, const zorbaudio_settings_t* settings) {
                            return manager.SetActive(settings, outputMode, soundMode);
                        });
}

int zb_set_sound_mode(void* handle, uint32_t instance, uint32_t soundMode) {
    return WithInstance(__func__, handle, instance,
                        [&](HalControlManager& manager, const zorbaudio_settings_t* settings) {
                            return manager.SetSoundMode(settings, soundMode);
                        });
}

int zb_set_output_mode(void* handle, uint32_t instance, uint32_t outputMode) {
    return WithInstance(__func__, handle, instance,
                        [&](HalControlManager& manager, const zorbaudio_settings_t* settings) {
                            return manager.SetOutputMode(settings, outputMode);
                        });
}

int zb_set_volume(void* handle, uint32_t instance, double volume) {
    return WithInstance(__func__, handle, instance,
                        [&](HalControlManager& manager, const zorbaudio_settings_t* settings) {
                            return manager.SetVolume(settings, volume);
                        });
}

int zb_set_orientation(void* handle, uint32_t instance, int orientation) {
    return WithInstance(__func__, handle, instance,
                        [&](HalControlManager& manager, const zorbaudio_settings_t* settings) {
                            return manager.SetOrientation(settings, orientation);
                        });
}

int zb_set_parameter(void* handle, uint32_t instance, uint32_t index, double value) {
    return WithInstance(__func__, handle, instance,
                        [&](HalControlManager& manager, const zorbaudio_settings_t* settings) {
                            return manager.SetParameter(settings, index, value);
                        });
}

int zb_set_parameters_array(void* handle, uint32_t instance, uint32_t count,
                            const uint32_t* indices, const double* values) {
    return WithInstance(__func__, handle, instance,
                        [&](HalControlManager& manager, const zorbaudio_settings_t* settings) {
                            if (count != 0 && (indices == nullptr || values == nullptr)) {
                                return TesselFX::RejectNull("zb_set_parameters_array",
                                                            "indices or values");
                            }
                            std::map<unsigned int, double> parameters;
                            for (uint32_t i = 0; i < count; ++i) {
                                parameters[indices[i]] = values[i];
                            }
                            return manager.SetParametersArray(settings, parameters, false);
                        });
}

int zb_set_command(void* handle, uint32_t instance, char* command) {
    return WithInstance(__func__, handle, instance,
                        [&](HalControlManager& manager, const zorbaudio_settings_t* settings) {
                            if (command == nullptr) {
                                return TesselFX::RejectNull("zb_set_command", "command");
                            }
                            const auto length = static_cast<unsigned int>(std::strlen(command) + 1);
                            return manager.SetCommand(settings, command, length);
                        });
}

int zb_get_command(void* handle, uint32_t instance, const char* command, char* reply,
                   uint32_t replySize) {
    return WithInstance(
        __func__, handle, instance,
        [&](HalControlManager& manager, const zorbaudio_settings_t* settings) {
            if (command == nullptr || reply == nullptr) {
                return TesselFX::RejectNull("zb_get_command", "command or reply");
            }
            const auto length = static_cast<unsigned int>(std::strlen(command) + 1);
            // The reply stays one byte and one envelope header short of the
            // caller's buffer; a buffer smaller than that leaves no room.
            const size_t reserved = 1 + TesselFX::ZbAocTuningProtocol::HeaderSize();
            auto room = static_cast<unsigned int>(replySize > reserved ? replySize - reserved : 0);
            return manager.GetCommand(settings, command, length, reply, room);
        });
}

int zb_set_linklaws_value(void* handle, uint32_t instance, uint32_t sourceIndex, double sourceValue,
                          double masterValue) {
    return WithInstance(__func__, handle, instance,
                        [&](HalControlManager& manager, const zorbaudio_settings_t* settings) {
                            return manager.SetLinkLawsValue(settings, sourceIndex, sourceValue,
                                                            masterValue);
                        });
}

int zb_wait_for_flush(void* handle, uint32_t instance) {
    return WithInstance(__func__, handle, instance,
                        [&](HalControlManager& manager, const zorbaudio_settings_t* settings) {
                            return manager.WaitForFlush(settings);
                        });
}

int zb_flush(void* handle, uint32_t instance) {
    return WithInstance(__func__, handle, instance,
                        [&](HalControlManager& manager, const zorbaudio_settings_t* settings) {
                            return manager.Flush(settings);
                        });
}

int zb_register_notifier(void* handle, uint32_t instance, notifier callback) {
    return WithInstance(__func__, handle, instance,
                        [&](HalControlManager& manager, const zorbaudio_settings_t* settings) {
                            std::shared_ptr<TesselFX::IHalNotifier> halNotifier;
                            if (callback != nullptr) {
                                halNotifier = std::make_shared<TesselFX::HalNotifier>(
                                    handle, TesselFX::NotifyTrampoline);
                            }
                            if (!manager.RegisterNotifier(settings, halNotifier)) {
                                return false;
                            }
                            // The manager call may have destroyed the handle through a callback.
                            auto found = Table().entries.find(TesselFX::HandleKey(handle));
                            if (found != Table().entries.end()) {
                                if (callback != nullptr) {
                                    found->second.notifiers[instance] = callback;
                                } else {
                                    found->second.notifiers.erase(instance);
                                }
                            }
                            return true;
                        });
}

int zb_set_data(void* handle, uint32_t instance, int32_t id, void* data, uint32_t size) {
    return WithInstance(__func__, handle, instance,
                        [&](HalControlManager& manager, const zorbaudio_settings_t* settings) {
                            return manager.SetData(settings, id, data, size);
                        });
}

int zb_get_version(void* handle, uint32_t instance, const char* versionType, char* versionString,
                   uint32_t versionStringSize) {
    return WithInstance(
        __func__, handle, instance,
        [&](HalControlManager& manager, const zorbaudio_settings_t* settings) {
            std::string version;
            if (!manager.GetVersion(settings, versionType == nullptr ? "" : versionType, version)) {
                return false;
            }
            if (versionString == nullptr || version.size() >= versionStringSize) {
                TESSEL_LOG_ERROR(TESSEL_LOG_FXModule,
                                 "%s versionStringSize %u is not enough, actual size %u",
                                 "zorbaudio_get_version", versionStringSize,
                                 static_cast<unsigned int>(version.size()));
                return false;
            }
            std::strncpy(versionString, version.c_str(), versionStringSize);
            return true;
        });
}

int zb_on_dsp_wakeup(void* handle, uint32_t instance) {
    return WithInstance(__func__, handle, instance,
                        [&](HalControlManager& manager, const zorbaudio_settings_t* settings) {
                            return manager.OnDspWakeUp(settings);
                        });
}

int zb_is_feature_supported(void* handle, const char* feature) {
    return AtBoundary(__func__, [&] {
        std::lock_guard<std::recursive_mutex> lock(Table().mutex);
        TesselFX::HandleEntry* entry = TesselFX::FindEntry(handle);
        if (entry == nullptr) {
            return 0;
        }
        std::shared_ptr<HalControlManager> manager = entry->manager;
        return manager->IsFeatureSupported(feature) ? 1 : 0;
    });
}
