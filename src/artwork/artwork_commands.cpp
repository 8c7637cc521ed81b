#include "artwork/artwork_commands.h"

#include <string_view>

#include "base/appliance.h"

namespace kolum::artwork {

namespace {

// A single quote cannot be escaped inside single quotes.
bool canBeQuoted(const std::string& path) {
  return path.find('\'') == std::string::npos;
}

// TEXT escaped for use inside double quotes.
std::string inDoubleQuotes(const std::string& text) {
  constexpr std::string_view kSpecial = "\"$`\\";
  std::string quoted;
  for (const char c : text) {
    if (kSpecial.find(c) != std::string_view::npos) quoted += '\\';
    quoted += c;
  }
  return quoted;
}

std::optional<std::string> fitted(std::string command) {
  if (command.size() >= kCommandSize) return std::nullopt;
  return command;
}

}  // namespace

std::optional<std::string> ffmpegCommand(const std::string& toolFolder, const std::string& source,
                                         const std::string& target, int pixels) {
  if (!canBeQuoted(source) || !canBeQuoted(target)) return std::nullopt;
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
  if (!canBeQuoted(source) || !canBeQuoted(target)) return std::nullopt;
  const std::string size = std::to_string(pixels);
  return fitted("MAGICK_TMPDIR=\"" + inDoubleQuotes(temporaryFolder) + "\" " + kConvertTool +
                " -limit memory 64 -limit map 128 -resize " + size + "x" + size + " '" + source +
                "' '" + target + "'");
}

}  // namespace kolum::artwork
