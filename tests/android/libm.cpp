// What the linker sees of the device's libm: all that the library may take from it.
extern "C" {
void sqrt() {}
void sqrtf() {}
void acosf() {}
void cosf() {}
void sinf() {}
}
