#ifndef KESTRUNECLI_ARGUMENTPARSER_PARSING_PARSEDVALUES_H
#define KESTRUNECLI_ARGUMENTPARSER_PARSING_PARSEDVALUES_H

#include "ArgumentParser/Parsing/InputKey.h"
#include "ArgumentParser/Parsing/SplitArguments.h"

#include <any>
#include <functional>
#include <string>
#include <vector>

namespace argparse {

/// The values a parse found, at most one per key, each with the inputs it
/// came from.
class ParsedValues {
public:
  struct Element {
    InputKey key;
    std::any value;
    InputOrigin inputOrigin;
  };
  /// Where the text of a secret value stands on the command line: the last
  /// \p length bytes of the input at \p inputIndex. A value is always a
  /// whole input or, attached with "=", the end of one.
  struct SecretText {
    int inputIndex = 0;
    std::size_t length = 0;
  };

  explicit ParsedValues(std::vector<std::string> originalInput = {})
      : originalInput(std::move(originalInput)) {}

  /// Stores \p element in place of the element of its key, or appends it.
  /// The origins of the replaced element are kept, so that every input used
  /// for the key counts as used.
  void set(Element element);
  void set(const InputKey &key, std::any value, const InputOrigin &origin) {
    set(Element{key, std::move(value), origin});
  }
  /// Where \p key has no element, creates it from \p initial; then runs
  /// \p closure on the value in place. The element's origin takes the union
  /// with \p origin.
  void update(const InputKey &key, const InputOrigin &origin,
              const std::any &initial,
              const std::function<void(std::any &)> &closure);

  /// The element of \p key, or nullptr.
  const Element *element(const InputKey &key) const;
  const std::vector<Element> &getElements() const noexcept { return elements; }
  const std::vector<std::string> &getOriginalInput() const noexcept {
    return originalInput;
  }
  void addSecretText(SecretText text) { secretTexts.push_back(text); }
  /// Every value of a secret option found, repeated ones included.
  const std::vector<SecretText> &getSecretTexts() const noexcept {
    return secretTexts;
  }

private:
  std::vector<Element> elements;
  std::vector<SecretText> secretTexts;
  std::vector<std::string> originalInput;
};

} // namespace argparse

#endif
