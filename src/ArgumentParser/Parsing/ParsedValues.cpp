#include "ArgumentParser/Parsing/ParsedValues.h"

#include <algorithm>

namespace argparse {

void ParsedValues::set(Element element) {
  auto it =
      std::find_if(elements.begin(), elements.end(),
                   [&](const Element &e) { return e.key == element.key; });
  if (it == elements.end()) {
    elements.push_back(std::move(element));
    return;
  }
  // Merge the smaller origin into the larger one: repeated options keep
  // adding one index to a growing set.
  if (element.inputOrigin.getElements().size() <
      it->inputOrigin.getElements().size())
    std::swap(element.inputOrigin, it->inputOrigin);
  element.inputOrigin.formUnion(it->inputOrigin);
  *it = std::move(element);
}

void ParsedValues::update(const InputKey &key, const InputOrigin &origin,
                          const std::any &initial,
                          const std::function<void(std::any &)> &closure) {
  auto it = std::find_if(elements.begin(), elements.end(),
                         [&](const Element &e) { return e.key == key; });
  if (it == elements.end()) {
    elements.push_back(Element{key, initial, {}});
    it = std::prev(elements.end());
  }
  closure(it->value);
  it->inputOrigin.formUnion(origin);
}

const ParsedValues::Element *ParsedValues::element(const InputKey &key) const {
  auto it = std::find_if(elements.begin(), elements.end(),
                         [&](const Element &e) { return e.key == key; });
  return it == elements.end() ? nullptr : &*it;
}

} // namespace argparse
