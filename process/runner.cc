#include "process/runner.h"

#include <cerrno>
#include <cstdarg>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "process/child.h"

namespace zelta {

mbuf child_info_mbuf = {MBUF_MAGIC_HEAP, sizeof(child_info), 0, 0, nullptr};
pthread_mutex_t mbuf_mutex = PTHREAD_MUTEX_INITIALIZER;

namespace {

// Appends the arguments and the null pointer that ends them; stops when the array is full.
void collect_arguments(mbuf *arguments, va_list list) {
    const char *argument;
    do
        argument = va_arg(list, const char *);
    while (mbuf_push_back(arguments, mk_mref(&argument, sizeof argument)) == 0 &&
           argument != nullptr);
}

// The collected arguments as a vector; null when the list did not fit, so that its end is missing.
const char *const *vector_of(mbuf *arguments) {
    const char *last;
    if (mbuf_get(arguments, mbuf_size(arguments) - 1, mk_mref(&last, sizeof last)) != 0 ||
        last != nullptr)
        return nullptr;
    return static_cast<const char *const *>(mbuf_access(arguments, 0));
}

const child_info *record_at(uint32_t index) {
    return static_cast<const child_info *>(mbuf_access(&child_info_mbuf, index));
}

void add_record(child_info record) {
    pthread_mutex_lock(&mbuf_mutex);
    mbuf_push_back(&child_info_mbuf, mk_mref(&record, sizeof record));
    pthread_mutex_unlock(&mbuf_mutex);
}

void remove_record(uint32_t index) {
    pthread_mutex_lock(&mbuf_mutex);
    mbuf_erase(&child_info_mbuf, index, index + 1);
    pthread_mutex_unlock(&mbuf_mutex);
}

// The child of zelta_popen; returns only when the program could not be executed.
void run_writer(const int ends[2], const char *path, va_list list) {
    close(ends[0]);
    dup2(ends[1], STDOUT_FILENO);
    mbuf arguments;
    mbuf_create(&arguments, sizeof(char *), 0);
    collect_arguments(&arguments, list);
    const char *const *vector = vector_of(&arguments);
    if (vector != nullptr)
        child_exec(path, vector);
    mbuf_destroy(&arguments);
}

} // namespace

int zelta_system_argv(const char *path, const char *const argv[]) {
    pid_t pid = child_start(path, argv, exec_failed_silently);
    if (pid < 0) {
        printf("Call to fork failed in zelta_system_argv, error %i", errno);
        return -1;
    }
    int status;
    return child_wait(pid, &status) ? 0 : -1;
}

int zelta_system(const char *path, ...) {
    constexpr uint32_t room = 20;
    constexpr size_t lead = guard_lead<char *>; // so that execv gets an aligned vector
    alignas(char *) char storage[lead + room * sizeof(char *) + guards_size];
    mbuf arguments = {MBUF_MAGIC_GUARDED, sizeof(char *), 0, room,
                      _mbuf_init_buffer(storage + lead, room * sizeof(char *), MBUF_MAGIC_GUARDED)};
    va_list list;
    va_start(list, path);
    collect_arguments(&arguments, list);
    va_end(list);

    const char *const *vector = vector_of(&arguments);
    return vector == nullptr ? -1 : zelta_system_argv(path, vector);
}

FILE *zelta_popen(const char *path, ...) {
    int ends[2];
    if (pipe(ends) != 0)
        return nullptr;
    fcntl(ends[0], F_SETFD, FD_CLOEXEC); // no later child holds it
    pid_t pid = child_fork();
    if (pid < 0) {
        printf("Call to fork failed, error %i\n", errno);
        return nullptr;
    }
    if (pid == 0) {
        va_list list;
        va_start(list, path);
        run_writer(ends, path, list);
        va_end(list);
        child_end(exec_failed_silently);
    }
    close(ends[1]);
    FILE *stream = fdopen(ends[0], "r");
    if (stream == nullptr) {
        close(ends[0]);
        return nullptr;
    }
    add_record({.stream = stream, .pid = pid});
    return stream;
}

int zelta_pclose(FILE *stream) {
    uint32_t index = 0;
    const child_info *record = record_at(index);
    while (record != nullptr && record->stream != stream)
        record = record_at(++index);
    if (record == nullptr)
        return -1;
    const pid_t pid = record->pid;
    fclose(stream);
    int status;
    bool ended = child_wait(pid, &status);
    if (!ended && errno == EINTR)
        return -1;
    remove_record(index);
    return ended && WIFEXITED(status) && WEXITSTATUS(status) == 0 ? 0 : -1;
}

} // namespace zelta
