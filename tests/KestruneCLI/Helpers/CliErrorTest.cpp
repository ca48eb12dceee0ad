#include "KestruneCLI/Helpers/CliError.h"

#include <gtest/gtest.h>

#include <set>

namespace kestrune {
namespace {

std::vector<CliError> everyCase() {
  std::vector<CliError> all;
#define KESTRUNE_CASE_X(name, label, pre, post, code)                         \
  all.push_back(CliError::name("payload"));
#define KESTRUNE_CASE_Y(name, text, code) all.push_back(CliError::name());
  KESTRUNE_CLI_ERROR_CASES(KESTRUNE_CASE_X, KESTRUNE_CASE_Y)
#undef KESTRUNE_CASE_X
#undef KESTRUNE_CASE_Y
  return all;
}

TEST(CliErrorTest, CodesAreDistinctAndFillOneToFiftyFive) {
  std::vector<CliError> all = everyCase();
  ASSERT_EQ(all.size(), 55u);
  std::set<int> codes;
  for (const CliError &error : all)
    codes.insert(error.code());
  EXPECT_EQ(codes.size(), 55u);
  EXPECT_EQ(*codes.begin(), 1);
  EXPECT_EQ(*codes.rbegin(), 55);
}

TEST(CliErrorTest, MessagesPutThePayloadInPlace) {
  struct Case {
    CliError error;
    std::string message;
    int code;
  };
  const Case cases[] = {
      {CliError::alreadySignedIn("bob"),
       "\n❗️ERROR: You have already signed in as: bob \n", 20},
      {CliError::multipleMissingFields(" Username and Password fields are"),
       "\n❗️Error: Please re-enter credentials. Username and Password fields "
       "are missing. \n\n⚠️ Note: To prompt secure sign-in interactive "
       "terminal, please only enter GroupID and Hostname fields",
       55},
      {CliError::networkError("boom"), "\n❗️Error: boom", 47},
      {CliError::fetchGidAPIResponseError("boom"), "\n❗️Error: boom", 13},
      {CliError::uploadApiResponseError("boom"), "\n❗️Error: boom", 33},
      {CliError::errorCreatingApplicationWithMessage("boom"),
       "\n❗️Error: boom", 52},
      {CliError::unknownError(), "", 54},
      {CliError::missingHostName(),
       "❗️Error: Please re-enter credentials. Hostname is missing.", 4},
      {CliError::unableToGetVersion(),
       "\n❗️Error: Unable to get the version of kestrunecli", 48},
      {CliError::needToSignIn(),
       "\n❗️Error: Not Signed in, please use config subcommand to sign into "
       "console.\n",
       46}};
  for (const Case &c : cases) {
    SCOPED_TRACE(c.error.caseName());
    EXPECT_EQ(c.error.errorDescription(), c.message);
    EXPECT_STREQ(c.error.what(), c.message.c_str());
    EXPECT_EQ(c.error.code(), c.code);
  }
}

TEST(CliErrorTest, EqualityComparesCaseAndPayload) {
  EXPECT_EQ(CliError::missingUsername(), CliError::missingUsername());
  EXPECT_NE(CliError::missingUsername(), CliError::missingPassword());
  EXPECT_EQ(CliError::networkError("a"), CliError::networkError("a"));
  EXPECT_NE(CliError::networkError("a"), CliError::networkError("b"));
  EXPECT_NE(CliError::networkError("a"), CliError::uploadApiResponseError("a"));
}

} // namespace
} // namespace kestrune
