// The RTP packet (RFC 3550 section 5.1), read and written as bytes.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace kelmio {

struct RtpPacket {
  bool marker = false;
  std::uint8_t payload_type = 0;
  std::uint16_t sequence = 0;
  std::uint32_t timestamp = 0;
  std::uint32_t ssrc = 0;
  std::span<const std::uint8_t> payload; // into the bytes that were read
};

/// Nothing unless the bytes are a well-formed packet of version 2; padding, contributing sources and an
/// extension are skipped.
std::optional<RtpPacket> ReadRtpPacket(std::span<const std::uint8_t> bytes);

/// Replaces `out` by the packet's bytes.
void WriteRtpPacket(const RtpPacket& packet, std::vector<std::uint8_t>& out);

} // namespace kelmio
