// Wall time and peak memory of one blob upload through doUploadBlob, beside
// curl's streaming upload of the same file to the same route of the console
// simulator. Each side runs as a process of its own, measured with wait4.
//
//   BlobUploadBench [--size-mib N] [--runs N]
//
// Aim: our wall time within 1.1 times curl's, our peak RSS under 24 MiB.
#include "KestruneCLI/UrlSessionManager/UrlSessionManager.h"
#include "KestruneCLI/UrlSessionManager/UrlSessionUtil.h"
#include "Platform/HttpMessage.h"
#include "Platform/UrlText.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace {

constexpr const char *username = "bench";
constexpr const char *password = "secret";
constexpr const char *apiKey = "KEY";
constexpr std::int64_t groupNumber = 1;

struct Measurement {
  double seconds = 0;
  long peakRssKib = 0;
  bool succeeded = false;
};

/// Starts \p arguments with standard output sent to \p outputFd (or kept
/// when negative); returns the child's id.
pid_t spawn(std::vector<std::string> arguments, int outputFd) {
  std::vector<char *> argv;
  for (std::string &argument : arguments)
    argv.push_back(argument.data());
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  if (outputFd >= 0)
    posix_spawn_file_actions_adddup2(&actions, outputFd, 1);
  pid_t child = -1;
  int failure =
      posix_spawnp(&child, argv[0], &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (failure != 0)
    throw std::runtime_error("cannot start " + arguments[0] + ": " +
                             std::strerror(failure));
  return child;
}

Measurement measure(std::vector<std::string> arguments) {
  int devNull = open("/dev/null", O_WRONLY | O_CLOEXEC);
  auto begin = std::chrono::steady_clock::now();
  pid_t child = spawn(std::move(arguments), devNull);
  int status = 0;
  rusage usage{};
  wait4(child, &status, 0, &usage);
  Measurement measurement;
  measurement.seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - begin)
          .count();
  close(devNull);
  measurement.peakRssKib = usage.ru_maxrss;
  measurement.succeeded = WIFEXITED(status) && WEXITSTATUS(status) == 0;
  return measurement;
}

/// The client side: one doUploadBlob, exit status 0 when the console gave a
/// blob identifier.
int uploadAsClient(const std::string &baseUrl, const std::string &path) {
  kestrune::ConfigModel config{username, password, apiKey,
                               baseUrl,  "G",      groupNumber};
  std::optional<platform::HttpBody> body = platform::HttpBody::openFile(path);
  if (!body)
    return 1;
  bool uploaded = false;
  kestrune::UrlSessionManager::shared().doUploadBlob(
      config, *body, "bench.pkg", kestrune::UrlSessionUtil::shared(),
      kestrune::BlobType::installer,
      [&](std::optional<std::int64_t> value,
          std::optional<kestrune::CliError> error) {
        uploaded = value.has_value();
        if (error)
          std::fprintf(stderr, "%s\n", error->errorDescription().c_str());
      });
  return uploaded ? 0 : 1;
}

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

} // namespace

int main(int argc, char **argv) {
  if (argc == 4 && std::string(argv[1]) == "--client")
    return uploadAsClient(argv[2], argv[3]);

  std::uint64_t sizeMib = 1024;
  int runs = 3;
  for (int i = 1; i + 1 < argc; i += 2) {
    std::string option = argv[i];
    if (option == "--size-mib")
      sizeMib = std::strtoull(argv[i + 1], nullptr, 10);
    else if (option == "--runs")
      runs = std::max(1, std::atoi(argv[i + 1]));
  }

  std::filesystem::path directory =
      std::filesystem::temp_directory_path() /
      ("kestrune-blob-bench-" + std::to_string(getpid()));
  std::filesystem::create_directories(directory);
  std::filesystem::path file = directory / "installer.pkg";
  std::filesystem::path log = directory / "console.log";
  {
    // A sparse file: it costs no disk, and every byte still travels.
    std::ofstream(file, std::ios::binary).close();
    std::filesystem::resize_file(file, sizeMib * 1024 * 1024);
    // Read once, so that no run pays for filling the page cache.
    std::ifstream warm(file, std::ios::binary);
    std::vector<char> buffer(1024 * 1024);
    while (
        warm.read(buffer.data(), static_cast<std::streamsize>(buffer.size())))
      ;
  }

  // The console counts bytes without hashing them, so that it is not what
  // the two clients wait for.
  int consolePipe[2];
  if (pipe(consolePipe) != 0)
    return 1;
  pid_t console =
      spawn({MOCK_CONSOLE_PATH, "--no-hash", "--account",
             std::string(username) + ":" + password + ":" + apiKey, "--group",
             "G=" + std::to_string(groupNumber), "--log", log.string()},
            consolePipe[1]);
  close(consolePipe[1]);
  char line[256] = {};
  FILE *consoleOutput = fdopen(consolePipe[0], "r");
  if (!fgets(line, sizeof line, consoleOutput)) {
    std::fprintf(stderr, "the console simulator did not start\n");
    return 1;
  }
  std::string baseUrl(line, std::strcspn(line, "\n"));
  std::string route = baseUrl + "/api/mam/blobs/uploadblob?filename=bench.pkg&"
                                "organizationgroupid=1&moduleType=Application";

  std::vector<std::string> ours = {"/proc/self/exe", "--client", baseUrl,
                                   file.string()};
  ours[0] = std::filesystem::read_symlink("/proc/self/exe").string();
  std::vector<std::string> curl = {
      "curl",
      "-s",
      "-o",
      "/dev/null",
      "-f",
      "-X",
      "POST",
      "-H",
      "Expect:",
      "-H",
      "Authorization: Basic " +
          platform::encodeBase64(std::string(username) + ":" + password),
      "-H",
      std::string("qm-tenant-code: ") + apiKey,
      "-H",
      "Content-Type: application/json",
      "-H",
      "Accept: application/json;version=2",
      "-T",
      file.string(),
      route};

  std::printf("uploading %llu MiB to %s, %d runs each, alternating\n",
              static_cast<unsigned long long>(sizeMib), baseUrl.c_str(), runs);
  std::printf("%-6s %-14s %10s %14s\n", "run", "client", "wall (s)",
              "peak RSS (MiB)");
  std::vector<double> ourTimes, curlTimes, ourRss, curlRss;
  bool allSucceeded = true;
  for (int run = 1; run <= runs; ++run) {
    for (bool isOurs : {true, false}) {
      Measurement m = measure(isOurs ? ours : curl);
      allSucceeded = allSucceeded && m.succeeded;
      (isOurs ? ourTimes : curlTimes).push_back(m.seconds);
      (isOurs ? ourRss : curlRss).push_back(m.peakRssKib / 1024.0);
      std::printf("%-6d %-14s %10.3f %14.1f%s\n", run,
                  isOurs ? "doUploadBlob" : "curl -T", m.seconds,
                  m.peakRssKib / 1024.0, m.succeeded ? "" : "  FAILED");
    }
  }

  kill(console, SIGTERM);
  waitpid(console, nullptr, 0);
  fclose(consoleOutput);

  // Every upload must have reached the console whole.
  std::ifstream logLines(log);
  std::string expectedLength =
      "\"bodyLength\":" + std::to_string(sizeMib * 1024 * 1024) + ",";
  int complete = 0;
  for (std::string entry; std::getline(logLines, entry);)
    complete += entry.find(expectedLength) != std::string::npos;
  std::filesystem::remove_all(directory);

  double timeRatio = median(ourTimes) / median(curlTimes);
  double ourPeak = *std::max_element(ourRss.begin(), ourRss.end());
  std::printf("\nmedian wall: doUploadBlob %.3f s, curl %.3f s, ratio %.2f "
              "(aim <= 1.10)\n",
              median(ourTimes), median(curlTimes), timeRatio);
  std::printf("peak RSS: doUploadBlob %.1f MiB (aim < 24), curl %.1f MiB\n",
              ourPeak, *std::max_element(curlRss.begin(), curlRss.end()));
  std::printf("uploads received whole by the console: %d of %d\n", complete,
              2 * runs);
  return allSucceeded && complete == 2 * runs ? 0 : 1;
}
