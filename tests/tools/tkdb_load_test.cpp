// tkdb load on a database in a file, and the histogram it measures with.
#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <string>

#include "tkdb_run.h"
#include "tools/tkdb/latency_histogram.h"

namespace {

using namespace tk::tools;
using namespace tk::tools::test;
using testing::HasSubstr;

TEST(LatencyHistogram, KnowsEveryPercentileWithinSevenPercent) {
    LatencyHistogram histogram;
    EXPECT_EQ(histogram.PercentileNs(0.5), 0u);
    for (std::uint64_t ns = 1; ns <= 100'000; ++ns)
        histogram.Add(ns * 100);
    EXPECT_EQ(histogram.Total(), 100'000u);
    EXPECT_EQ(histogram.LongestNs(), 10'000'000u);
    for (const double share : {0.01, 0.5, 0.9, 0.99, 0.999}) {
        SCOPED_TRACE(share);
        EXPECT_NEAR(static_cast<double>(histogram.PercentileNs(share)), share * 10'000'000, share * 700'000);
    }
    EXPECT_EQ(histogram.PercentileNs(1), 10'000'000u);
}

TEST(LatencyHistogram, TakesTheShortestAndTheLongest) {
    LatencyHistogram histogram;
    histogram.Add(0);
    histogram.Add(~std::uint64_t{0});
    EXPECT_EQ(histogram.Total(), 2u);
    EXPECT_LE(histogram.PercentileNs(0.5), 1u);
    LatencyHistogram sum;
    sum.Add(histogram);
    sum.Add(histogram);
    EXPECT_EQ(sum.Total(), 4u);
}

TEST(LatencyHistogram, SaysTimesInTheirUnit) {
    EXPECT_EQ(TimeText(999), "999 ns");
    EXPECT_EQ(TimeText(1'500), "1.50 us");
    EXPECT_EQ(TimeText(2'250'000), "2.25 ms");
    EXPECT_EQ(TimeText(3'000'000'000), "3.00 s");
}

TEST_F(Tkdb, LoadMeasuresACountOfRequests) {
    ASSERT_EQ(RunTkdb("exec " + connection_ + " 'create table t (n integer)' 'insert into t values (0)'").code, 0);
    const std::string picture = std::string(folder_) + "/latency.svg";
    const Outcome run =
        RunTkdb("load " + connection_ +
                " 'select n from t' 'update t set n = n + 1' --threads 3 --sessions 5 --requests 60 --plot " + picture);
    EXPECT_EQ(run.code, 0) << run.output;
    EXPECT_THAT(run.output, HasSubstr("requests     60 in "));
    EXPECT_THAT(run.output, HasSubstr(", 0 failed\n"));
    EXPECT_THAT(run.output, HasSubstr("pool         5 sessions, 0 faults\n"));
    EXPECT_THAT(run.output, HasSubstr("connections  lent "));
    EXPECT_THAT(run.output, HasSubstr("latency      median "));
    std::ifstream file(picture);
    const std::string svg{std::istreambuf_iterator<char>(file), {}};
    EXPECT_TRUE(svg.starts_with("<svg ")) << svg;
    EXPECT_THAT(svg, HasSubstr("60 requests, median "));
    EXPECT_TRUE(svg.ends_with("</svg>\n"));
    const Outcome read = RunTkdb("query " + connection_ + " 'select n > 0 as changed from t' --format csv");
    EXPECT_THAT(read.output, HasSubstr("1"));
}

TEST_F(Tkdb, LoadPrintsTheCountersOfThePool) {
    const Outcome run = RunTkdb("load " + connection_ + " 'select 1' --threads 2 --requests 10 --metrics");
    EXPECT_EQ(run.code, 0);
    EXPECT_THAT(run.output, HasSubstr("tkkernel_pool_sessions{pool=\"tkdb\"} 4\n"));
    EXPECT_THAT(run.output, HasSubstr("tkkernel_pool_loans_total{pool=\"tkdb\",kind=\"recordset\"} 10\n"));
}

TEST_F(Tkdb, LoadEndsInOrderWhenItIsInterrupted) {
    const Outcome run = RunTkdb("load " + connection_ + " 'select 1' --threads 2 --seconds 60", "2>/dev/null",
                                "timeout -s INT --foreground 2 ");
    // timeout reports itself; what the program found is printed all the same.
    EXPECT_THAT(run.output, HasSubstr("requests     "));
    EXPECT_THAT(run.output, HasSubstr("latency      median "));
}

TEST_F(Tkdb, LoadSaysWhyRequestsFail) {
    const Outcome run = RunTkdb("load " + connection_ + " 'select no from where' --threads 1 --requests 3", "2>&1");
    EXPECT_EQ(run.code, 1);
    EXPECT_THAT(run.output, HasSubstr(", 3 failed\n"));
    EXPECT_THAT(run.output, HasSubstr("tkdb: "));
    EXPECT_EQ(RunTkdb("load 'Driver=SQLite3;Database=/no/such/folder/x.db' 'select 1' --requests 1").code, 1);
    EXPECT_EQ(RunTkdb("load " + connection_).code, 2) << "no statement";
    EXPECT_EQ(RunTkdb("load 'Driver=SQLite3;Database=/" + std::string(130, 'x') + "' 'select 1'").code, 2);
    const Outcome refused = RunTkdb("load 'DSN=x;Password=" + std::string(128, 'x') + "' 'select 1'", "2>&1");
    EXPECT_EQ(refused.code, 2);
    EXPECT_EQ(refused.output, "tkdb: a pool takes a password of up to 127 bytes, not 128\n");
}

TEST_F(Tkdb, LoadEndsWhenItIsInterruptedWhateverARequestTakes) {
    RunningTkdb running("load " + connection_ +
                        " 'create table t (n integer)' 'with recursive c(n) as (select 1 union all select n + 1 from c "
                        "limit 1000000000000) select count(*) from c' --threads 1 --seconds 600");
    const std::string file = std::string(folder_) + "/t.db";
    ASSERT_TRUE(running.WaitUntil([&] { return std::ifstream(file).peek() != std::ifstream::traits_type::eof(); }));
    constexpr int kUntilTheNextMs = 300;
    poll(nullptr, 0, kUntilTheNextMs);
    running.Signal(SIGINT);
    const Outcome outcome = running.Finish();
    EXPECT_EQ(outcome.code, 130);
    EXPECT_THAT(outcome.output, HasSubstr("requests     1 in "));
    EXPECT_THAT(outcome.output, HasSubstr("tkdb: 1 request(s) did not end\n"));
}

TEST_F(Tkdb, LoadEndsWhenItIsInterruptedWhileNobodyAnswers) {
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof(address);
    ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), size), 0);
    ASSERT_EQ(listen(listener, 5), 0);
    ASSERT_EQ(getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size), 0);
    RunningTkdb running("load 'Driver={PostgreSQL Unicode};Server=127.0.0.1;Port=" +
                        std::to_string(ntohs(address.sin_port)) + ";Database=x;UID=x;PWD=x' 'select 1'");
    pollfd called = {listener, POLLIN, 0};
    ASSERT_TRUE(running.WaitUntil([&] { return poll(&called, 1, 0) == 1; }));
    running.Signal(SIGINT);
    const Outcome outcome = running.Finish();
    close(listener);
    EXPECT_EQ(outcome.code, 130);
    EXPECT_EQ(outcome.output, "tkdb: interrupted while the database system did not answer\n");
}

}  // namespace
