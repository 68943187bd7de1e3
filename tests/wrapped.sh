#!/usr/bin/env bash
# Tells the linker, and faults.cc, under which symbols the tool calls the functions that faults.cc makes
# fail: C libraries and compilers call fopen fopen64, or fprintf __fprintf_chk. Fails when the tool calls
# a function that is neither among those nor below, or does not call one of them.
#
#   wrapped.sh NM TOOL FAULTS [ALL]     writes wrapped.h and wrapped.options; ALL: any other call passes

set -u

# They cannot fail, or nobody looks at what they return: the last lines of a tool whose output is gone.
passed="_ITM_deregisterTMCloneTable _ITM_registerTMCloneTable cxa_finalize gmon_start libc_start_main
    stack_chk_fail stack_chk_guard aeabi_unwind_cpp_pr0 environ stdout errno_location abort _exit free sleep
    atoi strtol strchr strchrnul strcmp strerror strlen strncmp strnlen strstr isalnum isspace
    memchr memcpy memmem memmove memset explicit_bzero snprintf printf puts fputs fwrite perror write fflush setvbuf feof
    feof_unlocked ferror_unlocked getc_unlocked uflow closedir dirfd readdir close umask setitimer signal
    sigemptyset sigprocmask getpid getuid geteuid pthread_mutex_lock pthread_mutex_unlock"
fallible=$(grep -v '#define' "$3" | grep -oP 'FAILS\(\K\w+')
status=0 called=''
: >wrapped.h
: >wrapped.options
while read -r symbol; do
    [[ ! $symbol =~ ^__(asan|ubsan|gcov) ]] || continue
    function=$(sed -E 's/^__//; s/^isoc[0-9]+_//; s/_+chk$//; s/_time64$//; s/64$//; s/^getline$/getdelim/; s/__$//' <<<"$symbol")
    if grep -qx "$function" <<<"$fallible"; then
        echo "WRAP($symbol, $function)" >>wrapped.h
        echo "-Wl,--wrap=$symbol" >>wrapped.options
        called+="$function"$'\n'
    elif [[ -z ${4-} ]] && ! grep -qw "$function" <<<"$passed"; then
        echo "$0: the tool calls $symbol: faults.cc does not make it fail, and it does not pass here" >&2
        status=1
    fi
done < <("$1" --dynamic --undefined-only --format=just-symbols "$2" | sed 's/@.*//')
for function in $fallible; do
    grep -qx "$function" <<<"$called" || { echo "$0: the tool never calls $function" >&2 && status=1; }
done
exit $status
