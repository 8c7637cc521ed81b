#include <kolum/frame.h>

#include <CLI/CLI.hpp>
#include <cstring>
#include <memory>

#include "arguments.h"
#include "commands.h"
#include "context.h"

namespace kolum::tool {

namespace {

struct Options {
  bool stopChannel = false;
  int seconds = -1;
};

void answer(Context& context, const char* action, const char* channel, const char* sentence) {
  Result result;
  result.data("action", action);
  result.data("channel", channel);
  result.show(sentence, "");
  context.printer.block(result);
}

void post(Context& context) {
  if (KoLUM_Notification() != 0) return context.fail(std::strerror(errno));
  answer(context, "post", "changes", "Change posted.");
}

void stop(Context& context) {
  if (KoLUM_StopNotification() != 0) return context.fail(std::strerror(errno));
  answer(context, "stop", "stop", "Stop posted.");
}

void clear(Context& context) {
  KoLUM_ClearNotification();
  KoLUM_ClearStopNotification();
  answer(context, "clear", "all", "Both channels emptied.");
}

// 0 posted, 1 timed out, anything else an error.
int waitFor(const Options& options) {
  if (options.seconds < 0) {
    return options.stopChannel ? KoLUM_WaitStopNotification() : KoLUM_WaitNotification();
  }
  return options.stopChannel ? KoLUM_WaitStopNotificationTimeOut(options.seconds)
                             : KoLUM_TimedWaitNotification(options.seconds);
}

void wait(Context& context, const Options& options) {
  const char* channel = options.stopChannel ? "stop" : "changes";
  switch (waitFor(options)) {
    case 0:
      return answer(context, "wait", channel,
                    options.stopChannel ? "Stop received." : "Change received.");
    case 1:
      return context.fail("nothing posted within " + std::to_string(options.seconds) + " s");
    default:
      return context.fail(std::string("the wait failed: ") + std::strerror(errno));
  }
}

}  // namespace

Action defineNotify(CLI::App& command) {
  auto options = std::make_shared<Options>();
  command.require_subcommand(1);
  CLI::App* posting = command.add_subcommand("post", "Posts a change: wakes the server");
  CLI::App* stopping = command.add_subcommand("stop", "Posts a stop: asks a waiter to finish");
  CLI::App* waiting =
      command.add_subcommand("wait", "Waits for a change, or with --stop for a stop");
  waiting->add_flag("--stop", options->stopChannel, "Waits on the stop channel");
  constexpr int kLongestWait = 1000000000;
  addNumber(*waiting, "--seconds", options->seconds, {0, kLongestWait},
            "Gives up after N seconds, with exit status 1");
  CLI::App* clearing = command.add_subcommand("clear", "Empties both channels");
  posting->footer("Example:\n  kolum notify post");
  stopping->footer("Example:\n  kolum notify stop");
  waiting->footer("Example:\n  kolum notify wait --seconds 60 && echo changed");
  clearing->footer("Example:\n  kolum notify clear");
  command.footer(
      "The two process-shared channels by which the media library's processes wake and stop each\n"
      "other.\n"
      "\nExample:\n  kolum notify wait --seconds 60 && echo changed");
  return [=](Context& context) {
    if (!context.initLibrary()) return context.fail("the notification channels cannot be opened");
    if (posting->parsed()) return post(context);
    if (stopping->parsed()) return stop(context);
    if (waiting->parsed()) return wait(context, *options);
    clear(context);
  };
}

}  // namespace kolum::tool
