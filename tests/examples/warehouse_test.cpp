// What the program does without a database, on either system.
#include "tests/examples/warehouse_run.h"

using namespace tk::test;

namespace {

TEST(Warehouse, PreviewsAReceiptFromItsFile) {
    const Outcome outcome = RunWarehouse("preview " + Data("receipt2.txt"));
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.output,
              "                              入 库 单\n"
              "单号:RK-0002                                 日期:(未入库)\n"
              "供应商:宜兴陶瓷厂\n"
              "------------------------------------------------------------------\n"
              "编号      品名                      数量        单价          金额\n"
              "ZS11                                   3    1,260.00      3,780.00\n"
              "QH10                                  40       15.80        632.00\n"
              "LJ01                                 0.5       90.00         45.00\n"
              "------------------------------------------------------------------\n"
              "合计:￥4,457.00\n"
              "大写:肆仟肆佰伍拾柒元整\n"
              "经手人:王芳\n");
}

TEST(Warehouse, SaysWhatIsWrongWithAReceipt) {
    static const struct {
        const char* label;
        const char* file;
        const char* output;
    } kRows[] = {
        {"no such file", "nothing.txt", "读入库单失败:打不开文件 "},
        {"not a receipt", "articles.txt", "读入库单失败:入库单没有单号\n"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        const Outcome outcome = RunWarehouse("preview " + Data(row.file));
        EXPECT_EQ(outcome.code, 1);
        EXPECT_EQ(outcome.output.compare(0, std::string(row.output).size(), row.output), 0) << outcome.output;
    }
}

TEST(Warehouse, ExplainsItselfWhenItIsNotUnderstood) {
    const Outcome outcome = RunWarehouse("nonsense");
    EXPECT_EQ(outcome.code, 2);
    EXPECT_EQ(outcome.output.find("仓库入库管理\n用法: warehouse [命令 [参数]]\n"), 0u) << outcome.output;
    EXPECT_NE(outcome.output.find("  watch     [秒数]        等待其他工位入库\n"), std::string::npos) << outcome.output;
}

TEST(Warehouse, WantsTheArgumentThatACommandNeeds) {
    const Outcome outcome = RunWarehouse("preview");
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.output, "预览入库单,不入库:缺少参数\n");
}

}  // namespace
