// Starts a spinner with the tool's settings (the line pattern at its own
// speed), sleeps in the main thread, stops it, and prints the user and
// system CPU time the process spent meanwhile and its share of one core.
// Usage: SpinnerCpuBench [seconds]   (default 5)
#include "Spinner/Pattern.h"
#include "Spinner/Spinner.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <sys/resource.h>
#include <thread>

namespace {

double cpuSeconds(const timeval &time) {
  return static_cast<double>(time.tv_sec) +
         static_cast<double>(time.tv_usec) / 1e6;
}

struct CpuTime {
  double user;
  double system;
};

CpuTime processCpuTime() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return {cpuSeconds(usage.ru_utime), cpuSeconds(usage.ru_stime)};
}

} // namespace

int main(int argc, char **argv) {
  const double seconds = argc > 1 ? std::atof(argv[1]) : 5.0;
  if (!(seconds > 0)) {
    std::fprintf(stderr, "usage: %s [seconds > 0]\n", argv[0]);
    return 2;
  }
  CpuTime before{};
  CpuTime after{};
  double wall = 0;
  double speed = 0;
  {
    spinner::Spinner spinner(spinner::Pattern::line(),
                             "Measuring the cost of a turning spinner ...");
    speed = spinner.getSpeed();
    before = processCpuTime();
    const auto start = std::chrono::steady_clock::now();
    spinner.start();
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
    spinner.stopAndClear();
    wall =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start)
            .count();
    after = processCpuTime();
  }

  const double user = after.user - before.user;
  const double system = after.system - before.system;
  const double share = (user + system) / wall * 100;
  std::printf("spinner turning for %.2f s (line pattern, %.2f s per frame)\n",
              wall, speed);
  std::printf("cpu: user %.4f s + system %.4f s = %.4f s\n", user, system,
              user + system);
  std::printf("share of one core: %.3f%% (aim: under 1%%)\n", share);
  return 0;
}
