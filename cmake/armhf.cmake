# ARM with hardware floating point, 32 bits: Debian's cross compiler g++-arm-linux-gnueabihf.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(triplet arm-linux-gnueabihf)
set(CMAKE_CROSSCOMPILING_EMULATOR /usr/bin/qemu-arm -L /usr/${triplet})
include(${CMAKE_CURRENT_LIST_DIR}/debian_cross.cmake)
