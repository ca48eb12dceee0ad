// Preloaded into a program under test (LD_PRELOAD) to make one kind of
// system call fail. KESTRUNE_FAULT="<call> <errno> <path part> [<n>]" makes
// every call of <call> on a path that contains <path part> fail with <errno>
// from the <n>th such call on (the first by default). <call> is open
// (openat too), read (pread too), write, fsync, rename, mkdir, unlink or
// flock; <errno> is ENOSPC, EDQUOT, EIO, EROFS or EACCES. Calls on a
// descriptor match the path it was opened with.
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

static int shouldFail(const char *call, const char *path) {
  static int seen;
  char wanted[16], part[256], error[16];
  int from = 1;
  const char *fault = getenv("KESTRUNE_FAULT");
  if (!fault || !path ||
      sscanf(fault, "%15s %15s %255s %d", wanted, error, part, &from) < 3 ||
      strcmp(wanted, call) != 0 || !strstr(path, part) ||
      __atomic_add_fetch(&seen, 1, __ATOMIC_SEQ_CST) < from)
    return 0;
  const char *names[] = {"ENOSPC", "EDQUOT", "EIO", "EROFS", "EACCES"};
  const int codes[] = {ENOSPC, EDQUOT, EIO, EROFS, EACCES};
  for (int i = 0; i < 5; ++i)
    if (strcmp(error, names[i]) == 0)
      errno = codes[i];
  return 1;
}

static int descriptorFails(const char *call, int fd) {
  // Most calls aren't the one chosen: they skip looking up the path.
  const char *fault = getenv("KESTRUNE_FAULT");
  size_t length = strlen(call);
  if (!fault || strncmp(fault, call, length) != 0 || fault[length] != ' ')
    return 0;
  char link[64], path[4096];
  snprintf(link, sizeof link, "/proc/self/fd/%d", fd);
  ssize_t n = readlink(link, path, sizeof path - 1);
  if (n < 0)
    return 0;
  path[n] = '\0';
  return shouldFail(call, path);
}

// The function that this one stands in front of (dlsym's object pointer
// read as a function pointer, the way POSIX allows).
#define NEXT(name) (*(__typeof__(&name) *)&(void *){dlsym(RTLD_NEXT, #name)})
#define OPEN(name, ...)                                                        \
  {                                                                            \
    va_list list;                                                              \
    va_start(list, flags);                                                     \
    mode_t mode = (flags & (O_CREAT | O_TMPFILE)) ? va_arg(list, mode_t) : 0;  \
    va_end(list);                                                              \
    if (shouldFail("open", path))                                              \
      return -1;                                                               \
    return NEXT(name)(__VA_ARGS__, flags, mode);                               \
  }

int open(const char *path, int flags, ...)
    OPEN(open, path) int open64(const char *path, int flags, ...)
        OPEN(open64, path) int openat(int dir, const char *path, int flags, ...)
            OPEN(openat, dir, path) int openat64(int dir, const char *path,
                                                 int flags, ...)
                OPEN(openat64, dir, path)

                    ssize_t read(int fd, void *buffer, size_t size) {
  return descriptorFails("read", fd) ? -1 : NEXT(read)(fd, buffer, size);
}
ssize_t pread(int fd, void *buffer, size_t size, off_t at) {
  return descriptorFails("read", fd) ? -1 : NEXT(pread)(fd, buffer, size, at);
}
ssize_t pread64(int fd, void *buffer, size_t size, off64_t at) {
  return descriptorFails("read", fd) ? -1 : NEXT(pread64)(fd, buffer, size, at);
}
ssize_t write(int fd, const void *bytes, size_t size) {
  return descriptorFails("write", fd) ? -1 : NEXT(write)(fd, bytes, size);
}
int fsync(int fd) {
  return descriptorFails("fsync", fd) ? -1 : NEXT(fsync)(fd);
}
int flock(int fd, int operation) {
  return descriptorFails("flock", fd) ? -1 : NEXT(flock)(fd, operation);
}
int rename(const char *from, const char *to) {
  return shouldFail("rename", from) ? -1 : NEXT(rename)(from, to);
}
int renameat(int fromDir, const char *from, int toDir, const char *to) {
  return shouldFail("rename", from) ? -1
                                    : NEXT(renameat)(fromDir, from, toDir, to);
}
int mkdir(const char *path, mode_t mode) {
  return shouldFail("mkdir", path) ? -1 : NEXT(mkdir)(path, mode);
}
int unlink(const char *path) {
  return shouldFail("unlink", path) ? -1 : NEXT(unlink)(path);
}
