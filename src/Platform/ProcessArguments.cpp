#include "Platform/ProcessArguments.h"

#include <fstream>
#include <iterator>

namespace platform {

std::vector<std::string> getProcessArguments() {
  // The kernel keeps the process's arguments NUL-separated.
  std::ifstream in("/proc/self/cmdline", std::ios::binary);
  std::string all((std::istreambuf_iterator<char>(in)),
                  std::istreambuf_iterator<char>());
  std::vector<std::string> arguments;
  std::size_t start = 0;
  while (start < all.size()) {
    std::size_t end = all.find('\0', start);
    if (end == std::string::npos)
      end = all.size();
    arguments.push_back(all.substr(start, end - start));
    start = end + 1;
  }
  if (!arguments.empty())
    arguments.erase(arguments.begin());
  return arguments;
}

} // namespace platform
