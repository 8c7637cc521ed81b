// A catalogue of translations in the compiled form of gettext (".mo").
//
// gettext's own look-up follows the process's locale, and an appliance does not have a locale
// installed for each language, so the files are read here.
#ifndef KOLUM_OSM_INFO_CATALOGUE_H
#define KOLUM_OSM_INFO_CATALOGUE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace kolum::osm_info {

class Catalogue {
 public:
  Catalogue() = default;
  // The contents of a file; anything but a catalogue holds no translations.
  explicit Catalogue(std::string bytes);

  // Empty if there is none.
  std::string_view translation(std::string_view key) const;

 private:
  std::uint32_t word(std::size_t offset) const;
  std::string_view textAt(std::size_t table, std::size_t number) const;

  std::string bytes_;
  std::uint32_t count_ = 0;
  std::uint32_t keys_ = 0;  // offsets of the tables of texts
  std::uint32_t translations_ = 0;
};

// An empty catalogue if the file cannot be read.
Catalogue loadCatalogue(const std::string& path);

}  // namespace kolum::osm_info

#endif
