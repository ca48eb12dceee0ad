#ifndef KESTRUNECLI_TESTS_ENDTOEND_FIXTURE_H
#define KESTRUNECLI_TESTS_ENDTOEND_FIXTURE_H

#include "MockConsole/MockConsole.h"
#include "SecureStore/FileItemStore.h"
#include "SecureStore/Keychain.h"
#include "Support/Doubles.h"
#include "Support/ProcessRunner.h"
#include "Support/TestSupport.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <stdlib.h>
#include <unistd.h>

// The built kestrunecli as a user runs it: a throwaway HOME with the file
// store in it (no D-Bus session, so no Secret Service), and the console
// simulator on a loopback port.

namespace e2e {

namespace fs = std::filesystem;
using Args = std::vector<std::string>;
using Items = std::map<std::string, std::string>;
using Changes = std::vector<std::pair<std::string, std::optional<std::string>>>;

inline void replaceAll(std::string &text, const std::string &from,
                       const std::string &to) {
  for (auto at = text.find(from); at != std::string::npos;
       at = text.find(from, at + to.size()))
    text.replace(at, from.size(), to);
}

// What a user reads once the spinner's redraws and cursor sequences are
// gone.
inline std::string withoutSpinner(const std::string &out) {
  return testsupport::readSpinnerTranscript(out, false);
}

struct Run {
  std::string out, err;
  int code = -1;
  // The most memory the run held at once.
  long peakMemoryKiB = 0;
};

// The tool under test: this tree's, or the build that KESTRUNE_E2E_TOOL
// names (the test preset asan-e2e names the sanitized one of build/asan).
inline const std::string &toolPath() {
  static const std::string path = [] {
    const char *named = std::getenv("KESTRUNE_E2E_TOOL");
    return std::string(named && *named ? named : KESTRUNECLI_PATH);
  }();
  return path;
}

// The tool holds less than 100 MiB at once, whatever the console sends. Not
// checked when KESTRUNE_E2E_TOOL_SANITIZED is set, as the AddressSanitizer
// test presets set it: the sanitizer's shadow memory and quarantine of freed
// blocks take about as much by themselves.
inline void expectBoundedMemory(const Run &run) {
  if (std::getenv("KESTRUNE_E2E_TOOL_SANITIZED") == nullptr) {
    EXPECT_LT(run.peakMemoryKiB, 100 * 1024);
  }
}

// A console that knows alice (password "s3cret", API key "tenant-key") and
// the groups Org1 (570) and Org2 (571), and a HOME beside it. In arguments,
// "{base}" is the console's address and "{dir}" a folder in the HOME.
class Scene {
public:
  explicit Scene(mockconsole::Options options = {})
      : console(std::make_unique<mockconsole::MockConsole>(options)) {
    console->addAccount({"alice", "s3cret", "tenant-key"});
    console->mapGroup("Org1", 570);
    console->mapGroup("Org2", 571);
    console->start();
    fs::create_directories(dir());
  }

  mockconsole::MockConsole &con() { return *console; }
  fs::path dir() const { return home.path() / "files"; }
  fs::path storePath() const {
    return home.path() / ".local/share/kestrune-cli/keychain";
  }
  securestore::Keychain keychain() {
    return securestore::Keychain("kestrune-cli")
        .accessibility(securestore::Accessibility::afterFirstUnlock)
        .withItemStore(fileStore);
  }
  // alice's account, in group Org1 or Org2.
  Items account(const std::string &group = "Org1") const {
    // clang-format off
    return {{"username", "alice"}, {"password", "s3cret"}, {"apiKey", "tenant-key"},
            {"hostname", console->getBaseUrl()}, {"groupId", group},
            {"groupIdNum", group == "Org1" ? "570" : "571"}};
    // clang-format on
  }
  void store(const Items &items) {
    for (const auto &[key, value] : items)
      keychain().set(value, key);
  }
  // Sets (a value) or removes (none) items of the store.
  void change(const Changes &changes) {
    for (const auto &[key, value] : changes)
      value ? keychain().set(*value, key) : keychain().remove(key);
  }
  Items stored() {
    Items items;
    for (const auto &[key, value] : account())
      if (auto found = keychain().get(key))
        items[key] = *found;
    return items;
  }
  std::string expand(std::string text) const {
    replaceAll(text, "{base}", console->getBaseUrl());
    replaceAll(text, "{dir}", dir().string());
    return text;
  }

  // The environment of every run: this HOME, no session bus, no
  // certificates to trust but the system's, and then what \p extra says.
  testsupport::Environment extra;
  testsupport::Environment environment() const {
    testsupport::Environment variables = {
        {"HOME", home.path().string()},
        {"XDG_DATA_HOME", std::nullopt},
        {"DBUS_SESSION_BUS_ADDRESS", std::nullopt},
        {"XDG_RUNTIME_DIR", std::nullopt},
        {"LANG", "C.UTF-8"},
        {"CURL_CA_BUNDLE", std::nullopt},
        {"SSL_CERT_FILE", std::nullopt},
        {"SSL_CERT_DIR", std::nullopt}};
    for (const auto &[name, value] : extra)
      variables[name] = value;
    return variables;
  }

  // Runs the tool (through \p wrapper, when one is given) with \p input on
  // its standard input; its output with the spinner taken out, and with the
  // console's address shown as "{base}". alice's secrets never show.
  Run run(Args arguments, const std::string &input = "",
          const Args &wrapper = {}) {
    for (std::string &argument : arguments)
      argument = expand(argument);
    arguments.insert(arguments.begin(), toolPath());
    arguments.insert(arguments.begin(), wrapper.begin(), wrapper.end());
    testsupport::TempDir measured;
    const fs::path peak = measured.path() / "peak";
    arguments.insert(arguments.begin(), {PEAK_MEMORY_PATH, peak.string()});
    testsupport::ProcessOptions options{
        Args(arguments.begin() + 1, arguments.end()), environment(), input};
    testsupport::ProcessResult result =
        testsupport::runProcess(arguments[0], options);
    EXPECT_FALSE(result.timedOut);
    for (const std::string *text :
         {&result.standardOutput, &result.standardError})
      EXPECT_TRUE(text->find("s3cret") == std::string::npos &&
                  text->find("tenant-key") == std::string::npos)
          << *text;
    Run run{withoutSpinner(result.standardOutput), result.standardError,
            result.exitCode, std::atol(testsupport::readFile(peak).c_str())};
    replaceAll(run.out, console->getBaseUrl(), "{base}");
    return run;
  }

  // The tool with \p arguments, started and left running.
  std::unique_ptr<testsupport::ChildProcess> start(Args arguments) const {
    for (std::string &argument : arguments)
      argument = expand(argument);
    return std::make_unique<testsupport::ChildProcess>(
        toolPath(),
        testsupport::ProcessOptions{arguments, environment()});
  }

  // The tool with \p arguments as the job of a PseudoTerminal.
  std::function<int()> job(Args arguments) const {
    for (std::string &argument : arguments)
      argument = expand(argument);
    arguments.insert(arguments.begin(), toolPath());
    return [arguments, environment = environment()] {
      for (const auto &[name, value] : environment)
        value ? ::setenv(name.c_str(), value->c_str(), 1)
              : ::unsetenv(name.c_str());
      std::vector<char *> argv;
      for (const std::string &argument : arguments)
        argv.push_back(const_cast<char *>(argument.c_str()));
      argv.push_back(nullptr);
      return ::execv(argv[0], argv.data());
    };
  }

  // "METHOD target" of every request the console received.
  std::vector<std::string> requests() const {
    std::vector<std::string> result;
    for (const auto &request : console->getRequests())
      result.push_back(request.method + " " + request.target);
    return result;
  }

private:
  testsupport::TempDir home;
  securestore::FileItemStore fileStore{storePath()};
  std::unique_ptr<mockconsole::MockConsole> console;
};

// What a successful upload shows: a line for each blob, then the link to
// the application \p id, if one is given.
inline std::string uploaded(const std::vector<std::string> &blobs,
                            const std::string &id) {
  std::string text;
  for (const std::string &blob : blobs)
    text += "\n\n\n✅ " + blob + " file successfully uploaded. \n\n";
  if (id.empty())
    return text;
  return text +
         "\n💡Application has been uploaded to the console successfully. "
         "\n\n Please check: https://"
         "\x1b[3;31myour_uem_hostname.example\x1b[0;0m\x1b[0;0m\x1b[0;0m"
         "/Quellmark/#/Quellmark/Apps/Details/Internal/" +
         id + "/Summary \n\n The Application ID : " + id + " \n";
}

inline mockconsole::Answer answer(int status, std::string body,
                                  mockconsole::Headers headers = {}) {
  return {.status = status, .body = body, .headers = headers};
}

// Closes the connection instead of answering, once \p afterBodyBytes of
// the request's body are in.
inline mockconsole::Answer dropped(std::uint64_t afterBodyBytes = 0) {
  return {.dropAfterBodyBytes = afterBodyBytes};
}

// The build tree installed with `cmake --install` into a temporary prefix,
// once per process: the tool, its modules, its page and completions where
// an installed tool finds them.
inline const fs::path &installedPrefix() {
  static testsupport::TempDir prefix;
  static const bool installed = [] {
    fs::path build = fs::path(toolPath()).parent_path();
    while (!fs::exists(build / "CMakeCache.txt") && build.has_relative_path())
      build = build.parent_path();
    testsupport::ProcessResult result = testsupport::runProcess(
        *testsupport::findProgram("cmake"),
        {.arguments = {"--install", build, "--prefix", prefix.path()}});
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
    return result.exitCode == 0;
  }();
  EXPECT_TRUE(installed);
  return prefix.path();
}

} // namespace e2e

#endif
