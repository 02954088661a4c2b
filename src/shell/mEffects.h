// Effects on windows: the flight to a corner of the screen, opening and closing step by step, transparency.
#pragma once

#include "controls/form.h"
#include "platform/event_loop.h"
#include "platform/window_surface.h"

/// User interface thread only. Where the desktop can't show an effect, the window simply appears or goes.
namespace kelmio::mEffects {

enum class Corner { TopLeft, TopRight, BottomLeft, BottomRight };
enum class EffectMode { Closing, Opening };

/// The number of the one effect that moves: the window grows out of its centre, or shrinks back into it.
inline constexpr int kEffectCenter = 10;
/// Effects up to this number make the window visible; those above do nothing.
inline constexpr int kLastEffect = 13;

/// Draws the window's flight to the corner of the main screen, or from there to where it stands. False when nothing was
/// drawn; nothing is for no window.
bool AnimateToCorner(WindowSurface& surface, const Form* window, Corner corner, bool to_corner);

/// `alpha` is from 0, not to be seen, to 255. The window takes no clicks any more.
void SetFormTransparency(WindowSurface& surface, const Form& form, int alpha);

/// Makes the window visible and changes its visible part in `steps` steps (above 0), with `speed` milliseconds after
/// each. Pending events run meanwhile: the caller holds the form, whose window may close, which ends the effect. True
/// always.
bool ShowWindowEffect(WindowSurface& surface, EventLoop& loop, Form& form, EffectMode mode, int effect, int speed,
                      int steps);

/// Lets events run for that time.
void DelayMs(EventLoop& loop, int ms);

} // namespace kelmio::mEffects
