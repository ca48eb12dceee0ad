#include "Platform/FileAccess.h"

#include <cstdio>
#include <unistd.h>

namespace platform {

bool isReadable(const std::filesystem::path &path) {
  return ::access(path.c_str(), R_OK) == 0;
}

std::vector<std::uint8_t> readFileBytes(const std::filesystem::path &path) {
  std::vector<std::uint8_t> bytes;
  std::FILE *file = std::fopen(path.c_str(), "rb");
  if (!file)
    return bytes;
  std::uint8_t buffer[4096];
  std::size_t count;
  while ((count = std::fread(buffer, 1, sizeof buffer, file)) > 0)
    bytes.insert(bytes.end(), buffer, buffer + count);
  std::fclose(file);
  return bytes;
}

} // namespace platform
