#include "process/runner.h"

#include <csignal>
#include <string>

#include <sys/time.h>
#include <sys/wait.h>

#include <gtest/gtest.h>

using namespace zelta;

namespace {

constexpr char shell[] = "/bin/sh";

FILE *start(const char *script, const std::string &argument = "") {
    return zelta_popen(shell, "sh", "-c", script, "name", argument.c_str(), nullptr);
}

std::string rest_of(FILE *stream) {
    std::string text;
    for (int c = getc(stream); c != EOF; c = getc(stream))
        text += static_cast<char>(c);
    return text;
}

} // namespace

TEST(Runner, OnlyCloseReportsHowTheProgramEnded) {
    for (const auto &[script, closes] : {std::pair("exit 0", 0), {"exit 3", -1}, {"kill -9 $$", -1}}) {
        EXPECT_EQ(zelta_system(shell, "sh", "-c", script, nullptr), 0) << script;
        EXPECT_EQ(zelta_pclose(start(script)), closes) << script;
    }
    EXPECT_EQ(zelta_system("/none", "none", nullptr), 0);
    EXPECT_EQ(zelta_pclose(zelta_popen("/none", "none", nullptr)), -1);
    signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(zelta_system(shell, "sh", "-c", "exit 0", nullptr), -1) << "nobody to wait for";
    EXPECT_EQ(zelta_pclose(start("exit 0")), -1) << "nobody to wait for";
    signal(SIGCHLD, SIG_DFL);
    EXPECT_EQ(mbuf_size(&child_info_mbuf), 0U);
    FILE *foreign = tmpfile();
    EXPECT_EQ(zelta_pclose(foreign), -1);
    EXPECT_EQ(fclose(foreign), 0) << "still open";
}

TEST(Runner, SystemTakesNineteenArguments) {
    const auto run = [](auto... more) {
        return zelta_system(shell, "sh", "-c", "echo $1 $# ${15}", "name", "1", "2", "3", "4", "5", "6", "7", "8", "9",
                            "10", "11", "12", "13", "14", more..., nullptr);
    };
    testing::internal::CaptureStdout();
    EXPECT_EQ(run("last"), 0);
    EXPECT_EQ(run("last", "one too many"), -1);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "1 15 last\n");
}

TEST(Runner, EachStreamHasItsOwnChild) {
    for (bool in_order : {false, true}) {
        testing::internal::CaptureStderr();
        FILE *bad = start("echo bad; echo aside >&2; exit 3");
        FILE *good = start("test -e /proc/$$/fd/$1 || echo good", std::to_string(fileno(bad)));
        EXPECT_EQ(rest_of(good) + rest_of(bad), "good\nbad\n");
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "aside\n");
        EXPECT_EQ(zelta_pclose(in_order ? bad : good), in_order ? -1 : 0);
        EXPECT_EQ(mbuf_size(&child_info_mbuf), 1U);
        EXPECT_EQ(zelta_pclose(in_order ? good : bad), in_order ? 0 : -1);
        EXPECT_EQ(mbuf_size(&child_info_mbuf), 0U);
    }
}

TEST(Runner, InterruptedWaitKeepsTheRecord) {
    struct sigaction interrupt = {};
    interrupt.sa_handler = [](int) {};
    sigaction(SIGALRM, &interrupt, nullptr);
    FILE *stream = start("exec sleep 0.3");
    const itimerval often = {.it_interval = {0, 10000}, .it_value = {0, 10000}}, never = {};
    setitimer(ITIMER_REAL, &often, nullptr);
    EXPECT_EQ(zelta_pclose(stream), -1);
    setitimer(ITIMER_REAL, &never, nullptr);
    EXPECT_EQ(mbuf_size(&child_info_mbuf), 1U);
    EXPECT_EQ(mbuf_clear(&child_info_mbuf), 0);
    wait(nullptr);
}
