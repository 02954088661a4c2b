#include "drivers/sip/registrar_peer.h"

#include <algorithm>

#include "drivers/sip/libre.h"

namespace kelmio {

namespace {

using namespace std::chrono_literals;

constexpr const char* kUser = "4711";
constexpr const char* kPassword = "s3cret";
constexpr const char* kRealm = "test";
constexpr const char* kNonce = "abc123";

std::string Field(const std::string& header, const std::string& name) {
  const auto at = header.find(name + "=\"");
  const auto start = at + name.size() + 2;
  return at == std::string::npos ? "" : header.substr(start, header.find('"', start) - start);
}

std::string Hex(const std::string& text) {
  std::uint8_t digest[MD5_SIZE];
  md5(reinterpret_cast<const std::uint8_t*>(text.data()), text.size(), digest);
  char hex[2 * MD5_SIZE + 1];
  re_snprintf(hex, sizeof(hex), "%w", digest, sizeof(digest));
  return hex;
}

} // namespace

RegistrarPeer::RegistrarPeer() : thread_([this] { Run(); }) {}

RegistrarPeer::~RegistrarPeer() {
  stop_ = true;
  thread_.join();
}

SipSettings RegistrarPeer::Settings() const {
  SipSettings settings;
  settings.listen = {"0.0.0.0", 0};
  settings.account = SipAccount{};
  settings.account->server = Address();
  settings.account->user = kUser;
  settings.account->password = kPassword;
  return settings;
}

int RegistrarPeer::Count(const std::string& method) const {
  const std::lock_guard lock(mutex_);
  return seen_.contains(method) ? static_cast<int>(seen_.at(method).size()) : 0;
}

SipText RegistrarPeer::Last(const std::string& method) const {
  const std::lock_guard lock(mutex_);
  return seen_.contains(method) ? seen_.at(method).back() : SipText{};
}

std::vector<std::string> RegistrarPeer::Bound() const {
  const std::lock_guard lock(mutex_);
  return bound_;
}

std::uint16_t RegistrarPeer::BoundPort() const {
  const auto bound = Bound();
  return bound.empty() ? std::uint16_t{0}
                       : static_cast<std::uint16_t>(std::atoi(bound[0].c_str() + bound[0].rfind(':') + 1));
}

void RegistrarPeer::Run() {
  while (!stop_) {
    std::uint16_t from = 0;
    const auto bytes = socket_.Receive(20ms, &from);
    if (bytes && !silent)
      Serve({*bytes}, from);
  }
}

void RegistrarPeer::Serve(const SipText& request, std::uint16_t from) {
  const std::string method = request.Method();
  {
    const std::lock_guard lock(mutex_);
    seen_[method].push_back(request);
  }
  if (refuses_with != 0) {
    Reply(request, from, std::to_string(refuses_with) + " No");
    return;
  }
  if (method == "OPTIONS") {
    Reply(request, from, "200 OK");
    return;
  }
  if (method != "REGISTER")
    return;
  if (!Proved(request)) {
    Reply(request, from, "401 Unauthorized",
          std::string("WWW-Authenticate: Digest realm=\"") + kRealm + "\", nonce=\"" + kNonce + "\"\r\n");
    return;
  }
  if (const int wanted = std::atoi(request.Header("Expires").c_str()); wanted != 0 && wanted < shortest) {
    Reply(request, from, "423 Interval Too Brief", "Min-Expires: " + std::to_string(shortest) + "\r\n");
    return;
  }
  Bind(request.text);
  std::string contacts;
  for (const std::string& contact : Bound())
    contacts += "Contact: <" + contact + ">;expires=" + std::to_string(grants) + "\r\n";
  Reply(request, from, "200 OK", contacts);
}

void RegistrarPeer::Bind(const std::string& text) {
  const std::lock_guard lock(mutex_);
  const std::string start = "\r\nContact: <";
  for (auto at = text.find(start); at != std::string::npos; at = text.find(start, at + 1)) {
    const auto uri = at + start.size();
    const auto end = text.find('>', uri);
    const std::string contact = text.substr(uri, end - uri);
    bound_.erase(std::remove(bound_.begin(), bound_.end(), contact), bound_.end());
    if (std::atoi(text.c_str() + end + std::string(">;expires=").size()) > 0)
      bound_.push_back(contact);
  }
}

bool RegistrarPeer::Proved(const SipText& request) const {
  const std::string proof = request.Header("Authorization");
  const std::string expected = Hex(Hex(std::string(kUser) + ":" + kRealm + ":" + kPassword) + ":" + kNonce + ":" +
                                   Hex(request.Method() + ":" + Field(proof, "uri")));
  return Field(proof, "username") == kUser && Field(proof, "response") == expected;
}

void RegistrarPeer::Reply(const SipText& request, std::uint16_t to, const std::string& status,
                          const std::string& headers) {
  const int port = seen_port != 0 ? seen_port.load() : to;
  std::string via = request.Header("Via");
  if (const auto at = via.find(";rport"); at != std::string::npos)
    via.insert(at + 6, "=" + std::to_string(port) + ";received=127.0.0.1");
  socket_.Send(to, "SIP/2.0 " + status + "\r\nVia: " + via + "\r\nFrom: " + request.Header("From") +
                       "\r\nTo: " + request.Header("To") + ";tag=reg\r\nCall-ID: " + request.Header("Call-ID") +
                       "\r\nCSeq: " + request.Header("CSeq") + "\r\n" + headers + "Content-Length: 0\r\n\r\n");
}

} // namespace kelmio
