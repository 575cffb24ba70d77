# Cross build for the device's processor with Debian's compiler; the tests run under user-mode emulation.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64 -L /usr/aarch64-linux-gnu)
# -L puts another root in front of the host's. r47-sim builds its sandbox from the host's: the one that is tested is linked
# statically and runs without.
set(R47_SIM_EMULATOR qemu-aarch64)
set(R47_SIM_LINK_OPTIONS -static)
