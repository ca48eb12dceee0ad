#ifndef KESTRUNECLI_SPINNER_SPINNERPATTERN_H
#define KESTRUNECLI_SPINNER_SPINNERPATTERN_H

#include <string>
#include <vector>

namespace spinner {

/// What a Spinner animates: frames in drawing order and the seconds each
/// stands on the screen.
class SpinnerPattern {
public:
  virtual ~SpinnerPattern();
  [[nodiscard]] virtual const std::vector<std::string> &getFrames() const = 0;
  [[nodiscard]] virtual double getSpeed() const = 0;
};

} // namespace spinner

#endif
