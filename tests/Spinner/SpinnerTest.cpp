// The spinner's bytes on standard output: each way of running it, whole
// redraws beside other writers and changes, at process exit, and pattern
// files read from outside.
#include "Spinner/Spinner.h"

#include "Platform/StandardOutput.h"
#include "Spinner/Pattern.h"
#include "Support/ProcessRunner.h"
#include "Support/TestSupport.h"
#include "TextStyling/TextStyling.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <functional>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>

#include <sys/stat.h>

namespace {

using spinner::Pattern;
using spinner::Spinner;
using styling::OutputTarget;
using styling::TextStyling;

const std::string hide = "\x1b[?25l";
const std::string show = "\x1b[?25h";

std::string redraw(std::string_view frame, std::string_view text) {
  return "\r" + std::string(frame) + " " + std::string(text);
}

// Waits until captured standard output holds at least \p bytes bytes.
void waitForOutput(std::size_t bytes) {
  const auto deadline =
      std::chrono::steady_clock::now() + std::chrono::seconds(20);
  struct stat status {};
  while (fstat(1, &status) == 0 &&
         static_cast<std::size_t>(status.st_size) < bytes &&
         std::chrono::steady_clock::now() < deadline)
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

// Removes \p prefix from \p text; false when it isn't there.
bool consume(std::string_view &text, std::string_view prefix) {
  if (!text.starts_with(prefix))
    return false;
  text.remove_prefix(prefix.size());
  return true;
}

// What a spinner over "-\|/" with the text \p text writes when \p script
// runs after its first redraw (it draws once at start, then waits).
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
       "\r  " + std::string(23, ' ') + show + "\r"},
      {"succeed on a terminal", OutputTarget::console, line,
       [](Spinner &s) { s.succeed("Done"); },
       redraw(green, "Done" + std::string(20, ' ')) + show + "\n"},
      {"released while running", OutputTarget::unknown, "T", [](Spinner &) {},
       ""},
      // A shorter text gets blanks for what it lacks on screen: characters,
      // not bytes or styling sequences.
      {"styled", OutputTarget::unknown, "\x1b[31mabcd\x1b[0m",
       [](Spinner &s) { s.stop("ab", "*", ""); }, redraw("*", "ab  ") + show},
      {"family", OutputTarget::unknown,
       "\xf0\x9f\x91\xa8\xe2\x80\x8d\xf0\x9f\x91\xa9\xe2\x80\x8d\xf0\x9f\x91"
       "\xa7x",
       [](Spinner &s) { s.stop("", "*", ""); }, redraw("*", "  ") + show},
      {"blanks stay", OutputTarget::unknown, "abcdef",
       [](Spinner &s) { s.setText("ab"), s.stop("x", "*", ""); },
       redraw("*", "x     ") + show},
  };
  for (const Row &row : rows) {
    SCOPED_TRACE(row.what);
    TextStyling::setOutputTarget(row.target);
    const std::string frame =
        row.target == OutputTarget::console ? "\x1b[39m-\x1b[0m" : "-";
    const std::string output = testsupport::captureStdout([&] {
      Spinner spinner(Pattern::line(), row.text, 1000);
      spinner.start();
      waitForOutput(hide.size() + redraw(frame, row.text).size());
      row.script(spinner);
    });
    EXPECT_EQ(output, hide + redraw(frame, row.text) + row.expected + show);
  }
}

// While the spinner redraws every millisecond, the main thread prints lines
// of its own without pause and now and then changes the text, frames and
// speed: every redraw is whole, from one frame list and one text, and no
// line lands inside a redraw.
TEST(SpinnerTest, RedrawsStayWholeBesideOtherWriters) {
  TextStyling::setOutputTarget(OutputTarget::unknown);
  const std::string longText = "a much longer text";
  const std::vector<std::string> letters = {"a", "b", "c"}, digits = {"1"};
  const std::string output = testsupport::captureStdout([&] {
    Spinner spinner(Pattern(letters, 0.001), longText);
    spinner.start();
    for (int i = 0; i < 20000; ++i) {
      if (i % 20 == 0) {
        spinner.setText(i % 40 ? longText : "short");
        spinner.setFrames(i % 60 ? letters : digits);
        spinner.setSpeed(i % 40 ? 0.001 : 0.0);
        std::this_thread::sleep_for(std::chrono::microseconds(200));
      }
      platform::printLine("line " + std::to_string(i));
    }
    spinner.stop(std::nullopt, std::nullopt, "\n");
  });
  std::set<std::string> redraws;
  for (const char *frame : {"a", "b", "c", "1"})
    for (const std::string &text : {longText, "short" + std::string(13, ' ')})
      redraws.insert(redraw(frame, text));
  std::string_view rest = output;
  ASSERT_TRUE(consume(rest, hide)) << output;
  std::size_t drawn = 0, printed = 0;
  while (!consume(rest, show + "\n" + show)) {
    if (consume(rest, "line " + std::to_string(printed) + "\n")) {
      ++printed;
      continue;
    }
    const auto whole = std::find_if(
        redraws.begin(), redraws.end(),
        [&](const std::string &one) { return consume(rest, one); });
    ASSERT_NE(whole, redraws.end()) << "torn at: " << rest.substr(0, 40);
    ++drawn;
  }
  EXPECT_EQ(rest, "");
  EXPECT_EQ(printed, 20000u);
  EXPECT_GE(drawn, 2u);
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
