// Splits and parses arbitrary command lines against command trees that use
// every feature of the engine, and renders the help, usage or error text
// that the input leads to. Input: one byte choosing the tree and what else
// the run does (walking the split list with every operation, rendering the
// outcome's text), one byte for the help width, then the arguments
// separated by NUL bytes (any other bytes, invalid UTF-8 included, stay in
// the arguments). Each run does only part of the work, so that more inputs
// go through the parser each second: the fuzzer reaches every tree with
// each part, and every width, all the same.

#include "ArgumentParser/ArgumentParser.h"
#include "ArgumentParser/Parsing/CommandParser.h"
#include "ArgumentParser/Parsing/SplitArguments.h"
#include "ArgumentParser/Usage/HelpGenerator.h"
#include "ArgumentParser/Usage/MessageInfo.h"
#include "CommandTrees.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace {

using namespace argparse;

// An input's first byte picks a tree by its place here and their number:
// adding, removing or moving one changes what every seed parses.
const CommandType *const roots[] = {
    &commandType<argtest::Tool>(),
    &commandType<argtest::Values>(),
    &commandType<argtest::Flags>(),
    &commandType<argtest::Typed>(),
    &commandType<argtest::Positionals>(),
    &commandType<argtest::Passthrough>(),
    &commandType<argtest::Checked>(),
    &commandType<argtest::NoHelp>(),
    &commandType<WrappedParsableCommand<argtest::ServerOptions>>(),
};

std::vector<std::string> argumentsFrom(const std::uint8_t *data,
                                       std::size_t size) {
  std::vector<std::string> arguments;
  std::string current;
  for (std::size_t i = 0; i < size; ++i) {
    if (data[i] == 0) {
      arguments.push_back(current);
      current.clear();
    } else {
      current.push_back(static_cast<char>(data[i]));
    }
  }
  if (size > 0)
    arguments.push_back(current);
  return arguments;
}

// Walks the split list with every consuming operation.
void exerciseSplit(const std::vector<std::string> &arguments) {
  try {
    SplitArguments split(arguments);
    (void)split.coalescedExtraElements();
    (void)split.containsNonTerminatorArguments();
    SplitArguments copy = split;
    while (auto next = copy.peekNext()) {
      (void)copy.originalInputAt(next->first);
      (void)copy.popNextElementIfValue(next->first);
      (void)copy.popNextValue(next->first);
      (void)copy.popNextElementAsValue(next->first);
      copy.popNext();
    }
    while (split.popNextValue()) {
    }
  } catch (const ParserError &) {
  }
}

} // namespace

// A parse allocates much: short allocation stacks save most of the
// sanitizer's cost of recording them. ASAN_OPTIONS set more when a finding
// needs them.
extern "C" const char *__asan_default_options() {
  return "malloc_context_size=5";
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data,
                                      std::size_t size) {
  if (size < 2)
    return 0;
  const CommandType &root = *roots[data[0] % std::size(roots)];
  const unsigned choice = data[0] / std::size(roots);
  // The parse itself uses most of the split list's operations: a quarter
  // of the runs walk it with all of them, half render the outcome's text.
  const bool walkSplit = (choice & 3) == 3, render = choice & 4;
  const std::size_t width = data[1];
  std::vector<std::string> arguments = argumentsFrom(data + 2, size - 2);

  if (walkSplit)
    exerciseSplit(arguments);
  HelpGenerator::screenWidthOverride = width;
  try {
    std::shared_ptr<ParsableCommandBase> command = parseAsRoot(root, arguments);
    command->run();
  } catch (...) {
    if (render) {
      MessageInfo info(std::current_exception(), root);
      (void)info.fullText();
      (void)info.exitCode();
    }
  }
  return 0;
}
