#include "SecureStore/Dictionary.h"

#include <ctime>

namespace securestore {

AuthenticationContext::~AuthenticationContext() = default;

Bytes toBytes(std::string_view text) { return Bytes(text.begin(), text.end()); }

std::string toText(const Bytes &bytes) {
  return std::string(bytes.begin(), bytes.end());
}

namespace {

std::string printDate(const Date &date) {
  std::time_t seconds = std::chrono::system_clock::to_time_t(date);
  std::tm parts{};
  gmtime_r(&seconds, &parts);
  char text[40];
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S +0000", &parts);
  return text;
}

struct ValuePrinter {
  std::string operator()(bool value) const { return value ? "true" : "false"; }
  std::string operator()(std::int64_t value) const {
    return std::to_string(value);
  }
  std::string operator()(const std::string &value) const {
    return "\"" + value + "\"";
  }
  std::string operator()(const Bytes &value) const {
    return std::to_string(value.size()) + " bytes";
  }
  std::string operator()(const Date &value) const { return printDate(value); }
  std::string operator()(const AccessControl &value) const {
    return "<AccessControl protection: " + value.protection +
           ", flags: " + std::to_string(value.flags) + ">";
  }
  std::string operator()(const AuthenticationContextRef &value) const {
    return value ? "<AuthenticationContext>" : "nil";
  }
};

} // namespace

std::string printValue(const Value &value) {
  return std::visit(ValuePrinter{}, value);
}

std::string printDictionary(const Dictionary &dictionary) {
  if (dictionary.empty())
    return "[:]";
  std::string text = "[";
  bool first = true;
  for (const auto &[key, value] : dictionary) {
    if (!first)
      text += ", ";
    first = false;
    text += "\"" + key + "\": " + printValue(value);
  }
  return text + "]";
}

std::string printDictionaries(const std::vector<Dictionary> &dictionaries) {
  std::string text = "[";
  bool first = true;
  for (const Dictionary &dictionary : dictionaries) {
    if (!first)
      text += ", ";
    first = false;
    text += printDictionary(dictionary);
  }
  return text + "]";
}

} // namespace securestore
