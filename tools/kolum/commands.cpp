#include "commands.h"

// To add a command: write command_NAME.cpp with a function
//
//   Action defineName(CLI::App& command);
//
// that adds options (arguments.h has those that commands share), sets command.footer() to what the
// command's --help says beyond its options (what it prints, an example), and returns the action.
// The action gets the Context: it prints through context.printer and reports with context.fail().
// Then add the declaration and one row here, the file to CMakeLists.txt, its JSON keys to
// docs/tool.md and docs/kolum.schema.json, and its tests to tests/tool. Manual pages and the
// shells' completions follow the parser.

namespace kolum::tool {

Action defineArtwork(CLI::App& command);
Action defineClassify(CLI::App& command);
Action defineComplete(CLI::App& command);
Action defineConfig(CLI::App& command);
Action defineCover(CLI::App& command);
Action defineDlna(CLI::App& command);
Action defineDoctor(CLI::App& command);
Action defineDsf(CLI::App& command);
Action defineExtensions(CLI::App& command);
Action defineGeocode(CLI::App& command);
Action defineHelp(CLI::App& command);
Action defineIds(CLI::App& command);
Action defineInfo(CLI::App& command);
Action defineKeyframe(CLI::App& command);
Action defineNotify(CLI::App& command);
Action defineProbe(CLI::App& command);
Action defineSend(CLI::App& command);
Action defineServeEcho(CLI::App& command);
Action defineTracks(CLI::App& command);

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
