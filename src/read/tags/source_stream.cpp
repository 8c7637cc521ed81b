#include "read/tags/source_stream.h"

#include <algorithm>

namespace kolum::tags {

TagLib::ByteVector SourceStream::readBlock(TagSize length) {
  const TagOffset left = std::max<TagOffset>(this->length() - position_, 0);
  // A file's own numbers may ask for more bytes than there are.
  const auto size = static_cast<unsigned>(
      std::min<std::uint64_t>({length, static_cast<std::uint64_t>(left), UINT32_MAX / 2}));
  TagLib::ByteVector bytes(size, 0);
  const std::ptrdiff_t got =
      source_.readAt(position_, {reinterpret_cast<std::uint8_t*>(bytes.data()), size});
  bytes.resize(static_cast<unsigned>(std::max<std::ptrdiff_t>(got, 0)));
  position_ += static_cast<TagOffset>(bytes.size());
  return bytes;
}

void SourceStream::seek(TagOffset offset, Position from) {
  switch (from) {
    case Beginning:
      position_ = offset;
      break;
    case Current:
      position_ += offset;
      break;
    case End:
      position_ = length() + offset;
      break;
  }
  position_ = std::max<TagOffset>(position_, 0);
}

}  // namespace kolum::tags
