// What people ask: files that fit, and how many there are.
#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string_view>

#include "base/utf8.h"
#include "scan/expressions.h"
#include "scan/statements.h"
#include "scan/store.h"

namespace kolum::scan {

namespace {

using Kind = StoreError::Kind;

struct StateName {
  State state;
  std::string_view name;  // in the views
};

constexpr StateName kStateNames[] = {
    {State::kKnown, "known"},
    {State::kFailed, "failed"},
    {State::kSuspect, "suspect"},
    {State::kQuarantined, "quarantined"},
};

State stateNamed(std::string_view name) {
  const auto* row = std::find_if(std::begin(kStateNames), std::end(kStateNames),
                                 [&](const StateName& state) { return state.name == name; });
  return row == std::end(kStateNames) ? State::kKnown : row->state;
}

// Conditions, and the values of their parameters.
class Conditions {
 public:
  explicit Conditions(const FileQuery& query);

  std::string sql() const;
  void bindTo(Run& run) const;

 private:
  struct Value {
    enum class Type { kNumber, kText, kBlob } type;
    std::int64_t number;
    std::string text;
  };

  void add(std::string condition) { conditions_.push_back(std::move(condition)); }
  void number(std::int64_t value) { values_.push_back({Value::Type::kNumber, value, ""}); }
  void text(std::string value) { values_.push_back({Value::Type::kText, 0, std::move(value)}); }
  void blob(std::string value) { values_.push_back({Value::Type::kBlob, 0, std::move(value)}); }
  void path(const std::string& value) { isUtf8(value) ? text(value) : blob(value); }

  void states(const std::vector<State>& states);
  void below(const std::string& path);
  void numbers(const std::string& column, const Bounds<std::int64_t>& bounds);
  void dates(const Bounds<std::string>& bounds);
  void codec(std::string name);
  void profile(const std::string& name);
  void texts(const std::string& part);

  std::vector<std::string> conditions_;
  std::vector<Value> values_;
};

Conditions::Conditions(const FileQuery& query) {
  if (!query.states.empty()) states(query.states);
  if (query.below) below(*query.below);
  if (query.kind) {
    add("kind = ?");
    text(*query.kind);
  }
  if (query.codec) codec(*query.codec);
  numbers("size", query.size);
  numbers("duration", query.duration);
  dates(query.date);
  if (query.profile) profile(*query.profile);
  if (query.text) texts(*query.text);
  // The newline ends a comment that the expression ends with.
  if (query.where) add("(" + *query.where + "\n)");
}

void Conditions::states(const std::vector<State>& states) {
  std::string list;
  for (const State state : states) {
    list += list.empty() ? "?" : ", ?";
    text(std::string(kStateNames[static_cast<std::size_t>(state)].name));
  }
  add("state IN (" + list + ")");
}

void Conditions::below(const std::string& given) {
  const std::size_t slash = given.rfind('/');
  const std::string folder = given.ends_with('/') ? given : given + "/";
  const std::string end = endOfTree(folder);
  std::string condition = "((folder = ? AND name = ?) OR (folder >= ? AND folder < ?)";
  path(given.substr(0, slash + 1));
  path(given.substr(slash + 1));
  blob(folder);
  blob(end);
  if (isUtf8(folder)) {
    condition += " OR (folder >= ? AND folder < ?)";
    text(folder);
    text(end);
  }
  add(condition + ")");
}

void Conditions::numbers(const std::string& column, const Bounds<std::int64_t>& bounds) {
  if (bounds.least) {
    add(column + " >= ?");
    number(*bounds.least);
  }
  if (bounds.most) {
    add(column + " <= ?");
    number(*bounds.most);
  }
}

// "2015-06" is before all its days, and "2015-06~" after them.
void Conditions::dates(const Bounds<std::string>& bounds) {
  if (bounds.least) {
    add("date >= ?");
    text(*bounds.least);
  }
  if (bounds.most) {
    add("date < ?");
    text(*bounds.most + "~");
  }
}

void Conditions::codec(std::string name) {
  constexpr std::string_view kPrefix = "CODEC_ID_";
  std::transform(name.begin(), name.end(), name.begin(), [](char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  });
  if (name.starts_with(kPrefix)) name.erase(0, kPrefix.size());
  add("(upper(video_codec) = ? OR upper(audio_codec) = ?)");
  text(name);
  text(name);
}

void Conditions::profile(const std::string& name) {
  if (name.empty()) return add("dlna_profile IS NULL");
  add("dlna_profile = ?");
  text(name);
}

// A document without a backslash has every text as it is: if the part is nowhere in it, no tag
// needs to be looked at.
void Conditions::texts(const std::string& part) {
  add("(has_text(path, ?) OR"
      " ((has_text(document, ?) OR instr(document, '\\') > 0) AND has_text(tags, ?)))");
  for (int i = 0; i < 3; ++i) text(part);
}

std::string Conditions::sql() const {
  std::string sql;
  for (const std::string& condition : conditions_)
    sql += (sql.empty() ? " WHERE " : " AND ") + condition;
  return sql;
}

void Conditions::bindTo(Run& run) const {
  for (const Value& value : values_) {
    switch (value.type) {
      case Value::Type::kNumber:
        run.bind(value.number);
        break;
      case Value::Type::kText:
        run.bind(std::string_view(value.text));
        break;
      case Value::Type::kBlob:
        run.bind(Blob{value.text});
        break;
    }
  }
}

FoundFile foundFile(const Run& run) {
  FoundFile file;
  file.path = {run.text(0), run.text(1)};
  file.state = stateNamed(run.text(2));
  if (file.state != State::kKnown) file.reason = Reason{run.text(3), run.text(4)};
  file.lookedAt = run.number(5);
  file.schema = static_cast<int>(run.number(6));
  file.document = run.text(7);
  file.identity = identityAt(run, 8);
  return file;
}

struct StatementEnd {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using OwnStatement = std::unique_ptr<sqlite3_stmt, StatementEnd>;

constexpr int kColumns = 13;  // that foundFile() reads

[[noreturn]] void refuseExpression(const std::string& why) {
  throw StoreError(Kind::kBadExpression, "not a condition: " + why);
}

bool isFault(int code) {
  return code == SQLITE_ERROR || code == SQLITE_AUTH || code == SQLITE_TOOBIG ||
         code == SQLITE_MISMATCH || code == SQLITE_RANGE;
}

// SQL with an expression of a person in it.
OwnStatement preparedOnce(Database& database, const std::string& sql, bool hasExpression) {
  sqlite3_stmt* statement = nullptr;
  const char* rest = nullptr;
  const int code = sqlite3_prepare_v2(database.handle(), sql.data(), static_cast<int>(sql.size()),
                                      &statement, &rest);
  OwnStatement own(statement);
  if (code != SQLITE_OK && hasExpression && isFault(code & 0xFF))
    refuseExpression(sqlite3_errmsg(database.handle()));
  if (code != SQLITE_OK) database.fail(code);
  if (rest != sql.data() + sql.size()) refuseExpression("it ends in the middle");
  return own;
}

// Some faults of an expression only show when it meets a value.
bool nextRow(Run& run, bool hasExpression) {
  try {
    return run.next();
  } catch (const StoreError& error) {
    if (hasExpression && error.kind() == Kind::kOther) refuseExpression(error.what());
    throw;
  }
}

}  // namespace

void Store::forEachFile(const FileQuery& query,
                        const std::function<void(const FoundFile&)>& visit) {
  if (query.where && lock_ != nullptr)
    throw std::logic_error("expressions run on connections that cannot write");
  if (query.where && query.where->find('\0') != std::string::npos)
    refuseExpression("it contains a NUL");
  const Conditions conditions(query);
  const std::string sql =
      "SELECT folder, name, state, code, reason, unixepoch(looked_at), schema, document,"
      " device, inode, size, mtime_ns, ctime_ns FROM files" +
      conditions.sql() + " ORDER BY folder, name";
  const ReadingOnly readingOnly(*database_);
  const Limited limited(*database_, query.timeLimit, query.keepGoing);
  const OwnStatement statement = preparedOnce(*database_, sql, query.where.has_value());
  if (sqlite3_stmt_readonly(statement.get()) == 0 ||
      sqlite3_column_count(statement.get()) != kColumns)
    refuseExpression("it is more than an expression");
  Run run(*database_, statement.get());
  conditions.bindTo(run);
  while (nextRow(run, query.where.has_value())) visit(foundFile(run));
}

Counts Store::counts() {
  Counts counts;
  std::uint64_t* const byState[] = {&counts.known, &counts.failed, &counts.suspect,
                                    &counts.quarantined};
  Run states(*database_, "SELECT state, count(*) FROM file GROUP BY state");
  while (states.next()) *byState[states.number(0) & 3] = states.bits(1);
  counts.documents = static_cast<std::uint64_t>(database_->number("SELECT count(*) FROM document"));
  counts.folders = static_cast<std::uint64_t>(database_->number("SELECT count(*) FROM folder"));
  return counts;
}

std::vector<std::pair<std::string, std::uint64_t>> Store::countsByKind() {
  std::vector<std::pair<std::string, std::uint64_t>> counts;
  Run run(*database_, "SELECT kind, count(*) FROM document WHERE kind IS NOT NULL GROUP BY kind");
  while (run.next()) counts.emplace_back(run.text(0), run.bits(1));
  return counts;
}

}  // namespace kolum::scan
