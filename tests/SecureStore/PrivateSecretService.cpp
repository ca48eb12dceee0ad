#include "PrivateSecretService.h"

#include <csignal>
#include <filesystem>
#include <sys/stat.h>
#include <thread>

namespace testprocess {

namespace {

constexpr auto startTimeout = std::chrono::seconds(15);

// A session bus that starts nothing on demand: a service that is gone stays
// gone, and no prompter can ever be launched.
std::string busConfiguration(const std::string &socket) {
  return R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:path=)" +
         socket + R"(</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)";
}

} // namespace

PrivateSecretService::PrivateSecretService(Keyring keyring) {
  std::optional<std::string> dbusDaemon = findProgram("dbus-daemon");
  std::optional<std::string> keyringDaemon =
      findProgram("gnome-keyring-daemon");
  if (!dbusDaemon || (keyring != Keyring::none && !keyringDaemon)) {
    problem = "dbus-daemon or gnome-keyring-daemon is not installed";
    return;
  }
  std::filesystem::path socket = home.path() / "bus";
  std::filesystem::path config = home.path() / "bus.conf";
  testsupport::writeFile(config, busConfiguration(socket.string()));
  bus = std::make_unique<ChildProcess>(
      std::vector<std::string>{*dbusDaemon, "--config-file=" + config.string(),
                               "--nofork", "--nopidfile", "--nosyslog"},
      Environment{}, std::string(), /*quiet=*/true);
  busAddress = "unix:path=" + socket.string();

  auto deadline = std::chrono::steady_clock::now() + startTimeout;
  std::error_code ignored;
  while (!std::filesystem::exists(socket, ignored)) {
    if (std::chrono::steady_clock::now() > deadline) {
      problem = "the private bus did not come up";
      return;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  if (keyring == Keyring::none)
    return;

  std::filesystem::path runtime = home.path() / "run";
  std::filesystem::create_directories(runtime);
  ::chmod(runtime.c_str(), 0700);
  std::vector<std::string> arguments = {*keyringDaemon, "--foreground",
                                        "--components=secrets"};
  if (keyring == Keyring::unlocked)
    arguments.push_back("--unlock");
  daemon = std::make_unique<ChildProcess>(
      arguments,
      Environment{{"DBUS_SESSION_BUS_ADDRESS", busAddress},
                  {"HOME", home.path().string()},
                  {"XDG_DATA_HOME", (home.path() / "data").string()},
                  {"XDG_RUNTIME_DIR", runtime.string()},
                  {"DISPLAY", std::nullopt},
                  {"WAYLAND_DISPLAY", std::nullopt}},
      keyring == Keyring::unlocked ? "private-keyring" : "", /*quiet=*/true);

  // Ready when the service has taken its name and, for an unlocked keyring,
  // made its login collection the default.
  std::optional<std::string> send = findProgram("dbus-send");
  if (!send) {
    problem = "dbus-send is not installed";
    return;
  }
  const std::string expected =
      keyring == Keyring::unlocked
          ? "object path \"/org/freedesktop/secrets/collection/login\""
          : "object path \"/\"";
  for (;;) {
    auto [status, output] = runProgram(
        {*send, "--bus=" + busAddress, "--dest=org.freedesktop.secrets",
         "--type=method_call", "--print-reply", "/org/freedesktop/secrets",
         "org.freedesktop.Secret.Service.ReadAlias", "string:default"},
        {}, {}, /*quiet=*/true);
    if (status == 0 && output.find(expected) != std::string::npos)
      return;
    if (std::chrono::steady_clock::now() > deadline) {
      problem = "the keyring daemon did not come up: " + output;
      return;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
}

PrivateSecretService::~PrivateSecretService() {
  if (daemon) {
    daemon->sendSignal(SIGTERM);
    daemon->wait();
  }
  if (bus) {
    bus->sendSignal(SIGTERM);
    bus->wait();
  }
}

void PrivateSecretService::lockDefaultCollection() {
  std::optional<std::string> send = findProgram("dbus-send");
  if (!send)
    throw std::runtime_error("dbus-send is not installed");
  auto [status, output] = runProgram(
      {*send, "--bus=" + busAddress, "--dest=org.freedesktop.secrets",
       "--type=method_call", "--print-reply", "/org/freedesktop/secrets",
       "org.freedesktop.Secret.Service.Lock",
       "array:objpath:/org/freedesktop/secrets/collection/login"});
  if (status != 0)
    throw std::runtime_error("cannot lock the collection: " + output);
}

void PrivateSecretService::killDaemon() {
  if (!daemon)
    return;
  daemon->sendSignal(SIGKILL);
  daemon->wait();
}

} // namespace testprocess
