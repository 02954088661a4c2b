// The list of codecs in the dialogs of SIP lines: which are used, and in which order.
#pragma once

#include <cstddef>
#include <vector>

#include "controls/basic_controls.h"
#include "controls/list_view.h"
#include "drivers/sip/audio_codec.h"

namespace kelmio {

/// User interface thread only. The controls are a form's, and outlive the choice.
class CodecChoice {
public:
  struct Controls {
    ListView& list;
    Button& up;
    Button& down;
    Button& use;
  };
  explicit CodecChoice(Controls controls);
  CodecChoice(const CodecChoice&) = delete;
  CodecChoice& operator=(const CodecChoice&) = delete;

  /// Shows these as used, in this order, and the others below them.
  void Show(const std::vector<AudioCoding>& used);
  /// Never empty, since a line without any codec could take no call.
  std::vector<AudioCoding> Used() const;

private:
  struct Codec {
    AudioCoding coding;
    bool used;
  };

  void ToggleUse();
  /// Swaps the selected codec with the one `by` rows below.
  void Move(int by);
  void Fill(std::size_t selected);
  void EnableButtons();
  Codec* Selected();

  Controls controls_;
  std::vector<Codec> codecs_; // in the order of the rows
};

} // namespace kelmio
