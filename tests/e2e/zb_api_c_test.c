/* The public header compiles as C and its functions are callable from C. Exits with the number
 * of failed checks. */
#include <stdio.h>
#include <string.h>

#include "zbhalcontroller/zb_api.h"

static int failures = 0;

static void check(int condition, const char* what) {
    if (!condition) {
        fprintf(stderr, "failed: %s\n", what);
        ++failures;
    }
}

static int sender(void* handle, uint32_t instance, const void* data, uint32_t size, void* reply,
                  uint32_t* replySize, void* context) {
    (void)handle, (void)instance, (void)data, (void)size, (void)reply, (void)replySize;
    (void)context;
    return 0;
}

int main(void) {
    void* handle = NULL;
    char version[16];
    uint32_t indices[2] = {1, 2};
    double values[2] = {0.5, 1.5};
    buffer_sender senderFunction = sender;

    check(sizeof(zorbaudio_stream_volume_t) == 8, "zorbaudio_stream_volume_t is 8 bytes");
    check(zb_create(&handle, &failures) == 1, "zb_create");
    check(handle != NULL, "handle");
    check(zb_get_version(handle, 0, "halcontroller", version, sizeof(version)) == 1,
          "zb_get_version");
    check(strcmp(version, "1.553.0.0") == 0, "version text");
    check(zb_initialize(handle, "system.zps", "user.zps", "hal.ini", senderFunction) == 0,
          "zb_initialize");
    check(zb_set_enable(handle, 0, 1) == 0, "zb_set_enable before initialization");
    check(zb_set_parameters_array(handle, 0, 2, indices, values) == 0,
          "zb_set_parameters_array before initialization");
    check(zb_is_feature_supported(handle, "DumpBufferToDsp") == 0, "zb_is_feature_supported");
    zb_destroy(&handle);
    check(zb_set_enable(handle, 0, 1) == 0, "zb_set_enable after zb_destroy");
    return failures;
}
