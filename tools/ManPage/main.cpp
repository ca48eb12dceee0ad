// kestrunecli-docs <folder>: writes the manual page kestrunecli.1 and the
// completions kestrunecli.bash, _kestrunecli (zsh) and kestrunecli.fish from
// the tool's command declarations, so that they follow every change to them.
#include "ManPage/Model.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <filesystem>
#include <fstream>

namespace {

// The page's date: SOURCE_DATE_EPOCH when set, for reproducible packages,
// else today.
std::string pageDate() {
  std::time_t now = std::time(nullptr);
  if (const char *epoch = std::getenv("SOURCE_DATE_EPOCH"))
    now = static_cast<std::time_t>(std::strtoll(epoch, nullptr, 10));
  char text[16];
  std::tm parts{};
  gmtime_r(&now, &parts);
  std::strftime(text, sizeof text, "%Y-%m-%d", &parts);
  return text;
}

void write(const std::filesystem::path &path, const std::string &text) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << text;
  if (!out.flush())
    throw std::runtime_error("cannot write " + path.string());
}

} // namespace

int main(int argc, char **argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s <output folder>\n", argv[0]);
    return 2;
  }
  try {
    const std::filesystem::path folder = argv[1];
    std::filesystem::create_directories(folder);
    const manpage::Tool tool = manpage::describeTool();
    const std::string &name = tool.root.name;
    write(folder / (name + ".1"),
          manpage::manualPage(tool, KESTRUNECLI_VERSION, pageDate()));
    write(folder / (name + ".bash"), manpage::bashCompletion(tool));
    write(folder / ("_" + name), manpage::zshCompletion(tool));
    write(folder / (name + ".fish"), manpage::fishCompletion(tool));
  } catch (const std::exception &failure) {
    std::fprintf(stderr, "%s: %s\n", argv[0], failure.what());
    return 1;
  }
  return 0;
}
