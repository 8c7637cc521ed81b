#include "thumbnail/artwork_commands.h"

namespace kolum::thumbnail {

namespace {

// What the shell does not take as it is inside the two kinds of quotes.
constexpr char kSpecialInSingleQuotes[] = "'";
constexpr char kSpecialInDoubleQuotes[] = "\"$`\\";

bool hasAny(const std::string& text, const char* characters) {
  return text.find_first_of(characters) != std::string::npos;
}

std::optional<std::string> fitted(std::string command) {
  if (command.size() >= kCommandSize) return std::nullopt;
  return command;
}

}  // namespace

std::optional<std::string> ffmpegCommand(const std::string& toolFolder, const std::string& source,
                                         const std::string& target, int pixels) {
  if (hasAny(source, kSpecialInSingleQuotes) || hasAny(target, kSpecialInSingleQuotes)) {
    return std::nullopt;
  }
  const std::string size = std::to_string(pixels);
  const std::string scale =
      "scale='max(" + size + "\\,iw*" + size + "/ih):" + size + "/min(1\\,iw/ih)'";
  const std::string crop = "crop=" + size + ":" + size;
  return fitted(toolFolder + "ffmpeg -y -i '" + source + "' -vf " + scale + "," + crop +
                " -vframes 1 -qscale:v 2 -an -f mjpeg '" + target + "'");
}

std::optional<std::string> convertCommand(const std::string& temporaryFolder,
                                          const std::string& source, const std::string& target,
                                          int pixels) {
  if (hasAny(temporaryFolder, kSpecialInDoubleQuotes) || hasAny(source, kSpecialInSingleQuotes) ||
      hasAny(target, kSpecialInSingleQuotes)) {
    return std::nullopt;
  }
  const std::string size = std::to_string(pixels);
  return fitted("MAGICK_TMPDIR=\"" + temporaryFolder +
                "\" /usr/local/sbin/convert -limit memory 64 -limit map 128 -resize " + size + "x" +
                size + " '" + source + "' '" + target + "'");
}

}  // namespace kolum::thumbnail
