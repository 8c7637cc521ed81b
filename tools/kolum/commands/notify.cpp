#include <kolum/frame.h>

#include <cstring>
#include <memory>
#include <utility>

#include "machine/library.h"
#include "terminal/command.h"
#include "terminal/context.h"
#include "terminal/syntax.h"

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

// NOTIFICATION_*.
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
    case NOTIFICATION_RECEIVED:
      return answer(context, "wait", channel,
                    options.stopChannel ? "Stop received." : "Change received.");
    case NOTIFICATION_TIMED_OUT:
      return context.fail("nothing posted within " + std::to_string(options.seconds) + " s");
    default:
      return context.fail(std::string("the wait failed: ") + std::strerror(errno));
  }
}

// Wraps ACT, which needs the channels.
Action withChannels(Action act) {
  return [act = std::move(act)](Context& context) {
    if (!initLibrary()) return context.fail("the notification channels cannot be opened");
    act(context);
  };
}

Action definePost(Syntax& syntax) {
  syntax.help("Example:\n  kolum notify post");
  return withChannels(post);
}

Action defineStop(Syntax& syntax) {
  syntax.help("Example:\n  kolum notify stop");
  return withChannels(stop);
}

Action defineWait(Syntax& syntax) {
  constexpr int kLongestWait = 1000000000;
  auto options = std::make_shared<Options>();
  syntax.flag("--stop", options->stopChannel, "Waits on the stop channel");
  syntax.option("--seconds", {"N"}, options->seconds, {0, kLongestWait},
                "Gives up after N seconds, with exit status 1");
  syntax.help("Example:\n  kolum notify wait --seconds 60 && echo changed");
  return withChannels([options](Context& context) { wait(context, *options); });
}

Action defineClear(Syntax& syntax) {
  syntax.help("Example:\n  kolum notify clear");
  return withChannels(clear);
}

}  // namespace

Action defineNotify(Syntax& syntax) {
  static constexpr Command kCommands[] = {
      {"post", "Posts a change: wakes the server", definePost},
      {"stop", "Posts a stop: asks a waiting process to stop", defineStop},
      {"wait", "Waits for a change, or with --stop for a stop", defineWait},
      {"clear", "Empties both channels", defineClear},
  };
  syntax.commands(kCommands);
  syntax.help(
      "The two process-shared channels by which the media library's processes wake and stop each\n"
      "other.\n"
      "\nExample:\n  kolum notify wait --seconds 60 && echo changed");
  return nullptr;
}

}  // namespace kolum::tool
