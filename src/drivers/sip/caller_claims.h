// Who is calling an account, by all that its registrar passes on.
#pragma once

#include <string>

#include "drivers/sip/caller_identity.h"
#include "drivers/sip/libre.h"

namespace kelmio {

/// Reads an INVITE that comes from the account's own registrar; from anyone else these claims are worth nothing. What
/// the registrar asserts (RFC 3325) counts for more than what the caller says of himself, and who asks for privacy (RFC
/// 3323) has neither name nor number. Pure code.
CallerIdentity CallerOfAccount(const sip_msg& invite);

/// Who has forwarded the call to this account (RFC 5806, RFC 7044), as a text that is fit to be shown; empty when
/// nobody has.
std::string ForwarderOf(const sip_msg& invite);

/// The user part of an address as it stands there; of a telephone number as address (RFC 3966), which has none, the
/// number.
std::string_view UserOf(const uri& address, const pl& whole);

} // namespace kelmio
