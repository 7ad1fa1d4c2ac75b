/*
 * libzbhalcontroller: the exported control interface.
 *
 * A handle is one control object: one configuration, one preset set and the control handlers
 * that the configuration describes. An instance number is not an index: it selects the handlers
 * whose configured settings match INSTANCE=<instance>.
 *
 * Calling order: zb_create, zb_initialize once, then any of the others in any order, then
 * zb_destroy. Every bool result is an int, 1 for success and 0 for failure; the cause of a
 * failure goes to the log.
 *
 * Thread safety: every function holds one process-wide recursive lock for its whole length, so
 * that all calls of all handles are serialised. buffer_sender and notifier run on the calling
 * thread inside that lock and may call back into the library.
 */
#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define ZB_API_EXPORT __attribute__((visibility("default")))

/* Delivers one control buffer to the DSP of an instance. With a non-null reply it also returns
 * the DSP's answer in reply; replySize holds the room in reply before the call and the length
 * of the answer after it. Returns 0 for success. */
typedef int (*buffer_sender)(void* handle, uint32_t instance, const void* data, uint32_t size,
                             void* reply, uint32_t* replySize, void* context);

/* Receives one complete tuning-protocol text that already names its instance.
 * Returns 0 for success. */
typedef int (*notifier)(void* handle, const void* data, uint32_t size, void* context);

/* The host's volume of one audio stream type; an array of these is indexed by stream type. */
typedef struct zorbaudio_stream_volume_t {
    float volume;   /* linear volume */
    uint8_t active; /* 0: the stream is not playing */
    uint8_t reserved[3];
} zorbaudio_stream_volume_t;

#ifdef __cplusplus
static_assert(sizeof(zorbaudio_stream_volume_t) == 8, "zorbaudio_stream_volume_t is 8 bytes");
#elif defined(__STDC_VERSION__) && __STDC_VERSION__ >= 201112L
_Static_assert(sizeof(zorbaudio_stream_volume_t) == 8, "zorbaudio_stream_volume_t is 8 bytes");
#endif

/* Makes a control object and writes its handle to *handle; context comes back unchanged as the
 * last argument of both callbacks. Always 1. */
ZB_API_EXPORT int zb_create(void** handle, void* context);

/* Deletes the object whose handle *handle holds; *handle itself is left untouched. */
ZB_API_EXPORT void zb_destroy(void** handle);

/* Reads the presets and the configuration and builds the control handlers. sender delivers
 * every control buffer of this handle. A second call replaces sender and builds anew. */
ZB_API_EXPORT int zb_initialize(void* handle, const char* systemPresetPath,
                                const char* userPresetPath, const char* configPath,
                                buffer_sender sender);

/* Only bit 0 of enable and bypass counts. */
ZB_API_EXPORT int zb_set_enable(void* handle, uint32_t instance, int enable);
ZB_API_EXPORT int zb_set_bypass(void* handle, uint32_t instance, int bypass);

/* 0xFFFFFFFF in either mode keeps the current value of that mode. */
ZB_API_EXPORT int zb_set_active(void* handle, uint32_t instance, uint32_t outputMode,
                                uint32_t soundMode);
ZB_API_EXPORT int zb_set_sound_mode(void* handle, uint32_t instance, uint32_t soundMode);
ZB_API_EXPORT int zb_set_output_mode(void* handle, uint32_t instance, uint32_t outputMode);

/* Linear volume; 0.0 is silence. */
ZB_API_EXPORT int zb_set_volume(void* handle, uint32_t instance, double volume);

/* Angle in degrees, one of the configured angles. */
ZB_API_EXPORT int zb_set_orientation(void* handle, uint32_t instance, int orientation);

ZB_API_EXPORT int zb_set_parameter(void* handle, uint32_t instance, uint32_t index, double value);

/* count pairs of indices[i], values[i]; a repeated index keeps its last value. */
ZB_API_EXPORT int zb_set_parameters_array(void* handle, uint32_t instance, uint32_t count,
                                          const uint32_t* indices, const double* values);

/* command is zero-terminated base64 text of the tuning protocol. */
ZB_API_EXPORT int zb_set_command(void* handle, uint32_t instance, char* command);

/* The reply is written to reply as text; it always stays short of replySize by the length of
 * a notification header plus 1. */
ZB_API_EXPORT int zb_get_command(void* handle, uint32_t instance, const char* command, char* reply,
                                 uint32_t replySize);

ZB_API_EXPORT int zb_set_linklaws_value(void* handle, uint32_t instance, uint32_t sourceIndex,
                                        double sourceValue, double masterValue);

/* From zb_wait_for_flush on, state changes are kept but not sent; zb_flush sends them all. */
ZB_API_EXPORT int zb_wait_for_flush(void* handle, uint32_t instance);
ZB_API_EXPORT int zb_flush(void* handle, uint32_t instance);

/* Registers the receiver of change notifications of an instance; null removes it. */
ZB_API_EXPORT int zb_register_notifier(void* handle, uint32_t instance, notifier callback);

/* Generic entry: fixed controls 0 to 12, custom actions from the configuration above 255. */
ZB_API_EXPORT int zb_set_data(void* handle, uint32_t instance, int32_t id, void* data,
                              uint32_t size);

/* versionType "halcontroller", "dspkit" or "dsp". Succeeds only when the answer and its
 * terminator fit in versionStringSize bytes. */
ZB_API_EXPORT int zb_get_version(void* handle, uint32_t instance, const char* versionType,
                                 char* versionString, uint32_t versionStringSize);

/* The DSP lost its state: the next send is a full one. */
ZB_API_EXPORT int zb_on_dsp_wakeup(void* handle, uint32_t instance);

/* Whether the configuration lists the feature; exact, case-sensitive name. */
ZB_API_EXPORT int zb_is_feature_supported(void* handle, const char* feature);

#undef ZB_API_EXPORT

#ifdef __cplusplus
}
#endif
