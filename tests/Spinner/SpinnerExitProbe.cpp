// Starts a spinner that redraws every millisecond, lets it turn, prints one
// line from the main thread and ends the process through std::exit while
// the spinner still turns. With the argument "static" the spinner has static
// storage, so its destructor runs during exit as well.
#include "Platform/StandardOutput.h"
#include "Spinner/Pattern.h"
#include "Spinner/Spinner.h"

#include <chrono>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <thread>

namespace {

std::optional<spinner::Spinner> staticSpinner;

} // namespace

int main(int argc, char **argv) {
  const bool useStatic = argc > 1 && std::string_view(argv[1]) == "static";
  std::optional<spinner::Spinner> localSpinner;
  std::optional<spinner::Spinner> &spinner =
      useStatic ? staticSpinner : localSpinner;
  spinner.emplace(spinner::Pattern::line(), "Working", 0.001);
  spinner->start();
  std::this_thread::sleep_for(std::chrono::milliseconds(30));
  platform::printLine("Leaving now");
  std::this_thread::sleep_for(std::chrono::milliseconds(5));
  std::exit(3);
}
