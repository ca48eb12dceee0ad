#ifndef KESTRUNECLI_ARGUMENTPARSER_PARSING_ARGUMENTDECODER_H
#define KESTRUNECLI_ARGUMENTPARSER_PARSING_ARGUMENTDECODER_H

#include "ArgumentParser/Parsing/InputKey.h"
#include "ArgumentParser/Parsing/ParsedValues.h"
#include "ArgumentParser/Parsing/SplitArguments.h"

#include <exception>
#include <memory>
#include <vector>

namespace argparse {

class CommandType;
class ParsableArguments;

/// A value built by an earlier level of the parse, with its type.
struct DecodedArguments {
  const CommandType *type = nullptr;
  std::shared_ptr<ParsableArguments> value;
};

/// Failures of the decoding layer; they never reach users as such.
struct InternalParseError : std::exception {
  enum class Kind {
    wrongType,
    subcommandLevelMismatch,
    subcommandLevelMissing,
    subcommandLevelDuplicated,
    subcommandNameMismatch,
    expectedCommandButNoneFound,
  };
  Kind kind;
  InputKey key;

  InternalParseError(Kind kind, InputKey key = {})
      : kind(kind), key(std::move(key)) {}
  const char *what() const noexcept override {
    return "internal error while decoding the parsed values";
  }
};

/// Reads parsed values by key while a command's fields are filled, and
/// records the inputs they came from.
class ArgumentDecoder {
public:
  ArgumentDecoder(const ParsedValues &values,
                  std::vector<DecodedArguments> previouslyDecoded)
      : values(values), previouslyDecoded(std::move(previouslyDecoded)) {}

  /// The element of \p key, or nullptr; its origin counts as used.
  const ParsedValues::Element *element(const InputKey &key) {
    const ParsedValues::Element *found = values.element(key);
    if (found)
      usedOrigins.formUnion(found->inputOrigin);
    return found;
  }
  const InputOrigin &getUsedOrigins() const noexcept { return usedOrigins; }
  /// Values of earlier levels; argument groups decoded now are appended.
  std::vector<DecodedArguments> &getPreviouslyDecoded() noexcept {
    return previouslyDecoded;
  }

private:
  const ParsedValues &values;
  InputOrigin usedOrigins;
  std::vector<DecodedArguments> previouslyDecoded;
};

} // namespace argparse

#endif
