// Uploads one large installer through the whole kestrunecli process against
// the console simulator on loopback, and the same file to the same route with
// curl, and prints the wall time and peak resident memory of each.
//
//   UploadE2eBench [--size-mib N] [--runs N] [--curl PATH]
//
// The installer is a sparse file in a temporary directory, so the disk is
// barely touched and the numbers measure the client. The simulator runs in
// this process and counts the bytes without hashing them.
//
// Linux counts into a process's peak memory the memory of the process that
// started it as it was when the program was executed, so a program started
// from here would be charged with this process and its simulator. Each one
// is therefore started by a small launcher (this program again, with
// --launch) that measures the program alone.

#include "KestruneCLI/Config/ConfigController.h"
#include "MockConsole/MockConsole.h"
#include "SecureStore/FileItemStore.h"
#include "SecureStore/Keychain.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace {

namespace fs = std::filesystem;

struct Measure {
  double seconds = 0;
  long peakRssKib = 0;
  int exitCode = -1;
};

// The launcher: runs \p argv (with this process's environment), standard
// output and error to /dev/null, and prints its wall time, peak memory and
// exit code on one line. Started fresh, it is small, and fork copies little
// of it into the program's count.
int launch(char **argv) {
  auto start = std::chrono::steady_clock::now();
  pid_t pid = fork();
  if (pid == 0) {
    int null = ::open("/dev/null", O_WRONLY);
    ::dup2(null, 1);
    ::dup2(null, 2);
    ::execv(argv[0], argv);
    ::_exit(127);
  }
  int status = 0;
  struct rusage usage {};
  if (pid < 0 || wait4(pid, &status, 0, &usage) != pid)
    return 1;
  std::printf(
      "%f %ld %d\n",
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start)
          .count(),
      usage.ru_maxrss, WIFEXITED(status) ? WEXITSTATUS(status) : -1);
  return 0;
}

// Runs \p argv with \p env through the launcher and reads its measure.
Measure runMeasured(const std::vector<std::string> &argv,
                    const std::vector<std::string> &env) {
  std::vector<std::string> launched = {"/proc/self/exe", "--launch"};
  launched.insert(launched.end(), argv.begin(), argv.end());
  std::vector<char *> args, envp;
  for (const std::string &a : launched)
    args.push_back(const_cast<char *>(a.c_str()));
  args.push_back(nullptr);
  for (const std::string &e : env)
    envp.push_back(const_cast<char *>(e.c_str()));
  envp.push_back(nullptr);

  int report[2];
  if (::pipe(report) != 0)
    throw std::runtime_error("cannot make a pipe");
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, report[1], 1);
  posix_spawn_file_actions_addclose(&actions, report[0]);
  pid_t pid = 0;
  int failed =
      posix_spawn(&pid, args[0], &actions, nullptr, args.data(), envp.data());
  posix_spawn_file_actions_destroy(&actions);
  ::close(report[1]);
  if (failed != 0)
    throw std::runtime_error("cannot start " + argv[0]);
  char line[128] = {};
  ssize_t n = ::read(report[0], line, sizeof line - 1);
  ::close(report[0]);
  int status = 0;
  waitpid(pid, &status, 0);
  Measure measure;
  if (n <= 0 || std::sscanf(line, "%lf %ld %d", &measure.seconds,
                            &measure.peakRssKib, &measure.exitCode) != 3)
    throw std::runtime_error("cannot measure " + argv[0]);
  return measure;
}

Measure median(std::vector<Measure> runs) {
  std::sort(runs.begin(), runs.end(), [](const Measure &a, const Measure &b) {
    return a.seconds < b.seconds;
  });
  Measure middle = runs[runs.size() / 2];
  for (const Measure &m : runs)
    middle.peakRssKib = std::max(middle.peakRssKib, m.peakRssKib);
  return middle;
}

std::string findProgram(const std::string &name) {
  const char *path = std::getenv("PATH");
  std::string dirs = path ? path : "/usr/bin:/bin";
  for (std::size_t at = 0; at <= dirs.size();) {
    std::size_t end = dirs.find(':', at);
    if (end == std::string::npos)
      end = dirs.size();
    fs::path candidate = fs::path(dirs.substr(at, end - at)) / name;
    if (::access(candidate.c_str(), X_OK) == 0)
      return candidate;
    at = end + 1;
  }
  return {};
}

void printRow(const char *what, const Measure &m) {
  std::printf("%-22s %9.3f s %9.1f MiB   exit %d\n", what, m.seconds,
              static_cast<double>(m.peakRssKib) / 1024.0, m.exitCode);
}

} // namespace

int main(int argc, char **argv) {
  if (argc > 2 && std::string(argv[1]) == "--launch")
    return launch(argv + 2);
  long long sizeMib = 2048;
  int runs = 3;
  std::string curl = findProgram("curl");
  for (int i = 1; i + 1 < argc; i += 2) {
    std::string option = argv[i];
    if (option == "--size-mib")
      sizeMib = std::atoll(argv[i + 1]);
    else if (option == "--runs")
      runs = std::max(1, std::atoi(argv[i + 1]));
    else if (option == "--curl")
      curl = argv[i + 1];
  }

  std::string pattern =
      (fs::temp_directory_path() / "kestrune-bench-XXXXXX").string();
  if (!::mkdtemp(pattern.data())) {
    std::perror("mkdtemp");
    return 1;
  }
  fs::path home = pattern;
  fs::path installer = home / "Big.pkg";
  fs::path metadata = home / "Big.plist";
  {
    int fd = ::open(installer.c_str(), O_CREAT | O_WRONLY | O_TRUNC, 0600);
    if (fd < 0 || ::ftruncate(fd, sizeMib * 1024 * 1024) != 0) {
      std::perror("cannot make the installer");
      return 1;
    }
    ::close(fd);
    std::FILE *file = std::fopen(metadata.c_str(), "w");
    std::fputs("<plist version=\"1.0\"><dict/></plist>\n", file);
    std::fclose(file);
  }

  mockconsole::Options options;
  options.hashBodies = false;
  options.keptBodyBytes = 4096; // enough for the application's JSON
  mockconsole::MockConsole console(options);
  console.addAccount({"bench", "pw", "key"});
  console.mapGroup("Bench", 42);
  console.start();

  // The signed-in account, in the file store that the child will choose.
  securestore::FileItemStore store(home / ".local/share/kestrune-cli/keychain");
  securestore::Keychain keychain =
      kestrune::makeAccountKeychain().withItemStore(store);
  const std::pair<const char *, std::string> items[] = {
      {"username", "bench"}, {"password", "pw"},
      {"apiKey", "key"},     {"hostname", console.getBaseUrl()},
      {"groupId", "Bench"},  {"groupIdNum", "42"}};
  for (const auto &[key, value] : items)
    keychain.set(value, key);

  const std::vector<std::string> env = {"HOME=" + home.string(),
                                        "PATH=/usr/bin:/bin", "LANG=C.UTF-8"};
  std::vector<Measure> tool, reference;
  for (int run = 0; run < runs; ++run) {
    tool.push_back(runMeasured({KESTRUNECLI_PATH, "upload", "-i",
                                installer.string(), "-m", metadata.string()},
                               env));
    if (!curl.empty())
      reference.push_back(runMeasured(
          {curl, "-sS", "-o", "/dev/null", "-X", "POST", "-H", "Expect:", "-u",
           "bench:pw", "-H", "qm-tenant-code: key", "-T", installer.string(),
           console.getBaseUrl() +
               "/api/mam/blobs/uploadblob?filename=Big.pkg&"
               "organizationgroupid=42&moduleType=Application"},
          env));
  }
  console.stop();
  fs::remove_all(home);

  std::printf("upload of %lld MiB over loopback, median of %d run(s); "
              "memory is the highest peak\n",
              sizeMib, runs);
  Measure toolMedian = median(tool);
  printRow("kestrunecli upload", toolMedian);
  if (reference.empty()) {
    std::printf("curl not found: no reference\n");
    return toolMedian.exitCode == 0 ? 0 : 1;
  }
  Measure curlMedian = median(reference);
  printRow("curl -T", curlMedian);
  std::printf(
      "wall time ratio: %.2f (aim: 1.10 or less); peak memory "
      "%+.1f MiB beside curl's (aim: 3.0 or less)\n",
      toolMedian.seconds / curlMedian.seconds,
      static_cast<double>(toolMedian.peakRssKib - curlMedian.peakRssKib) /
          1024.0);
  return toolMedian.exitCode == 0 && curlMedian.exitCode == 0 ? 0 : 1;
}
