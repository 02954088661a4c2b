#include "drivers/sip/self_call.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <random>
#include <string>

#include "drivers/sip/libre.h"

namespace kelmio {

namespace {

class Socket {
public:
  explicit Socket(int family) : descriptor_(socket(family, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {}
  ~Socket() {
    if (descriptor_ >= 0)
      close(descriptor_);
  }
  Socket(const Socket&) = delete;
  Socket& operator=(const Socket&) = delete;
  int Descriptor() const { return descriptor_; }

private:
  int descriptor_;
};

std::string Options(const sa& own, const std::string& target) {
  std::random_device random;
  const std::string token = std::to_string(random()) + std::to_string(random());
  const std::string from = ToText(own);
  return "OPTIONS sip:" + target + " SIP/2.0\r\nVia: SIP/2.0/UDP " + from + ";branch=z9hG4bK" + token +
         ";rport\r\nFrom: <sip:" + from + ">;tag=" + token + "\r\nTo: <sip:" + target + ">\r\nCall-ID: " + token +
         "\r\nCSeq: 1 OPTIONS\r\nMax-Forwards: 0\r\nContent-Length: 0\r\n\r\n";
}

} // namespace

bool AnswersOptions(const ListenAddress& address, std::chrono::milliseconds limit) {
  sa peer{};
  if (sa_set_str(&peer, address.host.c_str(), address.port) != 0)
    return false;
  if (sa_is_any(&peer))
    sa_set_str(&peer, sa_af(&peer) == AF_INET ? "127.0.0.1" : "::1", address.port);

  const Socket line(sa_af(&peer));
  sa own{};
  own.len = sizeof(own.u);
  // Connected, the socket takes only what the line answers.
  if (line.Descriptor() < 0 || connect(line.Descriptor(), &peer.u.sa, peer.len) != 0 ||
      getsockname(line.Descriptor(), &own.u.sa, &own.len) != 0)
    return false;
  const std::string request = Options(own, ToText(peer));
  if (send(line.Descriptor(), request.data(), request.size(), MSG_NOSIGNAL) < 0)
    return false;
  pollfd answer{line.Descriptor(), POLLIN, 0};
  if (poll(&answer, 1, static_cast<int>(limit.count())) != 1)
    return false;
  constexpr std::string_view kFine = "SIP/2.0 200";
  std::array<char, kFine.size()> start{};
  const ssize_t length = recv(line.Descriptor(), start.data(), start.size(), 0);
  return length > 0 && std::string_view(start.data(), static_cast<std::size_t>(length)) == kFine;
}

} // namespace kelmio
