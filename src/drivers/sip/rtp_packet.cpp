#include "drivers/sip/rtp_packet.h"

namespace kelmio {

namespace {

constexpr std::size_t kHeaderBytes = 12;
constexpr std::uint8_t kVersionBits = 2U << 6U;

std::uint32_t Read16(std::span<const std::uint8_t> bytes, std::size_t at) {
  return (std::uint32_t{bytes[at]} << 8U) | bytes[at + 1];
}

std::uint32_t Read32(std::span<const std::uint8_t> bytes, std::size_t at) {
  return (Read16(bytes, at) << 16U) | Read16(bytes, at + 2);
}

} // namespace

std::optional<RtpPacket> ReadRtpPacket(std::span<const std::uint8_t> bytes) {
  if (bytes.size() < kHeaderBytes || (bytes[0] & 0xC0U) != kVersionBits)
    return std::nullopt;
  RtpPacket packet;
  packet.marker = (bytes[1] & 0x80U) != 0;
  packet.payload_type = bytes[1] & 0x7FU;
  packet.sequence = static_cast<std::uint16_t>(Read16(bytes, 2));
  packet.timestamp = Read32(bytes, 4);
  packet.ssrc = Read32(bytes, 8);

  std::size_t start = kHeaderBytes + std::size_t{bytes[0] & 0x0FU} * 4;
  const bool extension = (bytes[0] & 0x10U) != 0;
  if (extension) {
    if (bytes.size() < start + 4)
      return std::nullopt;
    start += 4 + std::size_t{Read16(bytes, start + 2)} * 4;
  }
  if (bytes.size() < start)
    return std::nullopt;
  std::size_t length = bytes.size() - start;
  const bool padding = (bytes[0] & 0x20U) != 0;
  if (padding) {
    const std::size_t padded = bytes.back();
    if (padded == 0 || padded > length)
      return std::nullopt;
    length -= padded;
  }
  packet.payload = bytes.subspan(start, length);
  return packet;
}

void WriteRtpPacket(const RtpPacket& packet, std::vector<std::uint8_t>& out) {
  const auto byte = [](std::uint32_t value, unsigned shift) { return static_cast<std::uint8_t>(value >> shift); };
  out.assign({kVersionBits, static_cast<std::uint8_t>((packet.marker ? 0x80U : 0U) | (packet.payload_type & 0x7FU)),
              byte(packet.sequence, 8), byte(packet.sequence, 0), byte(packet.timestamp, 24),
              byte(packet.timestamp, 16), byte(packet.timestamp, 8), byte(packet.timestamp, 0), byte(packet.ssrc, 24),
              byte(packet.ssrc, 16), byte(packet.ssrc, 8), byte(packet.ssrc, 0)});
  out.insert(out.end(), packet.payload.begin(), packet.payload.end());
}

} // namespace kelmio
