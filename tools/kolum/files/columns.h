// The columns of tables of documents: what "kolum probe --csv" prints without "--fields", and, with
// what the library knows besides, "kolum library find" and "export".
#ifndef KOLUM_TOOL_FILES_COLUMNS_H
#define KOLUM_TOOL_FILES_COLUMNS_H

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace kolum::tool {

enum class Columns { kOfDocuments, kOfLibrary };

// The line of titles, and that of a document, as comma-separated values with their line ends.
std::string csvTitles(Columns columns);
std::string csvRow(const nlohmann::ordered_json& document, Columns columns);

}  // namespace kolum::tool

#endif
