#include "Platform/PropertyList.h"

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <limits>
#include <memory>

#include <plist/plist.h>

namespace platform {
namespace {

struct PlistDeleter {
  void operator()(plist_t node) const noexcept { plist_free(node); }
};
using PlistPointer = std::unique_ptr<void, PlistDeleter>;

struct MallocDeleter {
  void operator()(char *text) const noexcept { std::free(text); }
};

} // namespace

std::optional<std::string>
readPropertyListString(const std::filesystem::path &path,
                       const std::string &key) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error))
    return std::nullopt;
  std::ifstream in(path, std::ios::binary);
  if (!in)
    return std::nullopt;
  std::string bytes((std::istreambuf_iterator<char>(in)),
                    std::istreambuf_iterator<char>());
  if (bytes.empty() || bytes.size() > std::numeric_limits<std::uint32_t>::max())
    return std::nullopt;

  plist_t root = nullptr;
  plist_from_memory(bytes.data(), static_cast<std::uint32_t>(bytes.size()),
                    &root);
  PlistPointer owner(root);
  if (!root || plist_get_node_type(root) != PLIST_DICT)
    return std::nullopt;
  plist_t item = plist_dict_get_item(root, key.c_str());
  if (!item || plist_get_node_type(item) != PLIST_STRING)
    return std::nullopt;
  char *value = nullptr;
  plist_get_string_val(item, &value);
  std::unique_ptr<char, MallocDeleter> valueOwner(value);
  if (!value)
    return std::nullopt;
  return std::string(value);
}

} // namespace platform
