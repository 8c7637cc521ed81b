#include "answers/details_text.h"

#include <iomanip>
#include <sstream>
#include <string_view>

namespace kolum::test {

namespace {

class Line {
 public:
  Line() { text_ << std::setprecision(10); }

  void add(std::string_view name, const std::string& value) {
    if (!value.empty()) text_ << ' ' << name << " '" << value << "'";
  }
  void add(std::string_view name, bool value) {
    if (value) text_ << ' ' << name;
  }
  template <typename Number>
  void number(std::string_view name, Number value) {
    if (value != Number()) text_ << ' ' << name << ' ' << value;
  }
  template <typename Value>
  void add(std::string_view name, const std::optional<Value>& value) {
    if (value) text_ << ' ' << name << ' ' << *value;
  }
  std::ostream& out() { return text_; }
  std::string text() const { return text_.str(); }

 private:
  std::ostringstream text_;
};

void add(Line& line, const media::Dispositions& marks) {
  line.add("default", marks.isDefault);
  line.add("forced", marks.isForced);
  line.add("for hearing impaired", marks.isForHearingImpaired);
  line.add("for visually impaired", marks.isForVisuallyImpaired);
  line.add("comment", marks.isComment);
  line.add("original", marks.isOriginal);
  line.add("dub", marks.isDub);
  line.add("lyrics", marks.isLyrics);
  line.add("karaoke", marks.isKaraoke);
  line.add("clean effects", marks.isCleanEffects);
  line.add("captions", marks.isCaptions);
  line.add("descriptions", marks.isDescriptions);
  line.add("attached picture", marks.isAttachedPicture);
  line.add("timed thumbnails", marks.isTimedThumbnails);
  line.add("still image", marks.isStillImage);
}

void add(Line& line, const media::MasteringDisplay& display) {
  if (const auto& found = display.primaries)
    for (const media::Chromaticity& each : {found->red, found->green, found->blue, found->white})
      line.out() << " colour " << each.x << ',' << each.y;
  if (const auto& found = display.luminance)
    line.out() << " luminance " << found->lowest << '-' << found->highest;
}

void addVideo(Line& line, const media::StreamDetails& details) {
  line.number("average rate", details.averageFrameRate.num);
  line.number("by", details.averageFrameRate.den);
  if (details.fieldOrder) line.out() << " fields " << static_cast<int>(*details.fieldOrder);
  line.number("depth", details.bitDepth);
  line.add("chroma", details.chromaSubsampling);
  line.add("alpha", details.hasAlpha);
  line.add("primaries", details.colours.primaries);
  line.add("transfer", details.colours.transfer);
  line.add("matrix", details.colours.matrix);
  line.add("range", details.colours.range);
  line.add("chroma at", details.colours.chromaLocation);
  if (details.masteringDisplay) add(line, *details.masteringDisplay);
  if (const auto& light = details.contentLight)
    line.out() << " light " << light->highest << ' ' << light->highestAverage;
  if (const auto& dolby = details.dolbyVision)
    line.out() << " dolby vision " << dolby->majorVersion << '.' << dolby->minorVersion
               << " profile " << dolby->profile << " level " << dolby->level << " rpu "
               << dolby->hasReferenceData << " el " << dolby->hasEnhancementLayer << " bl "
               << dolby->hasBaseLayer << " compatibility " << dolby->compatibility;
  line.add("hdr10+", details.hasHdr10Plus);
  line.add("captions inside", details.hasClosedCaptions);
  if (const auto& turned = details.orientation)
    line.out() << " turned " << turned->degrees << (turned->isMirrored ? " mirrored" : "");
  if (const auto& sphere = details.spherical)
    line.out() << " sphere " << sphere->projection << ' ' << sphere->yaw << ' ' << sphere->pitch
               << ' ' << sphere->roll << ' ' << sphere->left << ' ' << sphere->top << ' '
               << sphere->right << ' ' << sphere->bottom << ' ' << sphere->padding;
  if (const auto& stereo = details.stereo)
    line.out() << " stereo " << stereo->layout << (stereo->isInverted ? " inverted" : "");
}

}  // namespace

std::string detailsText(const media::StreamDetails& details) {
  Line line;
  line.add("profile", details.profileName);
  line.add("language", details.language);
  line.add("title", details.title);
  line.add("handler", details.handlerName);
  line.add("encoder", details.encoder);
  line.add("made", details.creationTime);
  line.add("timecode", details.timecode);
  add(line, details.dispositions);
  line.add("duration", details.duration);
  line.add("frames", details.frameCount);
  addVideo(line, details);
  line.add("layout", details.channelLayout);
  line.add("samples", details.sampleFormat);
  line.number("raw bits", details.bitsPerRawSample);
  line.number("padding", details.initialPadding);
  if (const auto& kind = details.subtitleKind)
    line.add("subtitles", std::string(*kind == media::SubtitleKind::kText ? "text" : "pictures"));
  if (const auto& file = details.attachment) {
    line.add("attached", file->fileName);
    line.add("type", file->mimeType);
  }
  return line.text();
}

}  // namespace kolum::test
