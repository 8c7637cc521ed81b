// Gives TagLib a file's bytes.
#ifndef KOLUM_READ_TAGS_SOURCE_STREAM_H
#define KOLUM_READ_TAGS_SOURCE_STREAM_H

#include <taglib.h>
#include <tiostream.h>

#include "media/source.h"

namespace kolum::tags {

#if TAGLIB_MAJOR_VERSION < 2
using TagOffset = long;
using TagStart = unsigned long;
using TagSize = unsigned long;
#else
using TagOffset = TagLib::offset_t;
using TagStart = TagLib::offset_t;
using TagSize = std::size_t;
#endif

// Read-only. SOURCE must outlive the stream.
class SourceStream : public TagLib::IOStream {
 public:
  explicit SourceStream(const media::Source& source) : source_(source) {}

  TagLib::FileName name() const override { return source_.name().c_str(); }
  TagLib::ByteVector readBlock(TagSize length) override;
  void writeBlock(const TagLib::ByteVector& /*data*/) override {}
  void insert(const TagLib::ByteVector& /*data*/, TagStart /*start*/,
              TagSize /*replace*/) override {}
  void removeBlock(TagStart /*start*/, TagSize /*length*/) override {}
  bool readOnly() const override { return true; }
  bool isOpen() const override { return true; }
  void seek(TagOffset offset, Position from) override;
  TagOffset tell() const override { return position_; }
  TagOffset length() override { return static_cast<TagOffset>(source_.size()); }
  void truncate(TagOffset /*length*/) override {}

 private:
  const media::Source& source_;
  TagOffset position_ = 0;
};

}  // namespace kolum::tags

#endif
