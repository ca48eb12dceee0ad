#include "Support/ProcessRunner.h"
#include "Support/TestSupport.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

// No command line, however malformed, may crash or hang the tool, or make it
// print anything but its own texts: help, a parse error with usage (exit 64),
// or one of the tool's own failure messages (exit 1 to 55).

namespace {

using testsupport::ProcessOptions;
using testsupport::ProcessResult;
using testsupport::runProcess;

void expectOrderlyEnd(const std::vector<std::string> &arguments,
                      const std::string &trace) {
  SCOPED_TRACE(trace);
  testsupport::TempDir home;
  ProcessOptions options;
  options.arguments = arguments;
  options.environment = {{"HOME", home.path().string()},
                         {"XDG_DATA_HOME", std::nullopt},
                         {"DBUS_SESSION_BUS_ADDRESS", std::nullopt}};
  options.timeout = std::chrono::seconds(30);
  ProcessResult result = runProcess(KESTRUNECLI_PATH, options);
  EXPECT_FALSE(result.timedOut);
  EXPECT_EQ(result.signal, 0);
  if (result.exitCode == 0) {
    EXPECT_EQ(result.standardError, "");
    return;
  }
  if (result.exitCode >= 1 && result.exitCode <= 55) {
    EXPECT_EQ(result.standardError, "");
    EXPECT_NE(result.standardOutput.find("❗️"), std::string::npos)
        << result.standardOutput;
    return;
  }
  EXPECT_EQ(result.exitCode, 64);
  EXPECT_EQ(result.standardOutput, "");
  EXPECT_EQ(result.standardError.rfind("Error: ", 0), 0u);
  EXPECT_NE(result.standardError.find("\nUsage: kestrunecli"),
            std::string::npos);
}

TEST(HostileInputTest, EndsOrderlyOnMalformedArguments) {
  const std::vector<std::vector<std::string>> cases = {
      {""},
      {"", ""},
      {"-"},
      {"--"},
      {"--", "--"},
      {"--", "-x", "config"},
      {"="},
      {"-="},
      {"--="},
      {"--=x"},
      {"-a=b=c"},
      {"config", "-"},
      {"config", "--username="},
      {"config", "-u="},
      {"config", "-unlt"},
      {"config", "-nt"},
      {"upload", "-iml", "a"},
      {"config", "--", "x"},
      {"-é"},
      {"--ünïcødé"},
      {"config", "--💡"},
      {"\xff\xfe"},
      {"--\xff"},
      {"-\xc3"},
      {"config", "-u", "\xff"},
      {"help", "\xff"},
      {"help", "help", "help"},
      {"----"},
  };
  for (const std::vector<std::string> &arguments : cases) {
    std::string trace;
    for (const std::string &argument : arguments)
      trace += "[" + argument + "] ";
    expectOrderlyEnd(arguments, trace);
  }
}

TEST(HostileInputTest, HandlesTenThousandArguments) {
  const std::vector<std::string> pieces = {"-abc", "--username", "x", "--",
                                           "-u"};
  std::vector<std::string> many{"config"};
  for (int i = 0; i < 10000; ++i)
    many.push_back(pieces[static_cast<std::size_t>(i) % 3]);
  expectOrderlyEnd(many, "ten thousand group, option and value arguments");

  std::vector<std::string> repeated{"config"};
  for (int i = 0; i < 5000; ++i) {
    repeated.push_back("--username");
    repeated.push_back("name" + std::to_string(i));
  }
  expectOrderlyEnd(repeated, "five thousand repeated options");
}

} // namespace
