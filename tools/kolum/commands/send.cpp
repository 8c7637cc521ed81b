#include <kolum/server.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <limits>
#include <memory>
#include <optional>

#include "base/percent.h"
#include "terminal/command.h"
#include "terminal/context.h"
#include "terminal/numbers.h"
#include "terminal/syntax.h"
#include "terminal/text.h"

namespace kolum::tool {

namespace {

namespace wire = MediaLibrary::LUM::wire;

struct Options {
  std::string command;
  std::vector<std::string> values;
  std::optional<std::string> text;
  std::optional<std::string> payloadFile;
};

std::string readPayload(const std::string& file) {
  std::ifstream in(file, std::ios::binary);
  std::string payload(wire::kRequestPayloadMax + 1, '\0');
  in.read(payload.data(), static_cast<std::streamsize>(payload.size()));
  payload.resize(static_cast<std::size_t>(in.gcount()));
  if (!in.is_open() || in.bad()) throw std::runtime_error(file + ": " + std::strerror(errno));
  return payload;
}

std::int64_t number(const std::string& text) {
  if (const auto value = parseNumber(text)) return *value;
  throw UsageError("\"" + text + "\" is not a 64-bit number");
}

int commandCode(const std::string& text) {
  const std::int64_t code = number(text);
  if (code == static_cast<int>(code)) return static_cast<int>(code);
  throw UsageError("command " + text + " does not fit into 32 bits");
}

// Each value is 64 bits wide, in host byte order.
std::string valuesPayload(const std::vector<std::string>& values) {
  std::string payload;
  for (const std::string& text : values) {
    const std::int64_t value = number(text);
    payload.append(reinterpret_cast<const char*>(&value), sizeof value);
  }
  return payload;
}

std::string payloadOf(const Options& options) {
  const int sources = static_cast<int>(!options.values.empty()) +
                      static_cast<int>(options.text.has_value()) +
                      static_cast<int>(options.payloadFile.has_value());
  if (sources > 1) throw UsageError("VALUE, --text and --payload cannot be combined");
  std::string payload = options.payloadFile ? readPayload(*options.payloadFile)
                        : options.text      ? *options.text
                                            : valuesPayload(options.values);
  if (payload.size() > wire::kRequestPayloadMax) {
    throw UsageError("the payload is longer than " + std::to_string(wire::kRequestPayloadMax) +
                     " bytes");
  }
  return payload;
}

void print(Context& context, int command, const MediaLibrary::LUM::SocketResp_t& answer,
           const std::string& text) {
  Result result;
  result.data("command", command);
  result.data("result", answer.result);
  result.data("success", answer.result == wire::kResultSuccess);
  result.show("Result", std::to_string(answer.result) +
                            (answer.result == wire::kResultSuccess ? " (success)" : ""));
  result.data("length", answer.length);
  result.text("text", "Answer", text);
  if (!isUtf8(text)) result.data("textBytes", percentEncoded(text));
  context.printer.block(result);
}

void run(Context& context, const Options& options) {
  const int command = commandCode(options.command);
  const std::string payload = payloadOf(options);
  // The record stays unchanged if no answer comes.
  constexpr std::int64_t kNoAnswer = std::numeric_limits<std::int64_t>::min();
  MediaLibrary::LUM::SocketResp_t answer = {kNoAnswer, 0, nullptr};
  const int status =
      sendCommand(&answer, command, payload.empty() ? nullptr : payload.data(), payload.size());
  if (status != 0 && answer.result == kNoAnswer) {
    return context.fail(std::string("no answer from a server at ") + wire::kSocketPath);
  }
  const std::string text = answer.data == nullptr ? "" : answer.data;
  std::free(answer.data);
  print(context, command, answer, text);
  if (status != 0) context.fail("the server answered with result " + std::to_string(answer.result));
}

}  // namespace

Action defineSend(Syntax& syntax) {
  auto options = std::make_shared<Options>();
  syntax.operand({"COMMAND"}, options->command, "The server's command code");
  syntax.operands({"VALUE"}, options->values, "Numbers, sent as 64 bits each");
  syntax.option("--text", {"TEXT"}, options->text, "Sends this text as the payload");
  syntax.option("--payload", {"FILE", Offer::kFiles}, options->payloadFile,
                "Sends this file's bytes");
  syntax.help(
      "Sends one command to the media-library server and prints its answer. The exit status is 1\n"
      "when no server answers, or it answers with a result other than 1. A payload holds at most\n"
      "4080 bytes.\n"
      "\nExamples:\n"
      "  kolum send 3 1 -5\n"
      "  kolum send 7 --text /share/Music");
  return [options](Context& context) { run(context, *options); };
}

}  // namespace kolum::tool
