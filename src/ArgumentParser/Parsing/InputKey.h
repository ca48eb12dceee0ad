#ifndef KESTRUNECLI_ARGUMENTPARSER_PARSING_INPUTKEY_H
#define KESTRUNECLI_ARGUMENTPARSER_PARSING_INPUTKEY_H

#include <string>
#include <string_view>

namespace argparse {

/// The key of a declared argument: the field's label without one leading "_".
struct InputKey {
  std::string rawValue;

  /// The key for the label \p label.
  static InputKey fromLabel(std::string_view label) {
    if (!label.empty() && label.front() == '_')
      label.remove_prefix(1);
    return InputKey{std::string(label)};
  }
  /// The reserved key of the "--" terminator.
  static InputKey terminator() { return InputKey{"__terminator"}; }

  friend bool operator==(const InputKey &, const InputKey &) = default;
};

} // namespace argparse

#endif
