#include "media/pulse/pulse_connection.h"

#include <pulse/proplist.h>

#include <algorithm>

namespace kelmio {
namespace {

struct FreeProperties {
  void operator()(pa_proplist* properties) const noexcept { pa_proplist_free(properties); }
};
using Properties = std::unique_ptr<pa_proplist, FreeProperties>;

} // namespace

void ClosePulse::operator()(pa_context* context) const noexcept {
  pa_context_disconnect(context);
  pa_context_unref(context);
}

void ClosePulse::operator()(pa_stream* stream) const noexcept {
  pa_stream_disconnect(stream);
  pa_stream_unref(stream);
}

void ClosePulse::operator()(pa_operation* operation) const noexcept {
  pa_operation_cancel(operation);
  pa_operation_unref(operation);
}

PulseConnection::PulseConnection(pa_mainloop_api& loop, PulseClock::time_point now, std::chrono::microseconds patience)
    : given_up_(now + patience) {
  const Properties properties(pa_proplist_new());
  pa_proplist_sets(properties.get(), PA_PROP_APPLICATION_NAME, "Kelmio");
  pa_proplist_sets(properties.get(), PA_PROP_APPLICATION_ICON_NAME, "kelmio");
  context_.reset(pa_context_new_with_proplist(&loop, nullptr, properties.get()));
  // A context that can't connect says so in its state.
  if (context_)
    pa_context_connect(context_.get(), nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr);
}

PulseState PulseConnection::State(PulseClock::time_point now) const {
  if (!context_)
    return PulseState::Gone;
  const pa_context_state_t state = pa_context_get_state(context_.get());
  if (state == PA_CONTEXT_READY)
    return PulseState::Ready;
  return PA_CONTEXT_IS_GOOD(state) && state != PA_CONTEXT_UNCONNECTED && now < given_up_ ? PulseState::Opening
                                                                                         : PulseState::Gone;
}

std::chrono::microseconds PulseConnection::Left(PulseClock::time_point now) const {
  return std::chrono::ceil<std::chrono::microseconds>(std::max(given_up_ - now, PulseClock::duration::zero()));
}

PulseStream PulseConnection::MakeStream(const char* name, const char* role, const pa_sample_spec& format) const {
  const Properties properties(pa_proplist_new());
  if (role)
    pa_proplist_sets(properties.get(), PA_PROP_MEDIA_ROLE, role);
  return PulseStream(pa_stream_new_with_proplist(context_.get(), name, &format, nullptr, properties.get()));
}

PulseState StateOf(const pa_stream& stream) {
  switch (pa_stream_get_state(&stream)) {
  case PA_STREAM_CREATING:
    return PulseState::Opening;
  case PA_STREAM_READY:
    return PulseState::Ready;
  default:
    return PulseState::Gone;
  }
}

} // namespace kelmio
