// Runs other programs from explicit argument lists, without a shell: to their end, or with a stream
// from their standard output. Nothing here changes privileges. A program that cannot be executed is
// not reported: zelta_system gives 0, zelta_popen a stream that is at its end.

#pragma once

#include <cstdio>

#include <pthread.h>
#include <sys/types.h>

#include "lib/mbuf.h"

namespace zelta {

// One child started by zelta_popen and not closed yet.
struct child_info {
    FILE *stream;
    pid_t pid;
};

extern mbuf child_info_mbuf;       // child_info records in the order of starting
extern pthread_mutex_t mbuf_mutex; // held while a record is added or removed

// Runs the program with a vector that ends in a null pointer and waits for it. 0 when it ended,
// whatever its exit status; -1 when the wait failed, or the fork, which prints its line without a
// line end.
int zelta_system_argv(const char *path, const char *const argv[]);

// The same with a list of arguments from number 0 on, ended by a null pointer; -1 also for more
// than 19 of them.
[[gnu::sentinel]] int zelta_system(const char *path, ...);

// Starts a program, its standard output connected to the stream that is returned, for zelta_pclose.
// Null when it cannot be started: after a failed fork, which prints its line, the pipe stays open;
// after a failed fdopen nobody waits for the child. Without memory for the child's record,
// zelta_pclose gives -1.
[[gnu::sentinel]] FILE *zelta_popen(const char *path, ...);

// Closes the stream and waits for its child: 0 when that ended with exit code 0, else -1. A stream
// that is not from zelta_popen is not closed. After a wait that a signal interrupted, the record
// stays.
int zelta_pclose(FILE *stream);

} // namespace zelta
