#ifndef KESTRUNECLI_FUZZ_COMMANDTREES_H
#define KESTRUNECLI_FUZZ_COMMANDTREES_H

// Command trees that together use every feature of the argument engine:
// typed values, defaults and transforms, every parsing strategy, flags of
// every kind, positionals, subcommand trees, validation and help texts.
// The engine's fuzz target parses arbitrary command lines against them; its
// tests (tests/ArgumentParser) parse chosen ones and compare what a
// command's run() records. The header lives here, built on the engine
// alone, because this folder is part of every build (the fuzz tree, where
// tests/ is not, and every build with tests) while it needs nothing from
// tests/.

#include "ArgumentParser/ArgumentParser.h"

#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>
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

/// What the last command's run() was given: its fields, each followed by a
/// blank (strings quoted, enumerations as numbers, "-" for none, arrays in
/// brackets).
inline std::string said;

template <typename T> void record(const T &value) {
  if constexpr (std::is_enum_v<T>)
    said += std::to_string(static_cast<int>(value)) + " ";
  else if constexpr (std::is_same_v<T, std::string>)
    said += "'" + value + "' ";
  else
    said += (std::ostringstream() << value).str() + " ";
}
template <typename T> void record(const std::optional<T> &value) {
  value ? record(*value) : void(said += "- ");
}
template <typename T> void record(const std::vector<T> &values) {
  said += "[ ";
  for (const T &value : values)
    record(value);
  said += "] ";
}
template <typename... T> void recordAll(const T &...fields) {
  said.clear();
  (record(fields), ...);
}

/// Integers, and one option per parsing strategy of single values and of
/// arrays.
struct Values : ParsableCommand<Values> {
  static constexpr std::string_view typeName = "Values";
  int count = 0;
  std::optional<int> port;
  std::vector<int> numbers;
  std::optional<std::string> scan, any;
  std::vector<std::string> each, upTo, rest;
  bool flagged = false;
  static Arguments<Values> arguments() {
    return {
        option(&Values::count, "count").name(shortAndLong).defaultValue(3),
        option(&Values::port, "port"),
        option(&Values::numbers, "numbers"),
        option(&Values::scan, "scan")
            .parsing(SingleValueParsingStrategy::scanningForValue),
        option(&Values::any, "any")
            .parsing(SingleValueParsingStrategy::unconditional),
        option(&Values::each, "each")
            .parsing(ArrayParsingStrategy::unconditionalSingleValue),
        option(&Values::upTo, "upTo")
            .parsing(ArrayParsingStrategy::upToNextOption),
        option(&Values::rest, "rest").parsing(ArrayParsingStrategy::remaining),
        flag(&Values::flagged, "flag"),
    };
  }
  void run() override {
    recordAll(count, port, numbers, scan, any, each, upTo, rest, flagged);
  }
};

/// Values of several types, with defaults, a required option and a
/// transform that rejects.
struct Typed : ParsableCommand<Typed> {
  static constexpr std::string_view typeName = "Typed";
  int count = 0;
  double ratio = 0;
  Color color = Color::red;
  std::optional<int> port;
  std::vector<int> numbers;
  std::string name;
  std::optional<std::string> even;
  static Arguments<Typed> arguments() {
    return {
        option(&Typed::count, "count").name(shortAndLong).defaultValue(3),
        option(&Typed::ratio, "ratio").defaultValue(0.5),
        option(&Typed::color, "color").defaultValue(Color::red),
        option(&Typed::port, "port"),
        option(&Typed::numbers, "numbers"),
        option(&Typed::name, "name").help("The name"),
        option(&Typed::even, "even").transform([](const std::string &text) {
          if (text.size() % 2)
            throw std::runtime_error("odd length");
          return text;
        }),
    };
  }
  void run() override {
    recordAll(count, ratio, color, port, numbers, name, even);
  }
};

/// Boolean, inverted, enumerated and counting flags, and short groups.
struct Flags : ParsableCommand<Flags> {
  static constexpr std::string_view typeName = "Flags";
  bool alpha = false, beta = false, cache = true, color = false, abc = false;
  std::optional<Speed> speed;
  Level level = Level::low;
  int verbose = 0;
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
        flag(&Flags::abc, "abc").name(customLong("abc", true)),
        option(&Flags::output, "output").name(shortAndLong),
    };
  }
  void run() override {
    recordAll(alpha, beta, cache, color, speed, level, verbose, abc, output);
  }
};

/// Positionals (one required, one optional, the rest repeating) and a
/// validate(); for the help, a label of 24 characters, a discussion, a
/// hidden flag, a custom value name, and characters of several bytes.
struct Positionals : ParsableCommand<Positionals> {
  static constexpr std::string_view typeName = "Positionals";
  std::string source;
  std::optional<std::string> target, value;
  std::vector<std::string> extras;
  bool force = false, below = false, discuss = false, secret = false,
       words = false;
  static Arguments<Positionals> arguments() {
    return {
        argument(&Positionals::source, "source").help("Where from"),
        argument(&Positionals::target, "target"),
        argument(&Positionals::extras, "extras"),
        flag(&Positionals::force, "force"),
        flag(&Positionals::below, "below")
            .name(customLong("bbbbbbbbbbbbbbbbbbbbbb"))
            .help("Goes below."),
        flag(&Positionals::discuss, "discuss")
            .help(ArgumentHelp("Short.", "A longer discussion that explains.")),
        flag(&Positionals::secret, "secret").help(ArgumentHelp::hidden()),
        option(&Positionals::value, "value")
            .help(ArgumentHelp("Custom value name.", "", "path")),
        flag(&Positionals::words, "words")
            .help("déjà vu 💡💡 three four five six"),
    };
  }
  void validate() override {
    if (source == "bad")
      throw ValidationError("source must not be bad");
  }
  void run() override { recordAll(source, target, extras, force); }
};

/// A repeating positional that takes everything, options included.
struct Passthrough : ParsableCommand<Passthrough> {
  static constexpr std::string_view typeName = "Passthrough";
  std::vector<std::string> words;
  static Arguments<Passthrough> arguments() {
    return {argument(&Passthrough::words, "words")
                .parsing(ArgumentArrayParsingStrategy::unconditionalRemaining)};
  }
  void run() override { recordAll(words); }
};

/// Options shared by a root and its subcommands.
struct GlobalOptions : ParsableArguments {
  static constexpr std::string_view typeName = "GlobalOptions";
  bool verbose = false;
  std::optional<std::string> profile;
  static Arguments<GlobalOptions> arguments() {
    return {flag(&GlobalOptions::verbose, "verbose").help("Say more"),
            option(&GlobalOptions::profile, "profile").help("The profile")};
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
  void run() override { recordAll(global.verbose, global.profile, paths); }
};

/// A subcommand that help and suggestions leave out.
struct Secret : ParsableCommand<Secret> {
  static constexpr std::string_view typeName = "Secret";
  static CommandConfiguration configuration() {
    return {.abstract = "Hidden work.", .shouldDisplay = false};
  }
  void run() override { recordAll(); }
};

/// A command without a run: it shows its help.
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
};

/// A validate() that fails in every way a command can, by the option given.
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
  void run() override { recordAll(mode); }
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
  void run() override { recordAll(quiet); }
};

/// A plain argument group, parsed on its own as a command.
struct ServerOptions : ParsableArguments {
  static constexpr std::string_view typeName = "ServerOptions";
  int port = 80;
  static Arguments<ServerOptions> arguments() {
    return {option(&ServerOptions::port, "port").defaultValue(80)};
  }
};

} // namespace argtest

#endif
