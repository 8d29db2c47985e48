#include "common/platform.h"

__attribute__((visibility("default"))) int property_get(const char*, char*, const char*) {
    return 0;
}
