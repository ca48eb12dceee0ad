// Runs a fuzz target on saved inputs, without libFuzzer, with any compiler:
// `<Name>Replay PATH...` calls LLVMFuzzerInitialize once when the target
// defines it, then LLVMFuzzerTestOneInput on each file named, and on each
// file in each folder named, in order of their names. Each input is read as
// bytes into a buffer of its exact size, so the sanitizers see a read past
// its end. A crash or a broken invariant ends the run, after the input's
// path has been written to standard error; exit status 2 means that a path
// could not be read or that the paths held no input at all.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <vector>

extern "C" __attribute__((weak)) int LLVMFuzzerInitialize(int *argc,
                                                          char ***argv);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data,
                                      std::size_t size);

namespace {

namespace fs = std::filesystem;

// The files that \p path names: itself, or a folder's files sorted by name.
std::vector<fs::path> inputsAt(const fs::path &path) {
  if (!fs::is_directory(path))
    return {path};
  std::vector<fs::path> files;
  for (const fs::directory_entry &entry : fs::directory_iterator(path))
    if (entry.is_regular_file())
      files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  return files;
}

bool replay(const fs::path &file) {
  std::ifstream stream(file, std::ios::binary);
  if (!stream) {
    std::fprintf(stderr, "cannot read %s\n", file.c_str());
    return false;
  }
  const std::vector<char> bytes(std::istreambuf_iterator<char>(stream), {});
  auto input = std::make_unique<std::uint8_t[]>(bytes.size());
  std::copy(bytes.begin(), bytes.end(), input.get());
  std::fprintf(stderr, "%s\n", file.c_str());
  LLVMFuzzerTestOneInput(input.get(), bytes.size());
  return true;
}

} // namespace

int main(int argc, char **argv) {
  if (LLVMFuzzerInitialize)
    LLVMFuzzerInitialize(&argc, &argv);
  std::size_t count = 0;
  for (int i = 1; i < argc; ++i)
    for (const fs::path &file : inputsAt(argv[i])) {
      if (!replay(file))
        return 2;
      ++count;
    }
  std::fprintf(stderr, "replayed %zu inputs\n", count);
  return count > 0 ? 0 : 2;
}
