#include "TextStyling/OutputTarget.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

namespace {

using styling::OutputTarget;

TEST(OutputTargetTest, IsDecidedByXcodeColorsThenTermAndTerminal) {
  struct TargetCase {
    std::optional<std::string_view> xcodeColors;
    std::optional<std::string_view> term;
    bool stdoutIsTerminal;
    OutputTarget expected;
  };
  const TargetCase cases[] = {
      {"YES", std::nullopt, false, OutputTarget::xcodeColors},
      {"YES", "xterm", true, OutputTarget::xcodeColors},
      {"yes", "xterm", true, OutputTarget::console},
      {"YES ", std::nullopt, true, OutputTarget::unknown},
      {"NO", "xterm-256color", true, OutputTarget::console},
      {std::nullopt, "xterm", true, OutputTarget::console},
      {std::nullopt, "", true, OutputTarget::console},
      {std::nullopt, "xterm", false, OutputTarget::unknown},
      {std::nullopt, std::nullopt, true, OutputTarget::unknown},
      {std::nullopt, "dumb", true, OutputTarget::unknown},
      {std::nullopt, "DUMB", true, OutputTarget::unknown},
      {std::nullopt, "Dumb", true, OutputTarget::unknown},
      {std::nullopt, "dumber", true, OutputTarget::console}};
  for (const TargetCase &c : cases) {
    SCOPED_TRACE(std::string(c.xcodeColors.value_or("<unset>")) + " / " +
                 std::string(c.term.value_or("<unset>")) + " / " +
                 (c.stdoutIsTerminal ? "tty" : "no tty"));
    EXPECT_EQ(
        styling::decideOutputTarget(c.xcodeColors, c.term, c.stdoutIsTerminal),
        c.expected);
  }
}

// Sets environment variables for one test and puts the old values back.
class EnvironmentTest : public testing::Test {
protected:
  void TearDown() override {
    restore("XcodeColors", savedXcodeColors);
    restore("TERM", savedTerm);
  }

  static void restore(const char *name,
                      const std::optional<std::string> &value) {
    if (value)
      setenv(name, value->c_str(), 1);
    else
      unsetenv(name);
  }

  std::optional<std::string> savedXcodeColors =
      styling::getEnvValue("XcodeColors");
  std::optional<std::string> savedTerm = styling::getEnvValue("TERM");
};

TEST_F(EnvironmentTest, CurrentTargetReadsTheEnvironmentOfThisProcess) {
  setenv("XcodeColors", "YES", 1);
  EXPECT_EQ(styling::currentOutputTarget(), OutputTarget::xcodeColors);

  // Standard output of a test run is a file or a pipe, never a terminal.
  unsetenv("XcodeColors");
  setenv("TERM", "xterm", 1);
  EXPECT_EQ(styling::currentOutputTarget(), OutputTarget::unknown);
}

} // namespace
