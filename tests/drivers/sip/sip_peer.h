// The other end of a SIP line: a user agent of its own making over plain UDP sockets.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "drivers/sip/rtp_packet.h"

namespace kelmio {

/// A UDP socket of this computer.
class TestSocket {
public:
  explicit TestSocket(const std::string& host = "127.0.0.1", std::uint16_t port = 0);
  ~TestSocket();
  TestSocket(const TestSocket&) = delete;
  TestSocket& operator=(const TestSocket&) = delete;

  std::uint16_t Port() const { return port_; }
  void Send(std::uint16_t port, std::string_view bytes, const std::string& host = "127.0.0.1") const;
  /// Nothing when none comes in time. `from` is told the sender's port.
  std::optional<std::string> Receive(std::chrono::milliseconds limit, std::uint16_t* from = nullptr) const;

private:
  int descriptor_;
  std::uint16_t port_ = 0;
};

/// One SIP message, by its text.
struct SipText {
  std::string text;
  int Status() const; // 0 for a request
  std::string Method() const;
  std::string Header(std::string_view name) const;
  /// The port of the "m=audio" line.
  std::uint16_t MediaPort() const;
  bool Says(std::string_view words) const { return text.find(words) != std::string::npos; }
};

/// A caller or callee with one dialog at a time. It retransmits nothing.
class SipPeer {
public:
  /// Signals from the address `host` to the line at `line_host`.
  explicit SipPeer(std::uint16_t line_port, const std::string& host = "127.0.0.1", std::string line_host = "127.0.0.1");

  TestSocket rtp;
  std::string from = "\"Test\" <sip:test@127.0.0.1>";
  std::string callee = "kelmio"; // the user it calls
  std::string more_headers;      // of every request, each ending in CR LF
  mutable std::string line_tag;  // of the dialog, as the line has answered

  std::uint16_t Port() const { return sip_.Port(); }

  /// Offer or answer with the given formats ("0 8 9 101") and further lines, each ending in CR LF.
  std::string Sdp(std::string_view formats = "0 101", std::string_view more = "a=sendrecv\r\n") const;

  // As a caller.
  void Invite(const std::string& body);
  void Reinvite(const std::string& body);
  void Ack(const std::string& body = "");
  void Cancel();
  void Bye();
  void Request(const std::string& method);

  // As a callee, or towards a request of the line.
  void Reply(const SipText& request, int status, const std::string& reason, const std::string& body = "",
             const std::string& headers = "");

  /// The next message, any.
  std::optional<SipText> Next(std::chrono::milliseconds limit = std::chrono::seconds{5}) const;
  /// The next response of this status to the latest request, others passed over.
  std::optional<SipText> Await(int status, std::chrono::milliseconds limit = std::chrono::seconds{5}) const;
  /// The next request of this method, others passed over.
  std::optional<SipText> AwaitRequest(std::string_view method) const;

  // Sound. `to` is the line's port for it.
  void SendRtp(std::uint16_t to, const RtpPacket& packet) const;
  std::optional<std::vector<std::uint8_t>> NextRtp() const;

private:
  std::optional<SipText> NextThat(const std::function<bool(const SipText&)>& fits,
                                  std::chrono::milliseconds limit) const;
  void Send(const std::string& method, int sequence, const std::string& branch, const std::string& body) const;

  TestSocket sip_;
  std::uint16_t line_port_;
  std::string line_host_;
  int dialog_ = 0;
  int sequence_ = 0;
  int invite_sequence_ = 0;
  std::string invite_branch_;
};

} // namespace kelmio
