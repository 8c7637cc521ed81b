// kolum-pages schema < OLD: the JSON schema of all output, with documents as the tables say.
// kolum-pages page: the page of docs/ about the keys of documents.
// kolum-pages python: the classes of the Python package.
#include <algorithm>
#include <cstdio>
#include <exception>
#include <iostream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "describe/failure.h"
#include "describe/json.h"
#include "describe/keys.h"

using namespace kolum::describe;
using Json = nlohmann::ordered_json;

namespace {

struct TypeRow {
  Type type;
  const char* words;   // for people
  const char* schema;  // as JSON
};

constexpr TypeRow kTypes[] = {
    {Type::kBoolean, "true or false", R"({"type":"boolean"})"},
    {Type::kInteger, "whole number", R"({"type":"integer"})"},
    {Type::kNumber, "number", R"({"type":"number"})"},
    {Type::kText, "text", R"({"type":"string"})"},
    {Type::kTexts, "texts", R"({"type":"array","items":{"type":"string"}})"},
    {Type::kIdentifier, "identifier", R"({"$ref":"#/$defs/identifier"})"},
    {Type::kContainer, "identifier", R"({"$ref":"#/$defs/container"})"},
    {Type::kObject, "object", R"({"type":"object"})"},
    {Type::kObjects, "objects", R"({"type":"array"})"},
};

struct UnitRow {
  Unit unit;
  const char* words;
  const char* schema;  // further keywords
};

constexpr UnitRow kUnits[] = {
    {Unit::kNone, "", "{}"},
    {Unit::kSeconds, "seconds", R"({"minimum":0})"},
    {Unit::kBytes, "bytes", R"({"minimum":0})"},
    {Unit::kBitsPerSecond, "bit/s", R"({"minimum":0})"},
    {Unit::kHertz, "Hz", R"({"minimum":0})"},
    {Unit::kPixels, "pixels", R"({"minimum":0})"},
    {Unit::kFramesPerSecond, "frames per second", R"({"minimum":0})"},
    {Unit::kCount, "", R"({"minimum":0})"},
    {Unit::kDegrees, "degrees", "{}"},
    {Unit::kMetres, "metres", "{}"},
    {Unit::kMillimetres, "millimetres", R"({"minimum":0})"},
    {Unit::kDecibels, "dB", "{}"},
    {Unit::kSecondsSince1970, "seconds since 1970", "{}"},
    {Unit::kYearMonth, "\"2015-06\"", R"({"pattern":"^[0-9]{4}-[0-9]{2}$"})"},
    {Unit::kDay, "\"2015-06-07\"", R"({"pattern":"^[0-9]{4}-[0-9]{2}-[0-9]{2}$"})"},
    {Unit::kMoment, "\"2015-06-07T08:09:10Z\"",
     R"({"pattern":"^[0-9]{4}(-[0-9]{2}(-[0-9]{2}(T[0-9]{2}:[0-9]{2}(:[0-9]{2}([.][0-9]+)?)?(Z|[+-][0-9]{2}:[0-9]{2})?)?)?)?$"})"},
};

const TypeRow& rowOf(Type type) {
  std::size_t i = 0;
  while (kTypes[i].type != type) ++i;
  return kTypes[i];
}

const UnitRow& rowOf(Unit unit) {
  std::size_t i = 0;
  while (kUnits[i].unit != unit) ++i;
  return kUnits[i];
}

Json propertiesOf(std::span<const Key> keys);

Json schemaOf(const Key& key) {
  Json schema = Json::parse(rowOf(key.type).schema);
  if (key.type == Type::kObject) schema["properties"] = propertiesOf(key.members);
  if (key.type == Type::kObjects)
    schema["items"] = {{"type", "object"}, {"properties", propertiesOf(key.members)}};
  schema.update(Json::parse(rowOf(key.unit).schema));
  schema.update(Json::parse("{" + std::string(key.schema) + "}"));
  schema["description"] = key.meaning;
  return schema;
}

Json propertiesOf(std::span<const Key> keys) {
  Json properties = Json::object();
  for (const Key& key : keys) properties[std::string(key.name)] = schemaOf(key);
  return properties;
}

Json documentProperties() {
  Json properties = {
      {"schema", {{"const", kJsonSchema}, {"description", "Number of this schema"}}}};
  for (const Group& group : groups()) properties.update(propertiesOf(group.keys));
  properties["error"] = {{"$ref", "#/$defs/error"}};
  return properties;
}

void setSchemaNumber(Json& value) {
  if (value.is_object() && value.contains("properties") && value["properties"].contains("schema"))
    value["properties"]["schema"]["const"] = kJsonSchema;
  for (Json& member : value)
    if (member.is_structured()) setSchemaNumber(member);
}

int printSchema() {
  Json schema = Json::parse(std::string(std::istreambuf_iterator<char>(std::cin), {}));
  schema["title"] = "JSON output of kolum, schema " + std::to_string(kJsonSchema);
  setSchemaNumber(schema);
  Json codes = Json::array();
  for (const std::string_view code : codesOfCauses()) codes.push_back(code);
  Json& defs = schema["$defs"];
  defs["error"]["properties"]["code"]["enum"] = codes;
  defs["probe"]["properties"] = documentProperties();
  // A library adds a state, and has its own errors.
  Json& kept = defs["libraryFile"]["properties"];
  Json ofLibrary = documentProperties();
  for (const char* key : {"state", "error"}) ofLibrary[key] = kept[key];
  kept = std::move(ofLibrary);
  std::cout << schema.dump(1) << '\n';
  return 0;
}

void printRows(std::span<const Key> keys, const std::string& above) {
  for (const Key& key : keys) {
    const std::string name = above + std::string(key.name);
    const std::string unit = rowOf(key.unit).words;
    std::cout << "| `" << name << "` | " << rowOf(key.type).words << (unit.empty() ? "" : ", ")
              << unit << " | " << key.meaning << " | " << key.source << " |\n";
    printRows(key.members, name + (key.type == Type::kObjects ? "[]." : "."));
  }
}

int printPage() {
  std::cout
      << "# The document of a file\n\n"
         "<!-- Written by scripts/make-pages.sh from the tables in src/describe. -->\n\n"
         "What `kolum probe --json`, scans, `KoLUM_Describe` and the Python package say about "
         "a file.\nKeys that are not known are left out. Those of objects are written with a "
         "dot, as for\n`--fields`; `[]` marks a list.\n";
  for (const Group& group : groups()) {
    std::cout << "\n## " << group.heading
              << "\n\n| Key | Type | Meaning | Source |\n|---|---|---|---|\n";
    printRows(group.keys, "");
  }
  return 0;
}

// --- Python

bool isUpper(char c) {
  return c >= 'A' && c <= 'Z';
}

// "albumArtist" -> "album_artist"
std::string snakeCase(std::string_view name) {
  std::string snake;
  for (const char c : name) {
    if (isUpper(c)) snake += '_';
    snake += isUpper(c) ? static_cast<char>(c - 'A' + 'a') : c;
  }
  return snake;
}

std::string className(std::string_view prefix, std::string_view key) {
  std::string name = std::string(prefix).append(key);
  name[prefix.size()] = static_cast<char>(name[prefix.size()] - 'a' + 'A');
  return name;
}

std::string pythonType(const Key& key, std::string_view prefix) {
  switch (key.type) {
    case Type::kBoolean:
      return "bool | None";
    case Type::kInteger:
      return "int | None";
    case Type::kNumber:
      return "float | None";
    case Type::kText:
      return "str | None";
    case Type::kTexts:
      return "tuple[str, ...]";
    case Type::kIdentifier:
      return "Identifier | None";
    case Type::kContainer:
      return "Container | None";
    case Type::kObject:
      return className(prefix, key.name) + " | None";
    case Type::kObjects:
      return "tuple[" + className(prefix, key.name) + ", ...]";
  }
  return "";
}

bool isList(const Key& key) {
  return key.type == Type::kTexts || key.type == Type::kObjects;
}

void printAttributes(std::span<const Key> keys, std::string_view prefix) {
  for (const Key& key : keys) {
    std::cout << "    " << snakeCase(key.name) << ": " << pythonType(key, prefix) << " = "
              << (isList(key) ? "()" : "None") << "\n";
    std::string meaning(key.meaning);
    for (std::size_t at = 0; (at = meaning.find('"', at)) != std::string::npos; ++at)
      meaning[at] = '\'';
    const std::string unit = rowOf(key.unit).words;
    const bool isPlain = !unit.empty() && unit.front() != '"';
    std::cout << "    \"\"\"" << meaning << (isPlain ? " (" + unit + ")" : "") << ".\"\"\"\n";
  }
}

// Those of objects first: Python reads from above.
void printClass(const std::string& name, const std::string& base, const std::string& words,
                std::span<const Key> keys, std::string_view prefix) {
  for (const Key& key : keys)
    if (!key.members.empty())
      printClass(className(prefix, key.name), "", "\"" + std::string(key.name) + "\" of a document",
                 key.members, className(prefix, key.name));
  std::cout << "\n\n@dataclass(frozen=True, kw_only=True)\nclass " << name
            << (base.empty() ? "" : "(" + base + ")") << ":\n    \"\"\"" << words << ".\"\"\"\n\n";
  printAttributes(keys, prefix);
}

struct PythonClass {
  const char* name;
  const char* base;
  const char* words;
  std::vector<std::string_view> groups;
};

int printPython() {
  const PythonClass classes[] = {
      {"Document", "Base", "What every file has", {"file", "media", "problems"}},
      {"Video",
       "Document",
       "A film, a recording, a disc",
       {"films", "video", "sound", "disc", "place", "streams"}},
      {"Song", "Document", "A song, an audio book", {"sound", "songs", "streams"}},
      {"Photo", "Document", "A photo", {"photo", "place"}},
  };
  std::cout << "# Written by scripts/make-pages.sh from the tables in src/describe.\n"
               "\"\"\"The classes of documents. docs/document.md describes every key.\"\"\"\n\n"
               "from __future__ import annotations\n\n"
               "from dataclasses import dataclass\n\n"
               "from ._base import Base, Container, Identifier\n";
  for (const PythonClass& each : classes) {
    std::vector<Key> keys;
    for (const Group& group : groups())
      if (std::find(each.groups.begin(), each.groups.end(), group.name) != each.groups.end())
        keys.insert(keys.end(), group.keys.begin(), group.keys.end());
    printClass(each.name, each.base, each.words, keys, each.name);
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) try {
  const std::string_view what = argc == 2 ? argv[1] : "";
  if (what == "schema") return printSchema();
  if (what == "page") return printPage();
  if (what == "python") return printPython();
  std::fputs("usage: kolum-pages schema < kolum.schema.json | page | python\n", stderr);
  return 2;
} catch (const std::exception& error) {
  std::fprintf(stderr, "kolum-pages: %s\n", error.what());
  return 1;
}
