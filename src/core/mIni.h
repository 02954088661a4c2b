// Profile (INI) files: the one layer over the format in which the program keeps its data.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kelmio {
class IniText;
}

/// Texts are bytes as they stand in the file; nothing is converted. A file that can't be read reads as empty;
/// a file that can't be written loses the write, and every earlier byte of it stays. Any thread; two running
/// copies of the program may use the same file.
namespace kelmio::mIni {

/// Lists that the program keeps short on purpose are cut at so many bytes, names and their closing zeros
/// counted, the last name cut short.
inline constexpr std::size_t kListLimit = 9998;
/// A value is cut at so many bytes when it is read.
inline constexpr std::size_t kValueLimit = 9999;

enum class ListLimit { None, Cut };

/// The value, cut at `kValueLimit`; empty when there is none.
std::string IniRead(std::string_view section, std::string_view key, const std::string& file);

/// Writes or replaces one key. False when the file could not be written.
bool IniWrite(std::string_view section, std::string_view key, std::string_view value, const std::string& file);

/// All section names in file order; none for an empty or missing file.
std::vector<std::string> IniSectionNames(const std::string& file, ListLimit limit = ListLimit::None);

/// All key names of a section in file order.
std::vector<std::string> IniSectionKeys(std::string_view section, const std::string& file,
                                        ListLimit limit = ListLimit::None);

/// Writes several keys of one section, in their order, as one change of the file.
bool IniWriteSection(std::string_view section, const std::vector<std::pair<std::string, std::string>>& keys,
                     const std::string& file);

/// Any number of changes as one change of the file: `edit` is given its text as it stands under the lock.
/// A text that comes out unchanged touches nothing and is a success.
bool IniChange(const std::string& file, const std::function<void(IniText&)>& edit);

/// False when the file could not be written; removing what isn't there is a success and touches nothing.
bool IniDeleteKey(std::string_view section, std::string_view key, const std::string& file);
bool IniDeleteSection(std::string_view section, const std::string& file);

/// A list cut to `kListLimit`.
std::vector<std::string> CutList(std::vector<std::string> names);

} // namespace kelmio::mIni
