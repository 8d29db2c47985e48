#ifndef CUTILS_PROPERTIES_H
#define CUTILS_PROPERTIES_H

// System properties on a machine that is not Android: one store per process, safe to use from any
// number of threads. The first use reads the file named by the environment variable
// IMGTUNE_PROPERTIES, if any: `name=value` lines, blank lines, and comments from a # at the start
// of a line. A bad line is reported on standard error and skipped.

/// Room for a property's value with its terminator.
#define PROPERTY_VALUE_MAX 92

#ifdef __cplusplus
extern "C" {
#endif

/// Copies the property's value into `value`, which has room for PROPERTY_VALUE_MAX characters, and
/// returns its length. A property that is unset or empty gives the default, cut to 91 characters,
/// or the empty string without a default.
int property_get(const char* key, char* value, const char* default_value);

/// Sets a property; a null or empty value unsets it. Returns 0, or -1 when nothing was changed: the
/// value has more than 91 characters, the name is not one (1 to 127 letters, digits and . - _ @ :),
/// or 384 names are in use already.
int property_set(const char* key, const char* value);

#ifdef __cplusplus
}
#endif

#endif
