// warehouse.cpp - articles and receipts in the database.
#include "warehouse.h"

// Types that every database knows. A moment is no such type: it is kept as the text "2004-01-31 08:30:00".
static const struct {
    const char* szName;
    const char* szColumns;
} TABLES[] = {
    {"ARTICLE",
     "CODE varchar(20) not null primary key, NAME varchar(60), INITIALS varchar(60), UNIT varchar(8), "
     "QUANTITY double precision"},
    {"RECEIPT",
     "RECEIPT_NO varchar(20) not null primary key, SUPPLIER varchar(60), KEEPER varchar(20), "
     "POSTED varchar(19)"},
    {"RECEIPT_LINE",
     "RECEIPT_NO varchar(20) not null, LINE_NO integer not null, CODE varchar(20), "
     "QUANTITY double precision, PRICE double precision, primary key (RECEIPT_NO, LINE_NO)"},
};

/// A text as a part of a statement: in quotes, those inside it doubled.
static CString Quoted(LPCTSTR szText) {
    return VARIANTToString(COleVariant(szText, VT_BSTR));
}

static CString Figure(double dValue) {
    CString strValue;
    strValue.Format("%.2f", dValue);
    return strValue;
}

BOOL CWarehouse::Fail(LPCTSTR szReason) {
    m_strError = szReason;
    return FALSE;
}

BOOL CWarehouse::Open(LPCTSTR szSource) {
    if (!m_database.Open(szSource)) return Fail(m_database.GetLastErrorString());
    return CreateTables();
}

BOOL CWarehouse::CreateTables() {
    for (const auto& table : TABLES) {
        // PostgreSQL keeps names that stand without quotes in small letters.
        CString strSmall(table.szName);
        strSmall.MakeLower();
        if (m_database.IsTableExist(table.szName) || m_database.IsTableExist(strSmall)) continue;
        if (!m_database.ExecuteEx("create table %s (%s)", table.szName, table.szColumns))
            return Fail(m_database.GetLastErrorString());
    }
    return TRUE;
}

BOOL CWarehouse::LoadArticles(LPCTSTR szFile, int& nCount) {
    nCount = 0;
    FILE* pFile = fopen(szFile, "r");
    if (pFile == NULL) {
        m_strError.Format("打不开文件 %s", szFile);
        return FALSE;
    }
    CString strLine;
    BOOL bGood = TRUE;
    while (bGood && ReadLine(pFile, strLine)) {
        CStringArray arFields;
        StringToArray(arFields, strLine, ",");
        if (arFields.GetSize() != 3) continue;
        const CString strCode = Quoted(arFields[0]);
        const CString strRest = "NAME = " + Quoted(arFields[1]) + ", INITIALS = " + Quoted(ToPyHead(arFields[1])) +
                                ", UNIT = " + Quoted(arFields[2]);
        bGood = m_database.ExecSQL("update ARTICLE set %s where CODE = %s", (LPCTSTR)strRest, (LPCTSTR)strCode) > 0 ||
                (m_database.ExecSQL("insert into ARTICLE (CODE, QUANTITY) values (%s, 0)", (LPCTSTR)strCode) > 0 &&
                 m_database.ExecSQL("update ARTICLE set %s where CODE = %s", (LPCTSTR)strRest, (LPCTSTR)strCode) > 0);
        if (bGood) nCount++;
    }
    fclose(pFile);
    return bGood ? TRUE : Fail(m_database.GetLastErrorString());
}

BOOL CWarehouse::GetArticles(LPCTSTR szInitials, CArray<CArticle, const CArticle&>& arArticles) {
    CTRecordset records(&m_database);
    if (!records.OpenSQL("select CODE, NAME, INITIALS, UNIT, QUANTITY from ARTICLE", 1))
        return Fail(records.GetLastErrorString());
    const CString strInitials(szInitials);
    if (!strInitials.IsEmpty() && !records.SetFilter("INITIALS like " + Quoted(strInitials + "*")))
        return Fail(records.GetLastErrorString());
    records.SetSort("CODE");
    for (; !records.GetEof(); records.MoveNext()) {
        CArticle article;
        article.m_strCode = records.GetStringValue("CODE");
        article.m_strName = records.GetStringValue("NAME");
        article.m_strUnit = records.GetStringValue("UNIT");
        article.m_dQuantity = records.GetDoubleValue("QUANTITY");
        arArticles.Add(article);
    }
    return TRUE;
}

CString CWarehouse::GetArticleName(LPCTSTR szCode) {
    return m_database.GetSpecialValue("select NAME from ARTICLE where CODE = " + Quoted(szCode), "NAME");
}

BOOL CWarehouse::Post(const CReceipt& receipt) {
    try {
        m_database.BeginTrans();
        const CString strDate = GetCurDate("%Y-%m-%d %H:%M:%S");
        if (m_database.ExecSQL("insert into RECEIPT values (%s, %s, %s, '%s')", (LPCTSTR)Quoted(receipt.m_strNumber),
                               (LPCTSTR)Quoted(receipt.m_strSupplier), (LPCTSTR)Quoted(receipt.m_strKeeper),
                               (LPCTSTR)strDate) != 1)
            return Undo(m_database.GetLastErrorString());
        if (!PostLines(receipt)) return Undo(m_strError);
        m_database.CommitTrans();
    } catch (CException* e) {
        const CString strReason = GetExceptionError(e);
        e->Delete();
        return Undo(strReason);
    }
    AddInforLog("入库 " + receipt.m_strNumber, UpperCurrency(receipt.GetAmount(), 1), 0, NULL);

    CTEvent eventPosted;
    if (eventPosted.OpenEventA(EVENT_POSTED)) eventPosted.SetEvent();
    return TRUE;
}

BOOL CWarehouse::PostLines(const CReceipt& receipt) {
    for (int i = 0; i < receipt.m_arLines.GetSize(); i++) {
        const CReceiptLine& line = receipt.m_arLines[i];
        const CString strCode = Quoted(line.m_strArticle);
        if (m_database.ExecSQL("update ARTICLE set QUANTITY = QUANTITY + %s where CODE = %s",
                               (LPCTSTR)Figure(line.m_dQuantity), (LPCTSTR)strCode) != 1)
            return Fail("没有这种货品:" + line.m_strArticle);
        if (m_database.ExecSQL("insert into RECEIPT_LINE values (%s, %d, %s, %s, %s)",
                               (LPCTSTR)Quoted(receipt.m_strNumber), i + 1, (LPCTSTR)strCode,
                               (LPCTSTR)Figure(line.m_dQuantity), (LPCTSTR)Figure(line.m_dPrice)) != 1)
            return Fail(m_database.GetLastErrorString());
    }
    return TRUE;
}

BOOL CWarehouse::Cancel(LPCTSTR szNumber) {
    CReceipt receipt;
    if (!GetReceipt(szNumber, receipt)) return FALSE;
    try {
        m_database.BeginTrans();
        for (int i = 0; i < receipt.m_arLines.GetSize(); i++) {
            const CReceiptLine& line = receipt.m_arLines[i];
            if (m_database.ExecSQL("update ARTICLE set QUANTITY = QUANTITY - %s where CODE = %s",
                                   (LPCTSTR)Figure(line.m_dQuantity), (LPCTSTR)Quoted(line.m_strArticle)) != 1)
                return Undo(m_database.GetLastErrorString());
        }
        const CString strWhere = "RECEIPT_NO = " + Quoted(szNumber);
        if (!m_database.Delete("RECEIPT_LINE", strWhere) || !m_database.Delete("RECEIPT", strWhere))
            return Undo(m_database.GetLastErrorString());
        m_database.CommitTrans();
    } catch (CException* e) {
        const CString strReason = GetExceptionError(e);
        e->Delete();
        return Undo(strReason);
    }
    AddWarnLog("作废", szNumber, 0, NULL);
    return TRUE;
}

BOOL CWarehouse::Undo(LPCTSTR szReason) {
    m_strError = szReason;
    try {
        m_database.RollbackTrans();
    } catch (CException* e) {  // there was nothing to take back
        e->Delete();
    }
    return FALSE;
}

BOOL CWarehouse::GetReceipt(LPCTSTR szNumber, CReceipt& receipt) {
    CTRecordset records(&m_database);
    if (!records.OpenSQL("select * from RECEIPT where RECEIPT_NO = " + Quoted(szNumber), 1))
        return Fail(records.GetLastErrorString());
    if (records.GetEof()) return Fail(CString("没有这张入库单:") + szNumber);
    receipt.m_strNumber = records.GetStringValue("RECEIPT_NO");
    receipt.m_strSupplier = records.GetStringValue("SUPPLIER");
    receipt.m_strKeeper = records.GetStringValue("KEEPER");
    receipt.m_datePosted.ParseDateTime(records.GetStringValue("POSTED"));

    if (!records.OpenSQL("select * from RECEIPT_LINE where RECEIPT_NO = " + Quoted(szNumber) + " order by LINE_NO", 1))
        return Fail(records.GetLastErrorString());
    for (; !records.GetEof(); records.MoveNext()) {
        CReceiptLine line;
        line.m_strArticle = records.GetStringValue("CODE");
        line.m_dQuantity = records.GetDoubleValue("QUANTITY");
        line.m_dPrice = records.GetDoubleValue("PRICE");
        receipt.m_arLines.Add(line);
    }
    return TRUE;
}

BOOL CWarehouse::GetReceiptNumbers(CStringArray& arNumbers) {
    CTRecordset records(&m_database);
    if (!records.OpenSQL("select RECEIPT_NO from RECEIPT order by POSTED, RECEIPT_NO", 1))
        return Fail(records.GetLastErrorString());
    records.SelectOneColumn("RECEIPT_NO", arNumbers);
    return TRUE;
}
