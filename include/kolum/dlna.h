/*
 * How a video came by its DLNA profile: for people who want to know why a renderer refuses a file.
 *
 * C++ only. Any thread; nothing throws.
 */
#ifndef KOLUM_DLNA_H
#define KOLUM_DLNA_H

#include <kolum/export.h>

#ifdef __cplusplus

#include <string>
#include <vector>

namespace kolum {

/* One test that a name was put to. */
struct DlnaTest {
  bool held = false;
  std::string wanted; /* "height at most 720" */
  std::string actual; /* "1080" */
};

/* One name, or piece of a name, that was considered, with every test it was put to. */
struct DlnaCandidate {
  std::string name;
  std::vector<DlnaTest> tests;
  bool taken = false; /* every test held */
};

/* What a video is named, and the candidates in the order in which they were considered. */
struct DlnaNaming {
  std::string profile;                   /* empty when there is none */
  std::string mimeType;                  /* empty when nothing is known */
  bool wasAsked = false;                 /* false: the container alone decided, without any rule */
  std::vector<DlnaCandidate> candidates; /* empty when no rule knows the codec in the container */
};

}  // namespace kolum

/*
 * Names a video as GetVideoMetadata1 does (same arguments) and tells in NAMING how that came about.
 * Returns 0, or 1 when an argument is null or the probe fails; NAMING is untouched then.
 */
KOLUM_EXPORT unsigned int ExplainDlnaProfile(const char* folder, const char* fileName,
                                             int audioStreamIndex,
                                             kolum::DlnaNaming* naming) noexcept;

#endif

#endif
