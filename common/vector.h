#ifndef IMGTUNE_COMMON_VECTOR_H
#define IMGTUNE_COMMON_VECTOR_H

// The one place where the machine's vectors are chosen.

#include "common/vector_plain.h"

#if defined(__SSE2__)
#include "common/vector_sse2.h"
namespace imgtune {
namespace vector = sse2;
}
#elif defined(__aarch64__) && defined(__ARM_NEON)
#include "common/vector_neon.h"
namespace imgtune {
namespace vector = neon;
}
#else
namespace imgtune {
namespace vector = plain;
}
#endif

#endif
