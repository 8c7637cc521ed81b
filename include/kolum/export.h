/* Export macro of libkolum; included by every public header. */
#ifndef KOLUM_EXPORT_H
#define KOLUM_EXPORT_H

/* Marks what the shared object offers; everything else is hidden. */
#define KOLUM_EXPORT __attribute__((visibility("default")))

#ifdef __cplusplus
#define KOLUM_C_BEGIN extern "C" {
#define KOLUM_C_END }
#else
#define KOLUM_C_BEGIN
#define KOLUM_C_END
#endif

#endif
