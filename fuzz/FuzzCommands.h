#ifndef KESTRUNECLI_FUZZ_FUZZCOMMANDS_H
#define KESTRUNECLI_FUZZ_FUZZCOMMANDS_H

// Command trees that together use every feature of the argument engine:
// the fuzzer parses arbitrary command lines against each of them.

#include "ArgumentParser/ArgumentParser.h"
#include "ArgumentParser/Usage/HelpGenerator.h"
#include "ArgumentParser/Usage/MessageInfo.h"

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace argtest {

enum class Color { red, green };
enum class Speed { fast, slow };
enum class Level { low, high };

} // namespace argtest

template <> struct argparse::ExpressibleByArgument<argtest::Color> {
  static std::optional<argtest::Color> fromArgument(const std::string &text) {
    if (text == "red")
      return argtest::Color::red;
    if (text == "green")
      return argtest::Color::green;
    return std::nullopt;
  }
  static std::string defaultValueDescription(argtest::Color color) {
    return color == argtest::Color::red ? "red" : "green";
  }
};

template <> struct argparse::EnumerableFlag<argtest::Level> {
  static std::vector<FlagCase<argtest::Level>> allCases() {
    return {{argtest::Level::low, "low", ArgumentHelp("Go low")},
            {argtest::Level::high, "high", ArgumentHelp("Go high")}};
  }
};

template <> struct argparse::EnumerableFlag<argtest::Speed> {
  static std::vector<FlagCase<argtest::Speed>> allCases() {
    return {{argtest::Speed::fast, "fast"}, {argtest::Speed::slow, "slow"}};
  }
};

namespace argtest {

using namespace argparse;

/// One option per single-value strategy and one per array strategy.
struct Strategies : ParsableCommand<Strategies> {
  static constexpr std::string_view typeName = "Strategies";
  std::optional<std::string> next;
  std::optional<std::string> scanning;
  std::optional<std::string> unconditional;
  std::vector<std::string> single;
  std::vector<std::string> unconditionalSingle;
  std::vector<std::string> upTo;
  std::vector<std::string> rest;
  bool flagged = false;

  static Arguments<Strategies> arguments() {
    return {
        option(&Strategies::next, "next"),
        option(&Strategies::scanning, "scanning")
            .parsing(SingleValueParsingStrategy::scanningForValue),
        option(&Strategies::unconditional, "unconditional")
            .parsing(SingleValueParsingStrategy::unconditional),
        option(&Strategies::single, "single"),
        option(&Strategies::unconditionalSingle, "unconditionalSingle")
            .parsing(ArrayParsingStrategy::unconditionalSingleValue),
        option(&Strategies::upTo, "upTo")
            .parsing(ArrayParsingStrategy::upToNextOption),
        option(&Strategies::rest, "rest")
            .parsing(ArrayParsingStrategy::remaining),
        flag(&Strategies::flagged, "flag"),
    };
  }
  void run() override {}
};

/// Values of several types, with defaults and transforms.
struct Values : ParsableCommand<Values> {
  static constexpr std::string_view typeName = "Values";
  int count = 0;
  double ratio = 0;
  Color color = Color::red;
  std::optional<int> port;
  std::vector<int> numbers;
  std::string name;
  std::optional<std::string> even;

  static Arguments<Values> arguments() {
    return {
        option(&Values::count, "count").name(shortAndLong).defaultValue(3),
        option(&Values::ratio, "ratio").defaultValue(0.5),
        option(&Values::color, "color").defaultValue(Color::red),
        option(&Values::port, "port"),
        option(&Values::numbers, "numbers"),
        option(&Values::name, "name").help("The name"),
        option(&Values::even, "even").transform([](const std::string &text) {
          if (text.size() % 2)
            throw std::runtime_error("odd length");
          return text;
        }),
    };
  }
  void run() override {}
};

/// Boolean, inverted, enumerated and counting flags, and short groups.
struct Flags : ParsableCommand<Flags> {
  static constexpr std::string_view typeName = "Flags";
  bool alpha = false;
  bool beta = false;
  bool cache = true;
  bool color = false;
  std::optional<Speed> speed;
  Level level = Level::low;
  int verbose = 0;
  bool first = false;
  bool last = false;
  std::optional<std::string> output;

  static Arguments<Flags> arguments() {
    return {
        flag(&Flags::alpha, "alpha").name(shortAndLong),
        flag(&Flags::beta, "beta").name(shortAndLong),
        flag(&Flags::cache, "cache")
            .inversion(FlagInversion::prefixedNo)
            .defaultValue(true)
            .help("Use the cache"),
        flag(&Flags::color, "color")
            .inversion(FlagInversion::prefixedEnableDisable)
            .defaultValue(false)
            .exclusivity(FlagExclusivity::chooseLast),
        flag(&Flags::speed, "speed"),
        flag(&Flags::level, "level")
            .defaultValue(Level::low)
            .exclusivity(FlagExclusivity::chooseFirst),
        flag(&Flags::verbose, "verbose").name({shortName, longName}),
        flag(&Flags::first, "first").name(customLong("abc", true)),
        option(&Flags::output, "output").name(shortAndLong),
    };
  }
  void run() override {}
};

/// Positional arguments: one required, one optional, the rest repeating.
struct Positionals : ParsableCommand<Positionals> {
  static constexpr std::string_view typeName = "Positionals";
  std::string source;
  std::optional<std::string> target;
  std::vector<std::string> extras;
  bool force = false;

  static Arguments<Positionals> arguments() {
    return {
        argument(&Positionals::source, "source").help("Where from"),
        argument(&Positionals::target, "target"),
        argument(&Positionals::extras, "extras"),
        flag(&Positionals::force, "force"),
    };
  }
  void run() override {}
};

/// A repeating positional that takes everything, options included.
struct Passthrough : ParsableCommand<Passthrough> {
  static constexpr std::string_view typeName = "Passthrough";
  std::vector<std::string> words;
  static Arguments<Passthrough> arguments() {
    return {argument(&Passthrough::words, "words")
                .parsing(ArgumentArrayParsingStrategy::unconditionalRemaining)};
  }
  void run() override {}
};

/// Options shared by a root and its subcommands.
struct GlobalOptions : ParsableArguments {
  static constexpr std::string_view typeName = "GlobalOptions";
  bool verbose = false;
  std::optional<std::string> profile;
  static Arguments<GlobalOptions> arguments() {
    return {
        flag(&GlobalOptions::verbose, "verbose").help("Say more"),
        option(&GlobalOptions::profile, "profile").help("The profile"),
    };
  }
};

struct FileSync : ParsableCommand<FileSync> {
  static constexpr std::string_view typeName = "FileSync";
  static CommandConfiguration configuration() {
    return {.abstract = "Synchronise files."};
  }
  GlobalOptions global;
  std::vector<std::string> paths;
  static Arguments<FileSync> arguments() {
    return {optionGroup(&FileSync::global, "global"),
            argument(&FileSync::paths, "paths").help("Paths to sync")};
  }
  void run() override {}
};

struct Secret : ParsableCommand<Secret> {
  static constexpr std::string_view typeName = "Secret";
  static CommandConfiguration configuration() {
    return {.abstract = "Hidden work.", .shouldDisplay = false};
  }
  void run() override {}
};

/// A command without a run: it prints its help.
struct Idle : ParsableCommand<Idle> {
  static constexpr std::string_view typeName = "Idle";
};

/// A root with subcommands, a default subcommand, a version and a shared
/// option group.
struct Tool : ParsableCommand<Tool> {
  static constexpr std::string_view typeName = "Tool";
  static CommandConfiguration configuration() {
    return {.commandName = "tool",
            .abstract = "A tool for tests.",
            .version = "1.0.0",
            .subcommands = {&commandType<FileSync>(), &commandType<Secret>(),
                            &commandType<Idle>()},
            .defaultSubcommand = &commandType<FileSync>()};
  }
  GlobalOptions global;
  static Arguments<Tool> arguments() {
    return {optionGroup(&Tool::global, "global")};
  }
  void run() override {}
};

/// A validate() that rejects by what it was given.
struct Checked : ParsableCommand<Checked> {
  static constexpr std::string_view typeName = "Checked";
  std::string mode;
  static Arguments<Checked> arguments() {
    return {option(&Checked::mode, "mode")};
  }
  void validate() override {
    if (mode == "bad")
      throw ValidationError("mode must not be bad");
    if (mode == "empty")
      throw ValidationError("");
    if (mode == "exit")
      throw ExitCode(3);
    if (mode == "clean")
      throw CleanExit::message("all done");
    if (mode == "other")
      throw std::runtime_error("boom");
  }
  void run() override {}
};

/// A command whose help names are none at all.
struct NoHelp : ParsableCommand<NoHelp> {
  static constexpr std::string_view typeName = "NoHelp";
  static CommandConfiguration configuration() {
    return {.helpNames = NameSpecification::none()};
  }
  bool quiet = false;
  static Arguments<NoHelp> arguments() {
    return {flag(&NoHelp::quiet, "quiet")};
  }
  void run() override {}
};

/// A plain argument group parsed on its own.
struct ServerOptions : ParsableArguments {
  static constexpr std::string_view typeName = "ServerOptions";
  int port = 80;
  static Arguments<ServerOptions> arguments() {
    return {option(&ServerOptions::port, "port").defaultValue(80)};
  }
};

} // namespace argtest

#endif
