#include "SecureStore/ItemCodec.h"

#include "Platform/UrlText.h"

#include <limits>
#include <nlohmann/json.hpp>

namespace securestore {

namespace {

using Json = nlohmann::json;

constexpr std::string_view formatName = "kestrune-cli keychain";
constexpr int formatVersion = 1;

struct ValueEncoder {
  Json operator()(bool value) const { return value; }
  Json operator()(std::int64_t value) const { return value; }
  Json operator()(const std::string &value) const { return value; }
  Json operator()(const Bytes &value) const {
    return Json{{"bytes", platform::encodeBase64(toText(value))}};
  }
  Json operator()(const Date &value) const {
    return Json{{"date", std::chrono::duration_cast<std::chrono::microseconds>(
                             value.time_since_epoch())
                             .count()}};
  }
  Json operator()(const AccessControl &value) const {
    return Json{{"accessControl",
                 {{"protection", value.protection}, {"flags", value.flags}}}};
  }
  // Contexts are never stored: the item table refuses them.
  Json operator()(const AuthenticationContextRef &) const { return nullptr; }
};

std::optional<Value> decodeValue(const Json &json) {
  if (json.is_boolean())
    return Value(json.get<bool>());
  if (json.is_number_integer() && !json.is_number_unsigned())
    return Value(json.get<std::int64_t>());
  if (json.is_number_unsigned() &&
      json.get<std::uint64_t>() <=
          static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
    return Value(static_cast<std::int64_t>(json.get<std::uint64_t>()));
  if (json.is_string())
    return Value(json.get<std::string>());
  if (!json.is_object() || json.size() != 1)
    return std::nullopt;
  if (auto bytes = json.find("bytes");
      bytes != json.end() && bytes->is_string()) {
    std::optional<std::string> decoded =
        platform::decodeBase64(bytes->get<std::string>());
    if (!decoded)
      return std::nullopt;
    return Value(toBytes(*decoded));
  }
  if (auto date = json.find("date");
      date != json.end() && date->is_number_integer()) {
    // Microseconds since 1970 that the clock can't hold make no store.
    using std::chrono::microseconds;
    constexpr std::int64_t latest =
        std::chrono::duration_cast<microseconds>(Date::duration::max()).count();
    constexpr std::int64_t earliest =
        std::chrono::duration_cast<microseconds>(Date::duration::min()).count();
    if (date->is_number_unsigned()
            ? date->get<std::uint64_t>() > static_cast<std::uint64_t>(latest)
            : date->get<std::int64_t>() < earliest ||
                  date->get<std::int64_t>() > latest)
      return std::nullopt;
    return Value(Date(std::chrono::duration_cast<Date::duration>(
        microseconds(date->get<std::int64_t>()))));
  }
  if (auto control = json.find("accessControl");
      control != json.end() && control->is_object()) {
    auto protection = control->find("protection");
    auto flags = control->find("flags");
    if (protection == control->end() || !protection->is_string() ||
        flags == control->end() || !flags->is_number_unsigned())
      return std::nullopt;
    return Value(AccessControl{protection->get<std::string>(),
                               flags->get<std::uint64_t>()});
  }
  return std::nullopt;
}

Json encodeDictionary(const Dictionary &attributes) {
  Json object = Json::object();
  for (const auto &[key, value] : attributes)
    object[key] = std::visit(ValueEncoder{}, value);
  return object;
}

std::optional<Dictionary> decodeDictionary(const Json &json) {
  if (!json.is_object())
    return std::nullopt;
  Dictionary attributes;
  for (const auto &[key, value] : json.items()) {
    std::optional<Value> decoded = decodeValue(value);
    if (!decoded)
      return std::nullopt;
    attributes.emplace(key, std::move(*decoded));
  }
  return attributes;
}

} // namespace

std::string encodeStore(const std::vector<StoredItem> &items) {
  Json list = Json::array();
  for (const StoredItem &item : items)
    list.push_back(
        {{"id", item.id}, {"attributes", encodeDictionary(item.attributes)}});
  Json document = {
      {"format", formatName}, {"version", formatVersion}, {"items", list}};
  return document.dump(1) + "\n";
}

OSStatus decodeStore(std::string_view text, std::vector<StoredItem> &items) {
  const OSStatus invalid = Status(Status::Case::invalidKeychain).rawValue();
  Json document = Json::parse(text, nullptr, /*allow_exceptions=*/false);
  if (document.is_discarded() || !document.is_object())
    return invalid;
  auto format = document.find("format");
  auto version = document.find("version");
  auto list = document.find("items");
  if (format == document.end() || *format != formatName ||
      version == document.end() || !version->is_number_integer())
    return invalid;
  if (version->get<std::int64_t>() != formatVersion)
    return Status(Status::Case::wrongSecVersion).rawValue();
  if (list == document.end() || !list->is_array())
    return invalid;
  std::vector<StoredItem> decoded;
  for (const Json &entry : *list) {
    if (!entry.is_object())
      return invalid;
    auto id = entry.find("id");
    auto attributes = entry.find("attributes");
    if (id == entry.end() || !id->is_string() || attributes == entry.end())
      return invalid;
    std::optional<Dictionary> dictionary = decodeDictionary(*attributes);
    if (!dictionary)
      return invalid;
    decoded.push_back({id->get<std::string>(), std::move(*dictionary)});
  }
  items = std::move(decoded);
  return 0;
}

std::string encodeAttributes(const Dictionary &attributes) {
  return encodeDictionary(attributes).dump();
}

std::optional<Dictionary> decodeAttributes(std::string_view text) {
  Json json = Json::parse(text, nullptr, /*allow_exceptions=*/false);
  if (json.is_discarded())
    return std::nullopt;
  return decodeDictionary(json);
}

} // namespace securestore
