#include "EndToEnd/Fixture.h"

// The binary with one system call made to fail (tests/Support's
// FaultInjection, preloaded): a sign-in whose save meets a full, read-only
// or failing disk tells the store's status and leaves the store as it was,
// with no temporary file behind; an installer whose reading fails halfway
// ends the upload as a failed request, and no application is created.

namespace {

// A status as the tool shows it, after "OSStatus error:[".
const std::string full = "-34] The disk is full.",
                  readOnly = "-25292] This keychain cannot be modified.",
                  io = "-36] I/O error (bummers)";

struct FaultCase {
  std::string call, pathPart;
  bool storeBefore;
  // The status for ENOSPC, EDQUOT, EIO, EROFS and EACCES in turn; a call
  // that can only fail or not tells an I/O error for each.
  bool byErrno;
};

// clang-format off
const FaultCase faultCases[] = {
    {"mkdir", "kestrune-cli", false, true},
    {"open", ".keychain.new", true, true},
    {"write", ".keychain.new", true, true},
    {"fsync", ".keychain.new", true, true},
    {"rename", ".keychain.new", true, true},
    {"flock", "keychain.lock", true, false},
};
// clang-format on

std::string message(const std::string &status) {
  std::string text = status.substr(status.find(' ') + 1);
  return "OSStatus error:[" + status +
         "\n❗️Error: Unable to save user info in macOS Keychain: " + text +
         "\n\n";
}

std::string fileOrNone(const e2e::fs::path &path) {
  return e2e::fs::exists(path) ? testsupport::readFile(path) : "<none>";
}

TEST(FaultTest, ASaveThatFailsLeavesTheStoreAsItWas) {
  const char *errnos[] = {"ENOSPC", "EDQUOT", "EIO", "EROFS", "EACCES"};
  const std::string *byErrno[] = {&full, &full, &io, &readOnly, &readOnly};
  for (const FaultCase &c : faultCases)
    for (int e = 0; e < 5; ++e) {
      SCOPED_TRACE(c.call + " " + errnos[e]);
      e2e::Scene scene;
      if (c.storeBefore)
        scene.store({{"hostname", "https://old.example"}});
      const std::string before = fileOrNone(scene.storePath());
      e2e::Run run = scene.run(
          {"config", "--signin", "-u", "alice", "-p", "s3cret", "-k",
           "tenant-key", "-o", "{base}", "-g", "Org1"},
          "",
          {"/usr/bin/env", "LD_PRELOAD=" FAULT_INJECTION_PATH,
           "ASAN_OPTIONS=verify_asan_link_order=0",
           "KESTRUNE_FAULT=" + c.call + " " + errnos[e] + " " + c.pathPart});
      const std::string expected = message(c.byErrno ? *byErrno[e] : io);
      ASSERT_GE(run.out.size(), expected.size());
      EXPECT_EQ(run.out.substr(run.out.size() - expected.size()), expected);
      EXPECT_EQ(run.code, 0);
      EXPECT_EQ(fileOrNone(scene.storePath()), before);
      EXPECT_FALSE(
          e2e::fs::exists(scene.storePath().parent_path() / ".keychain.new"));
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
