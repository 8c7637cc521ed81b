#include "commands.h"

namespace kolum::tool {

// In the order of --help: the name, its purpose in one line (commands without one are not listed),
// and the function in commands/ that defines it.
//
// The function describes the command line (terminal/syntax.h; terminal/arguments.h has arguments
// that commands share) and the rest of its --help, and returns the action. The action prints
// through context.printer and reports failures with context.fail().
#define KOLUM_COMMANDS(ENTRY)                                                 \
  ENTRY("probe", "What is in media files", defineProbe)                       \
  ENTRY("scan", "Keeps what is in folders of media in a library", defineScan) \
  ENTRY("library", "What scans found, and its database", defineLibrary)       \
  ENTRY("info", "The streams of a file, for players", defineInfo)             \
  ENTRY("keyframe", "The key frame to start from", defineKeyframe)            \
  ENTRY("tracks", "Track counts, rotation and protection", defineTracks)      \
  ENTRY("dlna", "DLNA profiles and how they are chosen", defineDlna)          \
  ENTRY("dsf", "DSD songs and their tags", defineDsf)                         \
  ENTRY("cover", "Album pictures", defineCover)                               \
  ENTRY("classify", "Kinds of files, by their names", defineClassify)         \
  ENTRY("extensions", "The file types the library knows", defineExtensions)   \
  ENTRY("ids", "Identifier tables and conversions", defineIds)                \
  ENTRY("artwork", "Thumbnails of albums and artists", defineArtwork)         \
  ENTRY("geocode", "The place at a position", defineGeocode)                  \
  ENTRY("config", "The server's configuration", defineConfig)                 \
  ENTRY("send", "Sends a command to the server", defineSend)                  \
  ENTRY("serve-echo", "A small server for trying \"send\"", defineServeEcho)  \
  ENTRY("notify", "The change and stop notifications", defineNotify)          \
  ENTRY("doctor", "What this machine has and what is missing", defineDoctor)  \
  ENTRY("help", "The help of a command", defineHelp)                          \
  ENTRY("complete", "", defineComplete)

#define KOLUM_DECLARE(name, summary, define) Action define(Syntax& syntax);
KOLUM_COMMANDS(KOLUM_DECLARE)
#undef KOLUM_DECLARE

std::span<const Command> commands() {
#define KOLUM_ROW(name, summary, define) {name, summary, define},
  static constexpr Command kCommands[] = {KOLUM_COMMANDS(KOLUM_ROW)};
#undef KOLUM_ROW
  return kCommands;
}

}  // namespace kolum::tool
