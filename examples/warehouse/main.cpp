// main.cpp - the commands of the program, and its menu.
#include <afxwin.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "warehouse.h"

static const char TITLE[] = "仓库入库管理";
const DWORD MOST_WORKERS = 100;

struct CDesk {
    CString m_strSource;
    CWarehouse m_warehouse;
};

// ---- commands: each returns the program's exit code

static int Articles(CDesk& desk, LPCTSTR szFile) {
    int nCount = 0;
    if (!desk.m_warehouse.LoadArticles(szFile, nCount))
        return Report("读入货品目录失败", desk.m_warehouse.GetLastErrorString());
    Print("读入货品 %d 种\n", nCount);
    return 0;
}

static int Receive(CDesk& desk, LPCTSTR szFile) {
    CReceipt receipt;
    if (!receipt.Load(szFile)) return Report("读入库单失败", receipt.GetLastErrorString());
    if (!desk.m_warehouse.Post(receipt)) return Report("入库失败", desk.m_warehouse.GetLastErrorString());
    Print("已入库:%s\n", (LPCTSTR)receipt.m_strNumber);
    return 0;
}

static int Preview(CDesk&, LPCTSTR szFile) {
    CReceipt receipt;
    if (!receipt.Load(szFile)) return Report("读入库单失败", receipt.GetLastErrorString());
    Print("%s", (LPCTSTR)GetVoucher(receipt, NULL));
    return 0;
}

static int Voucher(CDesk& desk, LPCTSTR szNumber) {
    CReceipt receipt;
    if (!desk.m_warehouse.GetReceipt(szNumber, receipt))
        return Report("打印失败", desk.m_warehouse.GetLastErrorString());
    Print("%s", (LPCTSTR)GetVoucher(receipt, &desk.m_warehouse));
    return 0;
}

static int Stock(CDesk& desk, LPCTSTR szInitials) {
    CArray<CArticle, const CArticle&> arArticles;
    if (!desk.m_warehouse.GetArticles(szInitials, arArticles))
        return Report("查询失败", desk.m_warehouse.GetLastErrorString());
    for (int i = 0; i < arArticles.GetSize(); i++) {
        const CArticle& article = arArticles[i];
        Print("%-10s%-20s%12s %s\n", (LPCTSTR)article.m_strCode, (LPCTSTR)article.m_strName,
              (LPCTSTR)DoubleToString(article.m_dQuantity, "#,##0.##"), (LPCTSTR)article.m_strUnit);
    }
    Print("共%s种\n", (LPCTSTR)IntToString(arArticles.GetSize(), NULL));
    return 0;
}

static int Cancel(CDesk& desk, LPCTSTR szNumber) {
    CString strQuestion;
    strQuestion.Format("作废入库单 %s?", szNumber);
    if (AfxMessageBox(strQuestion, MB_YESNO | MB_ICONQUESTION) != IDYES) {
        Print("没有作废\n");
        return 1;
    }
    if (!desk.m_warehouse.Cancel(szNumber)) return Report("作废失败", desk.m_warehouse.GetLastErrorString());
    Print("已作废:%s\n", szNumber);
    return 0;
}

/// @return the number that was typed, dwMost when it is larger, dwDefault when it is none
static DWORD NumberOf(LPCTSTR szText, DWORD dwDefault, DWORD dwMost) {
    if (!IsDigit(szText)) return dwDefault;
    const unsigned long nNumber = strtoul(szText, NULL, 10);
    return nNumber < dwMost ? static_cast<DWORD>(nNumber) : dwMost;
}

static int Count(CDesk& desk, LPCTSTR szWorkers) {
    const int nWorkers = static_cast<int>(NumberOf(szWorkers, 3, MOST_WORKERS));
    CString strReport;
    if (!TakeStock(desk.m_strSource, nWorkers, desk.m_warehouse, strReport)) return Report("盘点失败", strReport);
    Print("%s", (LPCTSTR)strReport);
    return 0;
}

static int Watch(CDesk& desk, LPCTSTR szSeconds) {
    CString strError;
    const DWORD dwSeconds = NumberOf(szSeconds, 60, MOST_SECONDS);
    if (WatchReceipts(desk.m_warehouse, dwSeconds, strError)) return 0;
    return Report("等待结束", strError);
}

static const struct CCommand {
    const char* szName;
    const char* szArgument;
    const char* szText;
    int (*pRun)(CDesk& desk, LPCTSTR szArgument);
    BOOL bDatabase;
} COMMANDS[] = {
    {"articles", "文件", "读入货品目录", Articles, TRUE},
    {"receive", "文件", "入库", Receive, TRUE},
    {"preview", "文件", "预览入库单,不入库", Preview, FALSE},
    {"voucher", "单号", "打印入库单", Voucher, TRUE},
    {"stock", "[拼音首字母]", "库存", Stock, TRUE},
    {"cancel", "单号", "作废入库单", Cancel, TRUE},
    {"count", "[线程数]", "盘点", Count, TRUE},
    {"watch", "[秒数]", "等待其他工位入库", Watch, TRUE},
};
const int COMMAND_COUNT = sizeof(COMMANDS) / sizeof(COMMANDS[0]);

static int Run(CDesk& desk, const CCommand& command, LPCTSTR szArgument) {
    if (*szArgument == '\0' && command.szArgument[0] != '[') return Report(command.szText, "缺少参数");
    return command.pRun(desk, szArgument);
}

// ---- menu

static CString Ask(LPCTSTR szPrompt) {
    Print("%s", szPrompt);
    CString strAnswer;
    if (!ReadLine(stdin, strAnswer)) strAnswer = "0";
    return strAnswer;
}

static int Menu(CDesk& desk) {
    for (;;) {
        Print("\n%s\n", TITLE);
        for (int i = 0; i < COMMAND_COUNT; i++)
            Print("%d. %s\n", i + 1, COMMANDS[i].szText);
        const CString strChoice = Ask("0. 退出\n选择:");
        if (strChoice == "0") return 0;
        const int nChoice = IsDigit(strChoice) ? atoi(strChoice) : 0;
        if (nChoice < 1 || nChoice > COMMAND_COUNT) continue;
        const CCommand& command = COMMANDS[nChoice - 1];
        Run(desk, command, Ask(CString(command.szArgument) + ":"));
    }
}

static int Usage() {
    Print("%s\n用法: warehouse [命令 [参数]]\n", TITLE);
    for (const CCommand& command : COMMANDS)
        Print("  %-10s%-14s%s\n", command.szName, command.szArgument, command.szText);
    Print("数据源在环境变量 WAREHOUSE_SOURCE 里,缺省为 Driver=SQLite3;Database=warehouse.db\n");
    return 2;
}

static const CCommand* FindCommand(LPCTSTR szName) {
    for (const CCommand& command : COMMANDS) {
        if (strcmp(command.szName, szName) == 0) return &command;
    }
    return NULL;
}

static int Start(int argc, char* argv[]) {
    const CCommand* pCommand = argc > 1 ? FindCommand(argv[1]) : NULL;
    if (argc > 3 || (argc > 1 && pCommand == NULL)) return Usage();

    CDesk desk;
    const char* szSource = getenv("WAREHOUSE_SOURCE");
    desk.m_strSource = szSource != NULL ? szSource : "Driver=SQLite3;Database=warehouse.db";
    if (pCommand == NULL || pCommand->bDatabase) {
        if (!desk.m_warehouse.Open(desk.m_strSource))
            return Report("打不开数据库 " + desk.m_strSource, desk.m_warehouse.GetLastErrorString());
    }
    return pCommand != NULL ? Run(desk, *pCommand, argc > 2 ? argv[2] : "") : Menu(desk);
}

int main(int argc, char* argv[]) {
    if (!AfxIDispatchInit()) return Report("启动失败", GetLastErrorText());
    const int nCode = Start(argc, argv);
    AfxIDispatchTerm();
    return nCode;
}
