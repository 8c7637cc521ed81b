#include "commands.h"
#include "syntax.h"

// To add a command: write command_NAME.cpp with a function
//
//   Action defineName(Syntax& syntax);
//
// that says how the command is written (syntax.h; arguments.h has what commands share) and what its
// --help says beyond that (what it prints, an example), and returns the action.
// The action gets the Context: it prints through context.printer and reports with context.fail().
// Then add the declaration and one row here, the file to CMakeLists.txt, its JSON keys to
// docs/tool.md and docs/kolum.schema.json, and its tests to tests/tool. Manual pages and the
// shells' completions follow the parser.

namespace kolum::tool {

Action defineArtwork(Syntax& syntax);
Action defineClassify(Syntax& syntax);
Action defineComplete(Syntax& syntax);
Action defineConfig(Syntax& syntax);
Action defineCover(Syntax& syntax);
Action defineDlna(Syntax& syntax);
Action defineDoctor(Syntax& syntax);
Action defineDsf(Syntax& syntax);
Action defineExtensions(Syntax& syntax);
Action defineGeocode(Syntax& syntax);
Action defineHelp(Syntax& syntax);
Action defineIds(Syntax& syntax);
Action defineInfo(Syntax& syntax);
Action defineKeyframe(Syntax& syntax);
Action defineNotify(Syntax& syntax);
Action defineProbe(Syntax& syntax);
Action defineSend(Syntax& syntax);
Action defineServeEcho(Syntax& syntax);
Action defineTracks(Syntax& syntax);

namespace {

// In the order in which --help lists them.
constexpr Command kCommands[] = {
    {"probe", "What is in media files", defineProbe},
    {"info", "The streams of a file, for players", defineInfo},
    {"keyframe", "The key frame to start from", defineKeyframe},
    {"tracks", "Track counts, rotation and protection", defineTracks},
    {"dlna", "DLNA profiles, and how they come about", defineDlna},
    {"dsf", "DSD songs and their tags", defineDsf},
    {"cover", "Album pictures", defineCover},
    {"classify", "The kind of files, by their names", defineClassify},
    {"extensions", "The file types the library knows", defineExtensions},
    {"ids", "Identifier tables and conversions", defineIds},
    {"artwork", "Thumbnails of albums and artists", defineArtwork},
    {"geocode", "The place of a position", defineGeocode},
    {"config", "The server's configuration", defineConfig},
    {"send", "Sends a command to the server", defineSend},
    {"serve-echo", "A small server for trying \"send\"", defineServeEcho},
    {"notify", "The change and stop notifications", defineNotify},
    {"doctor", "What is there on this machine, and what is missing", defineDoctor},
    {"help", "The help of a command", defineHelp},
    {"complete", "", defineComplete},
};

}  // namespace

std::span<const Command> commands() {
  return kCommands;
}

}  // namespace kolum::tool
