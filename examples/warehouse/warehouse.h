// warehouse.h - what the sources of this program share: receipts, the warehouse they are posted to, the console.
#pragma once

#include <tkkernel/tkkernel.h>

#include <afxtempl.h>

/// Set whenever a receipt was posted: whoever waits for it is told, in whatever process.
#define EVENT_POSTED "Warehouse.Posted"

struct CReceiptLine {
    CString m_strArticle;
    double m_dQuantity = 0;
    double m_dPrice = 0;

    double GetAmount() const { return m_dQuantity * m_dPrice; }
};

/// A receipt as it lies on the desk: who delivered what at which price.
class CReceipt {
public:
    CReceipt() { m_datePosted.SetStatus(COleDateTime::null); }

    /// Reads the text file (GBK) that the suppliers' program writes:
    ///   a line "field=value;field=value", then a line "article,quantity,price" for each article.
    /// @return FALSE with the reason in GetLastErrorString()
    BOOL Load(LPCTSTR szFile);
    double GetAmount() const;
    CString GetLastErrorString() const { return m_strError; }

    CString m_strNumber;
    CString m_strSupplier;
    CString m_strKeeper;
    COleDateTime m_datePosted;  // null: not posted yet
    CArray<CReceiptLine, const CReceiptLine&> m_arLines;

private:
    BOOL SetHead(LPCTSTR szLine);
    BOOL AddLine(LPCTSTR szLine);

    CString m_strError;
};

struct CArticle {
    CString m_strCode;
    CString m_strName;
    CString m_strUnit;
    double m_dQuantity = 0;
};

/// The tables of the warehouse in whatever database the connection string names.
class CWarehouse {
public:
    /// Opens the database and makes the tables that are missing.
    /// @return FALSE with the reason in GetLastErrorString(), as all members
    BOOL Open(LPCTSTR szSource);

    /// Reads the list of articles, a line "code,name,unit" for each; those that are there already keep their quantity.
    BOOL LoadArticles(LPCTSTR szFile, int& nCount);
    /// @param szInitials  the beginning of the pinyin initials of the names wanted; empty: all
    BOOL GetArticles(LPCTSTR szInitials, CArray<CArticle, const CArticle&>& arArticles);
    CString GetArticleName(LPCTSTR szCode);

    /// Adds the receipt and its quantities in one transaction, and tells who waits.
    BOOL Post(const CReceipt& receipt);
    /// Takes a receipt out again.
    BOOL Cancel(LPCTSTR szNumber);
    BOOL GetReceipt(LPCTSTR szNumber, CReceipt& receipt);
    BOOL GetReceiptNumbers(CStringArray& arNumbers);

    CString GetLastErrorString() const { return m_strError; }

private:
    BOOL CreateTables();
    BOOL PostLines(const CReceipt& receipt);
    BOOL Undo(LPCTSTR szReason);
    BOOL Fail(LPCTSTR szReason);

    CTDatabase m_database;
    CString m_strError;
};

// ---- voucher.cpp

/// The text of the voucher, amounts in figures and in capitals.
/// @param pWarehouse  where the names of the articles are; NULL: the voucher shows their codes alone
CString GetVoucher(const CReceipt& receipt, CWarehouse* pWarehouse);

// ---- stocktaking.cpp

/// Adds up the receipts of every article, nWorkers at a time, each with a session borrowed from a pool.
/// @return FALSE with the reason
BOOL TakeStock(LPCTSTR szSource, int nWorkers, CWarehouse& warehouse, CString& strReport);

// ---- notice.cpp

const DWORD MOST_SECONDS = 24 * 60 * 60;

/// Waits until somebody posts receipts, and prints their vouchers.
/// @param dwSeconds  at most MOST_SECONDS
/// @return FALSE when the time ran out, or with the reason
BOOL WatchReceipts(CWarehouse& warehouse, DWORD dwSeconds, CString& strError);

// ---- console.cpp

/// Prints a text in the code page of the console.
void Print(LPCTSTR szFormat, ...);

/// Says on the console and in the event log why something could not be done. @return the program's exit code
int Report(LPCTSTR szWhat, LPCTSTR szReason);

/// @return FALSE at the end of the file
BOOL ReadLine(FILE* pFile, CString& strLine);
