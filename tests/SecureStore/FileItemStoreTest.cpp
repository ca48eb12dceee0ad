// The file store from the outside: through a Keychain in this process, under
// file systems that refuse, and through StoreProbe processes that write at
// once. (A run of the tool killed in the middle of a change is tried end to
// end.)

#include "SecureStore/FileItemStore.h"
#include "StoreTesting.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

namespace securestore {
namespace {

namespace fs = std::filesystem;
using testsupport::readFile;
using testsupport::TempDir;
using testsupport::writeFile;

fs::path storeIn(const TempDir &directory) {
  return directory.path() / "kestrune-cli" / "keychain";
}

Keychain keychainOn(FileItemStore &store) {
  return Keychain("kestrune-cli").withItemStore(store);
}

std::string modeOf(const fs::path &path) {
  struct stat info {};
  std::ostringstream mode;
  mode << std::oct << (::stat(path.c_str(), &info) == 0 ? info.st_mode : 0);
  return mode.str();
}

// Reads, writes, removes one item and all, and reads by subscript.
const std::string everyOperation =
    "get username , set username eve , remove username , removeAll , read "
    "username";

TEST(FileItemStoreTest,
     KeepsFileAndFolderPrivateWhateverTheUmaskAndTheModesBefore) {
  // The modes of the folder, the store and its lock file before the write;
  // 0: the store does not exist yet. A folder or store that others may
  // write is refused and left as it is.
  struct Case {
    mode_t umask, folder, file;
    bool refused;
  };
  const Case cases[] = {{0000, 0, 0, false},       {0022, 0, 0, false},
                        {0077, 0, 0, false},       {0277, 0, 0, false},
                        {0777, 0, 0, false},       {0022, 0777, 0600, true},
                        {0022, 0700, 0666, true},  {0002, 0770, 0600, true},
                        {0022, 0700, 0620, true},  {0000, 0701, 0606, true},
                        {0000, 0755, 0644, false}, {0777, 0750, 0640, false},
                        {0077, 0705, 0604, false}, {0022, 0711, 0600, false}};
  const std::string io = "OSStatus error:[-36] I/O error (bummers)\n=> "
                         "throws io\n";
  for (const Case &c : cases) {
    SCOPED_TRACE(testing::Message()
                 << std::oct << c.umask << " " << c.folder << " " << c.file);
    TempDir directory;
    fs::path store = storeIn(directory), lock = store.string() + ".lock";
    FileItemStore fileStore(store);
    Keychain keychain = keychainOn(fileStore);
    if (c.folder != 0) {
      keychain.set("old", "password");
      ::chmod(store.parent_path().c_str(), c.folder);
      ::chmod(store.c_str(), c.file);
      ::chmod(lock.c_str(), c.file);
    }
    mode_t previous = ::umask(c.umask);
    std::string outcome = scriptOutput(keychain, "set password new");
    ::umask(previous);
    std::ostringstream refused;
    refused << io << io << "40" << std::oct << c.folder << " 100" << c.file
            << " 100" << c.file;
    EXPECT_EQ(outcome + scriptOutput(keychain, "get password") +
                  modeOf(store.parent_path()) + " " + modeOf(store) + " " +
                  modeOf(lock),
              c.refused ? refused.str() : "=> ok\n=> new\n40700 100600 100600");
  }
}

// Unmounts what was mounted at a path when it goes away.
struct Mount {
  fs::path at;
  ~Mount() {
    if (!at.empty())
      ::umount2(at.c_str(), MNT_DETACH);
  }
};

TEST(FileItemStoreTest, AStoreThatCantBeReadOrWrittenIsReportedAndKept) {
  const std::string invalid = "OSStatus error:[-25295] The specified keychain "
                              "is not a valid keychain file.\n";
  auto fill = [](const fs::path &store) {
    std::ofstream filler(store.parent_path().parent_path() / "filler");
    std::string block(4096, 'x');
    while (filler.write(block.data(), block.size()) && filler.flush()) {
    }
  };
  // content: the store's bytes, or a folder in its place, or a valid store
  // holding "alice" that refuse makes unwritable or unreadable.
  struct Case {
    std::string content;
    std::function<void(const fs::path &store)> refuse;
    std::string line, status;
  };
  const Case cases[] = {
      {"", nullptr, invalid, "invalidKeychain"},
      {R"({"format":"kestrune-cli keychain","version":1,"items":[{"id":"x",)",
       nullptr, invalid, "invalidKeychain"},
      {std::string("\x89PNG\r\n\0\xFF\xFE\x01", 10), nullptr, invalid,
       "invalidKeychain"},
      {std::string(200000, '['), nullptr, invalid, "invalidKeychain"},
      {R"({"format":"kestrune-cli keychain","version":2,"items":[]})", nullptr,
       "OSStatus error:[-25310] This keychain was created by a different "
       "version of the system software and cannot be opened.\n",
       "wrongSecVersion"},
      {"<folder>", nullptr, invalid, "invalidKeychain"},
      {"<alice>", [](const fs::path &store) { ::chmod(store.c_str(), 0); },
       "OSStatus error:[-36] I/O error (bummers)\n", "io"},
      // Readable, but another user's: a store planted by someone else.
      {"<alice>",
       [](const fs::path &store) {
         // What the row checks is the store's answer, not this call's.
         [[maybe_unused]] int owner =
             ::lchown(store.c_str(), ::geteuid() == 0 ? 0 : 65534, -1);
         ::chmod(store.c_str(), 0644);
       },
       "OSStatus error:[-36] I/O error (bummers)\n", "io"},
      {"<alice>",
       [](const fs::path &store) {
         [[maybe_unused]] int owner = ::lchown(
             store.parent_path().c_str(), ::geteuid() == 0 ? 0 : 65534, -1);
         ::chmod(store.parent_path().c_str(), 0755);
       },
       "OSStatus error:[-36] I/O error (bummers)\n", "io"},
      {"<alice>",
       [](const fs::path &store) {
         ::chmod(store.parent_path().c_str(), 0500);
       },
       "OSStatus error:[-25292] This keychain cannot be modified.\n",
       "readOnly"},
      {"<alice>", fill, "OSStatus error:[-34] The disk is full.\n", "diskFull"},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.status + " " + c.content.substr(0, 40));
    TempDir directory;
    Mount mount;
    if (c.status == "diskFull") { // the last row
      if (::mount("tmpfs", directory.path().c_str(), "tmpfs", 0, "size=64k"))
        GTEST_SKIP() << "cannot mount a small tmpfs to fill (needs root): "
                     << std::strerror(errno);
      mount.at = directory.path();
    }
    fs::path store = storeIn(directory);
    fs::create_directories(c.content == "<folder>" ? store / "inside"
                                                   : store.parent_path());
    if (c.content == "<alice>") {
      FileItemStore fileStore(store);
      keychainOn(fileStore).set("alice", "username");
    } else if (c.content != "<folder>") {
      writeFile(store, c.content);
    }
    std::string before = readFile(store);
    auto handOver = [](const fs::path &path) {
      return ::lchown(path.c_str(), testsupport::unprivilegedUser(), -1);
    };
    ASSERT_EQ(handOver(directory.path()), 0);
    for (const fs::path &path :
         fs::recursive_directory_iterator(directory.path()))
      ASSERT_EQ(handOver(path), 0);
    if (c.refuse)
      c.refuse(store);
    std::string outcomes = testsupport::runUnprivileged([&] {
      FileItemStore fileStore(store);
      return scriptOutput(keychainOn(fileStore), everyOperation);
    });
    std::string fails = c.line + "=> throws " + c.status + "\n";
    EXPECT_EQ(outcomes,
              c.status == "readOnly" || c.status == "diskFull"
                  ? "=> alice\n" + fails + fails + fails + "=> alice\n"
                  : fails + fails + fails + fails + c.line + "=> absent\n");
    ::chmod(store.c_str(), 0600);
    EXPECT_EQ(readFile(store), before) << "the store was rewritten";
    EXPECT_EQ(fs::is_directory(store), c.content == "<folder>");
  }
}

// Writers write hundreds of times: in a folder in memory where the system
// has one, an fsync costs nothing.
const fs::path fastFolder =
    fs::is_directory("/dev/shm") ? "/dev/shm" : fs::temp_directory_path();

TEST(FileItemStoreTest, TwoWritersAtOnceLoseNothing) {
  TempDir directory(fastFolder);
  fs::path store = storeIn(directory), start = directory.path() / "start";
  // Each writer adds items of its own; a writer that writes back a copy it
  // read before the other's write loses the other's items.
  std::vector<std::unique_ptr<testsupport::ChildProcess>> writers;
  for (std::string tag : {"first", "second"}) {
    writers.push_back(std::make_unique<testsupport::ChildProcess>(
        STORE_PROBE_PATH,
        testsupport::ProcessOptions{{"--file", store.string(), "await",
                                     start.string(), ",", "fill", tag, tag,
                                     "50", "1"}}));
    EXPECT_EQ(writers.back()->readLine(std::chrono::seconds(30)), "=> waiting");
  }
  writeFile(start, "");
  for (auto &writer : writers) {
    std::string output = writer->finish().standardOutput;
    EXPECT_EQ(output.substr(output.rfind("=> ")), "=> ok\n");
    EXPECT_EQ(writer->wait(), 0);
  }
  FileItemStore reader(store);
  EXPECT_EQ(keychainOn(reader).allKeys().size(), 100u);
}

} // namespace
} // namespace securestore
