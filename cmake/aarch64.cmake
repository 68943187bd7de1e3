# ARM, 64 bits: Debian's cross compiler g++-aarch64-linux-gnu.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(triplet aarch64-linux-gnu)
set(CMAKE_CROSSCOMPILING_EMULATOR /usr/bin/qemu-aarch64 -L /usr/${triplet})
include(${CMAKE_CURRENT_LIST_DIR}/debian_cross.cmake)
