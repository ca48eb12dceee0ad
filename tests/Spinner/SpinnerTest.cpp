#include "Spinner/Spinner.h"

#include "Spinner/Pattern.h"
#include "Support/TestSupport.h"
#include "TextStyling/TextStyling.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <thread>
#include <vector>

namespace {

using spinner::Pattern;
using spinner::Spinner;
using styling::OutputTarget;
using styling::TextStyling;
using testsupport::captureStdout;

const std::string hide = "\x1b[?25l";
const std::string show = "\x1b[?25h";
// A speed so slow that a started spinner draws once, at once, and no more
// before the test stops it.
constexpr double drawOnce = 1000;

std::string redraw(std::string_view frame, std::string_view text) {
  return "\r" + std::string(frame) + " " + std::string(text);
}

std::string blanks(std::size_t count) { return std::string(count, ' '); }

// Waits until captured standard output holds at least \p bytes bytes.
void waitForOutput(std::size_t bytes) {
  const auto deadline =
      std::chrono::steady_clock::now() + std::chrono::seconds(20);
  struct stat status {};
  while (fstat(1, &status) == 0 &&
         static_cast<std::size_t>(status.st_size) < bytes) {
    if (std::chrono::steady_clock::now() > deadline) {
      ADD_FAILURE() << "the spinner wrote " << status.st_size
                    << " bytes, expected at least " << bytes;
      return;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

// Starts \p spinner and waits for its first redraw of \p firstRedraw.
void startAndWaitForFirstRedraw(Spinner &spinner,
                                const std::string &firstRedraw) {
  spinner.start();
  waitForOutput(hide.size() + firstRedraw.size());
}

// Checks that \p output is nothing but whole redraws "\r<frame> <text>",
// the frames following \p frames in order from the first, and counts them.
testing::AssertionResult isAnimation(std::string_view output,
                                     const std::vector<std::string> &frames,
                                     std::string_view text,
                                     std::size_t &count) {
  count = 0;
  while (!output.empty()) {
    const std::string expected = redraw(frames[count % frames.size()], text);
    if (!output.starts_with(expected))
      return testing::AssertionFailure()
             << "redraw " << count << " is not \"" << expected << "\" in \""
             << output << "\"";
    output.remove_prefix(expected.size());
    ++count;
  }
  return testing::AssertionSuccess();
}

// Each test sets the styling switches it needs; they are put back after.
class SpinnerTest : public testing::Test {
protected:
  void TearDown() override {
    TextStyling::setOutputTarget(savedTarget);
    TextStyling::setEnabled(savedEnabled);
  }

  static void use(OutputTarget target) {
    TextStyling::setOutputTarget(target);
    TextStyling::setEnabled(true);
  }

  OutputTarget savedTarget = TextStyling::getOutputTarget();
  bool savedEnabled = TextStyling::isEnabled();
};

struct TargetCase {
  OutputTarget target;
  const char *name;
  std::vector<std::string> lineFrames;
};

const TargetCase targetCases[] = {
    {OutputTarget::console,
     "terminal",
     {"\x1b[39m-\x1b[0m", "\x1b[39m\\\x1b[0m", "\x1b[39m|\x1b[0m",
      "\x1b[39m/\x1b[0m"}},
    {OutputTarget::unknown, "unknown", {"-", "\\", "|", "/"}},
};

TEST_F(SpinnerTest, UploadRunHidesDrawsClearsAndShowsByteByByte) {
  const std::string text = "Uploading installer ...";
  for (const TargetCase &c : targetCases) {
    SCOPED_TRACE(c.name);
    use(c.target);
    const std::string first = redraw(c.lineFrames[0], text);
    const std::string output = captureStdout([&] {
      Spinner spinner(Pattern::line(), text, drawOnce);
      startAndWaitForFirstRedraw(spinner, first);
      spinner.stopAndClear();
      EXPECT_FALSE(spinner.isRunning());
    });
    EXPECT_EQ(output,
              hide + first + "\r  " + blanks(text.size()) + show + "\r" + show);
  }
}

TEST_F(SpinnerTest, FinalLinesCarryTheirColouredSymbol) {
  struct FinalCase {
    void (Spinner::*operation)(std::optional<std::string>);
    const char *name;
    std::string_view terminalSymbol;
    std::string_view plainSymbol;
  };
  const FinalCase finals[] = {
      {&Spinner::succeed, "succeed", "\x1b[32m\xe2\x9c\x94\x1b[0m",
       "\xe2\x9c\x94"},
      {&Spinner::fail, "fail", "\x1b[31m\xe2\x9c\x96\x1b[0m", "\xe2\x9c\x96"},
      {&Spinner::warn, "warn", "\x1b[33m\xe2\x9a\xa0\x1b[0m", "\xe2\x9a\xa0"},
      {&Spinner::info, "info", "\x1b[34m\xe2\x84\xb9\x1b[0m", "\xe2\x84\xb9"},
  };
  const std::string text = "Uploading metadata ...  ";
  struct TextCase {
    std::optional<std::string> given;
    std::string drawn;
  };
  const TextCase texts[] = {{"Done", "Done" + blanks(text.size() - 4)},
                            {std::nullopt, text}};
  for (const TargetCase &c : targetCases) {
    use(c.target);
    for (const FinalCase &f : finals) {
      for (const TextCase &t : texts) {
        SCOPED_TRACE(std::string(c.name) + " " + f.name + " " +
                     t.given.value_or("<no text>"));
        const std::string first = redraw(c.lineFrames[0], text);
        const std::string output = captureStdout([&] {
          Spinner spinner(Pattern::line(), text, drawOnce);
          startAndWaitForFirstRedraw(spinner, first);
          (spinner.*f.operation)(t.given);
        });
        const std::string_view symbol = c.target == OutputTarget::console
                                            ? f.terminalSymbol
                                            : f.plainSymbol;
        EXPECT_EQ(output,
                  hide + first + redraw(symbol, t.drawn) + show + "\n" + show);
      }
    }
  }
}

TEST_F(SpinnerTest, AnimationFollowsTheFramesInOrder) {
  use(OutputTarget::unknown);
  struct AnimationCase {
    Pattern pattern;
    std::string text;
  };
  const AnimationCase cases[] = {
      {Pattern::line(), "Signing in ..."},
      {Pattern::single("*", 0.002), "one frame stays on the first"},
      {Pattern::bouncingBar(), ""},
  };
  for (const AnimationCase &c : cases) {
    SCOPED_TRACE(c.text);
    const std::size_t wanted = 9;
    const std::string output = captureStdout([&] {
      Spinner spinner(c.pattern, c.text, 0.002);
      spinner.start();
      waitForOutput(hide.size() +
                    wanted * redraw(c.pattern.getFrames()[0], c.text).size());
      spinner.stop(std::nullopt, std::nullopt, "");
    });
    std::string_view drawn = output;
    ASSERT_TRUE(drawn.starts_with(hide));
    ASSERT_TRUE(drawn.ends_with(show + show));
    drawn.remove_prefix(hide.size());
    drawn.remove_suffix(2 * show.size());
    std::size_t count = 0;
    EXPECT_TRUE(isAnimation(drawn, c.pattern.getFrames(), c.text, count));
    EXPECT_GE(count, wanted);
  }
}

TEST_F(SpinnerTest, StoppedSpinnerWritesAndChangesNothing) {
  use(OutputTarget::console);
  Spinner spinner(Pattern::line(), "Waiting", drawOnce);
  const std::vector<std::string> frames = spinner.getFrames();
  const std::string output = captureStdout([&] {
    spinner.stop("Other text that is longer", "*", "\n");
    spinner.stop();
    spinner.stopAndClear();
    spinner.succeed("Done");
    spinner.fail();
    spinner.warn("W");
    spinner.info();
  });
  EXPECT_EQ(output, "");
  EXPECT_EQ(spinner.getText(), "Waiting");
  EXPECT_EQ(spinner.getFrames(), frames);
  EXPECT_FALSE(spinner.isRunning());
}

TEST_F(SpinnerTest, FramesAreColouredOnceAtConstruction) {
  struct ColourCase {
    OutputTarget target;
    bool enabled;
    styling::Color color;
    std::vector<std::string> frames;
  };
  const ColourCase cases[] = {
      {OutputTarget::console, true, styling::Color::defaultColor,
       targetCases[0].lineFrames},
      {OutputTarget::console,
       true,
       styling::Color::cyan,
       {"\x1b[36m-\x1b[0m", "\x1b[36m\\\x1b[0m", "\x1b[36m|\x1b[0m",
        "\x1b[36m/\x1b[0m"}},
      {OutputTarget::console,
       false,
       styling::Color::cyan,
       {"-", "\\", "|", "/"}},
      {OutputTarget::unknown,
       true,
       styling::Color::cyan,
       {"-", "\\", "|", "/"}},
      {OutputTarget::xcodeColors,
       true,
       styling::Color::defaultColor,
       {"-", "\\", "|", "/"}},
      {OutputTarget::xcodeColors,
       true,
       styling::Color::red,
       {"\x1b[fg255,0,0;-\x1b[;", "\x1b[fg255,0,0;\\\x1b[;",
        "\x1b[fg255,0,0;|\x1b[;", "\x1b[fg255,0,0;/\x1b[;"}},
  };
  for (const ColourCase &c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.frames));
    TextStyling::setOutputTarget(c.target);
    TextStyling::setEnabled(c.enabled);
    std::optional<Spinner> spinner;
    EXPECT_EQ(captureStdout([&] {
                spinner.emplace(Pattern::line(), "x", std::nullopt, c.color);
              }),
              "");
    // Later changes of the switches don't reach frames made before.
    TextStyling::setEnabled(!c.enabled);
    TextStyling::setOutputTarget(OutputTarget::console);
    EXPECT_EQ(spinner->getFrames(), c.frames);
    captureStdout([&] { spinner.reset(); });
  }
}

// What a running spinner writes after its first redraw, for each way of
// going on; every spinner here draws once at start and then waits.
TEST_F(SpinnerTest, ScenariosWriteExactlyTheirBytes) {
  use(OutputTarget::unknown);
  struct Scenario {
    const char *what;
    std::string text;
    std::function<void(Spinner &)> script;
    std::string expected;
  };
  const Scenario scenarios[] = {
      {"start twice hides once", "x",
       [](Spinner &s) {
         s.start();
         s.stopAndClear();
       },
       redraw(" ", " ") + show + "\r"},
      {"no symbol: the next frame", "T",
       [](Spinner &s) { s.stop(std::nullopt, std::nullopt, "|end"); },
       redraw("\\", "T") + show + "|end"},
      {"empty symbol: one blank", "T",
       [](Spinner &s) { s.stop(std::nullopt, "", "|end"); },
       redraw(" ", "T") + show + "|end"},
      {"wide symbol", "T", [](Spinner &s) { s.stop("Tx", "[ok]", ""); },
       redraw("[ok]", "Tx") + show},
      {"empty text: frame and one blank", "",
       [](Spinner &s) { s.stop(std::nullopt, std::nullopt, ""); },
       "\r\\ " + show},
      {"replaced frames start from the first", "T",
       [](Spinner &s) {
         s.setFrames({"x", "y"});
         s.stop(std::nullopt, std::nullopt, "");
       },
       redraw("x", "T") + show},
      {"restart draws the present frames", "T",
       [](Spinner &s) {
         s.stop(std::nullopt, "v", "\n");
         s.start();
         waitForOutput(2 * hide.size() + 3 * redraw("v", "T").size() +
                       show.size() + 1);
         s.stopAndClear();
       },
       redraw("v", "T") + show + "\n" + hide + redraw("v", "T") +
           redraw(" ", " ") + show + "\r"},
      {"release while running", "T", [](Spinner &) {}, ""},
  };
  for (const Scenario &c : scenarios) {
    SCOPED_TRACE(c.what);
    const std::string output = captureStdout([&] {
      Spinner spinner(Pattern::line(), c.text, drawOnce);
      startAndWaitForFirstRedraw(spinner, redraw("-", c.text));
      c.script(spinner);
    });
    EXPECT_EQ(output, hide + redraw("-", c.text) + c.expected + show);
  }
}

TEST_F(SpinnerTest, CursorIsShownOnReleaseAndOnRequest) {
  use(OutputTarget::unknown);
  EXPECT_EQ(captureStdout([] { Spinner spinner(Pattern::line(), "T"); }), show);
  Spinner spinner(Pattern::line(), "T");
  EXPECT_EQ(captureStdout([&] { spinner.unhideCursor(); }), show);
}

TEST_F(SpinnerTest, SpeedIsThePatternsUnlessGiven) {
  EXPECT_EQ(Spinner(Pattern::line(), "x").getSpeed(), 0.13);
  EXPECT_EQ(Spinner(Pattern::line(), "x", 0.5).getSpeed(), 0.5);
}

TEST_F(SpinnerTest, ShorterTextGetsBlanksForTheVisibleDifference) {
  struct FillCase {
    const char *what;
    std::vector<std::string> texts;
    std::string expected;
  };
  const FillCase cases[] = {
      {"shorter", {"abc", "a"}, "a  "},
      {"longer", {"a", "abc"}, "abc"},
      {"same length", {"abc", "xyz"}, "xyz"},
      {"to empty", {"abc", ""}, "   "},
      {"styled old text", {"\x1b[31mabcd\x1b[0m", "ab"}, "ab  "},
      {"styled new text",
       {"abcd", "\x1b[1;31mab\x1b[0m"},
       "\x1b[1;31mab\x1b[0m  "},
      {"combining accents", {"e\xcc\x81te\xcc\x81", "x"}, "x  "},
      {"family emoji",
       {"\xf0\x9f\x91\xa8\xe2\x80\x8d\xf0\x9f\x91\xa9\xe2"
        "\x80\x8d\xf0\x9f\x91\xa7",
        ""},
       " "},
      {"flags",
       {"\xf0\x9f\x87\xa9\xf0\x9f\x87\xaa\xf0\x9f\x87\xab\xf0\x9f"
        "\x87\xb7",
        "a"},
       "a "},
      {"blanks stay and count", {"abcdef", "ab", "x"}, "x     "},
      {"grown back", {"abcdef", "ab", "abcdefgh"}, "abcdefgh"},
      {"two runs joined count their inner sequence",
       {"\x1b[31ma\x1b[0m\x1b[34mb\x1b[0m", "abcdefgh"},
       "abcdefgh   "},
  };
  for (const FillCase &c : cases) {
    SCOPED_TRACE(c.what);
    Spinner spinner(Pattern::line(), c.texts.front());
    for (std::size_t i = 1; i < c.texts.size(); ++i)
      spinner.setText(c.texts[i]);
    EXPECT_EQ(spinner.getText(), c.expected);
  }
}

// Changes from the main thread while the spinner redraws every millisecond:
// every redraw on the line is whole, drawn from one frame list and one text.
TEST_F(SpinnerTest, ChangesWhileRunningKeepEveryRedrawWhole) {
  use(OutputTarget::unknown);
  const std::string longText = "a much longer text";
  const std::string shortText = "short" + blanks(longText.size() - 5);
  const std::vector<std::string> letters = {"a", "b", "c"};
  const std::vector<std::string> digits = {"1", "2"};
  const std::string output = captureStdout([&] {
    Spinner spinner(Pattern(letters, 0.001), longText);
    spinner.start();
    for (int i = 0; i < 200; ++i) {
      spinner.setText(i % 2 ? longText : "short");
      spinner.setFrames(i % 3 ? letters : digits);
      spinner.setSpeed(i % 2 ? 0.001 : 0.0);
      EXPECT_TRUE(spinner.isRunning());
      (void)spinner.getText();
      std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    spinner.stop(std::nullopt, std::nullopt, "\n");
  });
  std::set<std::string> allowed;
  for (const auto *frames : {&letters, &digits})
    for (const std::string &frame : *frames)
      for (const std::string &text : {longText, shortText})
        allowed.insert(frame + " " + text);
  std::string_view drawn = output;
  ASSERT_TRUE(drawn.starts_with(hide + "\r"));
  ASSERT_TRUE(drawn.ends_with(show + "\n" + show));
  drawn.remove_prefix(hide.size() + 1);
  drawn.remove_suffix(2 * show.size() + 1);
  std::size_t redraws = 0;
  while (!drawn.empty()) {
    const std::size_t end = drawn.find('\r');
    const std::string_view one = drawn.substr(0, end);
    ASSERT_TRUE(allowed.contains(std::string(one))) << one;
    ++redraws;
    drawn.remove_prefix(end == std::string_view::npos ? drawn.size() : end + 1);
  }
  EXPECT_GE(redraws, 2u);
}

} // namespace
