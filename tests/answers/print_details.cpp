// Prints the details that are known of files, for people who change how they are read.
#include <cstdio>

#include "answers/details_text.h"
#include "read/ffmpeg/input.h"

int main(int count, char** arguments) {
  for (int i = 1; i < count; ++i) {
    std::printf("%s\n", arguments[i]);
    const auto container = kolum::ffmpeg::readContainer(
        arguments[i], kolum::ffmpeg::Depth::kStreams, kolum::ffmpeg::Details::kWanted);
    if (!container) continue;
    for (const auto& [key, value] : container->tags)
      std::printf("  %s = %s\n", key.c_str(), value.c_str());
    for (const auto& stream : container->streams)
      std::printf("  %d %s%s\n", stream.index, stream.codecName.c_str(),
                  kolum::test::detailsText(*stream.details).c_str());
    for (const auto& each : container->chapters)
      std::printf("  chapter %g-%g %s\n", each.start, each.end, each.title.c_str());
    for (const auto& each : container->programs)
      std::printf("  program %d %s, %s\n", each.number, each.name.c_str(), each.provider.c_str());
  }
  return 0;
}
