#include "drivers/lines_file.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <optional>
#include <vector>

#include "core/mIni.h"

namespace kelmio {

namespace {

constexpr std::string_view kNumbersSection = "Devices";
constexpr std::string_view kNumbersText =
    "; Device numbers by which the program knows its lines. Written by the program; a number that\n"
    "; changes makes the program look for another line.\n"
    "[Devices]\n";
constexpr long kFirstNumber = 1;

bool EqualNames(std::string_view a, std::string_view b) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [&](char left, char right) { return lower(left) == lower(right); });
}

std::optional<long> NumberIn(const std::string& text) {
  long number = -1;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || number < 0)
    return std::nullopt;
  return number;
}

} // namespace

LinesFile::LinesFile(std::string path) : path_(std::move(path)) {}

void LinesFile::EnsureSection(std::string_view section, std::string_view text) {
  for (const std::string& name : mIni::IniSectionNames(path_))
    if (EqualNames(name, section))
      return;

  std::ofstream file(path_, std::ios::binary | std::ios::app);
  if (!file)
    return;
  // A profile file that is new has line ends of two bytes.
  if (file.tellp() > 0)
    file << "\r\n";
  for (const char c : text) {
    if (c == '\n')
      file << '\r';
    file << c;
  }
}

std::vector<std::string> LinesFile::Sections(std::string_view prefix) const {
  std::vector<std::string> names = mIni::IniSectionNames(path_);
  std::erase_if(names, [&](const std::string& name) {
    return name.size() < prefix.size() || !EqualNames(name.substr(0, prefix.size()), prefix);
  });
  return names;
}

std::string LinesFile::Read(std::string_view section, std::string_view key) const {
  return mIni::IniRead(section, key, path_);
}

bool LinesFile::Write(std::string_view section, const std::vector<std::pair<std::string, std::string>>& values) const {
  return mIni::IniWriteSection(section, values, path_);
}

long LinesFile::DeviceNumber(std::string_view line_name) {
  EnsureSection(kNumbersSection, kNumbersText);
  // A number belongs to the first line that bears it, so that a file edited by hand can't give two lines one.
  std::vector<long> taken;
  for (const std::string& key : mIni::IniSectionKeys(kNumbersSection, path_)) {
    const std::optional<long> number = NumberIn(Read(kNumbersSection, key));
    const bool free = number && std::find(taken.begin(), taken.end(), *number) == taken.end();
    if (free && EqualNames(key, line_name))
      return *number;
    if (free)
      taken.push_back(*number);
  }
  long next = kFirstNumber;
  while (std::find(taken.begin(), taken.end(), next) != taken.end())
    ++next;
  mIni::IniWrite(kNumbersSection, line_name, std::to_string(next), path_);
  return next;
}

} // namespace kelmio
