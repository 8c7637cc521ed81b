/*
 * How a video got its DLNA profile, to find out why a renderer refuses a file.
 *
 * C++ only. Any thread; nothing throws. Prints what the video probes print (see <kolum/video.h>).
 */
#ifndef KOLUM_DLNA_H
#define KOLUM_DLNA_H

#include <kolum/export.h>

#ifdef __cplusplus

#include <string>
#include <vector>

namespace kolum {

/* A property of the file that the rules looked at. */
struct DlnaDetail {
  std::string label; /* "frame size" */
  std::string value; /* "1280 x 720" */
};

/* One test of a name. */
struct DlnaTest {
  bool held = false;
  std::string wanted; /* "height at most 720" */
  std::string actual; /* "1080" */
};

/* One name that was considered, with all its tests; suffixes that depend only on the packets of a
   transport stream are left out. */
struct DlnaCandidate {
  std::string name;
  std::vector<DlnaTest> tests; /* empty when the name needed no test */
  bool taken = false;          /* every test held */
};

/* What a video is named, and why. */
struct DlnaNaming {
  std::string profile;                   /* empty when there is none */
  std::string mimeType;                  /* empty when nothing is known */
  std::vector<DlnaDetail> details;       /* empty when no rule was applied */
  std::vector<DlnaCandidate> candidates; /* in the order in which they were considered */
  std::vector<std::string> remarks;      /* sentences on what the candidates do not show */
  /* Index of the rejected candidate with the fewest failed tests, the preferred one among equals;
     -1 when there is none. If the video got a name, only candidates considered before it count. */
  int next = -1;
};

}  // namespace kolum

/*
 * Names a video as GetVideoMetadata1 does (same arguments) and reports in NAMING how the name was
 * chosen. Returns 0, or 1 with NAMING untouched when an argument is null or the probe fails.
 */
KOLUM_EXPORT unsigned int ExplainDlnaProfile(const char* folder, const char* fileName,
                                             int audioStreamIndex,
                                             kolum::DlnaNaming* naming) noexcept;

#endif

#endif
