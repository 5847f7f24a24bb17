// tkdb load on a database in a file, and the histogram it measures with.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

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
}

}  // namespace
