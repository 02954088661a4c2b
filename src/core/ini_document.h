// A profile text read once, for loaders that take many values out of one file.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace kelmio {

/// A snapshot: later changes of the file don't reach it. Reads give what `mIni` would have given, at the cost
/// of one look into a table. Views returned live as long as the document.
class IniDocument {
public:
  /// A file that can't be read gives an empty document.
  static IniDocument Load(const std::string& file);
  explicit IniDocument(std::string bytes);

  /// The value, cut at the limit of a value; empty when there is none.
  std::string_view Read(std::string_view section, std::string_view key) const;
  /// All names in file order, duplicates too.
  std::vector<std::string> SectionNames() const;
  std::vector<std::string> SectionKeys(std::string_view section) const;

private:
  struct Entry {
    std::string_view key;
    std::string_view value;
  };
  // Names folded to one case; a value is the place of the first of that name.
  using Places = std::unordered_map<std::string, std::size_t>;
  struct Section {
    std::string_view name;
    std::vector<Entry> entries;
    Places places; // only where walking `entries` would be slow
  };

  const Section* Find(std::string_view name) const;

  std::unique_ptr<const std::string> text_; // on the heap, so that the views hold when the document moves
  std::vector<Section> sections_;
  Places places_;
};

} // namespace kelmio
