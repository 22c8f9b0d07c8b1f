#include "host/cli/progress.h"

#include "host/cli/interrupt.h"

#include <chrono>
#include <gtest/gtest.h>
#include <sstream>

namespace velm::host {
namespace {

TEST(Progress, PrintsALineForEveryTenPercentInLogs) {
    std::ostringstream log;
    ProgressReport report(log, ProgressStyle::lines);
    report.begin("frame 3");
    for (int done = 1; done <= 200; ++done) EXPECT_TRUE(report.progress(done, 200));
    report.end("done");
    std::string expected;
    for (int percent = 10; percent <= 100; percent += 10) expected += "frame 3: " + std::to_string(percent) + " %\n";
    EXPECT_EQ(log.str(), expected + "done\n");
}

TEST(Progress, SkipsLinesIfATileIsMoreThanTenPercent) {
    std::ostringstream log;
    ProgressReport report(log, ProgressStyle::lines);
    report.begin("frame 1");
    for (int done = 1; done <= 3; ++done) report.progress(done, 3);
    EXPECT_EQ(log.str(), "frame 1: 30 %\nframe 1: 60 %\nframe 1: 100 %\n");
}

TEST(Progress, RedrawsOneLineOnTerminals) {
    std::ostringstream terminal;
    {
        ProgressReport report(terminal, ProgressStyle::bar);
        report.begin("frame 1");
        report.progress(1, 4);
        EXPECT_EQ(terminal.str().find('\n'), std::string::npos);
        EXPECT_NE(terminal.str().find("[==========                              ]  25 %"), std::string::npos)
            << terminal.str();
    }
    EXPECT_TRUE(terminal.str().ends_with("\r\033[K")) << "the bar is erased even if an error ends the render";
}

TEST(Progress, NotesReplaceTheBar) {
    std::ostringstream terminal;
    {
        ProgressReport report(terminal, ProgressStyle::bar);
        report.note("before");
        report.begin("frame 1");
        terminal.str("");
        report.note("meanwhile");
        EXPECT_EQ(terminal.str(), "\r\033[Kmeanwhile\n");
        terminal.str("");
        report.note("again");
        EXPECT_EQ(terminal.str(), "again\n");
        report.progress(0, 4);
        EXPECT_NE(terminal.str().find("  0 %"), std::string::npos) << terminal.str();
    }
    std::ostringstream log;
    ProgressReport(log, ProgressStyle::none).note("printed even so");
    EXPECT_EQ(log.str(), "printed even so\n");
}

TEST(Progress, PrintsNothingWhenQuiet) {
    std::ostringstream log;
    ProgressReport report(log, progressStyle(log, true));
    report.begin("frame 1");
    report.progress(1, 1);
    report.end("done");
    EXPECT_EQ(log.str(), "");
    EXPECT_EQ(progressStyle(log, false), ProgressStyle::lines) << "a string is no terminal";
}

TEST(Progress, EndsTheRenderAfterAnInterrupt) {
    std::ostringstream log;
    ProgressReport report(log, ProgressStyle::none);
    {
        const InterruptGuard guard;
        EXPECT_TRUE(report.progress(1, 4));
        std::raise(SIGINT);
        EXPECT_TRUE(InterruptGuard::interrupted());
        EXPECT_FALSE(report.progress(2, 4));
    }
    const InterruptGuard next;
    EXPECT_TRUE(report.progress(1, 4)) << "the next run is not interrupted";
}

using std::chrono::milliseconds;

TEST(PercentLines, AreAtMostOneASecondExceptTheLast) {
    std::ostringstream log;
    PercentLines lines(log, "Progress: ", "%");
    const PercentLines::Clock::time_point start{};
    lines.show(0, start);
    lines.show(1, start + milliseconds(999));
    lines.show(2, start + milliseconds(1000));
    lines.show(2, start + milliseconds(5000));
    lines.show(1, start + milliseconds(6000));
    lines.show(42, start + milliseconds(7000));
    lines.show(100, start + milliseconds(7001));
    lines.show(100, start + milliseconds(9000));
    EXPECT_EQ(log.str(), "Progress: 0%\nProgress: 2%\nProgress: 42%\nProgress: 100%\n");
}

TEST(Progress, ForSchedulersCountsAllFrames) {
    std::ostringstream err, out;
    {
        ProgressReport report(err, out, ProgressStyle::openJd, {});
        report.begin("frame 1", {.index = 3, .count = 4});
        report.progress(1, 2);
        report.progress(2, 2);
        report.end("written");
    }
    EXPECT_EQ(out.str(), "openjd_progress: 87\nopenjd_progress: 100\n");
    EXPECT_EQ(err.str(), "written\n");
    std::ostringstream log;
    ProgressReport report(log, ProgressStyle::percent);
    report.begin("frame 1");
    report.progress(1, 1);
    EXPECT_EQ(log.str(), "Progress: 100%\n");
}

TEST(Progress, EndsTheRenderWhenTheTimeIsUp) {
    std::ostringstream log;
    ProgressReport expired(log, log, ProgressStyle::none, TimeLimit(1e-9));
    EXPECT_FALSE(expired.progress(1, 4));
    EXPECT_TRUE(expired.isTimeUp());
    ProgressReport unlimited(log, log, ProgressStyle::none, TimeLimit(0));
    EXPECT_TRUE(unlimited.progress(1, 4));
    ProgressReport later(log, log, ProgressStyle::none, TimeLimit(1e6));
    EXPECT_TRUE(later.progress(1, 4));
    EXPECT_FALSE(later.isTimeUp());
}

TEST(Progress, WritesDurations) {
    EXPECT_EQ(durationText(0.2), "0:00");
    EXPECT_EQ(durationText(65), "1:05");
    EXPECT_EQ(durationText(3605), "1:00:05");
}

} // namespace
} // namespace velm::host
