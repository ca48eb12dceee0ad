// The spinner's bytes as a terminal receives them: each way of running it,
// whole redraws beside changes from another thread, at process exit, and
// pattern files read from outside.
#include "Spinner/Spinner.h"

#include "Spinner/Pattern.h"
#include "Support/Doubles.h"
#include "Support/ProcessRunner.h"
#include "Support/TestSupport.h"
#include "TextStyling/TextStyling.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <regex>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace {

using spinner::Pattern;
using spinner::Spinner;
using styling::OutputTarget;
using styling::TextStyling;
using testsupport::RecordingTerminal;

const std::string hide = "\x1b[?25l";
const std::string show = "\x1b[?25h";

std::string redraw(std::string_view frame, std::string_view text) {
  return "\r" + std::string(frame) + " " + std::string(text);
}

// Removes \p prefix from \p text; false when it isn't there.
bool consume(std::string_view &text, std::string_view prefix) {
  if (!text.starts_with(prefix))
    return false;
  text.remove_prefix(prefix.size());
  return true;
}

// What a spinner over "-\|/" with the text \p text sends when \p script runs
// after its first redraw (it draws once at start, then waits), up to its
// release.
TEST(SpinnerTest, WritesExactlyItsBytes) {
  const std::string green = "\x1b[32m\xe2\x9c\x94\x1b[0m";
  const std::string line = "Uploading metadata ...  ";
  struct Row {
    const char *what;
    OutputTarget target;
    std::string text;
    std::function<void(Spinner &)> script;
    std::string expected;
  };
  const Row rows[] = {
      {"clear", OutputTarget::unknown, "Uploading installer ...",
       [](Spinner &s) { s.stopAndClear(); },
       "\r  " + std::string(23, ' ') + "^" + show + "^\r^"},
      {"succeed on a terminal", OutputTarget::console, line,
       [](Spinner &s) { s.succeed("Done"); },
       redraw(green, "Done" + std::string(20, ' ')) + "^" + show + "^\n"},
      {"released while running", OutputTarget::unknown, "T", [](Spinner &) {},
       ""},
      {"stopped twice", OutputTarget::unknown, "T",
       [](Spinner &s) { s.stop(), s.stop("x", "*"), s.stopAndClear(); },
       redraw("\\", "T") + "^" + show + "^\n"},
      // A shorter text gets blanks for what it lacks on screen: characters,
      // not bytes or styling sequences.
      {"styled", OutputTarget::unknown, "\x1b[31mabcd\x1b[0m",
       [](Spinner &s) { s.stop("ab", "*", ""); },
       redraw("*", "ab  ") + "^" + show + "^"},
      {"family", OutputTarget::unknown,
       "\xf0\x9f\x91\xa8\xe2\x80\x8d\xf0\x9f\x91\xa9\xe2\x80\x8d\xf0\x9f\x91"
       "\xa7x",
       [](Spinner &s) { s.stop("", "*", ""); },
       redraw("*", "  ") + "^" + show + "^"},
      {"blanks stay", OutputTarget::unknown, "abcdef",
       [](Spinner &s) { s.setText("ab"), s.stop("x", "*", ""); },
       redraw("*", "x     ") + "^" + show + "^"},
  };
  for (const Row &row : rows) {
    SCOPED_TRACE(row.what);
    TextStyling::setOutputTarget(row.target);
    const std::string frame =
        row.target == OutputTarget::console ? "\x1b[39m-\x1b[0m" : "-";
    RecordingTerminal terminal;
    {
      Spinner spinner(terminal, Pattern::line(), row.text, 1000);
      spinner.start();
      terminal.waitForFlushes(2);
      row.script(spinner);
    }
    EXPECT_EQ(terminal.waitForFlushes(0), hide + "^" + redraw(frame, row.text) +
                                              "^" + row.expected + show + "^");
  }
}

// While the spinner redraws every millisecond, another thread changes the
// text, frames and speed after each redraw it sees: every redraw is flushed
// whole, from one frame list and one text.
TEST(SpinnerTest, RedrawsStayWholeWhileChanged) {
  TextStyling::setOutputTarget(OutputTarget::unknown);
  const std::string longText = "a much longer text";
  const std::vector<std::string> letters = {"a", "b", "c"}, digits = {"1"};
  RecordingTerminal terminal;
  {
    Spinner spinner(terminal, Pattern(letters, 0.001), longText);
    spinner.start();
    for (int i = 0; i < 300; ++i) {
      spinner.setText(i % 2 ? longText : "short");
      spinner.setFrames(i % 3 ? letters : digits);
      spinner.setSpeed(i % 2 ? 0.001 : 0.0);
      terminal.waitForFlushes(i + 3);
    }
  }
  const std::string all = terminal.waitForFlushes(0);
  std::string_view sent = all;
  ASSERT_TRUE(consume(sent, hide + "^") && sent.ends_with(show + "^"));
  sent.remove_suffix(show.size() + 1);
  std::istringstream redraws{std::string(sent)};
  int drawn = 0;
  for (std::string one; std::getline(redraws, one, '^'); ++drawn)
    EXPECT_TRUE(std::regex_match(
        one, std::regex("\r[abc1] (a much longer text|short {13})")))
        << one;
  EXPECT_GE(drawn, 301);
}

// A process that ends through exit while its spinner turns (the probe)
// leaves its printed line and whole redraws; a spinner of static storage is
// destroyed at exit and shows the cursor then.
TEST(SpinnerTest, ExitWhileTurningLeavesWholeRedraws) {
  for (const char *mode : {"automatic", "static"})
    for (int attempt = 0; attempt < 4; ++attempt) {
      SCOPED_TRACE(mode);
      const testsupport::ProcessResult run = testsupport::runProcess(
          SPINNER_EXIT_PROBE_PATH,
          {.arguments = {mode}, .environment = {{"XcodeColors", {}}}});
      EXPECT_EQ(run.exitCode, 3);
      std::string output = run.standardOutput;
      const std::size_t at = output.find("Leaving now\n");
      ASSERT_NE(at, std::string::npos) << output;
      output.erase(at, 12);
      std::string_view rest = output;
      ASSERT_TRUE(consume(rest, hide)) << output;
      const std::string ending = mode[0] == 's' ? show : "";
      for (std::size_t redraws = 0; rest != ending; ++redraws)
        ASSERT_TRUE(
            consume(rest, redraw(std::string("-\\|/").substr(redraws % 4, 1),
                                 "Working")))
            << "torn in: " << output;
    }
}

// Pattern files read as an unprivileged user: the pattern, or the message
// that tells what is wrong with the file.
TEST(SpinnerTest, ReadsPatternFilesOrSaysWhatIsWrong) {
  testsupport::TempDir dir;
  std::filesystem::permissions(dir.path(), std::filesystem::perms::all);
  struct Row {
    std::string name;
    std::optional<std::string> bytes;
    std::string expected; // "@" stands for the file's path
  };
  const Row rows[] = {
      {"a.json", R"({"frames":["-","\\"," é"],"interval":250})",
       "[- \\  é] 0.25"},
      {"missing.json", std::nullopt, "pattern file '@' does not exist"},
      {"locked.json", "{}", "pattern file '@' is not readable"},
      {"empty.json", "", "pattern file '@' could not be read"},
      {"c.json", "frames: x", "pattern data is not valid JSON"},
  };
  for (const Row &row : rows) {
    SCOPED_TRACE(row.name);
    const std::string path = (dir.path() / row.name).string();
    if (row.bytes)
      testsupport::writeFile(path, *row.bytes);
    if (row.name == "locked.json")
      std::filesystem::permissions(path, std::filesystem::perms::none);
    std::string expected = row.expected;
    if (const std::size_t at = expected.find('@'); at != std::string::npos)
      expected.replace(at, 1, path);
    EXPECT_EQ(testsupport::runUnprivileged([&] {
                std::string text;
                try {
                  const Pattern pattern = Pattern::load(path);
                  for (const std::string &frame : pattern.getFrames())
                    text += (text.empty() ? "[" : " ") + frame;
                  return text + "] " +
                         (std::ostringstream() << pattern.getSpeed()).str();
                } catch (const std::exception &error) {
                  return std::string(error.what());
                }
              }),
              expected);
  }
}

} // namespace
