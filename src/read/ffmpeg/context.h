// An FFmpeg context that reads an opened source.
#ifndef KOLUM_READ_FFMPEG_CONTEXT_H
#define KOLUM_READ_FFMPEG_CONTEXT_H

#include <memory>
#include <optional>
#include <string_view>

#include "media/source.h"

struct AVFormatContext;

namespace kolum::ffmpeg {

class SourceReader;

struct ContextCloser {
  void operator()(AVFormatContext* context) const;
};

// Closed on destruction. The context must be closed before its reader is destroyed.
struct Context {
  std::unique_ptr<SourceReader> reader;  // null for URLs: their servers set the pace
  std::unique_ptr<AVFormatContext, ContextCloser> format;

  Context(std::unique_ptr<SourceReader> sourceReader, AVFormatContext* formatContext);
  Context(Context&&) noexcept;
  Context& operator=(Context&&) = delete;
  ~Context();
};

// Reads SOURCE, which must outlive the context, with the demuxer of this name, or with the one that
// FFmpeg's search finds. Only allowed demuxers and decoders are used, and nothing but SOURCE is
// read. Empty if FFmpeg cannot open it.
std::optional<Context> openContext(const media::Source& source, std::string_view demuxer);

}  // namespace kolum::ffmpeg

#endif
