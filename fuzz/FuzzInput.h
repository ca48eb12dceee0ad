#ifndef KESTRUNECLI_FUZZ_FUZZINPUT_H
#define KESTRUNECLI_FUZZ_FUZZINPUT_H

// A fuzz input taken apart into values. It decodes bytes exactly as
// libFuzzer's FuzzedDataProvider does, so that the seeds in corpus/ mean the
// same inputs whether a target is built with clang's libFuzzer or replayed by
// ReplayMain.cpp with any compiler: texts are read from the front, numbers
// and choices from the back.

#include <climits>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <type_traits>

namespace fuzzsupport {

class FuzzInput {
public:
  FuzzInput(const std::uint8_t *data, std::size_t size)
      : data(data), size(size) {}

  /// A number in [\p min, \p max] from up to sizeof(T) bytes taken off the
  /// end, last byte first; \p min once the input is used up.
  template <typename T> T takeIntegralInRange(T min, T max) {
    static_assert(std::is_integral_v<T> && sizeof(T) <= sizeof(std::uint64_t));
    const std::uint64_t range =
        static_cast<std::uint64_t>(max) - static_cast<std::uint64_t>(min);
    std::uint64_t result = 0;
    for (std::size_t bits = 0;
         bits < sizeof(T) * CHAR_BIT && (range >> bits) > 0 && size > 0;
         bits += CHAR_BIT)
      result = (result << CHAR_BIT) | data[--size];
    if (range != std::numeric_limits<std::uint64_t>::max())
      result %= range + 1;
    return static_cast<T>(static_cast<std::uint64_t>(min) + result);
  }

  template <typename T> T takeIntegral() {
    return takeIntegralInRange(std::numeric_limits<T>::min(),
                               std::numeric_limits<T>::max());
  }

  bool takeBool() { return takeIntegral<std::uint8_t>() & 1; }

  template <typename T, std::size_t n> T pick(const T (&values)[n]) {
    static_assert(n > 0);
    return values[takeIntegralInRange<std::size_t>(0, n - 1)];
  }

  /// Up to \p maxLength characters from the front. A backslash ends the
  /// text unless another one follows it, which gives one backslash: inserting
  /// bytes lengthens the text rather than shifting what comes after it.
  std::string takeText(std::size_t maxLength) {
    std::string text;
    for (std::size_t i = 0; i < maxLength && size > 0; ++i) {
      char next = takeFront();
      if (next == '\\' && size > 0 && (next = takeFront()) != '\\')
        break;
      text += next;
    }
    return text;
  }

  std::string takeRemainingText() {
    std::string text(reinterpret_cast<const char *>(data), size);
    data += size;
    size = 0;
    return text;
  }

private:
  char takeFront() {
    --size;
    return static_cast<char>(*data++);
  }

  const std::uint8_t *data;
  std::size_t size;
};

} // namespace fuzzsupport

#endif
