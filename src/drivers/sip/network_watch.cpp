#include "drivers/sip/network_watch.h"

#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <ctime>
#include <utility>

#include "drivers/sip/libre.h"

namespace kelmio {

namespace {

// A network that comes up reports many changes one after the other.
constexpr std::chrono::milliseconds kSettled{700};
constexpr std::chrono::milliseconds kLookAtClock{5'000};
// The two clocks are read one after the other, and a shorter nap breaks nothing.
constexpr std::chrono::seconds kNap{3};

std::chrono::nanoseconds Read(clockid_t clock) {
  timespec now{};
  clock_gettime(clock, &now);
  return std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
}

/// How long this computer has been asleep since it was started.
std::chrono::nanoseconds Asleep() {
  return Read(CLOCK_BOOTTIME) - Read(CLOCK_MONOTONIC);
}

} // namespace

NetworkWatch::NetworkWatch(Told told) : told_(std::move(told)), asleep_(Asleep()) {
  descriptor_ = socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_ROUTE);
  sockaddr_nl changes{};
  changes.nl_family = AF_NETLINK;
  changes.nl_groups = RTMGRP_IPV4_IFADDR | RTMGRP_IPV6_IFADDR | RTMGRP_IPV4_ROUTE | RTMGRP_IPV6_ROUTE;
  if (descriptor_ >= 0 && bind(descriptor_, reinterpret_cast<const sockaddr*>(&changes), sizeof(changes)) == 0)
    fd_listen(descriptor_, FD_READ, &NetworkWatch::Heard, this);
  clock_.StartRepeating(kLookAtClock, kLookAtClock, [this](std::uint64_t) { LookAtClock(); });
}

NetworkWatch::~NetworkWatch() {
  if (descriptor_ < 0)
    return;
  fd_close(descriptor_);
  close(descriptor_);
}

void NetworkWatch::Heard(int, void* self) {
  auto& watch = *static_cast<NetworkWatch*>(self);
  // What has changed doesn't matter; that something has, does.
  std::array<char, 8192> unread;
  while (recv(watch.descriptor_, unread.data(), unread.size(), 0) > 0) {
  }
  watch.settle_.StartOnce(kSettled, [&watch](std::uint64_t) { watch.told_(Change::Network); });
}

void NetworkWatch::LookAtClock() {
  const std::chrono::nanoseconds asleep = Asleep();
  if (asleep - std::exchange(asleep_, asleep) > kNap)
    told_(Change::Woke);
}

} // namespace kelmio
