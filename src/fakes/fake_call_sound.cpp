#include "fakes/fake_call_sound.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace kelmio {

namespace {

/// Silence out, nothing kept.
class SilentPort : public SoundPort {
public:
  void Received(std::span<const std::int16_t> /*samples*/, int /*rate*/) noexcept override {}
  void ToSend(std::span<std::int16_t> samples, int /*rate*/) noexcept override {
    std::fill(samples.begin(), samples.end(), std::int16_t{0});
  }
};

void AppendLittleEndian(std::string& bytes, std::uint32_t value, int count) {
  for (int i = 0; i < count; ++i)
    bytes += static_cast<char>(value >> (8 * i) & 0xFFU);
}

/// One second of silence, 16 bits at 8000 samples a second.
std::string SecondOfSilence() {
  constexpr std::uint32_t kRate = 8000;
  constexpr std::uint32_t kDataBytes = 2 * kRate;
  constexpr std::uint32_t kHeaderBytes = 36;
  std::string bytes = "RIFF";
  AppendLittleEndian(bytes, kHeaderBytes + kDataBytes, 4);
  bytes += "WAVEfmt ";
  AppendLittleEndian(bytes, 16, 4);
  AppendLittleEndian(bytes, wave_format_tag::kPcm, 2);
  AppendLittleEndian(bytes, 1, 2);
  AppendLittleEndian(bytes, kRate, 4);
  AppendLittleEndian(bytes, 2 * kRate, 4);
  AppendLittleEndian(bytes, 2, 2);
  AppendLittleEndian(bytes, 16, 2);
  bytes += "data";
  AppendLittleEndian(bytes, kDataBytes, 4);
  bytes.append(kDataBytes, '\0');
  return bytes;
}

} // namespace

FakeCallSound::FakeCallSound(FakeSoundFactory& factory, CallSoundEvents& events)
    : factory_(factory), current_(factory.current_), events_(std::make_shared<CallSoundEvents*>(&events)),
      port_(std::make_shared<SilentPort>()) {}

FakeCallSound::~FakeCallSound() {
  if (*current_ == this)
    *current_ = nullptr;
}

bool FakeCallSound::Play(const std::string& path) {
  if (factory_.fail_play || !std::filesystem::is_regular_file(path))
    return false;
  playing_ = path;
  return true;
}

bool FakeCallSound::Record(const RecordRequest& request) {
  if (factory_.fail_record || !recording_.empty())
    return false;
  std::ofstream file(request.path, std::ios::binary);
  file << SecondOfSilence();
  if (!file.flush())
    return false;
  request_ = request;
  recording_ = request.path;
  return true;
}

void FakeCallSound::StopRecord() {
  if (recording_.empty())
    return;
  recording_.clear();
  Report([](CallSoundEvents& events) { events.RecordDone(); });
}

void FakeCallSound::FinishPlay() {
  if (playing_.empty())
    return;
  playing_.clear();
  Report([](CallSoundEvents& events) { events.PlayDone(); });
}

void FakeCallSound::ReachLengthLimit() {
  StopRecord();
}

void FakeCallSound::Silence() {
  Report([](CallSoundEvents& events) { events.Silence(); });
}

void FakeCallSound::Voice() {
  Report([](CallSoundEvents& events) { events.Voice(); });
}

void FakeCallSound::Tone(int hertz) {
  Report([hertz](CallSoundEvents& events) { events.Tone(hertz); });
}

void FakeCallSound::BusyTone() {
  Report([](CallSoundEvents& events) { events.BusyTone(); });
}

void FakeCallSound::Digit(char digit) {
  Report([digit](CallSoundEvents& events) { events.Digit(digit); });
}

void FakeCallSound::Block(std::vector<std::byte> samples) {
  Report([samples = std::move(samples)](CallSoundEvents& events) { events.Block(samples); });
}

void FakeCallSound::Trouble(std::string text) {
  Report([text = std::move(text)](CallSoundEvents& events) { events.Trouble(text); });
}

void FakeCallSound::Report(std::function<void(CallSoundEvents&)> report) {
  factory_.loop_.Post([token = std::weak_ptr(events_), report = std::move(report)] {
    if (const auto events = token.lock())
      report(**events);
  });
}

std::unique_ptr<CallSound> FakeSoundFactory::Create(CallSoundEvents& events) {
  auto sound = std::make_unique<FakeCallSound>(*this, events);
  *current_ = sound.get();
  return sound;
}

} // namespace kelmio
