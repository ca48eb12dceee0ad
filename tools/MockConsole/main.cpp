#include "MockConsole/CommandLine.h"
#include "MockConsole/MockConsole.h"

#include <csignal>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include <pthread.h>

int main(int argc, char **argv) {
  mockconsole::CommandLine commandLine;
  try {
    commandLine = mockconsole::parseCommandLine(
        std::vector<std::string>(argv + 1, argv + argc));
  } catch (const std::invalid_argument &error) {
    std::fprintf(stderr, "kestrune-mock-console: %s\nTry --help.\n",
                 error.what());
    return 64;
  }
  if (commandLine.showHelp) {
    std::fputs(mockconsole::getHelpText().data(), stdout);
    return 0;
  }

  // The signals that end the server are taken by sigwait below, never by a
  // handler; every thread started from here on inherits the mask.
  sigset_t endSignals;
  sigemptyset(&endSignals);
  sigaddset(&endSignals, SIGINT);
  sigaddset(&endSignals, SIGTERM);
  sigset_t blocked = endSignals;
  sigaddset(&blocked, SIGPIPE);
  pthread_sigmask(SIG_BLOCK, &blocked, nullptr);

  mockconsole::MockConsole console(commandLine.options);
  commandLine.applyTo(console);
  try {
    console.start();
  } catch (const std::exception &error) {
    std::fprintf(stderr, "kestrune-mock-console: %s\n", error.what());
    return 1;
  }
  std::printf("%s\n", console.getBaseUrl().c_str());
  std::fflush(stdout);

  int received = 0;
  sigwait(&endSignals, &received);
  console.stop();
  return 0;
}
