#include "answers/two_ways.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <random>
#include <sstream>

#include "answers/answers.h"
#include "answers/details_text.h"
#include "base/text.h"
#include "probe/photo.h"
#include "read/ffmpeg/input.h"
#include "read/headers/shortcuts.h"
#include "support/temp_dir.h"

namespace kolum::test {

namespace {

void add(std::ostream& out, const media::Stream& stream) {
  const auto number = [](const std::optional<int>& value) {
    return value ? std::to_string(*value) : "-";
  };
  out << "stream " << stream.index << " type " << static_cast<int>(stream.type) << " id "
      << stream.id << " codec " << stream.codec << ' ' << stream.codecName << " tag "
      << stream.codecTag << " extra data ";
  for (const std::uint8_t byte : stream.extraData) out << static_cast<int>(byte) << '.';
  out << " profile " << number(stream.profile) << " level " << number(stream.level) << " bit rate "
      << stream.bitRate << " size " << stream.width << 'x' << stream.height << ' '
      << stream.pixelFormat << " rate " << stream.frameRate.num << '/' << stream.frameRate.den
      << " aspect " << stream.sampleAspect.num << '/' << stream.sampleAspect.den << " cover "
      << stream.isAttachedPicture << " sphere " << stream.isEquirectangular << " rotation "
      << stream.rotation.value_or("-") << " made " << stream.creationTime.value_or("-")
      << " samples " << stream.sampleRate << " channels " << stream.channels << " bits "
      << stream.bitsPerSample << " time base " << stream.timeBase.num << '/' << stream.timeBase.den
      << '\n';
}

std::string factsAbout(const std::string& path, ffmpeg::Depth depth,
                       ffmpeg::Details details = ffmpeg::Details::kLeftOut) {
  const auto container = ffmpeg::readContainer(path, depth, details);
  if (!container) return "none\n";
  std::ostringstream out;
  // The names of picture demuxers, which no entry point reports, depend on the way.
  const bool isPicture =
      container->demuxer.ends_with("_pipe") || container->demuxer.starts_with("image2");
  out << "container " << (isPicture ? "of a picture" : container->demuxer) << " bit rate "
      << container->bitRate << " duration " << container->duration << '\n';
  for (const auto& [key, value] : container->tags) out << "tag " << key << '=' << value << '\n';
  for (const media::Stream& stream : container->streams) add(out, stream);
  for (const media::Stream& stream : container->streams)
    if (stream.details)
      out << "details " << stream.index << ' ' << detailsText(*stream.details) << '\n';
  for (const media::Chapter& each : container->chapters)
    out << "chapter " << each.start << '-' << each.end << ' ' << each.title << '\n';
  for (const media::Program& each : container->programs)
    out << "program " << each.number << ' ' << each.name << ' ' << each.provider << '\n';
  return out.str();
}

std::string factsAbout(const std::string& path) {
  std::ostringstream out;
  out << factsAbout(path, ffmpeg::Depth::kHeader) << factsAbout(path, ffmpeg::Depth::kStreams)
      << factsAbout(path, ffmpeg::Depth::kStreams, ffmpeg::Details::kWanted);
  const probe::PhotoResult photo = probe::probePhoto(path);
  out << "photo " << photo.isReadable;
  if (photo.picture)
    out << ' ' << photo.picture->width << 'x' << photo.picture->height << ' '
        << photo.picture->pixelFormat;
  out << '\n';
  return out.str();
}

std::string answersBy(bool shortcuts, const std::string& path, Extent extent) {
  headers::allowShortcuts(shortcuts);
  std::string answers = factsAbout(path);
  if (extent == Extent::kAnswers) answers += answersAbout(path);
  headers::allowShortcuts(true);
  return answers;
}

std::string differingLines(const std::string& shortcut, const std::string& own) {
  std::istringstream first(shortcut);
  std::istringstream second(own);
  std::string lines;
  std::string a;
  std::string b;
  while (first || second) {
    if (!std::getline(first, a)) a = "(end)";
    if (!std::getline(second, b)) b = "(end)";
    if (a != b) lines += "  shortcut: " + a + "\n  FFmpeg:   " + b + "\n";
  }
  return lines;
}

}  // namespace

std::string differencesAbout(const std::string& path, Extent extent) {
  const std::string shortcut = answersBy(true, path, extent);
  const std::string own = answersBy(false, path, extent);
  return shortcut == own ? "" : differingLines(shortcut, own);
}

void forEachDamaged(
    const std::string& path, int count,
    const std::function<void(const std::string& copy, const std::string& damage)>& visit) {
  constexpr std::uintmax_t kLargest = std::uintmax_t{64} << 20;
  if (std::filesystem::file_size(path) > kLargest) return;
  const TempDir folder;
  const std::string name = "damaged" + std::string(extensionOf(path));
  const std::string content = contentOf(path);
  if (content.empty()) return;
  // The same files on every run.
  std::mt19937_64 random(content.size());
  // Half of the damage concerns headers.
  const auto place = [&](int i) {
    const std::size_t limit =
        i % 2 == 0 ? content.size() : std::min<std::size_t>(content.size(), 2048);
    return static_cast<std::size_t>(random() % limit);
  };
  for (int i = 0; i < count; ++i) {
    const std::size_t end = place(i);
    visit(folder.write(name, content.substr(0, end)), "cut at " + std::to_string(end));
  }
  for (int i = 0; i < count; ++i) {
    const std::size_t at = place(i);
    const auto bit = static_cast<unsigned>(random() % 8);
    std::string damaged = content;
    damaged[at] = static_cast<char>(static_cast<unsigned char>(damaged[at]) ^ (1U << bit));
    visit(folder.write(name, damaged),
          "bit " + std::to_string(bit) + " of byte " + std::to_string(at));
  }
}

}  // namespace kolum::test
