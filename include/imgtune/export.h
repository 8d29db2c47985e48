#ifndef IMGTUNE_EXPORT_H
#define IMGTUNE_EXPORT_H

/// Marks what the shared library exports; everything else stays hidden.
#define IMGTUNE_API __attribute__((visibility("default")))

#endif
