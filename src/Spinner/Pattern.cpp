#include "Spinner/Pattern.h"

#include "Platform/FileAccess.h"

#include <nlohmann/json.hpp>

#include <cassert>
#include <system_error>
#include <utility>

namespace spinner {

SpinnerPattern::~SpinnerPattern() = default;

namespace {

std::string describeFileError(PatternFileError::Kind kind,
                              const std::filesystem::path &path) {
  switch (kind) {
  case PatternFileError::Kind::fileDoesNotExist:
    return "pattern file '" + path.string() + "' does not exist";
  case PatternFileError::Kind::fileNotReadable:
    return "pattern file '" + path.string() + "' is not readable";
  case PatternFileError::Kind::failedToRead:
    return "pattern file '" + path.string() + "' could not be read";
  }
  return "pattern file '" + path.string() + "'";
}

nlohmann::json parseJson(const std::vector<std::uint8_t> &bytes) {
  nlohmann::json json =
      nlohmann::json::parse(bytes.begin(), bytes.end(), nullptr,
                            /*allow_exceptions=*/false);
  if (json.is_discarded())
    throw PatternDecodingError("pattern data is not valid JSON");
  return json;
}

// Only a number is a speed or an interval; "speed" wins when it is there,
// and a "speed" of the wrong type fails even when "interval" could serve.
double readSpeed(const nlohmann::json &object) {
  if (auto speed = object.find("speed"); speed != object.end()) {
    if (!speed->is_number())
      throw PatternDecodingError("pattern \"speed\" is not a number");
    return speed->get<double>();
  }
  auto interval = object.find("interval");
  if (interval == object.end())
    throw PatternDecodingError(
        "pattern has no \"interval\" (nor \"speed\") key");
  if (!interval->is_number())
    throw PatternDecodingError("pattern \"interval\" is not a number");
  return interval->get<double>() / 1000;
}

Pattern decodePattern(const nlohmann::json &object) {
  if (!object.is_object())
    throw PatternDecodingError("a pattern is not a JSON object");
  auto frames = object.find("frames");
  if (frames == object.end())
    throw PatternDecodingError("pattern has no \"frames\" key");
  if (!frames->is_array())
    throw PatternDecodingError("pattern \"frames\" is not an array");
  std::vector<std::string> texts;
  texts.reserve(frames->size());
  for (const nlohmann::json &frame : *frames) {
    if (!frame.is_string())
      throw PatternDecodingError("pattern \"frames\" holds a non-string");
    texts.push_back(frame.get<std::string>());
  }
  // A spinner has nothing to draw without a frame, so such a pattern is
  // refused here, where it comes in from outside.
  if (texts.empty())
    throw PatternDecodingError("pattern \"frames\" is empty");
  return Pattern(std::move(texts), readSpeed(object));
}

std::vector<std::uint8_t> readPatternFile(const std::filesystem::path &path) {
  std::error_code error;
  if (!std::filesystem::exists(path, error))
    throw PatternFileError(PatternFileError::Kind::fileDoesNotExist, path);
  if (!platform::isReadable(path))
    throw PatternFileError(PatternFileError::Kind::fileNotReadable, path);
  std::vector<std::uint8_t> bytes = platform::readFileBytes(path);
  if (bytes.empty())
    throw PatternFileError(PatternFileError::Kind::failedToRead, path);
  return bytes;
}

} // namespace

PatternFileError::PatternFileError(Kind kind, std::filesystem::path path)
    : std::runtime_error(describeFileError(kind, path)), kind(kind),
      path(std::move(path)) {}

Pattern::Pattern(std::vector<std::string> frames, double speed)
    : frames(std::move(frames)), speed(speed) {
  assert(!this->frames.empty() && "a pattern needs at least one frame");
}

Pattern::Pattern(std::initializer_list<std::string> frames, double speed)
    : Pattern(std::vector<std::string>(frames), speed) {}

Pattern Pattern::single(std::string frame, double speed) {
  return Pattern(std::vector<std::string>{std::move(frame)}, speed);
}

Pattern Pattern::multiple(std::vector<std::string> frames, double speed) {
  return Pattern(std::move(frames), speed);
}

Pattern Pattern::load(const std::filesystem::path &path) {
  return load(readPatternFile(path));
}

Pattern Pattern::load(const std::vector<std::uint8_t> &bytes) {
  return decodePattern(parseJson(bytes));
}

Patterns::Patterns(const std::filesystem::path &path)
    : Patterns(readPatternFile(path)) {}

Patterns::Patterns(const std::vector<std::uint8_t> &bytes) {
  const nlohmann::json json = parseJson(bytes);
  if (!json.is_object())
    throw PatternDecodingError("a pattern file is not a JSON object");
  for (const auto &[name, value] : json.items())
    patterns.emplace(name, decodePattern(value));
}

std::optional<Pattern> Patterns::operator[](std::string_view name) const {
  auto found = patterns.find(name);
  if (found == patterns.end())
    return std::nullopt;
  return found->second;
}

// The catalogue. Each constant is a function-local static: made once, at
// its first use, and safe to reach from any thread.
#define KESTRUNE_PATTERN(name, speed, ...)                                     \
  const Pattern &Pattern::name() {                                             \
    static const Pattern pattern({__VA_ARGS__}, speed);                        \
    return pattern;                                                            \
  }

KESTRUNE_PATTERN(dots, 0.08, "⠋", "⠙", "⠹", "⠸", "⠼", "⠴", "⠦", "⠧", "⠇", "⠏")
KESTRUNE_PATTERN(dots2, 0.08, "⣾", "⣽", "⣻", "⢿", "⡿", "⣟", "⣯", "⣷")
KESTRUNE_PATTERN(dots3, 0.08, "⠋", "⠙", "⠚", "⠞", "⠖", "⠦", "⠴", "⠲", "⠳", "⠓")
KESTRUNE_PATTERN(dots4, 0.08, "⠄", "⠆", "⠇", "⠋", "⠙", "⠸", "⠰", "⠠", "⠰", "⠸",
                 "⠙", "⠋", "⠇", "⠆")
KESTRUNE_PATTERN(dots5, 0.08, "⠋", "⠙", "⠚", "⠒", "⠂", "⠂", "⠒", "⠲", "⠴", "⠦",
                 "⠖", "⠒", "⠐", "⠐", "⠒", "⠓", "⠋")
KESTRUNE_PATTERN(dots6, 0.08, "⠁", "⠉", "⠙", "⠚", "⠒", "⠂", "⠂", "⠒", "⠲", "⠴",
                 "⠤", "⠄", "⠄", "⠤", "⠴", "⠲", "⠒", "⠂", "⠂", "⠒", "⠚", "⠙",
                 "⠉", "⠁")
KESTRUNE_PATTERN(dots7, 0.08, "⠈", "⠉", "⠋", "⠓", "⠒", "⠐", "⠐", "⠒", "⠖", "⠦",
                 "⠤", "⠠", "⠠", "⠤", "⠦", "⠖", "⠒", "⠐", "⠐", "⠒", "⠓", "⠋",
                 "⠉", "⠈")
KESTRUNE_PATTERN(dots8, 0.08, "⠁", "⠁", "⠉", "⠙", "⠚", "⠒", "⠂", "⠂", "⠒", "⠲",
                 "⠴", "⠤", "⠄", "⠄", "⠤", "⠠", "⠠", "⠤", "⠦", "⠖", "⠒", "⠐",
                 "⠐", "⠒", "⠓", "⠋", "⠉", "⠈", "⠈")
KESTRUNE_PATTERN(dots9, 0.08, "⢹", "⢺", "⢼", "⣸", "⣇", "⡧", "⡗", "⡏")
KESTRUNE_PATTERN(dots10, 0.08, "⢄", "⢂", "⢁", "⡁", "⡈", "⡐", "⡠")
KESTRUNE_PATTERN(dots11, 0.1, "⠁", "⠂", "⠄", "⡀", "⢀", "⠠", "⠐", "⠈")
KESTRUNE_PATTERN(dots12, 0.08, "⢀⠀", "⡀⠀", "⠄⠀", "⢂⠀", "⡂⠀", "⠅⠀", "⢃⠀", "⡃⠀",
                 "⠍⠀", "⢋⠀", "⡋⠀", "⠍⠁", "⢋⠁", "⡋⠁", "⠍⠉", "⠋⠉", "⠋⠉", "⠉⠙",
                 "⠉⠙", "⠉⠩", "⠈⢙", "⠈⡙", "⢈⠩", "⡀⢙", "⠄⡙", "⢂⠩", "⡂⢘", "⠅⡘",
                 "⢃⠨", "⡃⢐", "⠍⡐", "⢋⠠", "⡋⢀", "⠍⡁", "⢋⠁", "⡋⠁", "⠍⠉", "⠋⠉",
                 "⠋⠉", "⠉⠙", "⠉⠙", "⠉⠩", "⠈⢙", "⠈⡙", "⠈⠩", "⠀⢙", "⠀⡙", "⠀⠩",
                 "⠀⢘", "⠀⡘", "⠀⠨", "⠀⢐", "⠀⡐", "⠀⠠", "⠀⢀", "⠀⡀")
KESTRUNE_PATTERN(line, 0.13, "-", "\\", "|", "/")
KESTRUNE_PATTERN(line2, 0.1, "⠂", "-", "–", "—", "–", "-")
KESTRUNE_PATTERN(pipe, 0.1, "┤", "┘", "┴", "└", "├", "┌", "┬", "┐")
KESTRUNE_PATTERN(simpleDots, 0.4, ".  ", ".. ", "...", "   ")
KESTRUNE_PATTERN(simpleDotsScrolling, 0.2, ".  ", ".. ", "...", " ..", "  .",
                 "   ")
KESTRUNE_PATTERN(star, 0.7, "✶", "✸", "✹", "✺", "✹", "✷")
KESTRUNE_PATTERN(star2, 0.8, "+", "x", "*")
KESTRUNE_PATTERN(flip, 0.7, "_", "_", "_", "-", "`", "`", "'", "´", "-", "_",
                 "_", "_")
KESTRUNE_PATTERN(hamburger, 0.1, "☱", "☲", "☴")
KESTRUNE_PATTERN(growVertical, 0.12, "▁", "▃", "▄", "▅", "▆", "▇", "▆", "▅",
                 "▄", "▃")
KESTRUNE_PATTERN(growHorizontal, 0.12, "▏", "▎", "▍", "▌", "▋", "▊", "▉", "▊",
                 "▋", "▌", "▍", "▎")
KESTRUNE_PATTERN(balloon, 0.14, " ", ".", "o", "O", "@", "*", " ")
KESTRUNE_PATTERN(balloon2, 0.12, ".", "o", "O", "°", "O", "o", ".")
KESTRUNE_PATTERN(noise, 0.1, "▓", "▒", "░")
KESTRUNE_PATTERN(bounce, 0.12, "⠁", "⠂", "⠄", "⠂")
KESTRUNE_PATTERN(boxBounce, 0.12, "▖", "▘", "▝", "▗")
KESTRUNE_PATTERN(boxBounce2, 0.1, "▌", "▀", "▐", "▄")
KESTRUNE_PATTERN(triangle, 0.05, "◢", "◣", "◤", "◥")
KESTRUNE_PATTERN(arc, 0.1, "◜", "◠", "◝", "◞", "◡", "◟")
KESTRUNE_PATTERN(circle, 0.12, "◡", "⊙", "◠")
KESTRUNE_PATTERN(squareCorners, 0.18, "◰", "◳", "◲", "◱")
KESTRUNE_PATTERN(circleQuarters, 0.12, "◴", "◷", "◶", "◵")
KESTRUNE_PATTERN(circleHalves, 0.05, "◐", "◓", "◑", "◒")
KESTRUNE_PATTERN(squish, 0.1, "╫", "╪")
KESTRUNE_PATTERN(toggle, 0.25, "⊶", "⊷")
KESTRUNE_PATTERN(toggle2, 0.08, "▫", "▪")
KESTRUNE_PATTERN(toggle3, 0.12, "□", "■")
KESTRUNE_PATTERN(toggle4, 0.1, "■", "□", "▪", "▫")
KESTRUNE_PATTERN(toggle5, 0.1, "▮", "▯")
KESTRUNE_PATTERN(toggle6, 0.3, "ဝ", "၀")
KESTRUNE_PATTERN(toggle7, 0.08, "⦾", "⦿")
KESTRUNE_PATTERN(toggle8, 0.1, "◍", "◌")
KESTRUNE_PATTERN(toggle9, 0.1, "◉", "◎")
KESTRUNE_PATTERN(toggle10, 0.1, "㊂", "㊀", "㊁")
KESTRUNE_PATTERN(toggle11, 0.1, "⧇", "⧆")
KESTRUNE_PATTERN(toggle12, 0.12, "☗", "☖")
KESTRUNE_PATTERN(toggle13, 0.08, "=", "*", "-")
KESTRUNE_PATTERN(arrow, 0.1, "←", "↖", "↑", "↗", "→", "↘", "↓", "↙")
KESTRUNE_PATTERN(arrow2, 0.08, "⬆️ ", "↗️ ", "➡️ ", "↘️ ",
                 "⬇️ ", "↙️ ", "⬅️ ", "↖️ ")
KESTRUNE_PATTERN(arrow3, 0.12, "▹▹▹▹▹", "▸▹▹▹▹", "▹▸▹▹▹", "▹▹▸▹▹", "▹▹▹▸▹",
                 "▹▹▹▹▸")
KESTRUNE_PATTERN(bouncingBar, 0.08, "[    ]", "[   =]", "[  ==]", "[ ===]",
                 "[====]", "[=== ]", "[==  ]", "[=   ]")
KESTRUNE_PATTERN(bouncingBall, 0.08, "( ●    )", "(  ●   )", "(   ●  )",
                 "(    ● )", "(     ●)", "(    ● )", "(   ●  )", "(  ●   )",
                 "( ●    )", "(●     )")
KESTRUNE_PATTERN(smiley, 0.2, "😄 ", "😝 ")
KESTRUNE_PATTERN(monkey, 0.3, "🙈 ", "🙈 ", "🙉 ", "🙊 ")
KESTRUNE_PATTERN(hearts, 0.1, "💛 ", "💙 ", "💜 ", "💚 ", "❤️ ")
KESTRUNE_PATTERN(clock, 0.1, "🕐 ", "🕑 ", "🕒 ", "🕓 ", "🕔 ", "🕕 ", "🕖 ", "🕗 ",
                 "🕘 ", "🕙 ", "🕚 ")
KESTRUNE_PATTERN(earth, 0.18, "🌍 ", "🌎 ", "🌏 ")
KESTRUNE_PATTERN(moon, 0.08, "🌑 ", "🌒 ", "🌓 ", "🌔 ", "🌕 ", "🌖 ", "🌗 ", "🌘 ")
KESTRUNE_PATTERN(runner, 0.14, "🚶 ", "🏃 ")
KESTRUNE_PATTERN(pong, 0.08, "▐⠂       ▌", "▐⠈       ▌", "▐ ⠂      ▌",
                 "▐ ⠠      ▌", "▐  ⡀     ▌", "▐  ⠠     ▌", "▐   ⠂    ▌",
                 "▐   ⠈    ▌", "▐    ⠂   ▌", "▐    ⠠   ▌", "▐     ⡀  ▌",
                 "▐     ⠠  ▌", "▐      ⠂ ▌", "▐      ⠈ ▌", "▐       ⠂▌",
                 "▐       ⠠▌", "▐       ⡀▌", "▐      ⠠ ▌", "▐      ⠂ ▌",
                 "▐     ⠈  ▌", "▐     ⠂  ▌", "▐    ⠠   ▌", "▐    ⡀   ▌",
                 "▐   ⠠    ▌", "▐   ⠂    ▌", "▐  ⠈     ▌", "▐  ⠂     ▌",
                 "▐ ⠠      ▌", "▐ ⡀      ▌", "▐⠠       ▌")
KESTRUNE_PATTERN(shark, 0.12, "▐|\\____________▌", "▐_|\\___________▌",
                 "▐__|\\__________▌", "▐___|\\_________▌", "▐____|\\________▌",
                 "▐_____|\\_______▌", "▐______|\\______▌", "▐_______|\\_____▌",
                 "▐________|\\____▌", "▐_________|\\___▌", "▐__________|\\__▌",
                 "▐___________|\\_▌", "▐____________|\\▌", "▐____________/|▌",
                 "▐___________/|_▌", "▐__________/|__▌", "▐_________/|___▌",
                 "▐________/|____▌", "▐_______/|_____▌", "▐______/|______▌",
                 "▐_____/|_______▌", "▐____/|________▌", "▐___/|_________▌",
                 "▐__/|__________▌", "▐_/|___________▌", "▐/|____________▌")
KESTRUNE_PATTERN(dqpb, 0.1, "d", "q", "p", "b")

#undef KESTRUNE_PATTERN

} // namespace spinner
