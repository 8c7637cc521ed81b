#include "files/documents.h"

#include <nlohmann/json.hpp>
#include <set>
#include <vector>

#include "base/moment.h"
#include "base/percent.h"
#include "describe/json.h"
#include "terminal/output.h"
#include "terminal/text.h"

namespace kolum::tool {

namespace {

using Json = nlohmann::ordered_json;

constexpr int kDeepest = 32;  // real documents reach 3

// The keys of a line that say something about the file and not about its content.
constexpr const char* kKeysOfTheLine[] = {"schema",   "file",  "fileBytes", "size",
                                          "modified", "state", "error"};

// Watches a parser.
class Watcher {
 public:
  bool operator()(int depth, Json::parse_event_t event, const Json& parsed) {
    if (depth > kDeepest) throw DocumentError("nested too deeply");
    switch (event) {
      case Json::parse_event_t::object_start:
        keys_.emplace_back();
        break;
      case Json::parse_event_t::object_end:
        keys_.pop_back();
        break;
      case Json::parse_event_t::key:
        if (!keys_.back().insert(parsed.get<std::string>()).second)
          throw DocumentError("the key \"" + parsed.get<std::string>() + "\" is there twice");
        break;
      default:
        break;
    }
    return true;
  }

 private:
  std::vector<std::set<std::string>> keys_;  // of the objects that are open
};

// Null if there is no such key.
const Json* member(const Json& object, const char* key) {
  const auto found = object.find(key);
  return found == object.end() ? nullptr : &*found;
}

std::string textIn(const Json& object, const char* key) {
  const Json* value = member(object, key);
  if (value == nullptr || !value->is_string())
    throw DocumentError("no text \"" + std::string(key) + "\"");
  return value->get<std::string>();
}

std::optional<std::int64_t> numberIn(const Json& object, const char* key) {
  const Json* value = member(object, key);
  if (value == nullptr) return std::nullopt;
  const bool fits = value->is_number_integer() &&
                    (!value->is_number_unsigned() || value->get<std::uint64_t>() <= INT64_MAX);
  if (!fits) throw DocumentError("\"" + std::string(key) + "\" is not a whole number");
  return value->get<std::int64_t>();
}

std::optional<std::int64_t> momentIn(const Json& object, const char* key) {
  if (member(object, key) == nullptr) return std::nullopt;
  const auto moment = momentOf(textIn(object, key));
  if (!moment) throw DocumentError("\"" + std::string(key) + "\" is not a moment in UTC");
  return moment;
}

std::string fileOf(const Json& line) {
  std::string file = textIn(line, "file");
  if (line.contains("fileBytes")) {
    const auto bytes = percentDecoded(textIn(line, "fileBytes"));
    if (!bytes) throw DocumentError("\"fileBytes\" is not percent-encoded");
    file = *bytes;
  }
  if (file.empty()) throw DocumentError("\"file\" is empty");
  if (file.find('\0') != std::string::npos) throw DocumentError("\"file\" contains a NUL");
  return file;
}

scan::Reason errorOf(const Json& error) {
  if (!error.is_object()) throw DocumentError("\"error\" is not an object");
  scan::Reason reason = {textIn(error, "code"), textIn(error, "reason")};
  if (reason.code.empty()) throw DocumentError("\"code\" is empty");
  return reason;
}

void requireSchema(const Json& line) {
  const auto schema = numberIn(line, "schema");
  if (!schema) throw DocumentError("no \"schema\"");
  if (*schema != describe::kJsonSchema) {
    throw DocumentError("schema " + std::to_string(*schema) + ", but this kolum knows " +
                        std::to_string(describe::kJsonSchema));
  }
}

void requireKind(const Json& line) {
  const Json* kind = member(line, "kind");
  if (kind == nullptr || !kind->is_object())
    throw DocumentError("neither \"kind\" nor \"error\"; \"kolum probe --json\" writes them");
  textIn(*kind, "name");
}

}  // namespace

Json parsedObject(std::string_view text) {
  // The parser would end there.
  if (text.find('\0') != std::string_view::npos) throw DocumentError("contains a NUL");
  Json object;
  try {
    object = Json::parse(text, Json::parser_callback_t(Watcher()));
  } catch (const Json::parse_error& error) {
    throw DocumentError("not JSON at byte " + std::to_string(error.byte));
  } catch (const Json::exception&) {
    throw DocumentError("a number that is too large");
  }
  if (!object.is_object()) throw DocumentError("not a JSON object");
  return object;
}

DocumentLine parsedLine(std::string_view text) {
  Json object = parsedObject(text);
  requireSchema(object);
  DocumentLine line;
  line.file = fileOf(object);
  line.size = numberIn(object, "size");
  line.modifiedNs = momentIn(object, "modified");
  if (const Json* error = member(object, "error")) {
    line.error = errorOf(*error);
    return line;
  }
  requireKind(object);
  for (const char* key : kKeysOfTheLine) object.erase(key);
  line.document = object.dump();
  return line;
}

}  // namespace kolum::tool
