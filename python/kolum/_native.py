"""The library's functions, by cffi and without a compiler."""

from __future__ import annotations

import os
from pathlib import Path

from cffi import FFI

ffi = FFI()
ffi.cdef(
    """
    typedef struct {
      size_t size;
      unsigned int flags;
      int kind;
      int audioStream;
      unsigned int deadline;
      unsigned long long memory;
    } KoLUM_DescribeOptions;

    int KoLUM_Describe(const char* path, const KoLUM_DescribeOptions* options, char** text);
    int KoLUM_DescribeFd(int fd, const char* name, const KoLUM_DescribeOptions* options, char** text);
    void KoLUM_FreeText(char* text);
    void KoLUM_ForgetPlaces(void);
    int KoLUM_GetFilenameType(const char* fileName, unsigned int* row, unsigned int kinds, unsigned int* tag);
    """
)

DESCRIBED, NOT_DESCRIBED, NO_DOCUMENT = 0, 1, 2
DETAILS, BY_CONTENT, FINGERPRINT, PLACES = 1, 2, 4, 8
KINDS = {"music": 1, "video": 2, "photo": 3}
BITS = {"music": 0x1, "video": 0x2, "photo": 0x4}


def _load():
    chosen = os.environ.get("KOLUM_LIBRARY")
    names = [chosen] if chosen else ["libkolum.so.1"]
    try:
        return ffi.dlopen(names[0])
    except OSError as error:
        raise ImportError(
            f"{names[0]} cannot be loaded ({error}); install libkolum1, or name the library in KOLUM_LIBRARY"
        ) from error


lib = _load()


def take(text) -> str:
    """A document's text, which is released."""
    try:
        return ffi.string(text).decode("utf-8")
    finally:
        lib.KoLUM_FreeText(text)


def path_bytes(path: str | bytes | os.PathLike) -> bytes:
    return os.fsencode(Path(path) if isinstance(path, os.PathLike) else path)
