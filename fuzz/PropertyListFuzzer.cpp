// The version property list of the installed application, XML or binary,
// read from a file. Any bytes: no crash, and the same answer on every read.
// A list that libplist writes with a version text in it: the reader gives
// that text back (printable ASCII in XML; any ASCII in binary, where the
// reader takes every byte the list gives, NUL included).

#include "FuzzSupport.h"
#include "Platform/PropertyList.h"

#include <plist/plist.h>

#include <cstdint>
#include <cstdlib>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

using fuzzsupport::require;

namespace {

const std::string key = "CFBundleShortVersionString";

// One file in memory, rewritten for every input.
const std::string &listPath() {
  static const std::string path = [] {
    int fd = ::memfd_create("Info.plist", MFD_CLOEXEC);
    if (fd < 0)
      fuzzsupport::violated("memfd_create");
    return "/proc/self/fd/" + std::to_string(fd);
  }();
  return path;
}

std::optional<std::string> readBack(const std::string &bytes) {
  const std::string &path = listPath();
  int fd = std::atoi(path.c_str() + std::string("/proc/self/fd/").size());
  if (::ftruncate(fd, 0) != 0 || ::pwrite(fd, bytes.data(), bytes.size(), 0) !=
                                     static_cast<ssize_t>(bytes.size()))
    fuzzsupport::violated("writing the list");
  return platform::readPropertyListString(path, key);
}

std::string written(const std::string &version, bool binary) {
  plist_t dictionary = plist_new_dict();
  plist_dict_set_item(dictionary, "CFBundleName", plist_new_string("Kestrune"));
  plist_dict_set_item(dictionary, key.c_str(),
                      plist_new_string(version.c_str()));
  char *bytes = nullptr;
  std::uint32_t length = 0;
  if (binary)
    plist_to_bin(dictionary, &bytes, &length);
  else
    plist_to_xml(dictionary, &bytes, &length);
  std::string list(bytes, length);
  std::free(bytes);
  plist_free(dictionary);
  return list;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data,
                                      std::size_t size) {
  if (size == 0)
    return 0;
  std::string rest(reinterpret_cast<const char *>(data) + 1, size - 1);
  switch (data[0] % 4) {
  case 0: { // a version written by libplist
    const bool binary = data[0] & 4;
    std::string version;
    for (char c : rest)
      if (c > 0x1f && c < 0x7f)
        version += c;
    require(readBack(written(version, binary)) == version,
            "a written version reads back");
    return 0;
  }
  default: { // any bytes
    const std::optional<std::string> first = readBack(rest);
    require(readBack(rest) == first, "the same answer on every read");
    return 0;
  }
  }
}
