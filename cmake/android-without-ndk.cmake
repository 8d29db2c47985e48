# Debian's clang for Android, as the NDK's toolchain file sets up the NDK's: the system root in
# build/android/sysroot, made by scripts/android.sh, has what the library needs of an NDK.
set(CMAKE_SYSTEM_NAME Android)
set(CMAKE_SYSTEM_VERSION 1)  # CMake's own search for an NDK is off, as under the NDK's file
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_CXX_COMPILER /usr/lib/llvm-19/bin/clang++)  # beside its lld, where the flags below look
set(CMAKE_CXX_COMPILER_TARGET aarch64-none-linux-android28)
set(CMAKE_SYSROOT ${CMAKE_CURRENT_LIST_DIR}/../build/android/sysroot)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)  # a program would need Android's start-up files
set(CMAKE_CXX_FLAGS_INIT "-g -DANDROID -fdata-sections -ffunction-sections -funwind-tables \
-fstack-protector-strong -no-canonical-prefixes -Wformat -Werror=format-security")
set(CMAKE_SHARED_LINKER_FLAGS_INIT
  "-fuse-ld=lld -Wl,--fatal-warnings -Wl,--gc-sections -Qunused-arguments")
