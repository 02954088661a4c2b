#include "drivers/sip/sip_peer.h"

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

namespace kelmio {

namespace {

sockaddr_in AddressOf(const std::string& host, std::uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  inet_pton(AF_INET, host.c_str(), &address.sin_addr);
  address.sin_port = htons(port);
  return address;
}

std::string TagOf(const std::string& header) {
  const auto at = header.find(";tag=");
  return at == std::string::npos ? "" : header.substr(at + 5, header.find_first_of(";>", at + 5) - at - 5);
}

} // namespace

TestSocket::TestSocket(const std::string& host, std::uint16_t port)
    : descriptor_(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in address = AddressOf(host, port);
  socklen_t length = sizeof(address);
  if (bind(descriptor_, reinterpret_cast<sockaddr*>(&address), length) != 0 ||
      getsockname(descriptor_, reinterpret_cast<sockaddr*>(&address), &length) != 0)
    std::abort();
  port_ = ntohs(address.sin_port);
}

TestSocket::~TestSocket() {
  close(descriptor_);
}

void TestSocket::Send(std::uint16_t port, std::string_view bytes, const std::string& host) const {
  const sockaddr_in address = AddressOf(host, port);
  sendto(descriptor_, bytes.data(), bytes.size(), 0, reinterpret_cast<const sockaddr*>(&address), sizeof(address));
}

std::optional<std::string> TestSocket::Receive(std::chrono::milliseconds limit, std::uint16_t* from) const {
  pollfd waiting{descriptor_, POLLIN, 0};
  if (poll(&waiting, 1, static_cast<int>(std::max<long>(0, limit.count()))) <= 0)
    return std::nullopt;
  std::array<char, 65536> bytes{};
  sockaddr_in source{};
  socklen_t length = sizeof(source);
  const ssize_t count =
      recvfrom(descriptor_, bytes.data(), bytes.size(), 0, reinterpret_cast<sockaddr*>(&source), &length);
  if (from)
    *from = ntohs(source.sin_port);
  return count < 0 ? std::nullopt : std::optional(std::string(bytes.data(), static_cast<std::size_t>(count)));
}

int SipText::Status() const {
  return text.starts_with("SIP/2.0 ") ? std::atoi(text.c_str() + 8) : 0;
}

std::string SipText::Method() const {
  return text.substr(0, text.find(' '));
}

std::string SipText::Header(std::string_view name) const {
  const auto at = text.find("\r\n" + std::string(name) + ": ");
  if (at == std::string::npos)
    return "";
  const auto start = at + name.size() + 4;
  return text.substr(start, text.find("\r\n", start) - start);
}

std::uint16_t SipText::MediaPort() const {
  const auto at = text.find("m=audio ");
  return at == std::string::npos ? std::uint16_t{0} : static_cast<std::uint16_t>(std::atoi(text.c_str() + at + 8));
}

SipPeer::SipPeer(std::uint16_t line_port, const std::string& host, std::string line_host)
    : sip_(host), line_port_(line_port), line_host_(std::move(line_host)) {}

std::string SipPeer::Sdp(std::string_view formats, std::string_view more) const {
  return "v=0\r\no=- 1 1 IN IP4 127.0.0.1\r\ns=-\r\nc=IN IP4 127.0.0.1\r\nt=0 0\r\nm=audio " +
         std::to_string(rtp.Port()) + " RTP/AVP " + std::string(formats) + "\r\na=rtpmap:101 telephone-event/8000\r\n" +
         std::string(more);
}

void SipPeer::Send(const std::string& method, int sequence, const std::string& branch, const std::string& body) const {
  const std::string line = "sip:" + callee + "@127.0.0.1:" + std::to_string(line_port_);
  const std::string own = "127.0.0.1:" + std::to_string(Port());
  sip_.Send(line_port_,
            method + " " + line + " SIP/2.0\r\nVia: SIP/2.0/UDP " + own + ";branch=z9hG4bK" + branch +
                ";rport\r\nFrom: " + from + ";tag=peer" + std::to_string(dialog_) + "\r\nTo: <" + line + ">" +
                (line_tag.empty() ? "" : ";tag=" + line_tag) + "\r\nCall-ID: call" + std::to_string(dialog_) + "-" +
                std::to_string(Port()) + "\r\nCSeq: " + std::to_string(sequence) + " " + method +
                "\r\nContact: <sip:test@" + own + ">\r\nMax-Forwards: 70\r\n" + more_headers +
                (body.empty() ? "" : "Content-Type: application/sdp\r\n") +
                "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body,
            line_host_);
}

void SipPeer::Request(const std::string& method) {
  ++sequence_;
  Send(method, sequence_, method + std::to_string(dialog_) + "x" + std::to_string(sequence_), "");
}

void SipPeer::Invite(const std::string& body) {
  ++dialog_;
  line_tag.clear();
  Reinvite(body);
}

void SipPeer::Reinvite(const std::string& body) {
  invite_sequence_ = ++sequence_;
  invite_branch_ = "inv" + std::to_string(dialog_) + "x" + std::to_string(sequence_) + "p" + std::to_string(Port());
  Send("INVITE", invite_sequence_, invite_branch_, body);
}

void SipPeer::Ack(const std::string& body) {
  Send("ACK", invite_sequence_, invite_branch_ + "ack", body);
}

void SipPeer::Cancel() {
  line_tag.clear();
  Send("CANCEL", invite_sequence_, invite_branch_, "");
}

void SipPeer::Bye() {
  Request("BYE");
}

void SipPeer::Reply(const SipText& request, int status, const std::string& reason, const std::string& body,
                    const std::string& headers) {
  std::string to = request.Header("To");
  if (to.find(";tag=") == std::string::npos)
    to += ";tag=callee";
  sip_.Send(line_port_, "SIP/2.0 " + std::to_string(status) + " " + reason + "\r\nVia: " + request.Header("Via") +
                            "\r\nFrom: " + request.Header("From") + "\r\nTo: " + to +
                            "\r\nCall-ID: " + request.Header("Call-ID") + "\r\nCSeq: " + request.Header("CSeq") +
                            "\r\nContact: <sip:test@127.0.0.1:" + std::to_string(Port()) + ">\r\n" + headers +
                            (body.empty() ? "" : "Content-Type: application/sdp\r\n") +
                            "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body);
}

std::optional<SipText> SipPeer::Next(std::chrono::milliseconds limit) const {
  const auto bytes = sip_.Receive(limit);
  if (!bytes)
    return std::nullopt;
  SipText message{*bytes};
  if (message.Status() > 100 && message.Header("CSeq").ends_with("INVITE"))
    line_tag = TagOf(message.Header("To"));
  return message;
}

std::optional<SipText> SipPeer::NextThat(const std::function<bool(const SipText&)>& fits,
                                         std::chrono::milliseconds limit) const {
  const auto end = std::chrono::steady_clock::now() + limit;
  while (true) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
    auto message = Next(left);
    if (!message || fits(*message))
      return message;
  }
}

std::optional<SipText> SipPeer::Await(int status, std::chrono::milliseconds limit) const {
  return NextThat([&](const SipText& message) { return message.Status() == status; }, limit);
}

std::optional<SipText> SipPeer::AwaitRequest(std::string_view method) const {
  return NextThat([&](const SipText& message) { return message.Status() == 0 && message.Method() == method; },
                  std::chrono::seconds(5));
}

void SipPeer::SendRtp(std::uint16_t to, const RtpPacket& packet) const {
  std::vector<std::uint8_t> bytes;
  WriteRtpPacket(packet, bytes);
  rtp.Send(to, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

std::optional<std::vector<std::uint8_t>> SipPeer::NextRtp() const {
  const auto bytes = rtp.Receive(std::chrono::seconds(2));
  if (!bytes)
    return std::nullopt;
  return std::vector<std::uint8_t>(bytes->begin(), bytes->end());
}

} // namespace kelmio
