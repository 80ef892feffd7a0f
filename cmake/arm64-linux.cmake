# 64-bit Arm Linux from an x86-64 machine: the system's cross-compiler, libraries of the foreign
# architecture from Debian (dpkg --add-architecture arm64), programs under user-mode emulation.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64)
