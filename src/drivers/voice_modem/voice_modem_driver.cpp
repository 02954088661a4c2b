#include "drivers/voice_modem/voice_modem_driver.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <utility>

namespace kelmio {
namespace {

constexpr std::string_view kSectionPrefix = "Modem ";
// Asking a modem takes some three seconds.
constexpr std::chrono::milliseconds kFirstLimit{4000};

} // namespace

VoiceModemDriver::VoiceModemDriver(EventLoop& loop, LinesFile file, ModemConfigDialog* dialog, const Options& options)
    : house_{.loop = loop,
             .file = std::move(file),
             .dialog = dialog,
             .speed = options.speed,
             .lock_folder = options.lock_folder,
             .ports = [this] { return Ports(); },
             .in_use =
                 [this](const std::string& port, bool in_use) {
                   if (in_use)
                     finder_->AwaitFree(port);
                   else
                     finder_->DontAwait(port);
                 }},
      alive_(std::make_shared<VoiceModemDriver*>(this)) {
  std::set<std::string> known;
  std::set<std::string> silent;
  for (const std::string& section : house_.file.Sections(kSectionPrefix)) {
    const KnownModem modem = ReadKnownModem(house_.file, section);
    AddLine(section, ReadModemSettings(house_.file, section)).SetKind(modem.kind, modem.model);
    known.insert(section.substr(kSectionPrefix.size()));
    if (modem.kind == ModemKind::Silent)
      silent.insert(section.substr(kSectionPrefix.size()));
  }
  finder_ = std::make_unique<ModemFinder>(
      ModemFinder::Options{options.folder, options.lock_folder, options.speed, std::move(known), std::move(silent)},
      [&loop, weak = std::weak_ptr(alive_)] {
        loop.Post([weak] {
          if (const auto driver = weak.lock())
            (*driver)->TakeNews();
        });
      });
}

VoiceModemDriver::~VoiceModemDriver() {
  alive_.reset();
  house_.in_use = nullptr;
  house_.ports = nullptr;
  finder_.reset();
}

std::vector<std::shared_ptr<LineDevice>> VoiceModemDriver::Lines() {
  if (!std::exchange(waited_, true)) {
    finder_->WaitForFirst(kFirstLimit);
    TakeFound();
  }
  return {lines_.begin(), lines_.end()};
}

VoiceModemLine& VoiceModemDriver::AddLine(const std::string& section, ModemSettings settings) {
  const auto known =
      std::find_if(lines_.begin(), lines_.end(), [&](const auto& line) { return line->Section() == section; });
  if (known != lines_.end())
    return **known;
  if (settings.device_id < 0)
    settings.device_id = house_.file.DeviceNumber(section);
  return *lines_.emplace_back(std::make_shared<VoiceModemLine>(house_, section, std::move(settings)));
}

void VoiceModemDriver::TakeFound() {
  for (const FoundModem& found : finder_->Take()) {
    ModemSettings settings;
    settings.port = found.port;
    VoiceModemLine& line = AddLine(std::string(kSectionPrefix) + found.name, settings);
    line.SetKind(found.kind, found.model);
    if (!found.trouble.empty()) {
      line.SetTrouble(found.trouble);
      Tell(line.Section() + ": " + found.trouble);
      continue;
    }
    WriteModemSettings(house_.file, line.Section(), line.Settings());
    WriteKnownModem(house_.file, line.Section(), {found.kind, found.model});
  }
}

/// Later: the lines are looked for before anybody listens.
void VoiceModemDriver::Tell(const std::string& words) {
  house_.loop.Post([weak = std::weak_ptr(alive_), words] {
    if (const auto driver = weak.lock(); driver && (*driver)->tell_)
      (*driver)->tell_(words);
  });
}

void VoiceModemDriver::TakeNews() {
  TakeFound();
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
