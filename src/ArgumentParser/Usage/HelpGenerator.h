#ifndef KESTRUNECLI_ARGUMENTPARSER_USAGE_HELPGENERATOR_H
#define KESTRUNECLI_ARGUMENTPARSER_USAGE_HELPGENERATOR_H

#include "ArgumentParser/CommandType.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace argparse {

/// The help text of a command, as reached through a stack of commands.
class HelpGenerator {
public:
  /// Abstracts begin in this column.
  static constexpr std::size_t labelColumnWidth = 26;
  /// Discussions of an entry are indented this far.
  static constexpr std::size_t discussionIndent = 8;

  struct Usage {
    std::vector<std::string> components;
  };

  struct Section {
    enum class Header { positionalArguments, subcommands, options };

    struct Element {
      std::string label;
      std::string abstract;
      std::string discussion;

      /// The label indented by two, the abstract from column 26 (on the
      /// next line when the label reaches it), then the discussion.
      std::string rendered(std::size_t screenWidth) const;
      friend bool operator==(const Element &, const Element &) = default;
    };

    Header header;
    std::vector<Element> elements;
    std::string discussion;
    bool isSubcommands = false;

    /// "" when empty, else the upper-case title, ":" and the elements.
    std::string rendered(std::size_t screenWidth) const;
  };

  struct DiscussionSection {
    std::string title;
    std::string content;
  };

  /// Stands in for the terminal's width when set (tests set it).
  static std::optional<std::size_t> screenWidthOverride;

  /// The help of the last command of \p commandStack, which must not be
  /// empty.
  explicit HelpGenerator(std::vector<const CommandType *> commandStack);

  /// The whole help text, wrapped to \p screenWidth, else to the override,
  /// else to the terminal's width. Without a closing line it ends in a line
  /// break; the closing "See ..." line has none.
  std::string rendered(std::optional<std::size_t> screenWidth = {}) const;

  const std::vector<const CommandType *> &getCommandStack() const noexcept {
    return commandStack;
  }
  const std::string &getAbstract() const noexcept { return abstract; }
  const Usage &getUsage() const noexcept { return usage; }
  const std::vector<Section> &getSections() const noexcept { return sections; }

private:
  std::vector<const CommandType *> commandStack;
  std::string abstract;
  Usage usage;
  std::vector<Section> sections;
  std::vector<DiscussionSection> discussionSections;
};

/// The usage line of the last command of \p commandStack, as HelpGenerator
/// shows it.
std::string usageString(const std::vector<const CommandType *> &commandStack);

} // namespace argparse

#endif
