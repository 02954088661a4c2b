// What the SIP line is told by `Lines.ini`, and the times it keeps.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "drivers/lines_file.h"
#include "drivers/sip/audio_codec.h"

namespace kelmio {

/// Where the line takes calls.
struct ListenAddress {
  std::string host = "127.0.0.1"; // numeric, without brackets
  std::uint16_t port = 5060;      // 0 lets the system choose
  bool operator==(const ListenAddress&) const = default;
};

/// "host:port" with a numeric host, an IPv6 one in brackets. Nothing when the text is anything else.
std::optional<ListenAddress> ParseListenAddress(std::string_view text);

/// The address as it is written in `Lines.ini`.
std::string ToText(const ListenAddress& address);

/// How long the line waits for others before it frees itself.
struct SipTimes {
  /// An unanswered caller that neither cancels nor gives up; a little more than RFC 3261's timer C.
  std::chrono::milliseconds ringing{200'000};
  /// An outgoing call that nobody answers.
  std::chrono::milliseconds no_answer{90'000};
  /// An answer that the caller never confirms: 64 times T1 of RFC 3261.
  std::chrono::milliseconds confirm{32'000};
  /// A peer in mid call of which nothing is heard any more.
  std::chrono::milliseconds lost_peer{60'000};
  /// A registrar's answer, after which the next address of it is tried.
  std::chrono::milliseconds registrar_answer{8'000};
  /// The first pause after a failed registration; each next one is twice as long, up to the longest.
  std::chrono::milliseconds first_retry{2'000};
  std::chrono::milliseconds longest_retry{300'000};
  /// The pause after the registrar has refused the account: asking more often locks accounts.
  std::chrono::milliseconds refused_retry{900'000};
  /// Between two signs of life, shorter than a router forgets who talks to whom (30 s with the strictest).
  std::chrono::milliseconds keep_alive{25'000};
  /// The longest that a line which is closed waits for its registrar.
  std::chrono::milliseconds goodbye{500};
  bool operator==(const SipTimes&) const = default;
};

/// Whose calls are taken of those that reach the address.
enum class SipAllow { Everyone, Network };

/// A shorter period would count rings faster than anyone could react, a longer one would never reach a second.
inline constexpr std::chrono::milliseconds kShortestRingPeriod{20};
inline constexpr std::chrono::milliseconds kLongestRingPeriod{60'000};

/// How the way to the registrar is found and protected.
enum class SipTransport : std::uint8_t {
  Automatic, // TLS where the provider's DNS offers it (RFC 3263), else UDP
  Udp,
  Tcp,
  Tls,
};

/// Whether the sound is encrypted.
enum class SipEncryption : std::uint8_t {
  Preferred, // offered, and taken when the other side offers it
  Required,  // calls without it are refused
  Off,
};

/// An account with a provider or a router. The password stands in a file of its own that only the user can read.
struct SipAccount {
  std::string server;    // name or numeric address of the registrar, with ":port" when it isn't found by itself
  std::string user;      // the name or number of the account, as it stands before the @
  std::string auth_user; // the name for the password; empty: `user`
  std::string password;
  std::string proxy;        // host and port that every request goes through; empty: the server itself
  std::string display_name; // what others are shown; may be empty
  SipTransport transport = SipTransport::Automatic;
  std::string authority; // path of a PEM file with the authority that certifies the server; empty: the system's
  SipEncryption encryption = SipEncryption::Preferred;
  std::string stun_server;           // host and port; empty: none is asked
  bool ice = true;                   // look for a direct way through routers, where the other side does too
  std::chrono::seconds expires{600}; // of a registration
  bool operator==(const SipAccount&) const = default;
};

struct SipSettings {
  std::optional<SipAccount> account; // nothing: a line for direct calls
  ListenAddress listen;
  SipAllow allow = SipAllow::Everyone;
  std::chrono::milliseconds ring_period{6000}; // between two counted rings
  /// In the order in which a dialled call offers them; never empty. Who calls here brings an order of his own.
  std::vector<AudioCoding> codings{kAllCodings.begin(), kAllCodings.end()};
  long device_id = 1;
  SipTimes times;
  /// Plain words on values that could not be used; for the status pane.
  std::vector<std::string> notes;
  bool operator==(const SipSettings&) const = default;
};

/// Who can call, by the address and by who is taken there.
enum class SipCallers { Computer, Network, Everyone };

SipCallers CallersOf(const SipSettings& settings);

/// Chooses the address and who is taken there. Callers who can call already keep the address that was written for them.
void SetCallers(SipSettings& settings, SipCallers callers);

/// Makes the section at first start. A value that makes no sense falls back to its default, with a note.
SipSettings ReadSipSettings(LinesFile& file);

/// A list of codings as `Lines.ini` has it; nothing when there is an unknown name among them, or none at all.
std::optional<std::vector<AudioCoding>> ParseCodings(std::string_view text);
std::string ToText(const std::vector<AudioCoding>& codings);

/// Writes what a user can choose; comments and foreign keys stay. False when the file can't be written.
bool WriteSipSettings(const LinesFile& file, const SipSettings& settings);

} // namespace kelmio
