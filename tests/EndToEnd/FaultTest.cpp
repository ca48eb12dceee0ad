#include "EndToEnd/Fixture.h"
#include "Support/Texts.h"

// The binary with one system call made to fail (tests/Support's
// FaultInjection, preloaded): a sign-in, a group change or a sign-out whose
// change of the store meets a full, read-only or failing disk tells the
// store's status and leaves the store as it was, with no temporary file
// behind; an installer whose reading fails halfway ends the upload as a
// failed request, and no application is created.

namespace {

// A status as the tool shows it, after "OSStatus error:[".
const std::string full = "-34] The disk is full.",
                  readOnly = "-25292] This keychain cannot be modified.",
                  io = "-36] I/O error (bummers)";

struct FaultCase {
  std::string call, pathPart;
  // Whether the account is stored before: the folder's creation fails only
  // for the first sign-in.
  bool storeBefore;
  // The status for ENOSPC, EDQUOT, EIO, EROFS and EACCES in turn; a call
  // that can only fail or not tells an I/O error for each.
  bool byErrno;
};

// clang-format off
const FaultCase faultCases[] = {
    {"mkdir", "kestrune-cli", false, true},
    {"open", ".keychain.", true, true},
    {"write", ".keychain.", true, true},
    {"fsync", ".keychain.", true, true},
    {"rename", ".keychain.", true, true},
    {"flock", "keychain.lock", true, false},
};
// clang-format on

struct Operation {
  e2e::Args arguments;
  // What ends the output after the status line; {text} is the status's.
  std::string after;
  int code;
};

const Operation operations[] = {
    {{"config", "--signin", "-u", "alice", "-p", "s3cret", "-k", "tenant-key",
      "-o", "{base}", "-g", "Org1"},
     "\n❗️Error: Unable to save user info in macOS Keychain: {text}\n\n",
     0},
    {{"upload", "-i", "{dir}/a.pkg", "-m", "{dir}/a.plist", "-g", "Org2"},
     "\n" + texts::groupNotStored,
     19},
    {{"config", "--signout"},
     "\n\n❗️Error: Unable to signout - {text}\n",
     21},
};

std::string fileOrNone(const e2e::fs::path &path) {
  return e2e::fs::exists(path) ? testsupport::readFile(path) : "<none>";
}

TEST(FaultTest, AChangeOfTheAccountThatFailsLeavesTheStoreAsItWas) {
  const char *errnos[] = {"ENOSPC", "EDQUOT", "EIO", "EROFS", "EACCES"};
  const std::string *byErrno[] = {&full, &full, &io, &readOnly, &readOnly};
  for (const Operation &operation : operations)
    for (const FaultCase &c : faultCases)
      for (int e = 0; e < 5; ++e) {
        const bool signedIn = operation.code != 0;
        if (signedIn && !c.storeBefore)
          continue;
        SCOPED_TRACE(operation.arguments[1] + " " + c.call + " " + errnos[e]);
        e2e::Scene scene;
        testsupport::writeFile(scene.dir() / "a.pkg", "installer");
        testsupport::writeFile(scene.dir() / "a.plist", "metadata");
        if (signedIn)
          scene.store(scene.account());
        else if (c.storeBefore)
          scene.store({{"hostname", "https://old.example"}});
        const std::string before = fileOrNone(scene.storePath());
        e2e::Run run = scene.run(
            operation.arguments, "",
            {"/usr/bin/env", "LD_PRELOAD=" FAULT_INJECTION_PATH,
             "ASAN_OPTIONS=verify_asan_link_order=0",
             "KESTRUNE_FAULT=" + c.call + " " + errnos[e] + " " + c.pathPart});
        const std::string status = c.byErrno ? *byErrno[e] : io;
        std::string expected = "OSStatus error:[" + status + operation.after;
        e2e::replaceAll(expected, "{text}",
                        status.substr(status.find(' ') + 1));
        ASSERT_GE(run.out.size(), expected.size()) << run.out;
        EXPECT_EQ(run.out.substr(run.out.size() - expected.size()), expected);
        EXPECT_EQ(run.code, operation.code);
        EXPECT_EQ(fileOrNone(scene.storePath()), before);
        std::error_code none;
        for (const auto &entry :
             e2e::fs::directory_iterator(scene.storePath().parent_path(), none))
          EXPECT_FALSE(
              entry.path().filename().string().starts_with(".keychain."))
              << entry.path();
        for (const std::string &request : scene.requests())
          EXPECT_EQ(request.find("uploadblob"), std::string::npos) << request;
      }
}

TEST(FaultTest, AnInstallerThatCannotBeReadHalfwayEndsTheUpload) {
  e2e::Scene scene;
  scene.store(scene.account());
  testsupport::writeFile(scene.dir() / "a.pkg", std::string(4 << 20, 'i'));
  testsupport::writeFile(scene.dir() / "a.plist", "metadata");
  e2e::Run run = scene.run(
      {"upload", "-i", "{dir}/a.pkg", "-m", "{dir}/a.plist", "-g", "Org1"}, "",
      {"/usr/bin/env", "LD_PRELOAD=" FAULT_INJECTION_PATH,
       "ASAN_OPTIONS=verify_asan_link_order=0",
       "KESTRUNE_FAULT=read EIO a.pkg 2"});
  EXPECT_EQ(run.out,
            scene.expand("\n\n\n❗️Error: The request body could not "
                         "be sent (the file '{dir}/a.pkg' could not "
                         "be read: Input/output error)\n"));
  EXPECT_EQ(run.code, 47);
  for (const std::string &request : scene.requests())
    EXPECT_EQ(request.find("/macos/apps"), std::string::npos) << request;
}

} // namespace
