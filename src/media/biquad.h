// The second-order filter that the detectors are built of.
#pragma once

#include <cmath>
#include <numbers>

namespace kelmio {

/// Coefficients by R. Bristow-Johnson's audio filter formulas. One stream; one thread at a time; no allocation.
class Biquad {
public:
  /// Lets pass a band of the width `hertz / q` around `hertz`, there unchanged.
  static Biquad BandPass(double hertz, double q, double rate) {
    const Angle a(hertz, q, rate);
    return {a.alpha, 0, -a.alpha, a};
  }
  /// Lets pass what lies above `hertz`, without overshoot (Butterworth).
  static Biquad HighPass(double hertz, double rate) {
    const Angle a(hertz, std::numbers::sqrt2 / 2, rate);
    return {(1 + a.cosine) / 2, -1 - a.cosine, (1 + a.cosine) / 2, a};
  }

  double Process(double in) {
    const double out = b0_ * in + state1_;
    state1_ = b1_ * in - a1_ * out + state2_;
    state2_ = b2_ * in - a2_ * out;
    return out;
  }

private:
  struct Angle {
    Angle(double hertz, double q, double rate)
        : cosine(std::cos(2 * std::numbers::pi * hertz / rate)),
          alpha(std::sin(2 * std::numbers::pi * hertz / rate) / (2 * q)) {}
    double cosine;
    double alpha;
  };
  Biquad(double b0, double b1, double b2, const Angle& a)
      : b0_(b0 / (1 + a.alpha)), b1_(b1 / (1 + a.alpha)), b2_(b2 / (1 + a.alpha)), a1_(-2 * a.cosine / (1 + a.alpha)),
        a2_((1 - a.alpha) / (1 + a.alpha)) {}

  double b0_, b1_, b2_, a1_, a2_;
  double state1_ = 0;
  double state2_ = 0;
};

} // namespace kelmio
