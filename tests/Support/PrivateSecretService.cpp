#include "Support/PrivateSecretService.h"

#include <csignal>
#include <stdexcept>
#include <thread>

namespace testsupport {

namespace {

constexpr auto startTimeout = std::chrono::seconds(15);

// Calls a method of the Secret Service on \p bus with dbus-send.
ProcessResult callService(const std::string &bus, const std::string &method,
                          const std::string &argument) {
  std::optional<std::filesystem::path> send = findProgram("dbus-send");
  if (!send)
    return {"", "dbus-send is not installed", 1};
  return runProcess(
      *send,
      {{"--bus=" + bus, "--dest=org.freedesktop.secrets", "--type=method_call",
        "--print-reply", "/org/freedesktop/secrets",
        "org.freedesktop.Secret.Service." + method, argument}});
}

} // namespace

PrivateSecretService::PrivateSecretService(Keyring keyring) {
  std::optional<std::filesystem::path> dbusDaemon = findProgram("dbus-daemon");
  std::optional<std::filesystem::path> keyringDaemon =
      findProgram("gnome-keyring-daemon");
  if (!dbusDaemon || (keyring != Keyring::none && !keyringDaemon)) {
    problem = "dbus-daemon or gnome-keyring-daemon is not installed";
    return;
  }
  // A session bus that starts nothing on demand: a service that is gone
  // stays gone, and no prompter can ever be launched.
  std::filesystem::path config = home.path() / "bus.conf";
  writeFile(config, "<busconfig><type>session</type><listen>unix:dir=" +
                        home.path().string() +
                        "</listen><auth>EXTERNAL</auth><policy "
                        "context=\"default\"><allow send_destination=\"*\" "
                        "eavesdrop=\"true\"/><allow eavesdrop=\"true\"/><allow "
                        "own=\"*\"/></policy></busconfig>");
  bus = std::make_unique<ChildProcess>(
      *dbusDaemon,
      ProcessOptions{{"--config-file=" + config.string(), "--nofork",
                      "--nopidfile", "--nosyslog", "--print-address"}});
  // It prints its address once it listens.
  busAddress = bus->readLine(startTimeout).value_or("");
  if (busAddress.empty()) {
    problem = "the private bus did not come up";
    return;
  }
  if (keyring == Keyring::none)
    return;

  ProcessOptions options{{"--foreground", "--components=secrets"},
                         {{"DBUS_SESSION_BUS_ADDRESS", busAddress},
                          {"HOME", home.path().string()},
                          {"XDG_DATA_HOME", (home.path() / "data").string()},
                          {"XDG_RUNTIME_DIR", home.path().string()},
                          {"DISPLAY", std::nullopt},
                          {"WAYLAND_DISPLAY", std::nullopt}}};
  if (keyring == Keyring::unlocked) {
    options.arguments.push_back("--unlock");
    options.standardInput = "private-keyring";
  }
  daemon = std::make_unique<ChildProcess>(*keyringDaemon, options);

  // Ready when the service has taken its name and, for an unlocked keyring,
  // made its login collection the default.
  auto deadline = std::chrono::steady_clock::now() + startTimeout;
  const std::string expected =
      keyring == Keyring::unlocked
          ? "object path \"/org/freedesktop/secrets/collection/login\""
          : "object path \"/\"";
  for (;;) {
    ProcessResult alias =
        callService(busAddress, "ReadAlias", "string:default");
    if (alias.exitCode == 0 &&
        alias.standardOutput.find(expected) != std::string::npos)
      return;
    if (std::chrono::steady_clock::now() > deadline) {
      problem = "the keyring daemon did not come up: " + alias.standardError;
      return;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
}

void PrivateSecretService::lockDefaultCollection() {
  ProcessResult locked =
      callService(busAddress, "Lock",
                  "array:objpath:/org/freedesktop/secrets/collection/login");
  if (locked.exitCode != 0)
    throw std::runtime_error("cannot lock the collection: " +
                             locked.standardError);
}

void PrivateSecretService::killDaemon() {
  if (!daemon)
    return;
  daemon->sendSignal(SIGKILL);
  daemon->wait();
}

} // namespace testsupport
