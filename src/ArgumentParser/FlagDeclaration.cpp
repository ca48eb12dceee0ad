#include "ArgumentParser/FlagDeclaration.h"

#include "ArgumentParser/Usage/StringExtensions.h"

namespace argparse {

void updateFlag(const InputKey &key, const std::any &value,
                const std::function<bool(const std::any &)> &equalsValue,
                const InputOrigin &origin, ParsedValues &values,
                bool &hasUpdated, FlagExclusivity exclusivity) {
  if (hasUpdated && exclusivity == FlagExclusivity::exclusive) {
    if (const ParsedValues::Element *previous = values.element(key)) {
      if (!equalsValue(previous->value))
        throw ParserError::duplicateExclusiveValues(
            previous->inputOrigin, origin, values.getOriginalInput());
    }
    values.set(key, value, origin);
  } else if (hasUpdated && exclusivity == FlagExclusivity::chooseFirst) {
    values.update(key, origin, value, [](std::any &) {});
  } else {
    values.set(key, value, origin);
  }
  hasUpdated = true;
}

namespace detail {

// A short name has no room for a prefix, so the prefixed forms keep only the
// long names.
std::vector<Name> prefixedNames(const std::vector<Name> &names,
                                const std::string &prefix) {
  std::vector<Name> result;
  for (const Name &name : names) {
    switch (name.getKind()) {
    case Name::Kind::Long:
      result.push_back(Name::makeLong(
          addingPrefixWithAutodetectedStyle(name.getText(), prefix)));
      break;
    case Name::Kind::LongWithSingleDash:
      result.push_back(Name::makeLongWithSingleDash(
          addingPrefixWithAutodetectedStyle(name.getText(), prefix)));
      break;
    case Name::Kind::Short:
      break;
    }
  }
  return result;
}

} // namespace detail

} // namespace argparse
