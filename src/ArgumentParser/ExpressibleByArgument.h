#ifndef KESTRUNECLI_ARGUMENTPARSER_EXPRESSIBLEBYARGUMENT_H
#define KESTRUNECLI_ARGUMENTPARSER_EXPRESSIBLEBYARGUMENT_H

#include "ArgumentParser/ArgumentHelp.h"

#include <charconv>
#include <concepts>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

namespace argparse {

/// How a value type is read from one command-line string and shown as a
/// default in help. Specialize it for your own types (an enumeration with
/// text values, say): `fromArgument` gives nothing for text it can't read.
template <typename T> struct ExpressibleByArgument;

template <> struct ExpressibleByArgument<std::string> {
  static std::optional<std::string> fromArgument(const std::string &text) {
    return text;
  }
  static std::string defaultValueDescription(const std::string &value) {
    return value;
  }
};

template <> struct ExpressibleByArgument<bool> {
  static std::optional<bool> fromArgument(const std::string &text) {
    if (text == "true")
      return true;
    if (text == "false")
      return false;
    return std::nullopt;
  }
  static std::string defaultValueDescription(bool value) {
    return value ? "true" : "false";
  }
};

template <std::integral T>
requires(!std::is_same_v<T, bool>) struct ExpressibleByArgument<T> {
  static std::optional<T> fromArgument(const std::string &text) {
    std::string_view digits = text;
    if (digits.size() > 1 && digits.front() == '+' && digits[1] != '-')
      digits.remove_prefix(1);
    T value{};
    auto [end, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (error != std::errc() || end != digits.data() + digits.size() ||
        digits.empty())
      return std::nullopt;
    return value;
  }
  static std::string defaultValueDescription(T value) {
    return std::to_string(value);
  }
};

template <std::floating_point T> struct ExpressibleByArgument<T> {
  static std::optional<T> fromArgument(const std::string &text) {
    std::string_view digits = text;
    if (digits.size() > 1 && digits.front() == '+' && digits[1] != '-')
      digits.remove_prefix(1);
    T value{};
    auto [end, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (error != std::errc() || end != digits.data() + digits.size() ||
        digits.empty())
      return std::nullopt;
    return value;
  }
  static std::string defaultValueDescription(T value) {
    char buffer[64];
    auto [end, error] = std::to_chars(buffer, buffer + sizeof buffer, value);
    std::string text(buffer, error == std::errc() ? end : buffer);
    if (text.find_first_of(".einfa") == std::string::npos)
      text += ".0";
    return text;
  }
};

/// One case of an enumerated flag: its value, the case name that gives the
/// flag's name (as the key of `names`), and optional help.
template <typename E> struct FlagCase {
  E value;
  std::string caseName;
  std::optional<ArgumentHelp> help = std::nullopt;
};

/// The cases of an enumeration used as a flag. Specialize it with
/// `static std::vector<FlagCase<E>> allCases()`; optionally also
/// `static NameSpecification name(E)` (default: the long name).
template <typename E> struct EnumerableFlag;

} // namespace argparse

#endif
