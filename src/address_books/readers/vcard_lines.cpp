#include "address_books/readers/vcard_lines.h"

#include <glib.h>

#include <algorithm>
#include <array>
#include <memory>
#include <utility>

#include "core/text.h"

namespace kelmio {

namespace {

constexpr std::array<std::string_view, 13> kWanted = {"ADR",
                                                      "EMAIL",
                                                      "FN",
                                                      "KIND",
                                                      "N",
                                                      "NICKNAME",
                                                      "ORG",
                                                      "TEL",
                                                      "TITLE",
                                                      "URL",
                                                      "VERSION",
                                                      "X-ADDRESSBOOKSERVER-KIND",
                                                      "X-EVOLUTION-LIST"};

/// Nobody's name or street, and the library needs far longer for ten times as much than ten times as long.
constexpr std::size_t kLongestProperty = 32768;

/// The next line of `text`, which may end in CR, LF or both, and is taken from it.
std::string_view TakeLine(std::string_view& text) {
  const std::size_t end = text.find_first_of("\r\n");
  const std::string_view line = text.substr(0, end);
  text.remove_prefix(line.size());
  if (!text.empty())
    text.remove_prefix(text.starts_with("\r\n") ? 2 : 1);
  return line;
}

bool IsMark(std::string_view line, std::string_view name) {
  const std::size_t colon = line.find(':');
  return colon != std::string_view::npos && EqualsIgnoringAsciiCase(Trimmed(line.substr(0, colon)), name) &&
         EqualsIgnoringAsciiCase(Trimmed(line.substr(colon + 1)), "VCARD");
}

/// What stands before the value: group, name and parameters.
std::string_view HeadOf(std::string_view property) {
  bool quoted = false;
  for (std::size_t index = 0; index < property.size(); ++index) {
    if (property[index] == '"')
      quoted = !quoted;
    if (property[index] == ':' && !quoted)
      return property.substr(0, index);
  }
  return property.substr(0, property.find(':'));
}

std::string NameIn(std::string_view head) {
  head = head.substr(0, head.find(';'));
  return AsciiUpper(Trimmed(head.substr(head.rfind('.') + 1)));
}

/// Takes the parameter CHARSET out of a line that begins with `head`, and returns its value.
std::string TakeCharset(std::string& line, std::string_view upper_head) {
  constexpr std::string_view kName = ";CHARSET=";
  const std::size_t at = upper_head.find(kName);
  if (at == std::string_view::npos)
    return {};
  const std::string_view value = upper_head.substr(at + kName.size());
  const std::string_view charset = value.substr(0, value.find(';'));
  line.erase(at, kName.size() + charset.size());
  return std::string(Trimmed(charset, "\""));
}

/// The library wants UTF-8 and then still converts what CHARSET names; so that is left for it in plain ASCII only, as
/// quoted-printable is.
std::string AsUtf8(std::string line, std::string_view upper_head) {
  if (std::all_of(line.begin(), line.end(), [](char byte) { return static_cast<unsigned char>(byte) < 0x80; }))
    return line;
  const std::string charset = TakeCharset(line, upper_head);
  if (!charset.empty() && !IsValidUtf8(line)) {
    gsize length = 0;
    const std::unique_ptr<gchar, decltype(&g_free)> converted(
        g_convert(line.data(), static_cast<gssize>(line.size()), "UTF-8", charset.c_str(), nullptr, &length, nullptr),
        &g_free);
    if (converted)
      return {converted.get(), length};
  }
  return DisplayText(line);
}

class CardSplitter {
public:
  explicit CardSplitter(const std::function<void(const std::string&)>& take) : take_(take) {}

  void Line(std::string_view line) {
    const bool begins = IsMark(line, "BEGIN");
    if (begins || IsMark(line, "END")) {
      EndProperty();
      if (begins)
        Begin();
      else
        End();
      return;
    }
    if (depth_ != 1)
      return;
    if (soft_break_)
      Append(line);
    else if (line.starts_with(' ') || line.starts_with('\t'))
      // The fold of vCard 2.1 stands before a blank that belongs to the text; later ones add a blank of their own.
      Append(line.substr(blank_is_text_ ? 0 : 1));
    else
      BeginProperty(line);
  }

  void Finish() {
    EndProperty();
    EndCard();
  }

private:
  void Begin() {
    if (depth_ > 0 && agent_opens_) {
      ++depth_;
    } else {
      EndCard();
      depth_ = 1;
    }
    agent_opens_ = false;
  }

  void End() {
    if (depth_ > 1)
      --depth_;
    else
      EndCard();
  }

  void EndCard() {
    if (depth_ > 0 && !card_.empty())
      take_("BEGIN:VCARD\r\n" + card_ + "END:VCARD\r\n");
    card_.clear();
    depth_ = 0;
    blank_is_text_ = false;
    agent_opens_ = false;
  }

  void BeginProperty(std::string_view line) {
    EndProperty();
    const std::string_view head = HeadOf(line);
    const std::string name = NameIn(head);
    if (name == "AGENT") {
      const std::string_view value = Trimmed(line.substr(std::min(head.size() + 1, line.size())));
      agent_opens_ = value.empty();
      if (IsMark(value, "BEGIN")) {
        agent_opens_ = true;
        Begin();
      }
      return;
    }
    if (!Trimmed(line).empty())
      agent_opens_ = false;
    wanted_ = head.size() < line.size() && std::find(kWanted.begin(), kWanted.end(), name) != kWanted.end();
    upper_head_ = AsciiUpper(head);
    quoted_printable_ = upper_head_.find("QUOTED-PRINTABLE") != std::string::npos;
    Append(line);
    if (wanted_ && name == "VERSION")
      blank_is_text_ = property_.ends_with("2.1");
  }

  void Append(std::string_view piece) {
    soft_break_ = quoted_printable_ && piece.ends_with('=');
    if (soft_break_)
      piece.remove_suffix(1);
    if (wanted_ && property_.size() < kLongestProperty)
      property_ += piece;
  }

  void EndProperty() {
    // What a break promised and didn't bring is lost; the rest of the property stands.
    if (wanted_)
      card_ += AsUtf8(property_, upper_head_) + "\r\n";
    property_.clear();
    wanted_ = false;
    soft_break_ = false;
  }

  const std::function<void(const std::string&)>& take_;
  /// How many cards are open, one in the other.
  int depth_ = 0;
  /// The card that a next BEGIN opens is the value of AGENT.
  bool agent_opens_ = false;
  bool blank_is_text_ = false;
  std::string card_;

  /// The property that is being put together; its text only when it is wanted.
  bool wanted_ = false;
  bool quoted_printable_ = false;
  bool soft_break_ = false;
  std::string upper_head_;
  std::string property_;
};

} // namespace

bool HasCard(std::string_view text) {
  while (!text.empty())
    if (IsMark(TakeLine(text), "BEGIN"))
      return true;
  return false;
}

void ForEachCard(std::string_view text, const std::function<void(const std::string& card)>& take) {
  CardSplitter splitter(take);
  while (!text.empty())
    splitter.Line(TakeLine(text));
  splitter.Finish();
}

} // namespace kelmio
