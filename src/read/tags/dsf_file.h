// A DSF file with TagLib 2's interface, for older TagLib releases: its ID3v2 tag, read-only.
#ifndef KOLUM_READ_TAGS_DSF_FILE_H
#define KOLUM_READ_TAGS_DSF_FILE_H

#ifdef KOLUM_TAGLIB_HAS_DSF

#include <dsffile.h>

namespace kolum::tags {
using DsfFile = TagLib::DSF::File;
}

#else

#include <id3v2tag.h>
#include <tfile.h>

#include <memory>

namespace kolum::tags {

class DsfFile : public TagLib::File {
 public:
  // STREAM must outlive the file.
  explicit DsfFile(TagLib::IOStream* stream);

  // Null if the file is not a DSF file or its header points to no tag.
  TagLib::ID3v2::Tag* tag() const override { return tag_.get(); }
  TagLib::AudioProperties* audioProperties() const override { return nullptr; }
  bool save() override { return false; }

 private:
  std::unique_ptr<TagLib::ID3v2::Tag> tag_;
};

}  // namespace kolum::tags

#endif

#endif
