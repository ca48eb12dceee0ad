// The completion scripts for bash, zsh and fish.
#include "ManPage/Model.h"

namespace manpage {

namespace {

std::string joined(const std::vector<std::string> &words) {
  std::string text;
  for (const std::string &word : words)
    text += (text.empty() ? "" : " ") + word;
  return text;
}

// \p text inside single quotes of a POSIX shell.
std::string shellQuoted(const std::string &text) {
  std::string out = "'";
  for (char c : text)
    out += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return out + "'";
}

std::vector<std::string> subcommandNames(const Tool &tool) {
  std::vector<std::string> names;
  for (const Command &command : tool.subcommands)
    names.push_back(command.name);
  return names;
}

// The names of the options of \p command that \p select picks.
template <typename Select>
std::string namesOf(const Command &command, Select select) {
  std::vector<std::string> names;
  for (const Option &option : command.options)
    if (select(option))
      names.insert(names.end(), option.names.begin(), option.names.end());
  return joined(names);
}

std::string bashCase(const std::string &pattern, const Command &command) {
  return "        " + pattern + ")\n            options=" +
         shellQuoted(namesOf(command, [](const Option &) { return true; })) +
         "\n            paths=" +
         shellQuoted(namesOf(command,
                        [](const Option &o) { return o.takesPath(); })) +
         "\n            values=" +
         shellQuoted(namesOf(command,
                        [](const Option &o) {
                          return o.valueName && !o.takesPath();
                        })) +
         " ;;\n";
}

// A zsh _arguments description: brackets and quotes escaped.
std::string zshText(const std::string &text) {
  std::string out;
  for (char c : text) {
    if (c == '[' || c == ']' || c == '\\')
      out += '\\';
    out += c;
  }
  return out;
}

std::string zshOption(const Option &option) {
  const std::string names = joined(option.names);
  std::string spec =
      option.names.size() > 1
          ? shellQuoted("(" + names + ")") + "{" +
                [&] {
                  std::string list;
                  for (const std::string &name : option.names)
                    list += (list.empty() ? "" : ",") + name;
                  return list;
                }() + "}"
          : option.names.front();
  std::string tail = "[" + zshText(option.abstract) + "]";
  if (option.valueName)
    tail += ":" + zshText(*option.valueName) + ":" +
            (option.takesPath() ? "_files" : " ");
  return spec + shellQuoted(tail);
}

std::string zshArguments(const Command &command, const std::string &indent) {
  std::string text;
  for (const Option &option : command.options)
    text += " \\\n" + indent + zshOption(option);
  return text;
}

std::string fishLine(const std::string &tool, const std::string &condition,
                     const Option &option) {
  std::string line = "complete -c " + tool + " -n " + shellQuoted(condition);
  for (const std::string &name : option.names) {
    if (name.starts_with("--"))
      line += " -l " + name.substr(2);
    else if (name.size() == 2)
      line += " -s " + name.substr(1);
    else
      line += " -o " + name.substr(1);
  }
  if (option.valueName)
    line += option.takesPath() ? " -r -F" : " -x";
  return line + " -d " + shellQuoted(option.abstract) + "\n";
}

} // namespace

std::string bashCompletion(const Tool &tool) {
  const std::string name = tool.root.name;
  std::string script =
      "# bash completion for " + name +
      ", generated from its command declarations.\n_" + name +
      "()\n{\n"
      "    local cur=${COMP_WORDS[COMP_CWORD]} "
      "prev=${COMP_WORDS[COMP_CWORD-1]}\n"
      "    local command='' word options paths values\n"
      "    for word in \"${COMP_WORDS[@]:1:COMP_CWORD-1}\"; do\n"
      "        case $word in\n"
      "            " +
      [&] {
        std::string pattern;
        for (const std::string &sub : subcommandNames(tool))
          pattern += (pattern.empty() ? "" : "|") + sub;
        return pattern;
      }() +
      ") command=$word; break ;;\n"
      "        esac\n    done\n    case $command in\n";
  for (const Command &command : tool.subcommands)
    script += bashCase(command.name, command);
  script += bashCase("*", tool.root);
  script +=
      "    esac\n"
      "    if [[ \" $paths \" == *\" $prev \"* ]]; then\n"
      "        compopt -o filenames 2>/dev/null\n"
      "        mapfile -t COMPREPLY < <(compgen -f -- \"$cur\")\n"
      "    elif [[ \" $values \" == *\" $prev \"* ]]; then\n"
      "        COMPREPLY=()\n"
      "    elif [[ -z $command && $cur != -* ]]; then\n"
      "        mapfile -t COMPREPLY < <(compgen -W " +
      shellQuoted(joined(subcommandNames(tool))) +
      " -- \"$cur\")\n"
      "    else\n"
      "        mapfile -t COMPREPLY < <(compgen -W \"$options\" -- \"$cur\")\n"
      "    fi\n}\ncomplete -F _" +
      name + " " + name + "\n";
  return script;
}

std::string zshCompletion(const Tool &tool) {
  const std::string name = tool.root.name;
  std::string script = "#compdef " + name + "\n# zsh completion for " + name +
                       ", generated from its command declarations.\n\n"
                       "local curcontext=$curcontext state line\n"
                       "typeset -A opt_args\n"
                       "local -a commands=(\n";
  for (const Command &command : tool.subcommands)
    script += "  " + shellQuoted(command.name + ":" + command.abstract) + "\n";
  script += ")\n_arguments -C" + zshArguments(tool.root, "  ") +
            " \\\n  '1:command:->command' \\\n  '*::argument:->argument' && "
            "return\n\ncase $state in\n"
            "  command) _describe -t commands command commands ;;\n"
            "  argument)\n"
            "    curcontext=${curcontext%:*:*}:" +
            name +
            "-$line[1]:\n"
            "    case $line[1] in\n";
  for (const Command &command : tool.subcommands)
    script += "      " + command.name + ") _arguments" +
              zshArguments(command, "          ") + " ;;\n";
  script += "    esac ;;\nesac\n";
  return script;
}

std::string fishCompletion(const Tool &tool) {
  const std::string name = tool.root.name;
  std::string script = "# fish completion for " + name +
                       ", generated from its command declarations.\n"
                       "complete -c " +
                       name + " -f\n";
  for (const Command &command : tool.subcommands)
    script += "complete -c " + name + " -n __fish_use_subcommand -a " +
              command.name + " -d " + shellQuoted(command.abstract) + "\n";
  for (const Option &option : tool.root.options)
    script += fishLine(name, "__fish_use_subcommand", option);
  for (const Command &command : tool.subcommands)
    for (const Option &option : command.options)
      script += fishLine(name, "__fish_seen_subcommand_from " + command.name,
                         option);
  return script;
}

} // namespace manpage
