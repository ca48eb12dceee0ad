#include "ArgumentParser/NameSpecification.h"

#include "ArgumentParser/Usage/StringExtensions.h"
#include "Platform/Graphemes.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace argparse {

NameElement NameElement::customLong(std::string text, bool withSingleDash) {
  NameElement element(Kind::CustomLong);
  element.text = std::move(text);
  element.withSingleDash = withSingleDash;
  return element;
}

NameElement NameElement::customShort(std::string character) {
  NameElement element(Kind::CustomShort);
  element.text = std::move(character);
  return element;
}

Name NameElement::makeName(const InputKey &key) const {
  switch (kind) {
  case Kind::Long:
    return Name::makeLong(convertedToSnakeCase(key.rawValue, "-"));
  case Kind::CustomLong:
    return withSingleDash ? Name::makeLongWithSingleDash(text)
                          : Name::makeLong(text);
  case Kind::Short: {
    std::vector<std::string_view> characters =
        platform::splitGraphemes(key.rawValue);
    if (characters.empty()) {
      std::fprintf(stderr,
                   "Key '%s' has not characters to form short option name.\n",
                   key.rawValue.c_str());
      std::abort();
    }
    return Name::makeShort(std::string(characters.front()));
  }
  case Kind::CustomShort:
    return Name::makeShort(text);
  }
  return Name::makeLong(text);
}

NameSpecification::NameSpecification(std::initializer_list<NameElement> list) {
  for (const NameElement &element : list)
    if (std::find(elements.begin(), elements.end(), element) == elements.end())
      elements.push_back(element);
}

std::vector<Name> NameSpecification::makeNames(const InputKey &key) const {
  std::vector<Name> names;
  for (const NameElement &element : elements)
    names.push_back(element.makeName(key));
  return names;
}

} // namespace argparse
