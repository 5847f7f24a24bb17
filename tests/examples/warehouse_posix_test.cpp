// The program from end to end on an embedded database.
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <iterator>
#include <thread>

#include <tkkernel/sync.h>

#include "tests/examples/warehouse_run.h"
#include "tests/support/environment.h"
#include "tests/support/postgres_server.h"
#include "tests/support/temporary_folder.h"

using namespace tk::test;

namespace {

std::string FileText(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// Every run of the program finds a terminal that takes GBK, and a log and kernel objects of its own.
class Surroundings : public testing::Environment {
    TemporaryFolder folder_;
    Variable log_{"TKKERNEL_EVENT_LOG", folder_.File("events.jsonl").c_str()};
    Variable objects_{"TKKERNEL_OBJECTS", folder_.Path().c_str()};
    Variable locale_{"LC_ALL", "zh_CN.GBK"};
};
const auto* const surroundings = testing::AddGlobalTestEnvironment(new Surroundings);

/// The day in the voucher is today's, which may change while the test runs.
std::string WithoutDay(std::string voucher) {
    const std::size_t day = voucher.find("日期:2");
    if (day != std::string::npos) voucher.replace(day + 5, 14, "某日");
    return voucher;
}

class WarehouseOnADatabase : public testing::Test {
protected:
    void SetUp() override {
        const Outcome articles = RunWarehouse("articles " + Data("articles.txt"));
        ASSERT_EQ(articles.output, "读入货品 5 种\n");
        ASSERT_EQ(articles.code, 0);
    }

    /// Answers the question that the program asks on its terminal.
    static int RunOnTerminal(const char* command, const char* argument, const std::string& typed) {
        int terminal = -1;
        const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
        if (child == 0) {
            execl(WAREHOUSE_PROGRAM, "warehouse", command, argument, static_cast<char*>(nullptr));
            _exit(99);
        }
        EXPECT_EQ(write(terminal, typed.data(), typed.size()), static_cast<ssize_t>(typed.size()));
        char piece[512];
        while (read(terminal, piece, sizeof piece) > 0) {}
        int status = 0;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        close(terminal);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    TemporaryFolder folder_;
    Variable source_{"WAREHOUSE_SOURCE", ("Driver=SQLite3;Database=" + folder_.File("stock.db")).c_str()};
    Variable log_{"TKKERNEL_EVENT_LOG", folder_.File("events.jsonl").c_str()};
    Alone alone_;
};

const char kStockBefore[] =
    "BL02      碧螺春                         0 斤\n"
    "LJ01      龙井茶                         0 斤\n"
    "QH10      青花瓷杯                       0 只\n"
    "TG03      铁观音                         0 斤\n"
    "ZS11      紫砂壶                         0 把\n"
    "共5种\n";

TEST_F(WarehouseOnADatabase, PostsAReceiptAndPrintsItsVoucher) {
    const Outcome received = RunWarehouse("receive " + Data("receipt1.txt"));
    EXPECT_EQ(received.output, "已入库:RK-0001\n");
    EXPECT_EQ(received.code, 0);

    const Outcome voucher = RunWarehouse("voucher RK-0001");
    EXPECT_EQ(voucher.code, 0);
    EXPECT_EQ(WithoutDay(voucher.output),
              "                              入 库 单\n"
              "单号:RK-0001                                 日期:某日\n"
              "供应商:杭州茶叶公司\n"
              "------------------------------------------------------------------\n"
              "编号      品名                      数量        单价          金额\n"
              "LJ01      龙井茶                      20       88.50      1,770.00\n"
              "BL02      碧螺春                       5      120.00        600.00\n"
              "------------------------------------------------------------------\n"
              "合计:￥2,370.00\n"
              "大写:贰仟叁佰柒拾元整\n"
              "经手人:李明\n");
    EXPECT_NE(FileText(folder_.File("events.jsonl")).find(reinterpret_cast<const char*>(u8"\"贰仟叁佰柒拾元整\"")),
              std::string::npos);
}

TEST_F(WarehouseOnADatabase, FindsArticlesByTheInitialsOfTheirNames) {
    EXPECT_EQ(RunWarehouse("stock").output, kStockBefore);
    EXPECT_EQ(RunWarehouse("stock LJ").output, "LJ01      龙井茶                         0 斤\n共1种\n");
    EXPECT_EQ(RunWarehouse("stock X").output, "共0种\n");
}

TEST_F(WarehouseOnADatabase, SpeaksTheLanguageOfAUtf8Terminal) {
    const Variable locale("LC_ALL", "C.UTF-8");
    EXPECT_EQ(RunWarehouse("stock LJ").output,
              reinterpret_cast<const char*>(u8"LJ01      龙井茶                         0 斤\n共1种\n"));
}

TEST_F(WarehouseOnADatabase, TakesBackAReceiptThatCannotBePostedWhole) {
    const std::string file = folder_.File("receipt.txt");
    std::ofstream(file, std::ios::binary) << "单号=RK-0009;供应商=某厂\nLJ01,3,10\nXX99,1,1\n";
    const Outcome received = RunWarehouse("receive " + file);
    EXPECT_EQ(received.code, 1);
    EXPECT_EQ(received.output, "入库失败:没有这种货品:XX99\n");
    EXPECT_EQ(RunWarehouse("stock").output, kStockBefore);
    EXPECT_EQ(RunWarehouse("voucher RK-0009").output, "打印失败:没有这张入库单:RK-0009\n");
}

TEST_F(WarehouseOnADatabase, PostsAReceiptOnce) {
    ASSERT_EQ(RunWarehouse("receive " + Data("receipt1.txt")).code, 0);
    const Outcome again = RunWarehouse("receive " + Data("receipt1.txt"));
    EXPECT_EQ(again.code, 1);
    EXPECT_EQ(again.output.find("入库失败:违反约束"), 0u) << again.output;
    EXPECT_EQ(RunWarehouse("stock LJ").output, "LJ01      龙井茶                        20 斤\n共1种\n");
}

TEST_F(WarehouseOnADatabase, TellsAnotherProcessThatAReceiptWasPosted) {
    ProgramRun watch(Warehouse("watch 60"));
    ASSERT_EQ(watch.Line(), "等待入库通知\n");
    ASSERT_EQ(RunWarehouse("receive " + Data("receipt2.txt")).output, "已入库:RK-0002\n");

    EXPECT_EQ(watch.Line(), "新的入库单:\n");
    const std::string voucher = watch.Rest();
    EXPECT_NE(voucher.find("单号:RK-0002 "), std::string::npos) << voucher;
    EXPECT_NE(voucher.find("QH10      青花瓷杯                    40       15.80        632.00\n"), std::string::npos)
        << voucher;
    EXPECT_NE(voucher.find("大写:肆仟肆佰伍拾柒元整\n"), std::string::npos) << voucher;
    EXPECT_EQ(watch.Wait(), 0);
}

TEST_F(WarehouseOnADatabase, GivesUpWaitingWhenTheTimeIsOver) {
    const Outcome outcome = RunWarehouse("watch 0");
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.output, "等待入库通知\n等待结束:0 秒内没有新的入库单\n");
}

TEST_F(WarehouseOnADatabase, WaitsNoLongerForNoticesThatBringNothing) {
    ProgramRun watch(Warehouse("watch 1"));
    ASSERT_EQ(watch.Line(), "等待入库通知\n");
    std::atomic<bool> isOver{false};
    std::atomic<bool> gaveUp{false};
    std::thread notices([&] {
        CTEvent posted;
        posted.OpenEventA("Warehouse.Posted");
        for (int i = 0; !isOver.load() && i < 3000; ++i) {
            posted.SetEvent();
            usleep(10'000);
        }
        gaveUp = !isOver.load();
    });
    EXPECT_EQ(watch.Rest(), "等待结束:1 秒内没有新的入库单\n");
    isOver = true;
    notices.join();
    EXPECT_FALSE(gaveUp.load());
    EXPECT_EQ(watch.Wait(), 1);
}

TEST_F(WarehouseOnADatabase, TakesStockWithManyWorkers) {
    ASSERT_EQ(RunWarehouse("receive " + Data("receipt1.txt")).code, 0);
    ASSERT_EQ(RunWarehouse("receive " + Data("receipt2.txt")).code, 0);
    const Outcome outcome = RunWarehouse("count 8");
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.output,
              "编号      品名                        账面        单据  结果\n"
              "BL02      碧螺春                         5           5  相符\n"
              "LJ01      龙井茶                      20.5        20.5  相符\n"
              "QH10      青花瓷杯                      40          40  相符\n"
              "TG03      铁观音                         0           0  相符\n"
              "ZS11      紫砂壶                         3           3  相符\n");
}

TEST_F(WarehouseOnADatabase, DoesNotCountInADatabaseWhoseNameThePoolWouldCut) {
    const std::string begin = "Driver=SQLite3;Database=" + folder_.File("");
    const Variable longest("WAREHOUSE_SOURCE", (begin + std::string(126 - begin.size(), 'x')).c_str());
    EXPECT_EQ(RunWarehouse("count").code, 0);
    const Variable longer("WAREHOUSE_SOURCE", (begin + std::string(127 - begin.size(), 'x')).c_str());
    const Outcome outcome = RunWarehouse("count");
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.output, "盘点失败:连接串太长,会话池最多 126 字节\n");
}

TEST_F(WarehouseOnADatabase, CancelsAReceiptWhenTheUserSaysYes) {
    ASSERT_EQ(RunWarehouse("receive " + Data("receipt1.txt")).code, 0);
    const Outcome alone = RunWarehouse("cancel RK-0001");
    EXPECT_EQ(alone.code, 1) << "nobody can be asked";
    EXPECT_NE(alone.output.find("没有作废\n"), std::string::npos) << alone.output;
    EXPECT_EQ(RunOnTerminal("cancel", "RK-0001", "n\n"), 1);
    EXPECT_EQ(RunWarehouse("voucher RK-0001").code, 0);

    EXPECT_EQ(RunOnTerminal("cancel", "RK-0001", "y\n"), 0);
    EXPECT_EQ(RunWarehouse("voucher RK-0001").output, "打印失败:没有这张入库单:RK-0001\n");
    EXPECT_EQ(RunWarehouse("stock").output, kStockBefore);
}

TEST_F(WarehouseOnADatabase, HasAMenuForThoseWhoGiveNoCommand) {
    const std::string answers = folder_.File("answers");
    std::ofstream(answers) << "9\n2\n" << WAREHOUSE_DATA << "receipt1.txt\n5\nLJ\n0\n";
    ProgramRun run(Warehouse("< " + answers));
    const std::string output = run.Rest();
    EXPECT_EQ(run.Wait(), 0);
    EXPECT_NE(output.find("\n仓库入库管理\n1. 读入货品目录\n2. 入库\n"), std::string::npos) << output;
    EXPECT_NE(output.find("0. 退出\n选择:文件:已入库:RK-0001\n"), std::string::npos) << output;
    EXPECT_NE(output.find("选择:[拼音首字母]:LJ01      龙井茶                        20 斤\n共1种\n"),
              std::string::npos)
        << output;
}

TEST_F(WarehouseOnADatabase, SaysWhyTheDatabaseCannotBeOpened) {
    const Variable source("WAREHOUSE_SOURCE", "Provider=Nobody;Data Source=x");
    const Outcome outcome = RunWarehouse("stock");
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.output.find("打不开数据库 Provider=Nobody;Data Source=x:"), 0u) << outcome.output;
    EXPECT_NE(outcome.output.find("\n打开数据库失败\n"), std::string::npos) << outcome.output;
    EXPECT_NE(FileText(folder_.File("events.jsonl")).find("\"type\":\"error\""), std::string::npos);
}

TEST(WarehouseOnPostgres, PostsAReceiptAndTakesStock) {
    const PostgresServer server;
    const Variable source("WAREHOUSE_SOURCE", server.ConnectionString().c_str());
    ASSERT_EQ(RunWarehouse("articles " + Data("articles.txt")).output, "读入货品 5 种\n");
    EXPECT_EQ(RunWarehouse("receive " + Data("receipt1.txt")).output, "已入库:RK-0001\n");

    const std::string voucher = RunWarehouse("voucher RK-0001").output;
    EXPECT_NE(voucher.find("日期:2"), std::string::npos) << voucher;
    EXPECT_NE(voucher.find("大写:贰仟叁佰柒拾元整\n"), std::string::npos) << voucher;
    EXPECT_EQ(RunWarehouse("stock LJ").output, "LJ01      龙井茶                        20 斤\n共1种\n");
    const std::string counted = RunWarehouse("count 2").output;
    EXPECT_NE(counted.find("LJ01      龙井茶                        20          20  相符\n"), std::string::npos)
        << counted;
}

}  // namespace
