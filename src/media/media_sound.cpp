#include "media/media_sound.h"

#include "media/call_port.h"
#include "media/file_worker.h"
#include "media/recording_format.h"

namespace kelmio {
namespace {

class MediaSound : public CallSound, private Desk::User {
public:
  MediaSound(EventLoop& loop, std::shared_ptr<Desk> desk, CallSoundEvents& events)
      : desk_(std::move(desk)), target_(std::make_shared<ReportTarget>(ReportTarget{events})), reporter_(loop, target_),
        port_(std::make_shared<CallPort>(reporter_)) {}

  ~MediaSound() override {
    ReleaseDesk();
    target_.reset(); // nothing is reported from here on
    port_->Detach();
    if (recorder_)
      recorder_->Finish();
  }

  MediaSound(const MediaSound&) = delete;
  MediaSound& operator=(const MediaSound&) = delete;

  std::shared_ptr<SoundPort> Port() override { return port_; }

  bool Play(const std::string& path) override {
    std::string error;
    auto player = WavePlayer::Open(path, error);
    if (!player) {
      PostTrouble("Cannot play " + path + ": " + error);
      return false;
    }
    worker_.Add(player);
    target_->play = ++last_number_;
    port_->SetPlayer(std::move(player), target_->play);
    return true;
  }

  void StopPlay() override {
    target_->play = ++last_number_;
    port_->SetPlayer(nullptr, target_->play);
  }

  bool Record(const RecordRequest& request) override {
    if (recorder_ && !recorder_->Finished())
      return false;
    if (!IsRecordable(request.format)) {
      PostTrouble("Cannot record in the chosen wave format");
      return false;
    }
    std::string error;
    auto recorder = WaveRecorder::Create(request, reporter_, error);
    if (!recorder) {
      PostTrouble("Cannot write the recording " + request.path + ": " + error);
      return false;
    }
    StopWatching();
    recorder_ = std::move(recorder);
    worker_.Add(recorder_);
    port_->SetRecorder(recorder_);
    if (request.watch_signal) {
      target_->watch = ++last_number_;
      port_->StartWatching(target_->watch);
    }
    return true;
  }

  void StopRecord() override {
    StopWatching();
    if (!recorder_)
      return;
    port_->RemoveRecorder();
    recorder_->Finish();
    recorder_.reset();
  }

  void UseDesk() override {
    if (desk_ == nullptr)
      return;
    // The stream is stopped before the target goes.
    const auto handset = desk_->Take(*this, [this](const std::string& text) { target_->events.Trouble(text); });
    if (handset)
      port_->SetHandset(handset);
  }

  void ReleaseDesk() override {
    if (desk_ != nullptr)
      desk_->Release(*this);
    port_->SetHandset(nullptr);
  }

private:
  void DeskTaken() override { port_->SetHandset(nullptr); }

  void StopWatching() {
    target_->watch = 0;
    port_->StopWatching();
  }

  void PostTrouble(std::string text) {
    reporter_.Post([text = std::move(text)](ReportTarget& target) { target.events.Trouble(text); });
  }

  const std::shared_ptr<Desk> desk_;
  std::shared_ptr<ReportTarget> target_;
  Reporter reporter_;
  std::shared_ptr<CallPort> port_;
  std::shared_ptr<WaveRecorder> recorder_; // the last one, until `StopRecord`
  std::uint64_t last_number_ = 0;
  FileWorker worker_;
};

} // namespace

std::unique_ptr<CallSound> MediaSoundFactory::Create(CallSoundEvents& events) {
  return std::make_unique<MediaSound>(loop_, desk_, events);
}

bool MediaSoundFactory::CanRecord(const WaveFormatRecord& format) const {
  return IsRecordable(format);
}

} // namespace kelmio
