// Whether headers may answer what FFmpeg would find out with far more work. Both ways must lead to
// the same answers; the tests that compare them choose the way here.
#ifndef KOLUM_READ_HEADERS_SHORTCUTS_H
#define KOLUM_READ_HEADERS_SHORTCUTS_H

namespace kolum::headers {

bool mayTakeShortcuts();
// For all threads.
void allowShortcuts(bool isAllowed);

}  // namespace kolum::headers

#endif
