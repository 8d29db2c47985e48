#ifndef IMGTUNE_COMMON_PLATFORM_H
#define IMGTUNE_COMMON_PLATFORM_H

// What the library calls of the device: one function of libcutils and one of liblog. Both are C
// interfaces that stay as they are, so that no header of the device's source tree is needed.

extern "C" {

/// Copies the property's value, or the default if it is unset or empty, into `value`, which has
/// room for 92 characters, and returns its length.
int property_get(const char* key, char* value, const char* default_value);

/// Formats one message as printf does and logs it.
int __android_log_print(int prio, const char* tag, const char* fmt, ...)
    __attribute__((format(printf, 3, 4)));
}

#endif
