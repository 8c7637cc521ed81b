/* Export macro of libkolum; included by every public header. */
#ifndef KOLUM_EXPORT_H
#define KOLUM_EXPORT_H

/* Marks what the shared object exports; everything else is hidden. */
#define KOLUM_EXPORT __attribute__((visibility("default")))

/* The layout of every record depends on it. (It also gives C compilers a declaration in headers
   that are for C++ only.) */
#ifdef __cplusplus
static_assert(sizeof(long) == 8, "libkolum is for 64-bit systems");
#else
_Static_assert(sizeof(long) == 8, "libkolum is for 64-bit systems");
#endif

#ifdef __cplusplus
#define KOLUM_C_BEGIN extern "C" {
#define KOLUM_C_END }
#else
#define KOLUM_C_BEGIN
#define KOLUM_C_END
#endif

#endif
