#include "core/mGeneral.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <system_error>
#include <vector>

#include "controls/form.h"
#include "controls/list_view.h"
#include "core/date_time.h"
#include "core/store_file.h"
#include "core/text.h"
#include "platform/desktop.h"

namespace kelmio::mGeneral {
namespace {

namespace fs = std::filesystem;

constexpr std::array<std::string_view, 9> kUnits = {"Bytes", "KB", "MB", "GB", "TB", "PB", "EB", "ZB", "YB"};
constexpr double kUnitStep = 1024;

// 1234567 as "1,234,567".
std::string Grouped(double whole) {
  std::string digits = std::to_string(static_cast<std::int64_t>(whole));
  for (std::size_t at = digits.size(); at > 3;) {
    at -= 3;
    digits.insert(at, ",");
  }
  return digits;
}

// A number of thousandths with so many places, the last one rounded up from five on.
std::string FormatThousandths(double thousandths, int places) {
  double step = 1000;
  for (int i = 0; i < places; ++i)
    step /= 10;
  const double last_places = std::floor((thousandths + step / 2) / step);
  const double per_whole = 1000 / step;
  std::string text = Grouped(std::floor(last_places / per_whole));
  if (places > 0) {
    const std::string fraction = std::to_string(static_cast<int>(std::fmod(last_places, per_whole)));
    text += "." + std::string(static_cast<std::size_t>(places) - fraction.size(), '0') + fraction;
  }
  return text;
}

int HalfToEven(int number) {
  return static_cast<int>(std::nearbyint(number / 2.0));
}

std::uint32_t LittleEndian32(std::string_view bytes, std::size_t at) {
  std::uint32_t number = 0;
  for (std::size_t i = 4; i-- > 0;)
    number = number << 8 | static_cast<unsigned char>(bytes[at + i]);
  return number;
}

// The classic scheme's colours by their numbers, red in the lowest byte.
constexpr std::array<Color, 25> kSystemColors = {
    0xC8D0D4, // scroll bar
    0xA56E3A, // desktop
    0x6A240A, // active title bar
    0x808080, // inactive title bar
    0xC8D0D4, // menu bar
    0xFFFFFF, // window background
    0x000000, // window frame
    0x000000, // menu text
    0x000000, // window text
    0xFFFFFF, // title bar text
    0xC8D0D4, // active border
    0xC8D0D4, // inactive border
    0x808080, // application workspace
    0x6A240A, // highlight
    0xFFFFFF, // highlight text
    0xC8D0D4, // button face
    0x808080, // button shadow
    0x808080, // grey text
    0x000000, // button text
    0xC8D0D4, // inactive title bar text
    0xFFFFFF, // button highlight
    0x404040, // dark shadow
    0xC8D0D4, // light
    0x000000, // tool tip text
    0xE1FFFF, // tool tip background
};

} // namespace

bool FileExists(const std::string& path) {
  std::error_code error;
  return !Trimmed(path, " ").empty() && fs::exists(path, error) && !fs::is_directory(path, error);
}

bool EnsureFolder(const std::string& path) {
  std::error_code error;
  if (!fs::is_directory(path, error))
    MakePath(path);
  return true;
}

void MakePath(const std::string& path) {
  std::error_code error;
  fs::create_directories(path, error);
}

void DeleteFolderContents(const std::string& path) {
  std::error_code error;
  std::vector<fs::path> entries; // gathered first: deleting under the iterator may make it miss some
  for (fs::directory_iterator entry(path, error), end; !error && entry != end; entry.increment(error))
    entries.push_back(entry->path());
  for (const fs::path& entry : entries) {
    // Not `remove_all`: it gives up at the first file that can't be deleted, and the others are to go.
    if (fs::is_directory(fs::symlink_status(entry, error)))
      DeleteFolderContents(entry.string());
    fs::remove(entry, error);
  }
}

bool CopyFileTo(const std::string& source, const std::string& target, bool fail_if_exists) {
  return CopyFileWhole(source, target, fail_if_exists);
}

std::string NormalizePath(std::string_view path, bool slash) {
  std::string result(path);
  const std::size_t open = result.find('[');
  const std::size_t close = result.find(']');
  if (open != std::string::npos && close != std::string::npos && open < close)
    result.erase(open, close - open + 1);
  result = Trimmed(result, " ");
  const char separator = slash ? '/' : '\\';
  if (result.empty() || result.back() != separator)
    result += separator;
  return result;
}

std::string FormatByteSize(double size) {
  if (!(size >= 1))
    return {};
  std::size_t unit = 0;
  double power = 1;
  while (unit + 1 < kUnits.size() && power * kUnitStep <= size) {
    power *= kUnitStep;
    ++unit;
  }
  const double thousandths = std::nearbyint(size / power * 1000); // ties to even
  const int places = unit == 0 ? 0 : unit == 1 ? 2 : 3;
  return FormatThousandths(thousandths, places) + " " + std::string(kUnits[unit]);
}

std::string FormatSeconds(std::int64_t seconds) {
  // The boundary is part of the format: an hour on the dot still counts as minutes.
  const std::int64_t hours = seconds > kSecondsPerHour ? seconds / kSecondsPerHour : 0;
  const std::int64_t rest = seconds - hours * kSecondsPerHour;
  return TwoDigits(hours) + ":" + TwoDigits(rest / kSecondsPerMinute) + ":" + TwoDigits(rest % kSecondsPerMinute);
}

void CenterForm(Form& window, const Desktop& desktop, const Form* owner) {
  const int frame_width = owner != nullptr ? owner->Width.Get() : desktop.WorkAreaWidth();
  const int frame_height = owner != nullptr ? owner->Height.Get() : desktop.WorkAreaHeight();
  const int left = HalfToEven(frame_width - window.Width) + (owner != nullptr ? owner->Left.Get() : 0);
  const int top = HalfToEven(frame_height - window.Height) + (owner != nullptr ? owner->Top.Get() : 0);
  if (static_cast<std::int16_t>(static_cast<std::int16_t>(left) & static_cast<std::int16_t>(top)) == 0)
    return;
  window.Left = left;
  window.Top = top;
}

void SetListItemColor(ListView& list, std::size_t row, Color color) {
  if (row < 1 || row > list.RowCount())
    return;
  list.Row(row).text_color = color;
  list.Changed();
}

std::string FileVersionText(const std::string& path) {
  // The fixed part of the version data of the Portable Executable format: a signature, the structure's version,
  // then the file's version as two words of two halves each.
  constexpr std::string_view kProgramMark = "MZ";
  constexpr std::string_view kSignatureAndVersion("\xBD\x04\xEF\xFE\0\0\1\0", 8);
  const std::string bytes = ReadStoreFile(path).value_or("");
  if (!bytes.starts_with(kProgramMark))
    return {};
  const std::size_t at = bytes.find(kSignatureAndVersion);
  if (at == std::string::npos || at + 16 > bytes.size())
    return {};
  const std::uint32_t high = LittleEndian32(bytes, at + 8);
  const std::uint32_t low = LittleEndian32(bytes, at + 12);
  return std::to_string(high >> 16) + "." + std::to_string(high & 0xFFFFU) + "." + std::to_string(low >> 16) + "." +
         std::to_string(low & 0xFFFFU);
}

std::string StripNull(std::string_view text) {
  return std::string(text.substr(0, text.find('\0')));
}

void ShellOpen(LinkOpener& opener, const std::string& file, const std::string& verb, const std::string& parameters,
               const std::string& folder, int show_mode) {
  opener.Open({file, verb, parameters, folder, show_mode});
}

Color TranslateColor(Color color) {
  const auto bits = static_cast<std::uint32_t>(color);
  const std::uint32_t kind = bits >> 24;
  const std::uint32_t number = bits & 0xFFFFFFU;
  if (kind == 0)
    return color;
  if (kind == 0x80 && number < kSystemColors.size())
    return kSystemColors[number];
  return -1;
}

std::string SystemErrorText(int error) {
  const std::string text = std::generic_category().message(error);
  return std::string(Trimmed(std::string_view(text).substr(0, text.find_first_of("\r\n"))));
}

} // namespace kelmio::mGeneral
