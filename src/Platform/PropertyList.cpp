#include "Platform/PropertyList.h"

#include "Platform/Module.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <string_view>

namespace platform {
namespace {

// The module that reads lists with libplist: the text at a key of the top
// dictionary, passed to a sink.
extern "C" {
typedef void ListTextSink(void *context, const char *text, std::size_t size);
typedef int ReadListString(const char *bytes, std::size_t size,
                           const char *key, void *context, ListTextSink *found);
}
constexpr char listModule[] = "kestrune-property-list.so";
constexpr char listEntry[] = "kestruneReadListString";

ReadListString *loadListReader() {
  static ReadListString *const reader = [] {
    std::string problem;
    return reinterpret_cast<ReadListString *>(
        findModuleEntry(listModule, listEntry, problem));
  }();
  return reader;
}

constexpr std::string_view binaryMagic = "bplist00";
constexpr std::size_t binaryTrailerSize = 32;

// The unsigned big-endian number of \p size bytes at \p at.
std::optional<std::uint64_t> bigEndian(std::string_view bytes, std::uint64_t at,
                                       std::uint64_t size) {
  if (size == 0 || size > 8 || at > bytes.size() || bytes.size() - at < size)
    return std::nullopt;
  std::uint64_t value = 0;
  for (std::uint64_t i = 0; i < size; ++i)
    value = value << 8 | static_cast<unsigned char>(bytes[at + i]);
  return value;
}

// One object of a binary list: its type (the marker's high four bits), its
// count (bytes of an ASCII string, entries of a dictionary) and where its
// contents begin.
struct BinaryObject {
  unsigned type = 0;
  std::uint64_t count = 0;
  std::uint64_t contents = 0;
};

// Just enough of the binary format to find an ASCII string in the top
// dictionary. libplist measures such a string up to its first NUL; this
// reads all the bytes the list gives it.
class BinaryList {
public:
  explicit BinaryList(std::string_view bytes) : bytes(bytes) {
    if (bytes.size() < binaryMagic.size() + binaryTrailerSize ||
        bytes.substr(0, binaryMagic.size()) != binaryMagic)
      return;
    const std::uint64_t trailer = bytes.size() - binaryTrailerSize;
    offsetSize = static_cast<unsigned char>(bytes[trailer + 6]);
    referenceSize = static_cast<unsigned char>(bytes[trailer + 7]);
    objectCount = bigEndian(bytes, trailer + 8, 8).value_or(0);
    top = bigEndian(bytes, trailer + 16, 8).value_or(0);
    tableOffset = bigEndian(bytes, trailer + 24, 8).value_or(0);
  }

  std::optional<std::string> asciiValue(std::string_view key) const {
    std::optional<BinaryObject> dictionary = object(top);
    if (!dictionary || dictionary->type != 0xD)
      return std::nullopt;
    const std::uint64_t entries = dictionary->count;
    if (entries > bytes.size())
      return std::nullopt;
    for (std::uint64_t i = 0; i < entries; ++i) {
      std::optional<std::string_view> name =
          ascii(reference(dictionary->contents, i));
      if (!name || *name != key)
        continue;
      if (std::optional<std::string_view> value =
              ascii(reference(dictionary->contents, entries + i)))
        return std::string(*value);
      return std::nullopt;
    }
    return std::nullopt;
  }

private:
  std::optional<std::uint64_t> reference(std::uint64_t at,
                                         std::uint64_t index) const {
    if (referenceSize == 0 || index > bytes.size() / referenceSize)
      return std::nullopt;
    return bigEndian(bytes, at + index * referenceSize, referenceSize);
  }

  std::optional<BinaryObject> object(std::optional<std::uint64_t> ref) const {
    if (!ref || *ref >= objectCount || offsetSize == 0 ||
        *ref > bytes.size() / offsetSize)
      return std::nullopt;
    std::optional<std::uint64_t> offset =
        bigEndian(bytes, tableOffset + *ref * offsetSize, offsetSize);
    if (!offset || *offset >= bytes.size())
      return std::nullopt;
    const auto marker = static_cast<unsigned char>(bytes[*offset]);
    BinaryObject found{static_cast<unsigned>(marker >> 4u), marker & 0xFu,
                       *offset + 1};
    if (found.count == 0xF) {
      // The count follows as an integer object of 2^n bytes.
      std::optional<std::uint64_t> integer =
          bigEndian(bytes, found.contents, 1);
      if (!integer || (*integer >> 4u) != 1 || (*integer & 0xFu) > 3)
        return std::nullopt;
      const std::uint64_t size = std::uint64_t{1} << (*integer & 0xFu);
      std::optional<std::uint64_t> count =
          bigEndian(bytes, found.contents + 1, size);
      if (!count)
        return std::nullopt;
      found.count = *count;
      found.contents += 1 + size;
    }
    return found;
  }

  std::optional<std::string_view>
  ascii(std::optional<std::uint64_t> ref) const {
    std::optional<BinaryObject> found = object(ref);
    if (!found || found->type != 0x5 || found->contents > bytes.size() ||
        bytes.size() - found->contents < found->count)
      return std::nullopt;
    return bytes.substr(found->contents, found->count);
  }

  std::string_view bytes;
  unsigned offsetSize = 0;
  unsigned referenceSize = 0;
  std::uint64_t objectCount = 0;
  std::uint64_t top = 0;
  std::uint64_t tableOffset = 0;
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
  if (bytes.empty())
    return std::nullopt;

  ReadListString *reader = loadListReader();
  std::string text;
  if (!reader ||
      !reader(bytes.data(), bytes.size(), key.c_str(), &text,
              [](void *context, const char *value, std::size_t size) {
                static_cast<std::string *>(context)->assign(value, size);
              }))
    return std::nullopt;
  if (bytes.compare(0, binaryMagic.size(), binaryMagic) != 0) {
    // XML holds no NUL, but libplist keeps raw NUL bytes of a file that has
    // them (and plist_get_string_val then fails an assertion): the text is
    // what comes before the first one.
    text.resize(std::min(text.size(), text.find('\0')));
    return text;
  }
  // A NUL in an ASCII string ends libplist's copy of it; the whole string is
  // taken from the list when it begins with that copy.
  std::optional<std::string> whole = BinaryList(bytes).asciiValue(key);
  if (whole && whole->size() > text.size() &&
      whole->compare(0, text.size(), text) == 0 &&
      (*whole)[text.size()] == '\0')
    return whole;
  return text;
}

} // namespace platform
