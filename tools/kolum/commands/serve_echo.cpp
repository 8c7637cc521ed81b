#include <kolum/server.h>
#include <pthread.h>
#include <unistd.h>

#include <csignal>
#include <exception>
#include <memory>
#include <thread>

#include "base/percent.h"
#include "commands/echo_server.h"
#include "terminal/command.h"
#include "terminal/context.h"
#include "terminal/syntax.h"
#include "terminal/text.h"

namespace kolum::tool {

namespace {

Result requestResult(const EchoRequest& request) {
  Result result;
  result.number("command", "Command", request.command);
  result.data("length", request.payload.size());
  result.data("payload", percentEncoded(request.payload));
  result.show("Payload", request.payload.empty() ? "(none)" : request.payload);
  return result;
}

// The signals that end a server, received by a thread that waits for them.
sigset_t endingSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  sigaddset(&signals, SIGHUP);
  return signals;
}

void run(Context& context, const std::string& socketPath) {
  const sigset_t signals = endingSignals();
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);

  std::exception_ptr failure;
  EchoServer* running = nullptr;
  const auto show = [&](const EchoRequest& request) {
    try {
      context.printer.block(requestResult(request));
    } catch (...) {
      failure = std::current_exception();
      running->stop();
    }
  };
  EchoServer server(socketPath, show);
  running = &server;
  std::thread waiter([&] {
    int signal = 0;
    sigwait(&signals, &signal);
    server.stop();
  });
  try {
    server.serve();
  } catch (...) {
    failure = std::current_exception();
  }
  kill(getpid(), SIGTERM);  // ends the waiting thread if no signal did
  waiter.join();
  if (failure) std::rethrow_exception(failure);
}

}  // namespace

Action defineServeEcho(Syntax& syntax) {
  auto socketPath = std::make_shared<std::string>(MediaLibrary::LUM::wire::kSocketPath);
  syntax.option("--socket", {"PATH", Offer::kFiles}, *socketPath,
                std::string("The socket file to serve (default ") + *socketPath + ")");
  syntax.help(
      "A small media-library server for experiments: prints every command it gets and answers\n"
      "with result 1 and the command's own payload as text, until it is interrupted.\n"
      "\nExample:\n"
      "  kolum serve-echo &\n"
      "  kolum send 7 --text hello");
  return [socketPath](Context& context) { run(context, *socketPath); };
}

}  // namespace kolum::tool
