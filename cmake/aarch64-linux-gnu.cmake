# Cross build for 64-bit ARM with Debian's g++-aarch64-linux-gnu and the arm64 multiarch
# libraries (liblog, GoogleTest, libsndfile: `dpkg --add-architecture arm64`, then
# `apt-get install android-liblog-dev:arm64 libgtest-dev:arm64 ...`; `scripts/bootstrap aarch64`
# does both).
#
#   cmake -S . -B build-aarch64 -G Ninja -DCMAKE_TOOLCHAIN_FILE=cmake/aarch64-linux-gnu.cmake
#
# Tests and build-time tools run under qemu-aarch64 with the multiarch glibc (`-L /`): the
# dynamic loader and libc must come from the same glibc build, so the prefix is never the cross
# toolchain's /usr/aarch64-linux-gnu.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)

set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)

find_program(ZB_QEMU_AARCH64 qemu-aarch64 REQUIRED)
set(CMAKE_CROSSCOMPILING_EMULATOR ${ZB_QEMU_AARCH64} -L /)

# pkg-config reads the arm64 .pc files only.
set(ENV{PKG_CONFIG_LIBDIR} /usr/lib/aarch64-linux-gnu/pkgconfig:/usr/share/pkgconfig)
set(ENV{PKG_CONFIG_PATH} "")
