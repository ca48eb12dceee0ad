// The file store from the outside: through a Keychain in this process, under
// file systems that refuse, and through StoreProbe processes that write at
// once or die in the middle of a write.

#include "SecureStore/FileItemStore.h"
#include "StoreTesting.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fstream>
#include <map>
#include <random>
#include <sstream>
#include <sys/mount.h>
#include <sys/stat.h>
#include <thread>
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

std::string octal(unsigned mode) {
  std::ostringstream text;
  text << std::oct << mode;
  return text.str();
}

std::string modeOf(const fs::path &path) {
  struct stat info {};
  return octal(::stat(path.c_str(), &info) == 0 ? info.st_mode & 07777 : 0);
}

// Reads, writes, removes one item and all, and reads by subscript.
std::string everyOperationOn(FileItemStore &store) {
  Keychain keychain = keychainOn(store);
  return outcomesOf(
      {[&] { return keychain.get("username").value_or("absent"); },
       [&] {
         keychain.set("eve", "username");
         return "ok";
       },
       [&] {
         keychain.remove("username");
         return "ok";
       },
       [&] {
         keychain.removeAll();
         return "ok";
       },
       [&] { return keychain["username"].read().value_or("absent"); }});
}

TEST(FileItemStoreTest,
     KeepsFileAndFolderPrivateWhateverTheUmaskAndTheModesBefore) {
  // The modes of the folder, the store and its lock file before the write;
  // 0: the store does not exist yet.
  struct Case {
    mode_t umask, folder, file;
  };
  const Case cases[] = {
      {0000, 0, 0},       {0022, 0, 0},       {0077, 0, 0},
      {0277, 0, 0},       {0777, 0, 0},       {0022, 0777, 0666},
      {0000, 0755, 0644}, {0777, 0750, 0640}, {0077, 0705, 0604},
      {0002, 0770, 0660}, {0022, 0711, 0600}, {0000, 0701, 0606}};
  for (const Case &c : cases) {
    SCOPED_TRACE(octal(c.umask) + " " + octal(c.folder) + " " + octal(c.file));
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
    std::string outcome = outcomeOf([&] {
      keychain.set("new", "password");
      return keychain.get("password").value_or("absent");
    });
    ::umask(previous);
    EXPECT_EQ(outcome + " " + modeOf(store.parent_path()) + " " +
                  modeOf(store) + " " + modeOf(lock),
              "=> new 700 600 600");
  }
}

std::string validStore() {
  TempDir scratch;
  FileItemStore store(storeIn(scratch));
  keychainOn(store).set("alice", "username");
  keychainOn(store).set("secret", "password");
  return readFile(storeIn(scratch));
}

TEST(FileItemStoreTest, ABrokenStoreIsReportedAndNeverOverwritten) {
  const std::string invalid = "OSStatus error:[-25295] The specified keychain "
                              "is not a valid keychain file.\n";
  std::string garbage;
  std::mt19937 random(7);
  for (int i = 0; i < 4096; ++i)
    garbage.push_back(static_cast<char>(random() & 0xFF));
  struct Case {
    std::string name, content, line, status;
  };
  const Case cases[] = {
      {"truncated", validStore().substr(0, 60), invalid, "invalidKeychain"},
      {"empty", "", invalid, "invalidKeychain"},
      {"garbage", garbage, invalid, "invalidKeychain"},
      {"deeply nested", std::string(200000, '['), invalid, "invalidKeychain"},
      {"another shape",
       R"({"format":"kestrune-cli keychain","version":1,"items":[{"id":"x",)"
       R"("attributes":{"kSecClass":{"bytes":"not base64!"}}}]})",
       invalid, "invalidKeychain"},
      {"a later format",
       R"({"format":"kestrune-cli keychain","version":2,"items":[]})",
       "OSStatus error:[-25310] This keychain was created by a different "
       "version of the system software and cannot be opened.\n",
       "wrongSecVersion"},
      {"a folder in its place", "<folder>", invalid, "invalidKeychain"},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.name);
    TempDir directory;
    fs::path store = storeIn(directory);
    fs::create_directories(c.content == "<folder>" ? store / "inside"
                                                   : store.parent_path());
    if (c.content != "<folder>")
      writeFile(store, c.content);
    FileItemStore fileStore(store);
    std::string outcomes = everyOperationOn(fileStore);
    std::string fails = c.line + "=> throws " + c.status;
    EXPECT_EQ(outcomes, fails + fails + fails + fails + c.line + "=> absent");
    if (c.content == "<folder>")
      EXPECT_TRUE(fs::is_directory(store / "inside"));
    else
      EXPECT_EQ(readFile(store), c.content) << "the store was rewritten";
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

TEST(FileItemStoreTest, WritesThatTheFileSystemRefusesKeepTheItems) {
  const std::string readOnly =
      "OSStatus error:[-25292] This keychain cannot be modified.\n";
  const std::string io = "OSStatus error:[-36] I/O error (bummers)\n";
  const std::string full = "OSStatus error:[-34] The disk is full.\n";
  struct Case {
    std::string name;
    std::function<void(const fs::path &store)> refuse;
    std::string expected;
  };
  const Case cases[] = {
      {"a read-only folder",
       [](const fs::path &store) {
         ::chmod(store.parent_path().c_str(), 0500);
       },
       "=> alice" + readOnly + "=> throws readOnly" + readOnly +
           "=> throws readOnly" + readOnly + "=> throws readOnly=> alice"},
      {"an unreadable store",
       [](const fs::path &store) { ::chmod(store.c_str(), 0); },
       io + "=> throws io" + io + "=> throws io" + io + "=> throws io" + io +
           "=> throws io" + io + "=> absent"},
      {"a full disk",
       [](const fs::path &store) {
         std::ofstream filler(store.parent_path().parent_path() / "filler");
         std::string block(4096, 'x');
         while (filler.write(block.data(), block.size()) && filler.flush()) {
         }
       },
       "=> alice" + full + "=> throws diskFull" + full + "=> throws diskFull" +
           full + "=> throws diskFull=> alice"},
  };
  std::string skipped;
  for (const Case &c : cases) {
    SCOPED_TRACE(c.name);
    TempDir directory;
    Mount mount;
    if (c.name == "a full disk") {
      if (::mount("tmpfs", directory.path().c_str(), "tmpfs", 0, "size=64k") !=
          0) {
        skipped = "cannot mount a small tmpfs to fill (needs root): " +
                  std::string(std::strerror(errno));
        continue;
      }
      mount.at = directory.path();
    }
    fs::path store = storeIn(directory);
    {
      FileItemStore fileStore(store);
      keychainOn(fileStore).set("alice", "username");
    }
    fs::remove(store.string() + ".lock");
    std::string before = readFile(store);
    for (const fs::path &path :
         fs::recursive_directory_iterator(directory.path()))
      ASSERT_EQ(::lchown(path.c_str(), testsupport::unprivilegedUser(),
                         testsupport::unprivilegedGroup()),
                0);
    ::chown(directory.path().c_str(), testsupport::unprivilegedUser(),
            testsupport::unprivilegedGroup());
    c.refuse(store);
    std::string outcomes = testsupport::runUnprivileged([&] {
      FileItemStore fileStore(store);
      return everyOperationOn(fileStore);
    });
    EXPECT_EQ(outcomes, c.expected);
    ::chmod(store.c_str(), 0600);
    EXPECT_EQ(readFile(store), before);
  }
  if (!skipped.empty())
    GTEST_SKIP() << skipped;
}

// A folder in memory where the system has one: the writers below write
// hundreds of times, and an fsync there costs nothing.
fs::path fastTemporaryFolder() {
  return fs::is_directory("/dev/shm") ? "/dev/shm" : fs::temp_directory_path();
}

TEST(FileItemStoreTest, TwoWritersAtOnceLoseNothing) {
  TempDir directory(fastTemporaryFolder());
  fs::path store = storeIn(directory), start = directory.path() / "start";
  // Each writer adds items of its own; a writer that writes back a copy it
  // read before the other's write loses the other's items.
  std::vector<std::unique_ptr<testsupport::ChildProcess>> writers;
  for (const char *tag : {"first", "second"}) {
    writers.push_back(std::make_unique<testsupport::ChildProcess>(
        STORE_PROBE_PATH,
        testsupport::ProcessOptions{{"--file", store.string(), "await",
                                     start.string(), ",", "write",
                                     std::string(tag) + "-", tag, "50", "1"}}));
    EXPECT_EQ(writers.back()->readLine(std::chrono::seconds(30)), "=> waiting");
  }
  writeFile(start, "");
  for (auto &writer : writers) {
    std::string output = writer->readAll();
    EXPECT_EQ(std::count(output.begin(), output.end(), '\n'), 52);
    EXPECT_EQ(output.substr(output.size() - 6), "=> ok\n");
    EXPECT_EQ(writer->wait(), 0);
  }
  FileItemStore reader(store);
  std::string read, expected;
  for (const char *tag : {"first", "second"})
    for (int i = 0; i < 50; ++i) {
      std::string key = tag + ("-" + std::to_string(i));
      read += keychainOn(reader).get(key).value_or("absent") + " ";
      expected += tag + std::string("-0 ");
    }
  EXPECT_EQ(read, expected);
}

TEST(FileItemStoreTest, AWriterKilledAtAnyMomentLeavesOldOrNewValues) {
  TempDir directory(fastTemporaryFolder());
  fs::path store = storeIn(directory);
  FileItemStore reader(store);
  std::mt19937 random(20240611);
  std::map<std::string, std::string> stored;
  for (int run = 0; run < 100; ++run) {
    SCOPED_TRACE("run " + std::to_string(run));
    std::string tag = "run" + std::to_string(run), lines;
    testsupport::ChildProcess writer(
        STORE_PROBE_PATH,
        {{"--file", store.string(), "write", "k", tag, "6", "0"}});
    // Every tenth run dies before its first write can finish; the others
    // die somewhere among the writes.
    if (run % 10 != 0) {
      std::optional<std::string> first =
          writer.readLine(std::chrono::seconds(30));
      ASSERT_TRUE(first.has_value()) << "the writer wrote nothing";
      lines = *first + "\n";
    }
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 8000));
    writer.sendSignal(SIGKILL);
    ASSERT_EQ(writer.wait(), 128 + SIGKILL);
    std::istringstream acknowledged(lines + writer.readAll());
    std::map<std::string, std::string> expected = stored;
    std::size_t writes = 0;
    for (std::string key, value; acknowledged >> key >> value; ++writes)
      expected[key] = value;
    // The write under way when the writer died may have landed whole.
    std::string pending = "k" + std::to_string(writes % 6);
    std::map<std::string, std::string> now;
    for (int i = 0; i < 6; ++i) {
      std::string key = "k" + std::to_string(i);
      ASSERT_NO_THROW(if (auto value = keychainOn(reader).get(key)) now[key] =
                          *value;);
    }
    if (now[pending] == tag + "-" + std::to_string(writes / 6))
      expected[pending] = now[pending];
    if (now[pending].empty())
      now.erase(pending);
    EXPECT_EQ(now, expected);
    stored = now;
  }
}

} // namespace
} // namespace securestore
