#include "dsf2flac/dff_tag.h"

#include <id3v2header.h>
#include <id3v2tag.h>
#include <tfile.h>

#include <memory>

#include "media/source.h"
#include "read/tags/source_stream.h"

namespace kolum::dsf2flac {

namespace {

// A chunk: four characters, the payload's size in 64 bits (highest byte first), the payload, and a
// padding byte if the size is odd.
constexpr unsigned kChunkHeader = 12;
constexpr unsigned kFormType = 4;

class DffFile : public TagLib::File {
 public:
  explicit DffFile(TagLib::IOStream* stream) : TagLib::File(stream) {
    if (const long at = tagPlace(); at > 0) tag_ = std::make_unique<TagLib::ID3v2::Tag>(this, at);
  }

  TagLib::ID3v2::Tag* tag() const override { return tag_.get(); }
  TagLib::AudioProperties* audioProperties() const override { return nullptr; }
  bool save() override { return false; }

 private:
  // The position of the tag; 0 if there is none.
  long tagPlace() {
    seek(0);
    const TagLib::ByteVector form = readBlock(kChunkHeader + kFormType);
    if (form.size() != kChunkHeader + kFormType || !form.startsWith("FRM8")) return 0;
    long at = kChunkHeader + kFormType;
    while (at + kChunkHeader < length()) {
      seek(at);
      const TagLib::ByteVector header = readBlock(kChunkHeader);
      if (header.size() != kChunkHeader) return 0;
      at += kChunkHeader;
      if (header.startsWith("ID3 ")) return beginsTag(at) ? at : 0;
      const long long size = header.toLongLong(4U, true);
      if (size < 0 || size > length() - at) return 0;
      at += static_cast<long>(size + size % 2);
    }
    return 0;
  }

  bool beginsTag(long at) {
    seek(at);
    return readBlock(3) == TagLib::ID3v2::Header::fileIdentifier();
  }

  std::unique_ptr<TagLib::ID3v2::Tag> tag_;
};

int known(unsigned number) {
  return number < 100'000 ? static_cast<int>(number) : 0;
}

}  // namespace

DffTag readDffTag(const std::string& path) {
  const auto source = media::Source::open(path);
  if (!source) return {};
  tags::SourceStream stream(*source);
  const DffFile file(&stream);
  const TagLib::ID3v2::Tag* tag = file.tag();
  if (tag == nullptr) return {};
  return {.title = tag->title().to8Bit(true),
          .artist = tag->artist().to8Bit(true),
          .album = tag->album().to8Bit(true),
          .year = known(tag->year()),
          .track = known(tag->track())};
}

}  // namespace kolum::dsf2flac
