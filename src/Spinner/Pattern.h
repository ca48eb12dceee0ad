#ifndef KESTRUNECLI_SPINNER_PATTERN_H
#define KESTRUNECLI_SPINNER_PATTERN_H

#include "Spinner/SpinnerPattern.h"

#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace spinner {

/// A pattern file that can't be had. Carries the path that was asked for.
class PatternFileError : public std::runtime_error {
public:
  enum class Kind { fileDoesNotExist, fileNotReadable, failedToRead };
  PatternFileError(Kind kind, std::filesystem::path path);
  [[nodiscard]] Kind getKind() const noexcept { return kind; }
  [[nodiscard]] const std::filesystem::path &getPath() const noexcept {
    return path;
  }

private:
  Kind kind;
  std::filesystem::path path;
};

/// Pattern JSON that doesn't hold a pattern: not JSON, a missing or mistyped
/// key, or no frames at all. The message names what is wrong.
class PatternDecodingError : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

/// A pattern as a value: frames (plain text, each a whole frame, perhaps
/// several columns wide) and seconds per frame. A pattern has at least one
/// frame.
class Pattern final : public SpinnerPattern {
public:
  /// A pattern of \p frames, at least one, each standing \p speed seconds.
  Pattern(std::vector<std::string> frames, double speed);
  Pattern(std::initializer_list<std::string> frames, double speed);

  /// A pattern of the one frame \p frame.
  [[nodiscard]] static Pattern single(std::string frame, double speed);
  /// The same as the constructor.
  [[nodiscard]] static Pattern multiple(std::vector<std::string> frames,
                                        double speed);

  /// Reads one pattern from the JSON file at \p path: an object with
  /// "frames" and "speed" (seconds) or "interval" (milliseconds). Throws
  /// PatternFileError when the file is missing, unreadable or empty, and
  /// PatternDecodingError when its content holds no pattern.
  [[nodiscard]] static Pattern load(const std::filesystem::path &path);
  /// Reads one pattern from JSON bytes. Throws PatternDecodingError.
  [[nodiscard]] static Pattern load(const std::vector<std::uint8_t> &bytes);

  [[nodiscard]] const std::vector<std::string> &getFrames() const override {
    return frames;
  }
  [[nodiscard]] double getSpeed() const override { return speed; }

  bool operator==(const Pattern &other) const {
    return frames == other.frames && speed == other.speed;
  }

  /// The catalogue: each pattern made once, at its first use.
  static const Pattern &dots();
  static const Pattern &dots2();
  static const Pattern &dots3();
  static const Pattern &dots4();
  static const Pattern &dots5();
  static const Pattern &dots6();
  static const Pattern &dots7();
  static const Pattern &dots8();
  static const Pattern &dots9();
  static const Pattern &dots10();
  static const Pattern &dots11();
  static const Pattern &dots12();
  static const Pattern &line();
  static const Pattern &line2();
  static const Pattern &pipe();
  static const Pattern &simpleDots();
  static const Pattern &simpleDotsScrolling();
  static const Pattern &star();
  static const Pattern &star2();
  static const Pattern &flip();
  static const Pattern &hamburger();
  static const Pattern &growVertical();
  static const Pattern &growHorizontal();
  static const Pattern &balloon();
  static const Pattern &balloon2();
  static const Pattern &noise();
  static const Pattern &bounce();
  static const Pattern &boxBounce();
  static const Pattern &boxBounce2();
  static const Pattern &triangle();
  static const Pattern &arc();
  static const Pattern &circle();
  static const Pattern &squareCorners();
  static const Pattern &circleQuarters();
  static const Pattern &circleHalves();
  static const Pattern &squish();
  static const Pattern &toggle();
  static const Pattern &toggle2();
  static const Pattern &toggle3();
  static const Pattern &toggle4();
  static const Pattern &toggle5();
  static const Pattern &toggle6();
  static const Pattern &toggle7();
  static const Pattern &toggle8();
  static const Pattern &toggle9();
  static const Pattern &toggle10();
  static const Pattern &toggle11();
  static const Pattern &toggle12();
  static const Pattern &toggle13();
  static const Pattern &arrow();
  static const Pattern &arrow2();
  static const Pattern &arrow3();
  static const Pattern &bouncingBar();
  static const Pattern &bouncingBall();
  static const Pattern &smiley();
  static const Pattern &monkey();
  static const Pattern &hearts();
  static const Pattern &clock();
  static const Pattern &earth();
  static const Pattern &moon();
  static const Pattern &runner();
  static const Pattern &pong();
  static const Pattern &shark();
  static const Pattern &dqpb();

private:
  std::vector<std::string> frames;
  double speed;
};

/// Named patterns, as read from a file that holds many: one JSON object
/// that maps each name to a pattern object.
class Patterns {
public:
  /// Reads the file at \p path. Throws PatternFileError or
  /// PatternDecodingError as Pattern::load does.
  explicit Patterns(const std::filesystem::path &path);
  /// Reads JSON bytes. Throws PatternDecodingError.
  explicit Patterns(const std::vector<std::uint8_t> &bytes);

  /// The pattern named \p name, or std::nullopt when there is none.
  [[nodiscard]] std::optional<Pattern> operator[](std::string_view name) const;

  std::map<std::string, Pattern, std::less<>> patterns;
};

} // namespace spinner

#endif
