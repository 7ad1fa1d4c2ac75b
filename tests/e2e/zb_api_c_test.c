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

/* Writes size bytes to path; 1 on success. */
static int write_file(const char* path, const void* bytes, size_t size) {
    FILE* file = fopen(path, "wb");
    int written = file != NULL && fwrite(bytes, 1, size, file) == size;
    if (file != NULL && fclose(file) != 0) written = 0;
    return written;
}

int main(void) {
    void* handle = NULL;
    char version[16];
    uint32_t indices[2] = {1, 2};
    double values[2] = {0.5, 1.5};
    buffer_sender senderFunction = sender;
    /* "BPBZ", file size 32, section size 20, presets section 4: one preset (1,1), no values. */
    static const unsigned char presets[32] = {'B', 'P', 'B', 'Z', 32, 0, 0, 0, 20,  0, 0,
                                              0,   4,   1,   0,   15, 0, 1, 1, 0,   0, 0,
                                              0,   0,   0,   0,   0,  0, 0, 1, 'p', 0};
    static const char typo[] = "[HAL_SUPPORTED_FEATURES]\nHeadTracking=yes\n";

    check(sizeof(zorbaudio_stream_volume_t) == 8, "zorbaudio_stream_volume_t is 8 bytes");
    check(zb_create(&handle, &failures) == 1, "zb_create");
    check(handle != NULL, "handle");
    check(zb_get_version(handle, 0, "halcontroller", version, sizeof(version)) == 1,
          "zb_get_version");
    check(strcmp(version, "1.553.0.0") == 0, "version text");
    /* A configuration line that does not parse fails zb_initialize, and the host goes on. */
    check(write_file("zb_api_c_test.zps", presets, sizeof(presets)), "write presets");
    check(write_file("zb_api_c_test.ini", typo, strlen(typo)), "write configuration");
    check(zb_initialize(handle, "zb_api_c_test.zps", "", "zb_api_c_test.ini", senderFunction) == 0,
          "zb_initialize with HeadTracking=yes");
    remove("zb_api_c_test.zps");
    remove("zb_api_c_test.ini");
    check(zb_set_enable(handle, 0, 1) == 0, "zb_set_enable before initialization");
    check(zb_set_parameters_array(handle, 0, 2, indices, values) == 0,
          "zb_set_parameters_array before initialization");
    check(zb_is_feature_supported(handle, "DumpBufferToDsp") == 0, "zb_is_feature_supported");
    zb_destroy(&handle);
    check(zb_set_enable(handle, 0, 1) == 0, "zb_set_enable after zb_destroy");
    return failures;
}
