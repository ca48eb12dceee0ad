// Runs a program and writes the most memory it held at once (its peak
// resident set, in KiB) to a file: PeakMemory FILE PROGRAM [ARGUMENT...].
// The program's exit code, or the signal that ended it, becomes this one's;
// it is killed when this one is.
//
// A test could read the peak from wait4 itself, but the kernel counts in
// it the memory of the process that started the program, up to the exec:
// a test process is large, this one is small.
#define _GNU_SOURCE
#include <errno.h>
#include <signal.h>
#include <stdio.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

int main(int argc, char **argv) {
  if (argc < 3)
    return 125;
  pid_t child = fork();
  if (child < 0)
    return 126;
  if (child == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    execv(argv[2], argv + 2);
    _exit(127);
  }
  int status = 0;
  struct rusage usage = {0};
  while (wait4(child, &status, 0, &usage) < 0)
    if (errno != EINTR)
      return 126;
  FILE *out = fopen(argv[1], "w");
  if (!out || fprintf(out, "%ld\n", usage.ru_maxrss) < 0 || fclose(out) != 0)
    return 126;
  if (WIFSIGNALED(status)) {
    signal(WTERMSIG(status), SIG_DFL);
    raise(WTERMSIG(status));
  }
  return WEXITSTATUS(status);
}
