// A registrar of its own making, over plain UDP on loopback.
#pragma once

#include <atomic>
#include <chrono>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "drivers/sip/sip_peer.h"
#include "drivers/sip/sip_settings.h"

namespace kelmio {

/// Answers REGISTER and OPTIONS on a thread of its own; proofs of the password are computed anew and compared. Each
/// REGISTER that is proved binds or unbinds its contacts.
class RegistrarPeer {
public:
  RegistrarPeer();
  ~RegistrarPeer();
  RegistrarPeer(const RegistrarPeer&) = delete;
  RegistrarPeer& operator=(const RegistrarPeer&) = delete;

  // What it does; may be changed at any time.
  std::atomic<bool> silent = false;
  std::atomic<int> refuses_with = 0; // a status instead of anything else
  std::atomic<int> grants = 600;     // seconds
  std::atomic<int> shortest = 0;     // seconds that are taken at all
  std::atomic<int> seen_port = 0;    // tells the line that it comes from there

  std::string Address() const { return "127.0.0.1:" + std::to_string(socket_.Port()); }
  /// An account that it takes.
  SipSettings Settings() const;

  /// Requests of one kind so far, and the last of them.
  int Count(const std::string& method) const;
  SipText Last(const std::string& method) const;
  /// Contacts that are bound now.
  std::vector<std::string> Bound() const;
  std::uint16_t BoundPort() const;

private:
  void Run();
  void Serve(const SipText& request, std::uint16_t from);
  bool Proved(const SipText& request) const;
  void Reply(const SipText& request, std::uint16_t to, const std::string& status, const std::string& headers = "");
  void Bind(const std::string& text);

  TestSocket socket_;
  mutable std::mutex mutex_;
  std::map<std::string, std::vector<SipText>> seen_; // by method
  std::vector<std::string> bound_;
  std::atomic<bool> stop_ = false;
  std::thread thread_;
};

} // namespace kelmio
