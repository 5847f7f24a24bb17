// stocktaking.cpp - what the receipts say of every article, counted by several threads that share a pool of sessions.
#include <process.h>

#include <afxmt.h>

#include "warehouse.h"

const int POOL_TEXT_LENGTH = 127;  // bytes that the pool keeps of each of its texts

struct CStocktaking {
    CTDataServer m_server;
    CArray<CArticle, const CArticle&> m_arArticles;
    LONG m_nNext = 0;
    LONG m_nRunning = 0;
    HANDLE m_hDone = NULL;

    CCriticalSection m_lock;  // of what follows
    CArray<double, double> m_arCounted;
    CString m_strError;
};

/// What came in of one article, by its receipts.
static BOOL CountArticle(CTDataClient& client, LPCTSTR szCode, double& dCounted) {
    const CString strKey = VARIANTToString(COleVariant(szCode, VT_BSTR));
    if (!client.OpenSQL("select QUANTITY from RECEIPT_LINE where CODE = " + strKey, 100, 1)) return FALSE;
    for (dCounted = 0; !client.GetRecordEof(); client.MoveNext())
        dCounted += client.GetValueDouble(COleVariant("QUANTITY", VT_BSTR));
    client.CloseSQL();
    return TRUE;
}

static void CountArticles(CStocktaking& job) {
    CTDataClient client;
    client.Invoke(&job.m_server);
    for (LONG i; (i = InterlockedIncrement(&job.m_nNext) - 1) < job.m_arArticles.GetSize();) {
        double dCounted = 0;
        const BOOL bGood = CountArticle(client, job.m_arArticles.GetAt(static_cast<int>(i)).m_strCode, dCounted);
        CSingleLock lock(&job.m_lock, TRUE);
        if (!bGood) job.m_strError = client.GetLastErrorString();
        job.m_arCounted.SetAt(static_cast<int>(i), dCounted);
    }
}

static void Worker(void* pParam) {
    CStocktaking& job = *static_cast<CStocktaking*>(pParam);
    CoInitializeEx(NULL, COINIT_MULTITHREADED);
    CountArticles(job);
    CoUninitialize();
    if (InterlockedDecrement(&job.m_nRunning) == 0) SetEvent(job.m_hDone);
}

static void RunWorkers(CStocktaking& job, int nWorkers) {
    job.m_hDone = CreateEvent(NULL, TRUE, FALSE, NULL);
    job.m_nRunning = 1;  // this thread, until all are started
    for (int i = 0; i < nWorkers; i++) {
        InterlockedIncrement(&job.m_nRunning);
        if (_beginthread(Worker, 0, &job) == static_cast<UINT_PTR>(-1)) InterlockedDecrement(&job.m_nRunning);
    }
    CountArticles(job);  // this thread counts as well, so the work is done even when no thread could be started
    if (InterlockedDecrement(&job.m_nRunning) > 0) WaitForSingleObject(job.m_hDone, INFINITE);
    CloseHandle(job.m_hDone);
}

static CString GetReport(const CStocktaking& job) {
    CString strReport;
    strReport.Format("%-10s%-20s%12s%12s  %s\n", "编号", "品名", "账面", "单据", "结果");
    for (int i = 0; i < job.m_arArticles.GetSize(); i++) {
        const CArticle& article = job.m_arArticles[i];
        const double dCounted = job.m_arCounted[i];
        const BOOL bSame = Round(DoubleToString(dCounted - article.m_dQuantity, "%.4f"), 2) == 0;
        strReport.AppendFormat("%-10s%-20s%12s%12s  %s\n", (LPCTSTR)article.m_strCode, (LPCTSTR)article.m_strName,
                               (LPCTSTR)DoubleToString(article.m_dQuantity, "#,##0.##"),
                               (LPCTSTR)DoubleToString(dCounted, "#,##0.##"), bSame ? "相符" : "不符");
    }
    return strReport;
}

BOOL TakeStock(LPCTSTR szSource, int nWorkers, CWarehouse& warehouse, CString& strReport) {
    CStocktaking job;
    if (!warehouse.GetArticles("", job.m_arArticles)) {
        strReport = warehouse.GetLastErrorString();
        return FALSE;
    }
    job.m_arCounted.SetSize(job.m_arArticles.GetSize());
    // The pool's first text is a data source name; a whole connection string stands behind a semicolon.
    const CString strConnection = CString(";") + szSource;
    // It would be cut, and the rest name another database.
    if (strConnection.GetLength() > POOL_TEXT_LENGTH) {
        strReport.Format("连接串太长,会话池最多 %d 字节", POOL_TEXT_LENGTH - 1);
        return FALSE;
    }
    // The user and the password that the pool is given come last, and win.
    CMapStringToString mapParts;
    StringToMap(mapParts, szSource);
    CString strUser;
    CString strPassword;
    mapParts.Lookup("UID", strUser);
    mapParts.Lookup("PWD", strPassword);
    if (!job.m_server.OpenDatabase(strConnection, strUser, strPassword, static_cast<short>(nWorkers + 1))) {
        strReport = job.m_server.GetLastErrorString();
        return FALSE;
    }
    RunWorkers(job, nWorkers);
    strReport = job.m_strError.IsEmpty() ? GetReport(job) : job.m_strError;
    return job.m_strError.IsEmpty();
}
