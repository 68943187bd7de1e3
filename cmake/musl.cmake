# The C library musl, from Debian's musl-tools. The compiler that comes with it is for C; C++ needs
# libstdc++'s headers besides, which take the C library for glibc. The library itself is not linked.
set(CMAKE_C_COMPILER musl-gcc)
set(CMAKE_CXX_COMPILER musl-gcc)
execute_process(COMMAND g++ -x c++ -E -v /dev/null
    OUTPUT_QUIET ERROR_VARIABLE told COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "\n /[^\n]*/c\\+\\+/[^\n]*" folders "${told}")
list(TRANSFORM folders REPLACE "\n " "-isystem ")
string(JOIN " " CMAKE_CXX_FLAGS_INIT -nostdinc++ ${folders}
    "'-D__GLIBC_PREREQ(major,minor)=0'" -D__locale_t=locale_t)
