/*
 * How a video came by its DLNA profile: for people who want to know why a renderer refuses a file.
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

/* Something about the file that the rules went by. */
struct DlnaDetail {
  std::string label; /* "frame size" */
  std::string value; /* "1280 x 720" */
};

/* One test that a name was put to. */
struct DlnaTest {
  bool held = false;
  std::string wanted; /* "height at most 720" */
  std::string actual; /* "1080" */
};

/* One name that was considered, with every test it was put to; suffixes that depend on nothing but
   the packets of a transport stream are left out. */
struct DlnaCandidate {
  std::string name;
  std::vector<DlnaTest> tests; /* empty when nothing was asked any more */
  bool taken = false;          /* every test held */
};

/* What a video is named, and how that came about. */
struct DlnaNaming {
  std::string profile;                   /* empty when there is none */
  std::string mimeType;                  /* empty when nothing is known */
  std::vector<DlnaDetail> details;       /* empty when no rule was asked */
  std::vector<DlnaCandidate> candidates; /* in the order in which they were considered */
  std::vector<std::string> remarks;      /* what the candidates cannot say, in sentences */
  /* The index of the refused candidate with the fewest failed tests, of equals the preferred one;
     -1 when there is none. With a name, only the candidates that were considered before it count.
   */
  int next = -1;
};

}  // namespace kolum

/*
 * Names a video as GetVideoMetadata1 does (same arguments) and reports in NAMING how that came
 * about. Returns 0, or 1 when an argument is null or the probe fails; NAMING is untouched then.
 */
KOLUM_EXPORT unsigned int ExplainDlnaProfile(const char* folder, const char* fileName,
                                             int audioStreamIndex,
                                             kolum::DlnaNaming* naming) noexcept;

#endif

#endif
