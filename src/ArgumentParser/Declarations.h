#ifndef KESTRUNECLI_ARGUMENTPARSER_DECLARATIONS_H
#define KESTRUNECLI_ARGUMENTPARSER_DECLARATIONS_H

// The rows of an argument table. Each function takes the field as a member
// pointer and its label, and returns a declaration that the table converts
// to a descriptor:
//
//   static argparse::Arguments<Upload> arguments() {
//     using namespace argparse;
//     return {
//         option(&Upload::installerPath, "installerPath")
//             .name(shortAndLong)
//             .help("Path to an installer"),
//         flag(&Upload::verbose, "verbose"),
//     };
//   }
//
// The field's type decides the shape: `T` is required unless a default is
// given, `std::optional<T>` is optional, `std::vector<T>` repeats; a `bool`
// flag is a switch, an `int` flag counts, an enumeration flag picks a case.
// Options and positional arguments are declared in ValueDeclaration.h, flags
// in FlagDeclaration.h, on the builder of DeclarationBuilder.h.

#include "ArgumentParser/CommandType.h"
#include "ArgumentParser/FlagDeclaration.h"
#include "ArgumentParser/ValueDeclaration.h"

#include <memory>
#include <string>
#include <utility>

namespace argparse {

/// Another parsable type whose arguments are spliced in at this place.
template <typename T, typename G> class OptionGroupDeclaration {
public:
  OptionGroupDeclaration(G T::*member, std::string label)
      : member(member), label(std::move(label)) {}

  operator ArgumentDescriptor<T>() const {
    G T::*field = member;
    return ArgumentDescriptor<T>{
        label, [](const InputKey &) { return detail::argumentSetOf<G>(); },
        [field](T &object, ArgumentDecoder &decoder, const InputKey &) {
          // A group of the same type decoded by a parent level is reused, so
          // that values given before the subcommand reach it.
          for (const DecodedArguments &previous :
               decoder.getPreviouslyDecoded()) {
            if (previous.type == &commandType<G>()) {
              object.*field = *std::static_pointer_cast<G>(previous.value);
              return;
            }
          }
          std::shared_ptr<G> value = detail::decodeValue<G>(decoder);
          object.*field = *value;
          decoder.getPreviouslyDecoded().push_back(
              DecodedArguments{&commandType<G>(), value});
        }};
  }

private:
  G T::*member;
  std::string label;
};

template <typename T, typename V>
OptionDeclaration<T, V> option(V T::*member, std::string label) {
  return OptionDeclaration<T, V>(member, std::move(label));
}

template <typename T, typename V>
FlagDeclaration<T, V> flag(V T::*member, std::string label) {
  return FlagDeclaration<T, V>(member, std::move(label));
}

template <typename T, typename V>
ArgumentDeclaration<T, V> argument(V T::*member, std::string label) {
  return ArgumentDeclaration<T, V>(member, std::move(label));
}

template <typename T, typename G>
OptionGroupDeclaration<T, G> optionGroup(G T::*member, std::string label) {
  return OptionGroupDeclaration<T, G>(member, std::move(label));
}

} // namespace argparse

#endif
