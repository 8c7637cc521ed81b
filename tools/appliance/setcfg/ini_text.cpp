#include "ini_text.h"

#include <algorithm>
#include <cstddef>
#include <optional>

#include "ascii.h"

namespace kolum::setcfg {

namespace {

constexpr std::string_view kBlanks = " \t\n\v\f\r";
constexpr std::string_view kCommentMarks = ";#";
constexpr std::string_view kQuotes = "\"'";
constexpr std::string_view kPlainSeparator = " = ";

bool isOneOf(std::string_view set, char c) {
  return set.find(c) != set.npos;
}

std::size_t firstNonBlank(std::string_view text) {
  return std::min(text.find_first_not_of(kBlanks), text.size());
}

std::string_view trimRight(std::string_view text) {
  return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

std::string_view trim(std::string_view text) {
  text = trimRight(text);
  return text.substr(firstNonBlank(text));
}

std::string quoted(std::string_view text, char quote) {
  std::string result(1, quote);
  result += text;
  return result += quote;
}

std::string escaped(std::string_view text) {
  std::string result;
  for (const char c : text) {
    if (c == '"' || c == '\\') result += '\\';
    result += c;
  }
  return result;
}

// One line as iniparser counts them: physical lines are joined while they end in "\".
struct Line {
  enum class Kind { kOther, kSection, kKey };

  std::size_t begin = 0;
  std::size_t end = 0;  // after the line end
  std::string body;     // joined, without line end
  bool isJoined = false;
  Kind kind = Kind::kOther;
  std::string name;  // of the section or key, lower case
};

void classify(Line& line) {
  const std::string_view body = trim(line.body);
  if (body.empty() || isOneOf(kCommentMarks, body.front())) return;
  if (body.front() == '[' && body.back() == ']') {
    line.kind = Line::Kind::kSection;
    line.name = ascii::lower(trim(body.substr(1, body.find(']') - 1)));
  } else if (const std::size_t equals = body.find('='); equals != body.npos) {
    line.kind = Line::Kind::kKey;
    line.name = ascii::lower(trim(body.substr(0, equals)));
  }
}

Line nextLine(std::string_view text, std::size_t begin) {
  Line line;
  line.begin = line.end = begin;
  while (line.end < text.size()) {
    const std::size_t lineEnd = text.find('\n', line.end);
    const std::size_t next = lineEnd == text.npos ? text.size() : lineEnd + 1;
    line.body += trimRight(text.substr(line.end, next - line.end));
    line.end = next;
    if (line.body.empty() || line.body.back() != '\\') break;
    line.body.pop_back();
    line.isJoined = true;
  }
  classify(line);
  return line;
}

std::vector<Line> linesOf(std::string_view text) {
  std::vector<Line> lines;
  for (std::size_t at = 0; at < text.size(); at = lines.back().end) {
    lines.push_back(nextLine(text, at));
  }
  return lines;
}

// The position of the value in a line with "=": its bytes are [begin, end); everything from REST on
// is a comment to keep.
struct ValueSpan {
  std::size_t begin = 0;
  std::size_t end = 0;
  std::size_t rest = 0;
};

ValueSpan findValue(std::string_view body) {
  ValueSpan span;
  span.begin = body.find('=') + 1;
  span.begin += firstNonBlank(body.substr(span.begin));
  const std::string_view value = body.substr(span.begin);
  if (value.size() > 1 && isOneOf(kQuotes, value[0]) && value[1] != value[0]) {
    const std::size_t closing = value.find(value[0], 1);
    span.end = closing == value.npos ? body.size() : span.begin + closing + 1;
  } else {
    const std::size_t comment = std::min(value.find_first_of(kCommentMarks), value.size());
    span.end = span.begin + trimRight(value.substr(0, comment)).size();
  }
  const std::size_t next = span.end + firstNonBlank(body.substr(span.end));
  const bool isComment = next < body.size() && isOneOf(kCommentMarks, body[next]);
  span.rest = isComment ? span.end : body.size();
  return span;
}

std::string_view lineEndOf(std::string_view line) {
  if (line.ends_with("\r\n")) return "\r\n";
  return line.ends_with('\n') ? "\n" : "";
}

// The line end that the text uses, judged by its first line.
std::string lineEndIn(std::string_view text) {
  const std::size_t end = text.find('\n');
  return end != text.npos && end > 0 && text[end - 1] == '\r' ? "\r\n" : "\n";
}

struct Found {
  std::optional<Line> key;       // the last of its name in the section
  std::optional<Line> lastLine;  // the section's last key, or its header
};

Found find(std::string_view text, const std::string& section, const std::string& key) {
  Found found;
  bool inSection = false;
  for (const Line& line : linesOf(text)) {
    if (line.kind == Line::Kind::kSection) inSection = line.name == section;
    if (!inSection || line.kind == Line::Kind::kOther) continue;
    found.lastLine = line;
    if (line.kind == Line::Kind::kKey && line.name == key) found.key = line;
  }
  return found;
}

// "key = " spaced like its neighbour in the file, so that the new line looks like the others.
std::string startLike(const Line& neighbour, std::string_view key) {
  if (neighbour.kind != Line::Kind::kKey || neighbour.isJoined) {
    return std::string(key).append(kPlainSeparator);
  }
  const std::string_view body = neighbour.body;
  const std::size_t name = firstNonBlank(body);
  const std::size_t nameEnd = trimRight(body.substr(0, body.find('='))).size();
  const std::size_t value = findValue(body).begin;
  std::string start(body.substr(0, name));
  start += key;
  start += value < body.size() ? body.substr(nameEnd, value - nameEnd) : kPlainSeparator;
  return start;
}

}  // namespace

std::vector<std::string> waysToWrite(std::string_view value, char quote) {
  std::vector<std::string> ways;
  if (quote != 0) ways.push_back(quoted(value, quote));
  if (!value.empty()) ways.emplace_back(value);
  ways.push_back(quoted(value, '"'));
  ways.push_back(quoted(value, '\''));
  ways.push_back(quoted(escaped(value), '"'));
  return ways;
}

KeyPlace::KeyPlace(std::string_view text, std::string_view section, std::string_view key) {
  const Found found = find(text, ascii::lower(section), ascii::lower(key));
  if (found.key) {
    const Line& line = *found.key;
    const std::string_view body = line.body;
    const ValueSpan span = findValue(body);
    before_.assign(text.substr(0, line.begin)).append(body.substr(0, span.begin));
    if (before_.ends_with(" =")) before_ += ' ';
    after_.assign(body.substr(span.rest));
    after_.append(lineEndOf(text.substr(line.begin, line.end - line.begin)));
    after_.append(text.substr(line.end));
    if (span.end > span.begin && isOneOf(kQuotes, body[span.begin])) quote_ = body[span.begin];
    return;
  }

  const std::string lineEnd = lineEndIn(text);
  const std::size_t at = found.lastLine ? found.lastLine->end : text.size();
  before_.assign(text.substr(0, at));
  if (!before_.empty() && !before_.ends_with('\n')) before_ += lineEnd;
  if (found.lastLine) {
    before_ += startLike(*found.lastLine, key);
  } else {
    if (!before_.empty()) before_ += lineEnd;
    before_.append("[").append(section).append("]").append(lineEnd);
    before_.append(key).append(kPlainSeparator);
  }
  after_.assign(lineEnd).append(text.substr(at));
}

std::string KeyPlace::with(std::string_view written) const {
  return before_ + std::string(written) + after_;
}

}  // namespace kolum::setcfg
