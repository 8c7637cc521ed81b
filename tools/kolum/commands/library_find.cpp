#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ascii.h"
#include "commands/library.h"
#include "files/library.h"
#include "terminal/numbers.h"

namespace kolum::tool {

namespace {

struct Options {
  std::string library;
  std::vector<std::string> paths;
  std::vector<std::string> states;
  std::optional<std::string> kind;
  std::optional<std::string> codec;
  std::optional<std::string> size;
  std::optional<std::string> duration;
  std::optional<std::string> date;
  std::optional<std::string> profile;
  std::optional<std::string> text;
  std::optional<std::string> where;
  bool isNulSeparated = false;
  bool asCsv = false;
};

constexpr const char* kKinds[] = {"video", "music", "photo"};
constexpr scan::State kStates[] = {scan::State::kKnown, scan::State::kFailed, scan::State::kSuspect,
                                   scan::State::kQuarantined};
constexpr const char* kNone = "none";
// Expressions can be made to run for ever.
constexpr std::chrono::seconds kLongestExpression(60);

Words kindWords() {
  return {std::begin(kKinds), std::end(kKinds)};
}

Words stateWords() {
  Words words;
  for (const scan::State state : kStates) words.emplace_back(stateName(state));
  return words;
}

Words profileWords() {
  return {kNone};
}

struct Unit {
  char letter;
  std::int64_t factor;
};

constexpr Unit kSizeUnits[] = {{'K', std::int64_t{1} << 10},
                               {'M', std::int64_t{1} << 20},
                               {'G', std::int64_t{1} << 30},
                               {'T', std::int64_t{1} << 40}};
constexpr Unit kTimeUnits[] = {{'S', 1}, {'M', 60}, {'H', 3600}};

// "1.5G", "90" or "2h" as a whole number; empty if it is none.
template <std::size_t kCount>
std::optional<std::int64_t> quantity(std::string_view text, const Unit (&units)[kCount]) {
  constexpr double kMost = 9e18;
  double factor = 1;
  for (const Unit& unit : units) {
    if (text.empty() || ascii::upper(text.back()) != unit.letter) continue;
    factor = static_cast<double>(unit.factor);
    text.remove_suffix(1);
    break;
  }
  const auto number = parseDecimal(text);
  if (!number || *number < 0 || *number * factor > kMost) return std::nullopt;
  return static_cast<std::int64_t>(*number * factor);
}

// "2015", "2015-06" or "2015-06-07".
std::optional<std::string> date(std::string_view text) {
  constexpr std::string_view kPattern = "dddd-dd-dd";
  const bool isWhole = text.size() == 4 || text.size() == 7 || text.size() == kPattern.size();
  for (std::size_t i = 0; isWhole && i < text.size(); ++i)
    if (kPattern[i] == 'd' ? !ascii::isDigit(text[i]) : text[i] != '-') return std::nullopt;
  return isWhole ? std::optional(std::string(text)) : std::nullopt;
}

// "A..B", "A..", "..B" or "A", which stands for "A..A".
template <typename Value, typename Parse>
scan::Bounds<Value> bounds(const char* option, const std::string& range, const char* example,
                           const Parse& parse) {
  constexpr std::string_view kDots = "..";
  const auto refuse = [&] {
    return UsageError(std::string(option) + " takes a range such as " + example + ", not \"" +
                      range + "\"");
  };
  const auto end = [&](std::string_view text) -> std::optional<Value> {
    if (text.empty()) return std::nullopt;
    if (auto value = parse(text)) return value;
    throw refuse();
  };
  const std::string_view view = range;
  const std::size_t dots = view.find(kDots);
  if (view.empty() || view == kDots) throw refuse();
  if (dots == std::string_view::npos) return {end(view), end(view)};
  return {end(view.substr(0, dots)), end(view.substr(dots + kDots.size()))};
}

std::vector<scan::State> statesOf(const std::vector<std::string>& words) {
  std::vector<scan::State> states;
  for (const std::string& word : words) {
    const auto* state = std::find_if(std::begin(kStates), std::end(kStates),
                                     [&](scan::State row) { return word == stateName(row); });
    if (state == std::end(kStates)) {
      throw UsageError("unknown state \"" + word + "\": known, failed, suspect or quarantined");
    }
    states.push_back(*state);
  }
  return states;
}

void requireKind(const std::string& kind) {
  if (std::find(std::begin(kKinds), std::end(kKinds), kind) == std::end(kKinds))
    throw UsageError("unknown kind \"" + kind + "\": video, music or photo");
}

scan::FileQuery queryOf(const Options& options) {
  scan::FileQuery query;
  query.states = statesOf(options.states);
  if (options.kind) requireKind(*options.kind);
  query.kind = options.kind;
  query.codec = options.codec;
  if (options.size) {
    query.size = bounds<std::int64_t>("--size", *options.size, "100M..4G",
                                      [](auto text) { return quantity(text, kSizeUnits); });
  }
  if (options.duration) {
    query.duration = bounds<std::int64_t>("--duration", *options.duration, "90..2h",
                                          [](auto text) { return quantity(text, kTimeUnits); });
  }
  if (options.date)
    query.date = bounds<std::string>("--date", *options.date, "2015-06..2016", date);
  if (options.profile) query.profile = *options.profile == kNone ? "" : *options.profile;
  query.text = options.text;
  query.where = options.where;
  if (query.where) query.timeLimit = kLongestExpression;
  return query;
}

void run(Context& context, const Options& options) {
  const scan::FileQuery query = queryOf(options);
  if (options.asCsv && context.json) throw UsageError("--json and --csv exclude each other");
  scan::Store store = libraryToRead(options.library);
  if (options.asCsv) return printTable(context, store, query, options.paths);
  if (context.json) return printDocuments(context, store, query, options.paths);
  NamePrinter names(context, options.isNulSeparated);
  forEachFound(context, store, query, options.paths,
               [&](const scan::FoundFile& file) { names.print(file.path.full()); });
}

}  // namespace

Action defineLibraryFind(Syntax& syntax) {
  auto options = std::make_shared<Options>();
  addPathOperands(syntax, options->paths);
  syntax.option("--kind", {"KIND", Offer::kWords, kindWords}, options->kind,
                "Videos, music or photos");
  syntax.option("--codec", {"NAME"}, options->codec, "With this codec of picture or sound");
  syntax.option("--size", {"RANGE"}, options->size, "Bytes, with K, M, G or T: 100M..4G");
  syntax.option("--duration", {"RANGE"}, options->duration, "Seconds, or with m or h: 90..2h");
  syntax.option("--date", {"RANGE"}, options->date,
                "When it was made, or else last changed: 2015-06..2016");
  syntax.option("--dlna", {"NAME", Offer::kWords, profileWords}, options->profile,
                "With this DLNA profile, or \"none\"");
  syntax.option("--text", {"TEXT"}, options->text, "With this text in the path or a tag");
  syntax.repeatedOption("--state", {"STATE", Offer::kWords, stateWords}, options->states,
                        "In this state; may be repeated");
  syntax.option("--where", {"SQL"}, options->where, "For which this SQL expression is true");
  addNullFlag(syntax, options->isNulSeparated);
  addTableFlag(syntax, options->asCsv);
  addLibraryOption(syntax, options->library);
  syntax.help(
      "Prints the paths of the files for which all of it is true; with --json their documents.\n"
      "A RANGE is FROM..TO; either end may be left out, and a single value is both. SQL\n"
      "expressions use the columns of the view \"files\", which docs/library.md lists.\n"
      "\nExamples:\n"
      "  kolum library find --kind video --dlna none /share/Videos\n"
      "  kolum library find --date 2015-06..2016 --text harbour\n"
      "  kolum library find --where 'width >= 3840 AND frame_rate > 50'");
  return [options](Context& context) { run(context, *options); };
}

}  // namespace kolum::tool
