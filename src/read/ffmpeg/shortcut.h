// Spares FFmpeg the decoding of pictures when headers say what it would find out by that.
#ifndef KOLUM_READ_FFMPEG_SHORTCUT_H
#define KOLUM_READ_FFMPEG_SHORTCUT_H

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <vector>

#include "media/source.h"
#include "read/ffmpeg/first_pictures.h"
#include "read/ffmpeg/picture_parameters.h"
#include "read/headers/h264.h"
#include "read/headers/vp9.h"

struct AVDictionary;
struct AVFormatContext;
struct AVPacket;
struct AVStream;

namespace kolum::ffmpeg {

enum class Shortcuts {
  kAll,
  kStillPictures,  // those that leave the streams' time stamps alone
};

// Used in this order: fill() in a context that was opened and has read no packets, let FFmpeg read
// the stream information with options(), then ask isSound(). If it is not, only opening the file
// anew and reading it without a shortcut leads to FFmpeg's own answers.
class Shortcut {
 public:
  Shortcut(AVFormatContext& context, const media::Source& source, Shortcuts allowed);
  Shortcut(const Shortcut&) = delete;
  Shortcut& operator=(const Shortcut&) = delete;
  ~Shortcut();

  void fill();
  // One for each stream; null if there are none.
  AVDictionary** options();
  // Reads on in the file. Shows its packets to PICTURES, if given.
  bool isSound(FirstPictures* pictures);

 private:
  struct FilledStream {
    unsigned index;
    PictureParameters picture;
    bool hadFrameRate;  // before any packet was read
  };
  // What the first packet of a stream has.
  struct FirstPacket {
    std::optional<headers::H264Parameters> h264;
    std::optional<headers::Vp9Parameters> vp9;
    std::vector<std::uint8_t> parameterSets;
  };

  static FirstPacket firstPacket(const AVStream& stream, const AVPacket& packet);
  bool isH264(unsigned index) const;
  std::set<int> streamsToLookAt() const;
  template <typename Visit>
  void readAhead(Visit visit) const;
  void lookAhead();
  std::optional<PictureParameters> pictureOf(const AVStream& stream) const;
  std::optional<PictureParameters> h264Picture(const AVStream& stream) const;
  std::optional<PictureParameters> vp9Picture(const AVStream& stream) const;
  std::optional<PictureParameters> stillPicture(const AVStream& stream) const;
  std::optional<PictureParameters> largePicture(const AVStream& stream) const;
  std::optional<PictureParameters> decodeFirstHeader(const AVStream& wanted) const;
  void fillParameterSets(AVStream& stream);
  void apply(const FilledStream& filled);
  void leaveOutH264(unsigned index);
  bool mayHaveEndedEarly() const;
  bool keepsPromises(const FilledStream& filled) const;
  bool hasExpectedPackets(FirstPictures* pictures);

  AVFormatContext& context_;
  const media::Source& source_;
  Shortcuts allowed_;
  unsigned streamCount_;
  std::map<int, FirstPacket> firstPackets_;  // by the stream's index
  std::vector<FilledStream> filled_;
  std::map<int, int> expectedPackets_;  // by the stream's index
  std::vector<AVDictionary*> options_;
};

}  // namespace kolum::ffmpeg

#endif
