/* A program of an integrator, built against the installed library as C99: it makes a control
 * object, reads the library's version and checks that calls before zb_initialize are refused.
 * Usage: consumer VERSION, where VERSION is the start of the expected version text. Exits 0 when
 * every check holds. */
#include <stdio.h>
#include <string.h>
#include <zbhalcontroller/zb_api.h>

int main(int argc, char** argv) {
    void* handle = NULL;
    char version[32] = "";
    int failures = 0;

    if (argc != 2) {
        fprintf(stderr, "usage: %s VERSION\n", argv[0]);
        return 2;
    }
    if (zb_create(&handle, NULL) != 1 || handle == NULL) {
        fprintf(stderr, "zb_create failed\n");
        return 1;
    }
    if (zb_get_version(handle, 0, "halcontroller", version, sizeof(version)) != 1 ||
        strncmp(version, argv[1], strlen(argv[1])) != 0) {
        fprintf(stderr, "version \"%s\", expected \"%s...\"\n", version, argv[1]);
        ++failures;
    }
    if (zb_set_volume(handle, 0, 0.5) != 0) {
        fprintf(stderr, "zb_set_volume before zb_initialize succeeded\n");
        ++failures;
    }
    zb_destroy(&handle);
    printf("libzbhalcontroller %s\n", version);
    return failures;
}
