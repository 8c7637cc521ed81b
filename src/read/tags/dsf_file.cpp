#include "read/tags/dsf_file.h"

namespace kolum::tags {

namespace {

// The "DSD " chunk at the beginning: magic, chunk size, file size, position of the tag; the numbers
// have 64 bits, lowest byte first.
constexpr unsigned kHeaderSize = 28;
constexpr unsigned kTagOffset = 20;

}  // namespace

DsfFile::DsfFile(TagLib::IOStream* stream) : TagLib::File(stream) {
  seek(0);
  const TagLib::ByteVector header = readBlock(kHeaderSize);
  const bool isDsf = header.size() == kHeaderSize && header.startsWith("DSD ");
  setValid(isDsf);
  if (!isDsf) return;
  const long long offset = header.toLongLong(kTagOffset, false);
  if (offset < kHeaderSize || offset >= length()) return;
  seek(static_cast<long>(offset));
  if (readBlock(3) != TagLib::ID3v2::Header::fileIdentifier()) return;
  tag_ = std::make_unique<TagLib::ID3v2::Tag>(this, static_cast<long>(offset));
}

}  // namespace kolum::tags
