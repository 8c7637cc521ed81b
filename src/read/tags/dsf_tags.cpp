#include "read/tags/dsf_tags.h"

#include <id3v2frame.h>
#include <id3v2header.h>
#include <id3v2tag.h>
#include <textidentificationframe.h>

#include "read/headers/id3v2.h"
#include "read/tags/dsf_file.h"
#include "read/tags/source_stream.h"

namespace kolum::tags {

namespace {

// The frames and the fields they fill.
struct FrameRow {
  const char* id;
  std::string DsfTags::*field;
};

constexpr FrameRow kFrames[] = {
    {"TIT2", &DsfTags::title},
    {"TPE1", &DsfTags::artist},
    {"TPE2", &DsfTags::albumArtist},
    {"TALB", &DsfTags::album},
};

// The value is that of the field's first frame, but the last frame's encoding decides.
std::string unicodeText(const TagLib::ID3v2::FrameList& frames) {
  if (frames.isEmpty()) return "";
  const auto* last = dynamic_cast<const TagLib::ID3v2::TextIdentificationFrame*>(frames.back());
  if (last == nullptr || last->textEncoding() == TagLib::String::Latin1) return "";
  return frames.front()->toString().to8Bit(true);
}

}  // namespace

DsfTags readDsfTags(const media::Source& source) {
  DsfTags tags;
  headers::blankInflatingTags(source);
  SourceStream stream(source);
  const DsfFile file(&stream);
  const TagLib::ID3v2::Tag* tag = file.tag();
  if (tag == nullptr) return tags;
  for (const FrameRow& row : kFrames) tags.*row.field = unicodeText(tag->frameList(row.id));
  return tags;
}

}  // namespace kolum::tags
