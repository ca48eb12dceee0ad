#include "SecureStore/Status.h"

#include "SecureStore/Keychain.h"
#include "Support/TestSupport.h"

#include <gtest/gtest.h>

#include <set>
#include <unordered_set>

namespace securestore {
namespace {

using testsupport::captureStdout;

struct CatalogueRow {
  OSStatus raw;
  std::string_view name;
  std::string_view message;
};

// Rows from every part of the catalogue: both ends, the cases the keychain
// handles itself, and messages with unusual wording.
constexpr CatalogueRow catalogueRows[] = {
    {0, "success", "No error."},
    {-4, "unimplemented", "Function or operation not implemented."},
    {-36, "io", "I/O error (bummers)"},
    {-49, "opWr", "file already open with with write permission"},
    {-128, "userCanceled", "User canceled the operation."},
    {-2070, "internalComponent", ""},
    {-25291, "notAvailable",
     "No keychain is available. You may need to restart your computer."},
    {-25295, "invalidKeychain",
     "The specified keychain is not a valid keychain file."},
    {-25300, "itemNotFound",
     "The specified item could not be found in the keychain."},
    {-25308, "interactionNotAllowed", "User interaction is not allowed."},
    {-25320, "inDarkWake", "In dark wake, no UI possible"},
    {-25240, "aclNotSimple",
     "The specified access control list is not in standard (simple) form."},
    {-25264, "pkcs12VerifyFailure",
     "MAC verification failed during PKCS12 import (wrong password?)"},
    {-26276, "internal",
     "An internal error occurred in the Security framework."},
    {-34011, "returnPersitentRefUnsupported",
     "The caller passed in a kSecReturnPersistentRef key to a function which "
     "does not support it."},
    {-34018, "missingEntitlement",
     "Internal error when a required entitlement isn't present, client has "
     "neither application-identifier nor access-group entitlements."},
    {-25329, "otrIDTooNew",
     "Key ID is too new to use! Message from the future?"},
    {-67594, "conversionError", "A conversion error has occurred."},
    {-67657, "niflopleRequestQueued",
     "The Niflople request will be sent during the next connection."},
    {-67827, "invaldCRLAuthority", "The CRL authority was not valid."},
    {-67852, "invalidTupleCredendtials",
     "The tuple credentials are not valid."},
    {-67898, "timestampRevocationNotification",
     "A timestamp authority revocation notification was issued."},
    {-99999, "unexpectedError", "Unexpected error has occurred."},
};

TEST(StatusTest, CatalogueRowsCarryTheirNumberNameAndMessage) {
  for (const CatalogueRow &row : catalogueRows) {
    SCOPED_TRACE(row.name);
    std::optional<Status> byRaw = Status::fromRawValue(row.raw);
    ASSERT_TRUE(byRaw.has_value());
    EXPECT_EQ(byRaw->caseName(), row.name);
    EXPECT_EQ(byRaw->rawValue(), row.raw);
    EXPECT_EQ(byRaw->errorCode(), row.raw);
    EXPECT_EQ(byRaw->description(), row.message);
    EXPECT_STREQ(byRaw->what(), std::string(row.message).c_str());
    EXPECT_EQ(byRaw->localizedDescription(), row.message);
    EXPECT_EQ(Status(row.raw), *byRaw);
  }
}

TEST(StatusTest, CatalogueHas403CasesWithDistinctNumbersAndNames) {
  std::set<OSStatus> numbers;
  std::set<std::string_view> names;
  for (Status::Case errorCase : Status::allCases()) {
    Status status(errorCase);
    numbers.insert(status.rawValue());
    names.insert(status.caseName());
    EXPECT_EQ(Status::fromRawValue(status.rawValue()), status);
    EXPECT_LE(status.rawValue(), 0);
    EXPECT_GE(status.rawValue(), -99999);
  }
  EXPECT_EQ(Status::allCases().size(), 403u);
  EXPECT_EQ(numbers.size(), 403u);
  EXPECT_EQ(names.size(), 403u);
  EXPECT_EQ(Status::allCases().front(), Status::Case::success);
  EXPECT_EQ(Status::allCases().back(), Status::Case::unexpectedError);
}

TEST(StatusTest, NumbersOutsideTheCatalogueBecomeUnexpectedError) {
  for (OSStatus raw : {1, -1, -25290, -25321, -99998, -100000, 2147483647,
                       static_cast<OSStatus>(-2147483647 - 1)}) {
    SCOPED_TRACE(raw);
    EXPECT_FALSE(Status::fromRawValue(raw).has_value());
    EXPECT_EQ(Status(raw), Status::Case::unexpectedError);
  }
}

TEST(StatusTest, ActsAsAnErrorOfTheSecureStoreDomain) {
  Status status(Status::Case::itemNotFound);
  EXPECT_EQ(Status::errorDomain, "com.Dorvane.SecureStore.error");
  EXPECT_EQ(SecureStoreErrorDomain, Status::errorDomain);
  EXPECT_EQ(status.domain(), "com.Dorvane.SecureStore.error");
  EXPECT_EQ(status.code(), -25300);
  UserInfo expected = {
      {"NSLocalizedDescription",
       "The specified item could not be found in the keychain."}};
  EXPECT_EQ(status.errorUserInfo(), expected);
  EXPECT_EQ(status.userInfo(), expected);

  const Error &asError = status;
  EXPECT_EQ(asError.localizedDescription(),
            "The specified item could not be found in the keychain.");
}

TEST(StatusTest, EqualsAndHashesByCase) {
  std::unordered_set<Status> seen = {Status(Status::Case::io),
                                     Status(OSStatus{-36}),
                                     Status(Status::Case::param)};
  EXPECT_EQ(seen.size(), 2u);
  EXPECT_EQ(Status(OSStatus{5}), Status(OSStatus{6}));
  EXPECT_NE(Status(Status::Case::io), Status(Status::Case::param));
}

TEST(StatusTest, PlatformErrorDescribesItselfFromItsUserInfo) {
  PlatformError described("NSOSStatusErrorDomain", -4,
                          {{"NSLocalizedDescription", "no policy here"}});
  EXPECT_EQ(described.localizedDescription(), "no policy here");
  PlatformError bare("com.example", 7, {});
  EXPECT_EQ(bare.localizedDescription(),
            "The operation couldn’t be completed. (com.example error 7.)");
}

struct SecurityErrorCase {
  OSStatus status;
  Status::Case expected;
  std::string_view printed;
};

constexpr SecurityErrorCase securityErrorCases[] = {
    {-25300, Status::Case::itemNotFound,
     "OSStatus error:[-25300] The specified item could not be found in the "
     "keychain.\n"},
    {-2070, Status::Case::internalComponent, "OSStatus error:[-2070] \n"},
    {-128, Status::Case::userCanceled, ""},
    {1, Status::Case::unexpectedError,
     "OSStatus error:[-99999] Unexpected error has occurred.\n"},
    {-12345, Status::Case::unexpectedError,
     "OSStatus error:[-99999] Unexpected error has occurred.\n"},
    {-67594, Status::Case::conversionError,
     "OSStatus error:[-67594] A conversion error has occurred.\n"},
};

TEST(StatusTest, SecurityErrorPrintsOneLineExceptForUserCanceled) {
  for (const SecurityErrorCase &c : securityErrorCases) {
    SCOPED_TRACE(c.status);
    std::optional<Status> returned;
    std::string printed =
        captureStdout([&] { returned = Keychain::securityError(c.status); });
    EXPECT_EQ(printed, c.printed);
    EXPECT_EQ(returned, c.expected);
  }
}

} // namespace
} // namespace securestore
