// How long the stores take: the index, the message list, the contacts.
#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>

#include "contacts/store/contact_table.h"
#include "core/mGeneral.h"
#include "core/mIni.h"
#include "fakes/fake_desktop.h"
#include "fakes/fake_loop.h"
#include "fakes/fake_sound_output.h"
#include "media/wave_device.h"
#include "messages/message_list.h"
#include "messages/store/message_store.h"
#include "support/temporary_folder.h"

namespace kelmio {
namespace {

/// As many as a folder lists.
constexpr int kMessages = 470;

/// One second of silence, 16 bits at 8000 samples a second.
void WriteWave(const std::string& path) {
  static constexpr unsigned char kHeader[] = {
      'R', 'I', 'F',  'F',  0xA4, 0x3E, 0,    0,    'W', 'A', 'V', 'E', 'f', 'm', 't', ' ', 16,  0,   0,    0,    1, 0,
      1,   0,   0x40, 0x1F, 0,    0,    0x80, 0x3E, 0,   0,   2,   0,   16,  0,   'd', 'a', 't', 'a', 0x80, 0x3E, 0, 0};
  std::ofstream file(path, std::ios::binary);
  file.write(reinterpret_cast<const char*>(kHeader), sizeof kHeader);
  file << std::string(16000, '\0');
}

std::string MessageName(int number) {
  std::string digits = std::to_string(100000000000LL + number);
  return "Msg" + digits + "1.wav";
}

/// The text of an index with unknown or known sizes and lengths.
std::string IndexText(int messages, bool healed) {
  std::string text;
  for (int i = 0; i < messages; ++i)
    text += "[" + MessageName(i) + "]\r\nName=Caller " + std::to_string(i) + "\r\nNumber=555" + std::to_string(i) +
            "\r\nDate=11/15/2026\r\nTime=09:07:42\r\nRead=False\r\nMode=Auto\r\nDevice=1\r\nSize=" +
            (healed ? "16044" : "-1") + "\r\nLength=" + (healed ? "1000" : "-1") + "\r\n";
  return text;
}

class QuietHost : public MessageListHost {
public:
  void SetCallCount(const std::string& text) override { benchmark::DoNotOptimize(text.size()); }
  void PreviewMessage() override {}
  void PumpEvents() override {}
};

struct MessageHouse {
  explicit MessageHouse(int messages) {
    mGeneral::EnsureFolder(store.InboxFolder());
    for (int i = 0; i < messages; ++i)
      WriteWave(store.InboxFolder() + "/" + MessageName(i));
    settings.MessagesSortBy = 4;
  }
  void WriteIndex(int messages, bool healed) {
    std::ofstream(store.IndexPath(), std::ios::binary) << IndexText(messages, healed);
  }

  test::TemporaryFolder home;
  FakeLoop clock;
  FakeSoundOutput output;
  WaveDevice device{clock, output};
  MessageStore store{home.Path(), clock, device};
  Settings settings;
  FakeRegistryStore registry;
  QuietHost host;
  MessageList list{{settings, registry, store, device, host}};
};

void WriteOneRecordIntoAnIndexOf400(benchmark::State& state) {
  MessageHouse house(0);
  house.WriteIndex(400, true);
  const std::string index = house.store.IndexPath();
  const NewMessageInfo info{"Msg999999999999"
                            "1.wav",
                            "Inbox", house.store.InboxFolder() + "/", "1"};
  for (auto _ : state) {
    house.store.WriteRecord(info, "Jane Sample", "5551234", "Auto");
    state.PauseTiming();
    mIni::IniDeleteSection(info.FileName, index);
    state.ResumeTiming();
  }
}
BENCHMARK(WriteOneRecordIntoAnIndexOf400)->Unit(benchmark::kMillisecond)->UseRealTime();

/// What the disk itself takes for one safe replacement of such a file, to set the figure above against.
void ReplaceAFileOfThatSizeSafely(benchmark::State& state) {
  test::TemporaryFolder home;
  const std::string file = home.Path() + "plain";
  const std::string text = IndexText(400, true);
  for (auto _ : state) {
    const int handle = ::open((file + ".new").c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    benchmark::DoNotOptimize(::write(handle, text.data(), text.size()));
    ::fsync(handle);
    ::close(handle);
    std::rename((file + ".new").c_str(), file.c_str());
  }
}
BENCHMARK(ReplaceAFileOfThatSizeSafely)->Unit(benchmark::kMillisecond)->UseRealTime();

void RefreshHealedMessages(benchmark::State& state) {
  MessageHouse house(kMessages);
  house.WriteIndex(kMessages, true);
  for (auto _ : state)
    house.list.RefreshMessageList();
}
BENCHMARK(RefreshHealedMessages)->Unit(benchmark::kMillisecond);

void RefreshFreshMessages(benchmark::State& state) {
  MessageHouse house(kMessages);
  for (auto _ : state) {
    state.PauseTiming();
    house.WriteIndex(kMessages, false);
    state.ResumeTiming();
    house.list.RefreshMessageList();
  }
}
BENCHMARK(RefreshFreshMessages)->Unit(benchmark::kMillisecond)->UseRealTime();

std::string ContactsText(std::int64_t contacts) {
  std::string text;
  for (std::int64_t i = 1; i <= contacts; ++i) {
    const std::string number = std::to_string(i);
    text += "[" + number + "]\r\nName=Contact " + number + "\r\nPhone=555" + number + "\r\nMobile=666" + number +
            "\r\nEmail=\r\nWebsite=\r\nBusinessPhone=777" + number +
            "\r\nBusinessFax=\r\nJobTitle=\r\nCompany=Sample Trading\r\nStreeAddress=\r\nCity=\r\nState=\r\nZip=\r\n"
            "Country=\r\n";
  }
  return text;
}

void LoadTheContacts(benchmark::State& state) {
  test::TemporaryFolder home;
  const std::string file = home.Path() + "Contacts.ini";
  std::ofstream(file, std::ios::binary) << ContactsText(state.range(0));
  ContactTable table(file);
  for (auto _ : state)
    table.LoadContacts();
}
BENCHMARK(LoadTheContacts)->Arg(2000)->Arg(100000)->Unit(benchmark::kMillisecond);

void LookUpACaller(benchmark::State& state) {
  test::TemporaryFolder home;
  const std::string file = home.Path() + "Contacts.ini";
  std::ofstream(file, std::ios::binary) << ContactsText(state.range(0));
  ContactTable table(file);
  table.LoadContacts();
  const std::string last = "777" + std::to_string(state.range(0));
  for (auto _ : state)
    benchmark::DoNotOptimize(table.GetMessageContactID(last));
}
BENCHMARK(LookUpACaller)->Arg(2000)->Arg(100000);

} // namespace
} // namespace kelmio
