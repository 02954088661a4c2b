// `Lines.ini`: the settings of the lines, and the device numbers they keep.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kelmio {

/// The file of one program folder, shared by all drivers: each has a section of its own and one for the
/// numbers is common. Texts are bytes as they stand in the file. User interface thread only; a file that can't
/// be written loses the write and nothing else.
class LinesFile {
public:
  /// `path` is the file's full path; the file needn't exist, its folder must.
  explicit LinesFile(std::string path);

  const std::string& Path() const { return path_; }

  /// Appends `text` (lines ending in LF, the section's header and comments included) when the file has no
  /// section of this name. A section that is there is never touched.
  void EnsureSection(std::string_view section, std::string_view text);

  /// The names of the sections that begin with `prefix`, in the order of the file.
  std::vector<std::string> Sections(std::string_view prefix) const;

  /// The value, empty when there is none.
  std::string Read(std::string_view section, std::string_view key) const;

  /// Writes keys with their values, as one change. All else in the file stays as it is. False when it can't be written.
  bool Write(std::string_view section, const std::vector<std::pair<std::string, std::string>>& values) const;

  /// The number that the line `line_name` has had since it was first seen; a new line gets the next free one.
  /// Never negative.
  long DeviceNumber(std::string_view line_name);

private:
  std::string path_;
};

} // namespace kelmio
