// Which callers are of the local network.
#pragma once

#include "drivers/sip/libre.h"

namespace kelmio {

/// True for this computer, for private addresses (RFC 1918, RFC 4193) and for link-local ones (RFC 3927, RFC 4291): no
/// way from outside leads to them. An IPv4 address in IPv6 clothes (RFC 4291 2.5.5.2) counts as what it is. Pure code.
bool IsOfLocalNetwork(const sa& address);

} // namespace kelmio
