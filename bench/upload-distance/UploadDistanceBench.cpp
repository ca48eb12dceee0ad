// A whole `kestrunecli upload -g` with an icon (group lookup, three blobs,
// the application) against the console simulator over HTTPS, through a
// relay that delays every chunk in each direction as a distant console's
// network does; beside it, the same five requests as five curl runs through
// the same relay. Prints both wall times, their ratio and the connections
// each side opened.
//
//   UploadDistanceBench [--delay-ms 30] [--runs 5] [--size-kib 256]
//                       [--curl PATH]
//
// --delay-ms is the delay each way, so the round trip is twice that. The
// relay delays data, not TCP's own handshake, which the kernel completes at
// once: every new connection costs one round trip less than on a real path,
// which favours whoever opens more connections.

#include "DelayRelay.h"

#include "KestruneCLI/Config/ConfigController.h"
#include "MockConsole/MockConsole.h"
#include "SecureStore/FileItemStore.h"
#include "SecureStore/Keychain.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

/// Runs \p argv with \p env, its output to /dev/null; its exit code.
int run(const std::vector<std::string> &argv,
        const std::vector<std::string> &env) {
  std::vector<char *> args, envp;
  for (const std::string &a : argv)
    args.push_back(const_cast<char *>(a.c_str()));
  args.push_back(nullptr);
  for (const std::string &e : env)
    envp.push_back(const_cast<char *>(e.c_str()));
  envp.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  pid_t pid = 0;
  int failed =
      posix_spawn(&pid, args[0], &actions, nullptr, args.data(), envp.data());
  posix_spawn_file_actions_destroy(&actions);
  int status = 0;
  if (failed != 0 || waitpid(pid, &status, 0) != pid)
    throw std::runtime_error("cannot run " + argv[0]);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

struct Measure {
  double seconds = 0;
  int connections = 0;
  bool ok = true;
};

/// Runs each of \p commands in turn and measures them as one.
Measure measure(mockconsole::MockConsole &console,
                const std::vector<std::vector<std::string>> &commands,
                const std::vector<std::string> &env) {
  int before = console.getConnectionCount();
  Measure result;
  auto start = Clock::now();
  for (const auto &command : commands)
    result.ok = run(command, env) == 0 && result.ok;
  result.seconds = std::chrono::duration<double>(Clock::now() - start).count();
  result.connections = console.getConnectionCount() - before;
  return result;
}

Measure median(std::vector<Measure> runs) {
  std::sort(runs.begin(), runs.end(), [](const Measure &a, const Measure &b) {
    return a.seconds < b.seconds;
  });
  Measure middle = runs[runs.size() / 2];
  for (const Measure &m : runs) {
    middle.connections = std::max(middle.connections, m.connections);
    middle.ok = middle.ok && m.ok;
  }
  return middle;
}

void writeBytes(const fs::path &path, std::size_t size, char fill) {
  std::ofstream(path, std::ios::binary) << std::string(size, fill);
}

} // namespace

int main(int argc, char **argv) {
  int delayMs = 30, runs = 5;
  long long sizeKib = 256;
  std::string curl = "/usr/bin/curl";
  for (int i = 1; i + 1 < argc; i += 2) {
    std::string option = argv[i];
    if (option == "--delay-ms")
      delayMs = std::max(0, std::atoi(argv[i + 1]));
    else if (option == "--runs")
      runs = std::max(1, std::atoi(argv[i + 1]));
    else if (option == "--size-kib")
      sizeKib = std::max(1LL, std::atoll(argv[i + 1]));
    else if (option == "--curl")
      curl = argv[i + 1];
  }

  std::string pattern =
      (fs::temp_directory_path() / "kestrune-distance-XXXXXX").string();
  if (!::mkdtemp(pattern.data())) {
    std::perror("mkdtemp");
    return 1;
  }
  const fs::path home = pattern;
  const fs::path installer = home / "App.pkg", metadata = home / "App.plist",
                 icon = home / "App.png", certificate = home / "console.pem";
  writeBytes(installer, static_cast<std::size_t>(sizeKib) * 1024, 'i');
  std::ofstream(metadata) << "<plist version=\"1.0\"><dict/></plist>\n";
  writeBytes(icon, 16 * 1024, 'c');

  mockconsole::Options options;
  options.hashBodies = false;
  options.keptBodyBytes = 4096; // enough for the application's JSON
  options.tlsSelfSigned = certificate;
  mockconsole::MockConsole console(options);
  console.addAccount({"bench", "pw", "key"});
  console.mapGroup("Bench", 42);
  console.start();
  DelayRelay relay(console.getPort(), std::chrono::milliseconds(delayMs));
  const std::string base =
      "https://127.0.0.1:" + std::to_string(relay.getPort());

  securestore::FileItemStore store(home / ".local/share/kestrune-cli/keychain");
  securestore::Keychain keychain =
      kestrune::makeAccountKeychain().withItemStore(store);
  const std::pair<const char *, std::string> items[] = {
      {"username", "bench"}, {"password", "pw"},   {"apiKey", "key"},
      {"hostname", base},    {"groupId", "Bench"}, {"groupIdNum", "42"}};
  for (const auto &[key, value] : items)
    keychain.set(value, key);

  // Both trust the simulator's certificate the same way, and nothing else
  // of the caller's environment.
  const std::vector<std::string> env = {
      "HOME=" + home.string(), "PATH=/usr/bin:/bin", "LANG=C.UTF-8",
      "CURL_CA_BUNDLE=" + certificate.string()};
  const std::vector<std::vector<std::string>> ours = {
      {KESTRUNECLI_PATH, "upload", "-i", installer.string(), "-m",
       metadata.string(), "-l", icon.string(), "-g", "Bench"}};
  // What the tool sends, request for request: the four header fields, no
  // Expect; blob numbers 1 to 3 exist once the tool has run.
  const std::vector<std::string> common = {
      curl,
      "-sS",
      "-f",
      "-o",
      "/dev/null",
      "-H",
      "Expect:",
      "-H",
      "Authorization: Basic YmVuY2g6cHc=",
      "-H",
      "qm-tenant-code: key",
      "-H",
      "Content-Type: application/json",
      "-H",
      "Accept: application/json;version=2"};
  auto curlRun = [&](std::vector<std::string> more) {
    std::vector<std::string> command = common;
    command.insert(command.end(), more.begin(), more.end());
    return command;
  };
  auto blob = [&](const fs::path &file, const char *module) {
    return curlRun({"--data-binary", "@" + file.string(),
                    base + "/api/mam/blobs/uploadblob?filename=" +
                        file.filename().string() +
                        "&organizationgroupid=42&moduleType=" + module});
  };
  const std::vector<std::vector<std::string>> theirs = {
      curlRun({base + "/api/system/groups/search?groupID=Bench"}),
      blob(installer, "Application"), blob(metadata, "General"),
      blob(icon, "General"),
      curlRun({"--data-binary",
               R"({"pkgInfoBlobId": 2, "isManagedInstall": true, )"
               R"("applicationBlobId": 1, "applicationIconId":3})",
               base + "/api/mam/groups/42/macos/apps"})};

  std::vector<Measure> tool, reference;
  for (int i = 0; i < runs; ++i) {
    tool.push_back(measure(console, ours, env));
    reference.push_back(measure(console, theirs, env));
  }
  console.stop();
  fs::remove_all(home);

  Measure a = median(tool), b = median(reference);
  std::printf("upload -g with an icon (%lld KiB installer) over HTTPS, "
              "%d ms round trip (%d ms each way), median of %d run(s)\n",
              sizeKib, 2 * delayMs, delayMs, runs);
  std::printf("%-26s %7.3f s   %d connection(s)%s\n", "kestrunecli upload",
              a.seconds, a.connections, a.ok ? "" : "   FAILED");
  std::printf("%-26s %7.3f s   %d connection(s)%s\n", "5 curl runs", b.seconds,
              b.connections, b.ok ? "" : "   FAILED");
  std::printf("ratio %.2f (aim: 0.60 or less, with one connection)\n",
              a.seconds / b.seconds);
  return a.ok && b.ok ? 0 : 1;
}
