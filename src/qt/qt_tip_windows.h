// Tips in windows of their own.
#pragma once

#include "platform/tip_windows.h"

namespace kelmio {

/// Where windows may choose their place: on X11. User interface thread only.
class QtTipWindows : public TipWindows {
public:
  std::unique_ptr<TipWindow> Create(const TipContent& content, int x, int y,
                                    std::function<void(std::uint32_t message)> on_mouse) override;
};

} // namespace kelmio
