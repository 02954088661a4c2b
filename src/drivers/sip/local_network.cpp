#include "drivers/sip/local_network.h"

#include <netinet/in.h>

#include <algorithm>
#include <array>

namespace kelmio {

namespace {

struct Network {
  std::uint32_t address;
  int bits;
};
constexpr std::array kPrivateNetworks{Network{0x7F000000, 8}, Network{0x0A000000, 8}, Network{0xAC100000, 12},
                                      Network{0xC0A80000, 16}, Network{0xA9FE0000, 16}};

bool IsPrivate(std::uint32_t address) {
  return std::any_of(kPrivateNetworks.begin(), kPrivateNetworks.end(),
                     [&](const Network& network) { return (address ^ network.address) >> (32 - network.bits) == 0; });
}

} // namespace

bool IsOfLocalNetwork(const sa& address) {
  if (sa_af(&address) == AF_INET)
    return IsPrivate(sa_in(&address));
  if (sa_af(&address) != AF_INET6)
    return false;
  const in6_addr& v6 = address.u.in6.sin6_addr;
  const std::uint8_t* bytes = v6.s6_addr;
  if (IN6_IS_ADDR_V4MAPPED(&v6))
    return IsPrivate(std::uint32_t{bytes[12]} << 24U | std::uint32_t{bytes[13]} << 16U |
                     std::uint32_t{bytes[14]} << 8U | bytes[15]);
  const bool unique_local = (bytes[0] & 0xFEU) == 0xFC;
  return IN6_IS_ADDR_LOOPBACK(&v6) || IN6_IS_ADDR_LINKLOCAL(&v6) || unique_local;
}

} // namespace kelmio
