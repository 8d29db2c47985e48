// What the linker sees of the device's libc: all that the library may take from it.
extern "C" {
void memcpy() {}
void memmove() {}
void memset() {}
void __stack_chk_fail() {}
}
