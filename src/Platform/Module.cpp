#include "Platform/Module.h"

#include <algorithm>
#include <filesystem>
#include <vector>

#include <dlfcn.h>

namespace platform {
namespace {

namespace fs = std::filesystem;

// Where a module may lie: relative to the program's own folder as installed,
// and where the build put it when the program runs from the build tree.
std::vector<fs::path> moduleCandidates(std::string_view file) {
  std::error_code error;
  fs::path program = fs::read_symlink("/proc/self/exe", error);
  if (error)
    return {};
  std::vector<fs::path> candidates;
#ifdef KESTRUNE_MODULE_FROM_BINDIR
  candidates.push_back(
      (program.parent_path() / KESTRUNE_MODULE_FROM_BINDIR / file)
          .lexically_normal());
#endif
#ifdef KESTRUNE_BUILD_TREE
  fs::path buildTree = KESTRUNE_BUILD_TREE;
  if (std::mismatch(buildTree.begin(), buildTree.end(), program.begin(),
                    program.end())
          .first == buildTree.end())
    candidates.push_back(fs::path(KESTRUNE_MODULE_BUILD_DIR) / file);
#endif
  return candidates;
}

} // namespace

// A module stays loaded: the libraries behind one (GLib among them) can't be
// unloaded, and a second dlopen of the same file gives the same handle.
void *findModuleEntry(std::string_view file, const char *symbol,
                      std::string &problem) {
  problem = "the module " + std::string(file) + " is not installed";
  for (const fs::path &candidate : moduleCandidates(file)) {
    std::error_code error;
    if (!fs::exists(candidate, error))
      continue;
    void *module = ::dlopen(candidate.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!module) {
      const char *why = ::dlerror();
      problem = why ? why : "cannot load " + candidate.string();
      continue;
    }
    if (void *entry = ::dlsym(module, symbol))
      return entry;
    problem = candidate.string() + " lacks " + symbol;
  }
  return nullptr;
}

} // namespace platform
