#include "hostile/strangers.h"

#include <unistd.h>

#include <fstream>

#include "fuzz/mutated.h"

namespace kelmio {

std::string HostileMessages::Request(const std::string& method, const std::string& more, const std::string& body) {
  const std::string token = std::to_string(++count_);
  const std::string head = count_ % 9 == 8 ? "SIP/2.0 200 OK" : method + " sip:a@127.0.0.1 SIP/2.0";
  return head + "\r\nVia: SIP/2.0/UDP 127.0.0.1:9;branch=z9hG4bKh" + token +
         ";rport\r\nFrom: \"N\" <sip:n@127.0.0.1>;tag=f" + token + "\r\nTo: <sip:a@127.0.0.1>" +
         (count_ % 5 == 4 ? ";tag=t" : "") + "\r\nCall-ID: h" + token + "\r\nCSeq: 1 " + method +
         "\r\nContact: <sip:n@127.0.0.1:9>\r\nMax-Forwards: 70\r\n" + more +
         "Content-Type: application/sdp\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

std::string HostileMessages::Invite(const std::string& host) {
  const std::string token = std::to_string(++count_);
  return "INVITE sip:a@127.0.0.1 SIP/2.0\r\nVia: SIP/2.0/UDP " + host + ":9;branch=z9hG4bKi" + token +
         ";rport\r\nFrom: <sip:flood@127.0.0.1>;tag=i" + token + "\r\nTo: <sip:a@127.0.0.1>\r\nCall-ID: i" + token +
         "\r\nCSeq: 1 INVITE\r\nContact: <sip:flood@" + host +
         ">\r\nMax-Forwards: 70\r\nContent-Type: application/sdp\r\nContent-Length: " + std::to_string(sdp_.size()) +
         "\r\n\r\n" + sdp_;
}

std::string HostileMessages::Bomb() {
  std::string body = sdp_;
  std::string headers;
  switch (random_() % 4) {
  case 0: // sections without end
    for (int i = 0; i < 500; ++i)
      body += "m=audio " + std::to_string(i) + " RTP/AVP 0 8\r\n";
    break;
  case 1: // formats without end
    body += "m=audio 4000 RTP/AVP";
    for (int i = 0; i < 2000; ++i)
      body += " " + std::to_string(i);
    for (int i = 0; i < 1000; ++i)
      body += "\r\na=rtpmap:" + std::to_string(i) + " X/8000";
    break;
  case 2: // one header that is all there is
    headers = "Subject: " + std::string(60'000, 'x') + "\r\n";
    body.clear();
    break;
  default: // many of them
    for (int i = 0; i < 900; ++i)
      headers += "Via: SIP/2.0/UDP 127.0.0.1;branch=z9hG4bKv" + std::to_string(i) + "\r\nRecord-Route: <sip:r;lr>\r\n";
    body.clear();
    break;
  }
  return Request("INVITE", headers, body).substr(0, 65'000);
}

std::string HostileMessages::Next() {
  static const char* const kMethods[] = {"INVITE", "ACK",      "BYE",     "CANCEL",    "OPTIONS",
                                         "INFO",   "REGISTER", "PRACK",   "SUBSCRIBE", "NOTIFY",
                                         "REFER",  "MESSAGE",  "PUBLISH", "UPDATE",    "BREW"};
  const std::string method = kMethods[random_() % std::size(kMethods)];
  const auto kind = random_() % 100;
  if (kind < 2)
    return Bomb();
  if (kind < 10)
    return ForeignBytes(random_);
  const std::string message =
      Request(method, method == "REFER" ? "Refer-To: <sip:127.0.0.1:9>\r\n" : "", kind % 3 == 0 ? sdp_ : "");
  return kind < 40 ? message : fuzz::Mutated(message, sdp_, random_);
}

std::string ForeignBytes(std::mt19937& random) {
  std::string bytes(random() % 400, '\0');
  for (char& byte : bytes)
    byte = static_cast<char>(random());
  static constexpr std::string_view kStarts[] = {
      {"\x00\x01\x00\x08\x21\x12\xA4\x42", 8},                      // a binding request of STUN
      {"\x01\x01\x00\x0C\x21\x12\xA4\x42", 8},                      // and its answer
      {"\x16\xFE\xFF\x00\x00\x00\x00\x00\x00\x00\x00\x01\x2C", 13}, // the first record of DTLS
      {"\x80\xC8\x00\x06", 4},                                      // a report of RTCP
      {"\x80\x00", 2},
      {"\r\n\r\n", 4},
  };
  const std::string_view start = kStarts[random() % std::size(kStarts)];
  return random() % 2 == 0 ? bytes : std::string(start) + bytes;
}

std::size_t ResidentBytes() {
  std::ifstream file("/proc/self/statm");
  std::size_t all = 0;
  std::size_t resident = 0;
  file >> all >> resident;
  return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

} // namespace kelmio
