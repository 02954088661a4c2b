#include "drivers/voice_modem/voice_modem_driver.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <utility>

namespace kelmio {
namespace {

constexpr std::string_view kSectionPrefix = "Modem ";
constexpr std::string_view kKindKey = "Kind";
constexpr std::string_view kModelKey = "Model";
constexpr std::string_view kVoice = "voice";
constexpr std::string_view kData = "data";
// Asking a modem takes some three seconds.
constexpr std::chrono::milliseconds kFirstLimit{4000};

ModemSettings SettingsFor(const FoundModem& modem) {
  ModemSettings settings;
  settings.port = modem.port;
  return settings;
}

} // namespace

VoiceModemDriver::VoiceModemDriver(EventLoop& loop, LinesFile file, ModemConfigDialog* dialog, Options options)
    : house_{.loop = loop,
             .file = std::move(file),
             .dialog = dialog,
             .speed = options.speed,
             .lock_folder = options.lock_folder,
             .ports = [this] { return Ports(); }},
      alive_(std::make_shared<VoiceModemDriver*>(this)) {
  std::set<std::string> known;
  for (const std::string& section : house_.file.Sections(kSectionPrefix)) {
    const bool data = house_.file.Read(section, kKindKey) == kData;
    AddLine(section, ReadModemSettings(house_.file, section), data ? ModemKind::Data : ModemKind::Voice,
            house_.file.Read(section, kModelKey));
    known.insert(section.substr(kSectionPrefix.size()));
  }
  finder_ = std::make_unique<ModemFinder>(
      ModemFinder::Options{options.folder, options.lock_folder, options.speed, std::move(known)},
      [&loop, weak = std::weak_ptr(alive_)] {
        loop.Post([weak] {
          if (const auto driver = weak.lock())
            (*driver)->TakeFound();
        });
      });
}

VoiceModemDriver::~VoiceModemDriver() {
  alive_.reset();
  finder_.reset();
}

std::vector<std::shared_ptr<LineDevice>> VoiceModemDriver::Lines() {
  if (!std::exchange(waited_, true)) {
    finder_->WaitForFirst(kFirstLimit);
    for (const FoundModem& modem : finder_->Take())
      AddLine(std::string(kSectionPrefix) + modem.name, SettingsFor(modem), modem.kind, modem.model);
  }
  return {lines_.begin(), lines_.end()};
}

void VoiceModemDriver::AddLine(const std::string& section, ModemSettings settings, ModemKind kind,
                               const std::string& model) {
  const auto known =
      std::find_if(lines_.begin(), lines_.end(), [&](const auto& line) { return line->Section() == section; });
  std::shared_ptr<VoiceModemLine> line = known != lines_.end() ? *known : nullptr;
  if (!line) {
    if (settings.device_id < 0)
      settings.device_id = house_.file.DeviceNumber(section);
    line = std::make_shared<VoiceModemLine>(house_, section, settings);
    lines_.push_back(line);
  }
  line->SetKind(kind, model);
  if (kind == ModemKind::Silent || !house_.file.Read(section, kKindKey).empty())
    return;
  WriteModemSettings(house_.file, section, line->Settings());
  house_.file.Write(section, {{std::string(kKindKey), std::string(kind == ModemKind::Voice ? kVoice : kData)},
                              {std::string(kModelKey), model}});
}

void VoiceModemDriver::TakeFound() {
  for (const FoundModem& modem : finder_->Take())
    AddLine(std::string(kSectionPrefix) + modem.name, SettingsFor(modem), modem.kind, modem.model);
  for (const auto& line : lines_)
    line->DevicesChanged();
  if (changed_)
    changed_();
}

std::vector<ModemChoice> VoiceModemDriver::Ports() const {
  std::vector<ModemChoice> choices;
  for (const FoundModem& device : finder_->Devices()) {
    const std::string section = std::string(kSectionPrefix) + device.name;
    const auto line =
        std::find_if(lines_.begin(), lines_.end(), [&](const auto& each) { return each->Section() == section; });
    const std::string model = line != lines_.end() ? (*line)->ModelInWords() : "";
    choices.push_back({device.port, model.empty() ? device.name : model + " (" + device.name + ")"});
  }
  for (const auto& line : lines_) {
    const std::string port = line->Settings().port;
    if (std::none_of(choices.begin(), choices.end(), [&](const ModemChoice& each) { return each.port == port; }))
      choices.push_back({port, (line->ModelInWords().empty() ? port : line->ModelInWords()) + ", not plugged in"});
  }
  return choices;
}

} // namespace kelmio
