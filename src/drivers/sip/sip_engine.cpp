#include "drivers/sip/sip_engine.h"

#include <sys/resource.h>

#include <algorithm>
#include <mutex>

#include "drivers/sip/flood_gate.h"
#include "drivers/sip/local_network.h"
#include "drivers/sip/session_timer.h"
#include "drivers/sip/sip_replies.h"
#include "drivers/sip/sip_transports.h"

// libre's header for its own words asks who speaks.
#define DEBUG_MODULE "kelmio"
#define DEBUG_LEVEL 0
#include <re_dbg.h>

namespace kelmio {

namespace {

constexpr char kOwnUser[] = "kelmio"; // of a line without an account
constexpr std::uint32_t kHashSize = 32;
constexpr std::uint32_t kMostNameServers = 4;
// What a crowd of strangers may open before it is put out, with room for the call and its recording above it.
constexpr int kDescriptors = 8192;

void InitializeLibrary() {
  static std::once_flag once;
  // For the whole process, never taken back: other lines may run. Its own words on the terminal are no use to
  // anyone, errors come back as numbers.
  std::call_once(once, [] {
    dbg_handler_set([](int, const char*, std::size_t, void*) {}, nullptr);
    libre_init();
    // The usual limit of 1024 is there for select(), which nothing here uses.
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) == 0 && limit.rlim_cur < kDescriptors) {
      limit.rlim_cur = std::min<rlim_t>(kDescriptors, limit.rlim_max);
      setrlimit(RLIMIT_NOFILE, &limit);
    }
  });
}

} // namespace

struct SipEngine::Loop {
  RePtr<mqueue> commands;
  RePtr<dnsc> names;
  SipTransports transports;
  std::optional<SipRegistration> registration; // of an account
  RePtr<sipsess_sock> sessions;
  FloodGate gate;

  ~Loop() {
    sipsess_close_all(sessions.get());
    sessions.reset();
    registration.reset();
    // A goodbye is on its way by now; nobody waits for its confirmation.
    transports.Close();
  }
};

SipEngine::SipEngine(SipSettings settings, SipReportSink sink, SipCallNumber first_call,
                     SipRegistration::Purpose purpose)
    : settings_(std::move(settings)), sink_(std::move(sink)), purpose_(purpose), next_call_(first_call) {}

SipEngine::~SipEngine() {
  Stop();
}

int SipEngine::Start() {
  InitializeLibrary();
  std::promise<int> started;
  std::future<int> result = started.get_future();
  thread_ = std::thread([this, started = std::move(started)]() mutable { Run(std::move(started)); });
  const int error = result.get();
  if (error != 0)
    thread_.join();
  return error;
}

void SipEngine::Stop() {
  if (!thread_.joinable())
    return;
  Push({.kind = SipCommand::Kind::Quit});
  thread_.join();
}

bool SipEngine::StopIfIdle() {
  SipCommand command{.kind = SipCommand::Kind::QuitIfIdle};
  std::future<bool> quits = command.quits.get_future();
  if (!Push(std::move(command)) || !quits.get())
    return false;
  thread_.join();
  return true;
}

bool SipEngine::Push(SipCommand command) {
  auto owned = std::make_unique<SipCommand>(std::move(command));
  if (mqueue_push(commands_, 0, owned.get()) != 0)
    return false;
  static_cast<void>(owned.release()); // now the queue's
  return true;
}

// --- the engine's thread

void SipEngine::Run(std::promise<int> started) {
  int error = re_thread_init();
  if (error == 0)
    error = fd_setsize(kDescriptors);
  if (error != 0) {
    started.set_value(error);
    return;
  }
  error = OpenLoop();
  const bool running = error == 0;
  if (!running)
    loop_.reset();
  started.set_value(error);
  if (running) {
    re_main(nullptr);
    call_.reset();
    loop_.reset();
  }
  re_thread_close();
}

int SipEngine::OpenLoop() {
  loop_ = std::make_unique<Loop>();

  mqueue* commands = nullptr;
  if (const int error = mqueue_alloc(&commands, &SipEngine::OnCommand, this))
    return error;
  loop_->commands.reset(commands);
  commands_ = commands;

  // Without name servers there are no names to call, and all else works.
  sa servers[kMostNameServers];
  std::uint32_t count = kMostNameServers;
  char domain[64];
  dnsc* names = nullptr;
  if (dns_srv_get(domain, sizeof(domain), servers, &count) != 0)
    count = 0;
  if (dnsc_alloc(&names, nullptr, servers, count) == 0)
    loop_->names.reset(names);

  if (const int error = OpenTransports())
    return error;

  // The stack owns its listeners; their order is the order in which they see a message.
  sipsess_sock* sessions = nullptr;
  if (const int error = sip_listen(nullptr, Stack(), true, &SipEngine::OnAnyRequest, this))
    return error;
  if (const int error = sipsess_listen(&sessions, Stack(), kHashSize, &SipEngine::OnInvite, this))
    return error;
  loop_->sessions.reset(sessions);
  if (const int error = sip_listen(nullptr, Stack(), true, &SipEngine::OnRequestLeft, this))
    return error;
  if (const int error = sip_listen(nullptr, Stack(), false, &SipEngine::OnResponseLeft, this))
    return error;
  if (loop_->registration)
    loop_->registration->Start();
  return 0;
}

int SipEngine::OpenTransports() {
  SipTransports& transports = loop_->transports;
  sa listen{};
  if (const int error = sa_set_str(&listen, settings_.listen.host.c_str(), settings_.listen.port))
    return error;
  if (!settings_.account) {
    const int error = transports.Open(listen, loop_->names.get());
    port_ = transports.Port();
    return error;
  }
  // The addresses are known once the registrar is, but a port that is wanted and taken is told at once.
  if (settings_.listen.port != 0) {
    udp_sock* tried = nullptr;
    const int error = udp_listen(&tried, &listen, nullptr, nullptr);
    mem_deref(tried);
    if (error != 0)
      return error;
    port_ = settings_.listen.port;
  }
  if (const int error = transports.OpenUnbound(loop_->names.get()))
    return error;
  loop_->registration.emplace(settings_, transports, loop_->names.get(), purpose_, [this](const AccountStanding& now) {
    if (!leaving_)
      Report({.kind = SipReport::Kind::Standing, .text = now.words, .health = now.health, .reason = now.reason});
  });
  // The registrar knows this line, and nobody else does; who is in the call that is up is another matter.
  transports.SetFilter([this](const sa& source) { return call_ || loop_->registration->IsRegistrar(source); });
  return 0;
}

sipsess_sock* SipEngine::Sessions() {
  return loop_->sessions.get();
}

sip* SipEngine::Stack() {
  return loop_->transports.Stack();
}

dnsc* SipEngine::Names() {
  return loop_->names.get();
}

std::optional<sa> SipEngine::AddressTowards(const sa& peer) {
  return loop_->transports.AddressTowards(peer);
}

SipRegistration* SipEngine::Registration() {
  return loop_->registration ? &*loop_->registration : nullptr;
}

bool SipEngine::IsFromRegistrar(const sip_msg& message) {
  return loop_->registration && loop_->registration->IsRegistrar(message.src);
}

SipNames SipEngine::NamesAt(const sa& local) {
  if (!settings_.account) {
    const std::string own = std::string("sip:") + kOwnUser + "@" + ToText(local);
    return {{}, own, own, {}};
  }
  const SipRegistration& registration = *loop_->registration;
  return {QuotedName(*settings_.account), AddressOfRecord(*settings_.account), registration.ContactUri(local),
          registration.Routes()};
}

void SipEngine::CallOver(SipCall& call) {
  if (call_.get() == &call)
    call_.reset();
}

void SipEngine::OnCommand(int, void* data, void* self) {
  const std::unique_ptr<SipCommand> command(static_cast<SipCommand*>(data));
  static_cast<SipEngine*>(self)->Execute(*command);
}

void SipEngine::Quit() {
  leaving_ = true;
  call_.reset();
  if (loop_->registration)
    loop_->registration->Leave([] { re_cancel(); });
  else
    re_cancel();
}

void SipEngine::Execute(SipCommand& command) {
  if (command.kind == SipCommand::Kind::Quit) {
    Quit();
    return;
  }
  if (command.kind == SipCommand::Kind::QuitIfIdle) {
    command.quits.set_value(!call_);
    if (!call_)
      Quit();
    return;
  }
  if (command.kind == SipCommand::Kind::Dial) {
    // A caller may have been quicker than the word that the line is in use.
    if (call_) {
      Report({.kind = SipReport::Kind::Disconnected, .call = command.call});
      return;
    }
    call_ = std::make_unique<SipCall>(*this, command.call);
    if (command.port)
      call_->SetSoundPort(std::move(command.port));
    call_->Dial(command.text);
    return;
  }
  if (!call_ || call_->Number() != command.call)
    return; // over in the meantime
  if (command.kind == SipCommand::Kind::Answer)
    call_->Answer();
  else if (command.kind == SipCommand::Kind::Hangup)
    call_->Hangup();
  else
    call_->SetSoundPort(std::move(command.port));
}

void SipEngine::OnInvite(const sip_msg* message, void* self) {
  static_cast<SipEngine*>(self)->Invited(*message);
}

void SipEngine::Invited(const sip_msg& invite) {
  if (leaving_ || purpose_ == SipRegistration::Purpose::Probe) {
    sip_treply(nullptr, Stack(), &invite, 480, "Temporarily Unavailable");
    return;
  }
  if (call_) {
    // Nothing is kept of those who are refused, however many they are.
    sip_reply(Stack(), &invite, 486, "Busy Here");
    return;
  }
  if (const sip_hdr* required = UnknownRequirement(invite)) {
    sip_replyf(Stack(), &invite, 420, "Bad Extension", "Unsupported: %r\r\nContent-Length: 0\r\n\r\n", &required->val);
    return;
  }
  call_ = std::make_unique<SipCall>(*this, NextCallNumber());
  if (!call_->TakeInvite(invite))
    call_.reset();
}

bool SipEngine::Admits(const sip_msg& request) const {
  if (loop_->registration)
    return loop_->registration->IsRegistrar(request.src);
  return settings_.allow == SipAllow::Everyone || IsOfLocalNetwork(request.src);
}

bool SipEngine::OnAnyRequest(const sip_msg* message, void* self) {
  const auto& engine = *static_cast<SipEngine*>(self);
  Loop& loop = *engine.loop_;
  if (loop.transports.TakeKnock(*message))
    return true;
  // A flood is held back. What belongs to a call is let through.
  const bool opening = !pl_isset(&message->to.tag) && pl_strcmp(&message->met, "ACK") != 0;
  // Who isn't meant to call is not even told so; unless this line has called him.
  if (!engine.Admits(*message) && (opening || !engine.call_))
    return true;
  return !loop.registration && loop.transports.BeyondThisComputer() && opening &&
         !loop.gate.Admits(*loop.transports.Stack(), *message, message->dst, std::chrono::steady_clock::now());
}

bool SipEngine::OnRequestLeft(const sip_msg* message, void* self) {
  auto* engine = static_cast<SipEngine*>(self);
  if (engine->Admits(*message))
    ReplyOutsideCalls(*engine->Stack(), *message);
  return true;
}

// Answers to nothing that was asked are dropped here; libre would write a line on each to the terminal.
bool SipEngine::OnResponseLeft(const sip_msg*, void*) {
  return true;
}

} // namespace kelmio
