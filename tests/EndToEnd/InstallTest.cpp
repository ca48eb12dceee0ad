#include "EndToEnd/Fixture.h"
#include "Support/ProcessRunner.h"
#include "Support/TestSupport.h"

#include <gtest/gtest.h>

// `cmake --install` of the build tree into a temporary prefix, then the
// shells complete with the installed scripts as a user's shell finds them
// (bash and fish through XDG_DATA_DIRS and PATH, zsh through fpath), and the
// manual page is checked against the tool's own help.

namespace {

namespace fs = std::filesystem;
using testsupport::runProcess;

// $1: the prefix, $2: a folder holding App.pkg, $3: the line typed so far.
const std::map<std::string, std::string> completeWith = {
    {"bash", R"(cd "$2"
source /usr/share/bash-completion/bash_completion
__load_completion kestrunecli || exit 3
read -ra COMP_WORDS <<<"$3"; [[ $3 == *' ' ]] && COMP_WORDS+=('')
COMP_CWORD=$((${#COMP_WORDS[@]} - 1)) COMP_LINE=$3 COMP_POINT=${#3}
f=$(complete -p kestrunecli | sed -E 's/.*-F ([^ ]+).*/\1/')
"$f" kestrunecli "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD-1]}"
printf '%s\n' "${COMPREPLY[@]}")"},
    {"zsh", R"(out=$(mktemp); cd "$2"; zmodload zsh/zpty; zpty z zsh -f -i
zpty -w z "fpath=($1/share/zsh/vendor-completions \$fpath); autoload -Uz compinit; compinit -u -D"
zpty -w z "compadd() { local -a m; builtin compadd -A m \"\$@\"; print -l -- \$m >> $out; builtin compadd \"\$@\"; }"
zpty -w -n z "$3"$'\t'
for i in {1..100}; do [[ -s $out ]] && break; sleep 0.1; done
sleep 0.3; zpty -d z; sort -u $out | grep .; rm -f $out)"},
    {"fish", R"(cd $argv[2]; complete -C "$argv[3]" | cut -f1)"},
};

class InstallTest : public ::testing::Test {
protected:
  static void SetUpTestSuite() {
    testsupport::writeFile(files->path() / "App.pkg", "");
  }
  static inline auto files = std::make_unique<testsupport::TempDir>();
  const fs::path &prefix = e2e::installedPrefix();
};

TEST_F(InstallTest, ShellsCompleteWithTheInstalledScripts) {
  struct Row { std::string shell, line, expected; };
  const std::vector<Row> rows = {
      {"bash", "kestrunecli -", "-v\n--version\n-h\n--help\n"},
      {"bash", "kestrunecli up", "upload\n"},
      {"bash", "kestrunecli upload --ic", "--icon-path\n"},
      {"bash", "kestrunecli config -", "-n\n--signin\n-t\n--signout\n-l\n--list\n-u\n"
       "--username\n-p\n--password\n-k\n--api-key\n-o\n--hostname\n-g\n--group-id\n-h\n--help\n"},
      {"bash", "kestrunecli upload -i A", "App.pkg\n"},
      {"bash", "kestrunecli config --hostname A", "\n"},
      {"zsh", "kestrunecli ", "config\nupload\n"},
      {"zsh", "kestrunecli upload --ic", "--icon-path\n"},
      {"zsh", "kestrunecli upload -l A", "App.pkg\n"},
      {"fish", "kestrunecli ", "config\nupload\n"},
      {"fish", "kestrunecli upload --ic", "--icon-path\n"},
      {"fish", "kestrunecli upload --metadata-path A", "App.pkg\n"},
  };
  for (const Row &row : rows) {
    SCOPED_TRACE(row.shell + ": " + row.line);
    std::vector<std::string> arguments = {
        "-c", completeWith.at(row.shell), row.shell,
        prefix.string(), files->path().string(), row.line};
    if (row.shell == "fish") // fish's -c takes the arguments without $0
      arguments.erase(arguments.begin() + 2);
    testsupport::ProcessResult result = runProcess(
        *testsupport::findProgram(row.shell),
        {.arguments = arguments,
         .environment = {{"XDG_DATA_DIRS", (prefix / "share").string()},
                         {"PATH", (prefix / "bin").string() + ":" + std::getenv("PATH")}}});
    EXPECT_EQ(result.standardOutput, row.expected);
    EXPECT_EQ(result.standardError, "");
    EXPECT_EQ(result.exitCode, 0);
  }
}

// Every option label of the tool's help, its value as the page writes it
// (without angle brackets), stands on a line of the rendered page, and the
// synopsis brackets the options that may be left out.
TEST_F(InstallTest, ManualPageIsCleanAndListsEveryOptionOfTheHelp) {
  const std::string script = R"(page=$1/share/man/man1/kestrunecli.1
mandoc -Tlint -W warning "$page" || echo "mandoc: exit $?"
groff -ww -z -man "$page"
text=$(mandoc -Tascii -O width=300 "$page" | sed 's/.\x08//g')
for sub in "" upload config; do
  "$1/bin/kestrunecli" $sub --help | grep -E '^  -' |
    sed -E 's/^  (-[^ ,]+(, -[^ ,]+)*( <[^>]*>)?).*/\1/; s/<([^>]*)>/\1/' |
    while read -r label; do
      grep -qxF "       $label" <<<"$text" || echo "not in the page: $label"
    done
done
sed -n '/^SYNOPSIS/,/^DESCRIPTION/p' <<<"$text")";
  testsupport::ProcessResult result = runProcess(
      "/bin/bash", {.arguments = {"-c", script, "bash", prefix}});
  EXPECT_EQ(result.standardOutput, R"(SYNOPSIS
       kestrunecli [--version] command
       kestrunecli upload --installer-path installer-path --metadata-path metadata-path [--icon-path icon-path] [--group-id group-id]
       kestrunecli config [--signin] [--signout] [--list] [--username username] [--password password] [--api-key api-key] [--hostname hostname] [--group-id group-id]

DESCRIPTION
)");
  EXPECT_EQ(result.standardError, "");
  EXPECT_EQ(result.exitCode, 0);
}

} // namespace
